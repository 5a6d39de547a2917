# SPDX-License-Identifier: Apache-2.0
# lab:
. "$DEMO_LIB"

start_bcmd() {
    rm -f /tmp/bcmd.ready
    mkfifo /tmp/bcmd.ready
    exec 9<>/tmp/bcmd.ready # held open, so that a word said early waits
    switchlab-bcmd --stats-file /tmp/bcmd.stats --ready-fd 3 3<>/tmp/bcmd.ready 4>&- >>/tmp/bcmd.log &
    bcmd=$!
    head -c 1 /tmp/bcmd.ready >/dev/null
}
milliseconds() {
    local microseconds=${EPOCHREALTIME/[.,]/}
    printf '%s\n' "${microseconds::-3}"
}

chapter 'The same call from inside the daemon and from outside'
start_bcmd
say "A stand-in for the switch-chip daemon (PID $bcmd) serves its functions on 127.0.0.1, port 62050."
say 'It called one of them itself when it started, without leaving its process:'
cat /tmp/bcmd.log
say 'Another process makes the same call:'
show switchcfg call general version
check 'both got the same answer' contains "$(cat /tmp/bcmd.log)" "$(switchcfg call general version --output -)"

chapter 'Ports, tables, megabytes'
show switchcfg call unit-port state-set 0 7 0
check 'port 0/7 is off' contains "$(switchcfg call unit-port state-get 0 7)" 'result 0'
before=$(switchcfg call unit-port counters-get 0 8 --output - | od -An -tu8 -N8)
show switchcfg call unit-port counters-get 0 8
after=$(switchcfg call unit-port counters-get 0 8 --output - | od -An -tu8 -N8)
check "the counters of port 0/8 move (${before// /}, ${after// /} frames)" test "$after" -gt "$before"
show switchcfg call general mac-table-page 0 3
show switchcfg call mpls label-add 1000 2000 0 3
show switchcfg call mpls dump
show switchcfg call general diag-bulk 8000000 --output /tmp/bulk
check 'eight megabytes came whole' same "$(wc -c </tmp/bulk)" 8000000
failed=0
show switchcfg call unit-port state-get 0 99 2>/tmp/why || failed=$?
cat /tmp/why
check 'an error is one to the shell too' same $failed 1

chapter 'A long call, and the daemon is killed under it'
say 'One client process, two calls: a long one, and one when the daemon is back.'
mkfifo /tmp/calls
chip-caller </tmp/calls >/tmp/answers &
caller=$!
exec 4>/tmp/calls
has_answers() { [ "$(wc -l </tmp/answers)" -ge "$1" ]; }
last_answer() { tail -n 1 /tmp/answers; }
runs() {
    kill -USR1 "$bcmd"
    grep -q 'Running.*DIAG_SHELL' /tmp/bcmd.stats
}
echo 'wait 600000' >&4
check 'the call that may take hours is under way' wait_for 5 runs
tail -n 5 /tmp/bcmd.stats
killed_at=$(milliseconds)
{
    kill -KILL "$bcmd"
    wait "$bcmd" || true
} 2>/dev/null
check 'its caller has an answer' wait_for 6 has_answers 1
took=$(($(milliseconds) - killed_at))
say "after $took ms: $(last_answer)"
check 'in seconds, not hours' test $took -lt 5000
check 'which is a failure' contains "$(last_answer)" 'result -37'
start_bcmd
echo 'version' >&4
check 'the daemon is back, and the same client works again' wait_for 6 has_answers 2
last_answer
check 'with a result' contains "$(last_answer)" 'result 0'
exec 4>&-
wait $caller

chapter 'What the daemon remembers'
show switchcfg call stats
check 'the calls are counted' contains "$(switchcfg call stats)" 'BCMD_GENERAL_VERSION'
kill -TERM "$bcmd"
wait "$bcmd"
chapter_done
