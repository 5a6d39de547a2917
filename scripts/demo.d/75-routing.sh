# SPDX-License-Identifier: Apache-2.0
# lab:
. "$DEMO_LIB"

fault() { switchcfg routing send DC_CMD_DEBUG_SET --payload "$(printf %s "$1" | od -An -tx1 | tr -d ' \n')" >/dev/null; }

chapter 'Static routes from four processes at once'
mkfifo /tmp/routing.ready
exec 3<>/tmp/routing.ready
start() {
    switchlab-routing --ready-fd 3 &
    daemon=$!
    head -c 1 <&3 >/dev/null
}
start
show switchcfg routing add 0.0.0.0/0 192.0.2.254
say 'Now four processes, each with ten routes of its own; one command is on its way at any time.'
adders=()
for process in 1 2 3 4; do
    (for net in $(seq 1 10); do switchcfg routing add "10.$process.$net.0/24" "192.0.2.$process" || exit 1; done) &
    adders+=($!)
done
for adder in "${adders[@]}"; do
    check 'one of the four is done' wait "$adder"
done
show switchcfg routing routes | head -5
check 'every route is there' same "$(switchcfg routing routes --json | grep -c '"prefix"')" 41
for process in 1 2 3 4; do
    check "the ten of process $process among them" same "$(switchcfg routing routes | grep -c " 192.0.2.$process ")" 10
done
check 'the same from result files' same "$(switchcfg routing routes --files | wc -l)" 41
check 'which are gone again' same "$(find /tmp -name 'cli*')" ''
show switchcfg routing send DC_CMD_RTM_GET_ROUTE --payload 0a020901

chapter 'A routing stack that fails'
for what in close half protocol-error garbage endless; do
    fault "$what"
    failed=0
    switchcfg routing routes 2>/tmp/why >/dev/null || failed=$?
    check "'$what' is an error, not a hang" same $failed 1
    cat /tmp/why
done
fault huge
check 'a reply of 64 MiB arrives' contains "$(switchcfg routing send 257 --json | tail -c 24)" 00ffffff
kill -9 $daemon
wait $daemon 2>/dev/null || true
start
check 'the next one starts empty and is reached' same "$(switchcfg routing routes --json)" '[]'
check 'the lock is free' contains "$(switchcfg lock list | grep dcGetSetLock)" free
kill $daemon
wait $daemon 2>/dev/null || true
chapter_done
