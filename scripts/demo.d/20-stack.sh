# SPDX-License-Identifier: Apache-2.0
# lab:
. "$DEMO_LIB"

chapter 'A stack of three models'
say 'The status region is filled as the daemons of three different units would fill it.'
show switchcfg stack populate 2,17,47
check 'three units are present' same "$(switchcfg units --json | grep -c '"present": true')" 3

chapter 'Front port to chip port and back'
say 'Boards wire their ports in orders of their own; a program asks by unit and user port.'
for place in '0 0' '0 25' '1 0' '1 47' '1 49' '2 23'; do
    # shellcheck disable=SC2086
    check "port $place goes to the chip and comes back" port-tour convert $place
done
show switchcfg port 1/49

chapter 'A check that fails'
say 'A value is refused with a code, and with an explanation for the user of the CLI.'
said=$(port-tour check aging-time 25 10 10 600) && exit 1
say "$said"
check 'the explanation is there' same "$said" '% The aging-time must be multiple of 10. Use 20 or 30'
said=$(port-tour convert 6 0) && exit 1
say "$said"
check 'a unit that is not there has only the text of its code' same "$said" '% Invalid unit/port number'

chapter 'The front panel'
show switchcfg ports 1 --panel
switchcfg ports 1 --svg /tmp/panel.svg
check 'the same as a picture' grep -q '</svg>' /tmp/panel.svg
chapter_done
