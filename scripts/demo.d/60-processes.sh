# SPDX-License-Identifier: Apache-2.0
# lab:
. "$DEMO_LIB"

pid_of() { switchcfg ps --regex "^sleep $1\$" --json 2>/dev/null | sed -n 's/.*"pid": \([0-9]*\).*/\1/p'; }
runs() { [ -n "$(pid_of "$1")" ]; }
is_gone() { ! kill -0 "$1" 2>/dev/null; }

chapter 'The manager brings up two daemons'
cat >/tmp/processes <<'END'
# name   state    command
bridge   enabled  sleep 1001
router   enabled  sleep 1002
END
cat /tmp/processes
mkfifo /tmp/pm.ready
exec 9<>/tmp/pm.ready # held open, so that a word said early waits
switchlab-pm /tmp/processes --ready-fd 3 3<>/tmp/pm.ready >/tmp/pm.log &
manager=$!
head -c 1 /tmp/pm.ready >/dev/null
check 'the bridge runs' wait_for 5 runs 1001
check 'the router runs' wait_for 5 runs 1002
show switchcfg ps sleep

chapter 'One is killed and comes back'
bridge=$(pid_of 1001)
show switchcfg pm kill-proc sleep --pid "$bridge" --signal KILL
check "PID $bridge is gone" wait_for 5 is_gone "$bridge"
check 'the manager has started it again' wait_for 5 runs 1001
check 'as another process' test "$(pid_of 1001)" != "$bridge"

chapter 'One is disabled and stays away'
router=$(pid_of 1002)
show switchcfg pm disable router
check 'it was gone when the answer came' is_gone "$router"
failed=0
show switchcfg pm start router 2>/tmp/why || failed=$?
cat /tmp/why
check 'it cannot be started' same $failed 1
show switchcfg pm show
check 'the manager printed its table' wait_for 5 grep -q '^router  *disabled' /tmp/pm.log
cat /tmp/pm.log
show switchcfg pm enable router
check 'enabled, it is back' wait_for 5 runs 1002

chapter 'A long table: paged, filtered, uploaded'
if command -v script >/dev/null; then
    say 'On a terminal of ten lines the list of error messages stops at the first screen; "q" leaves it.'
    printf q | TERM=vt100 script -qc 'stty rows 10 cols 100; switchcfg error --list' /dev/null >/tmp/screen || true
    sed -n 1,9p /tmp/screen
    check 'the pager stopped it' grep -q -- '--More--' /tmp/screen
    check 'before its end' test "$(wc -l </tmp/screen)" -lt 40
fi
show switchcfg error --list --grep 'STP' --tail 3
check 'filtered and cut' same "$(switchcfg error --list --grep 'STP' --tail 3 | wc -l)" 3
say 'Addresses as the switch reads them:'
show switchcfg ip normalize 010.001.002.003/08
check 'in the form they are kept in' same "$(switchcfg ip normalize 010.001.002.003/08)" 10.1.2.3/8
show switchcfg mac parse 0-1b-22-33-44-55

busybox=$(command -v busybox || true)
server=/usr/sbin/in.tftpd
bin=$(readlink -f /bin)
mkdir -p /tmp/bin.upper /tmp/bin.work /tmp/uploads
if [ -z "$busybox" ] || [ ! -x $server ]; then
    say 'No upload: busybox and tftpd-hpa are not installed.'
elif ! mount -t overlay overlay -o "lowerdir=$bin,upperdir=/tmp/bin.upper,workdir=/tmp/bin.work" "$bin" 2>/dev/null; then
    say 'No upload: this kernel lets nobody put a tftp program into the lab.'
else
    say "The switch's tftp is busybox's; in this lab it gets its place in /bin."
    ln -sf "$busybox" /bin/tftp
    $server --listen --create --user root --secure /tmp/uploads
    check 'the server listens' wait_for 5 grep -q ':0045 ' /proc/net/udp
    show switchcfg error --list --tftp 127.0.0.1:errors.txt
    switchcfg error --list >/tmp/errors.txt
    check 'the server has every byte' cmp /tmp/errors.txt /tmp/uploads/errors.txt
fi

kill -TERM $manager
wait $manager
check 'the manager took its processes along' same "$(pid_of 1001)$(pid_of 1002)" ''
chapter_done
