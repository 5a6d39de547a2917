# SPDX-License-Identifier: Apache-2.0
# lab:
. "$DEMO_LIB"

chapter 'Processors of two units'
populated=$(switchcfg stack populate 1,1)
say "$populated"
if ! ip link add eth0.3 type veth peer name far 2>/tmp/why; then
    say "The units cannot have their management network here: $(cat /tmp/why)"
    chapter_done
    exit 0
fi
ip link set far up
ip link set eth0.3 up
for address in febf::1 febf::101 febf::102; do
    ip -6 addr add $address/64 dev eth0.3 nodad
done
mkfifo /tmp/cpumon.ready
exec 9<>/tmp/cpumon.ready # held open, so that a word said early waits
switchlab-cpumon --address febf::1%eth0.3 --ready-fd 3 3<>/tmp/cpumon.ready &
first=$!
switchlab-cpumon --address febf::102%eth0.3 --unit 2 --ready-fd 3 3<>/tmp/cpumon.ready &
second=$!
head -c 2 /tmp/cpumon.ready >/dev/null
(while :; do :; done) &
busy=$!
first_of() { switchcfg "$@" --json | sed -n 's/^ *"\( *[0-9]* .*\)",*$/\1/p' | head -1; }
busiest() { [[ $(first_of cpu 1) == *"$busy "* ]]; }
check 'the busy process comes first' wait_for 10 busiest
show switchcfg cpu
show switchcfg cpu 1 --detail
show switchcfg memory 1 --detail
kill $busy
wait $busy 2>/dev/null || true
for unit in 0 1; do
    switchcfg cpu $unit --html /tmp/cpu$unit.html --xml /tmp/cpu$unit.xml
    check "unit $unit as a page" grep -q "<caption>Unit $((unit + 1)), by process</caption>" /tmp/cpu$unit.html
    if command -v tidy >/dev/null; then
        check 'without a fault' same "$(tidy -q -e /tmp/cpu$unit.html 2>&1)" ''
        check 'and as a document' same "$(tidy -q -e -xml /tmp/cpu$unit.xml 2>&1)" ''
    fi
done
failed=0
switchcfg cpu standby 2>/tmp/why || failed=$?
cat /tmp/why
check 'the standby board has no monitor' same $failed 1
kill $first $second
chapter_done
