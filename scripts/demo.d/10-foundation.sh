# SPDX-License-Identifier: Apache-2.0
# lab:
. "$DEMO_LIB"

chapter 'Two daemons share one switch'
say 'The region files are made by whoever attaches first.'
show switchcfg init
check 'the running configuration has its exact size' same "$(stat -c %s /var/run/cfg/running.cfg)" 21707629

watcher-daemon >/tmp/watcher.log 2>&1 &
watcher=$!
say "A daemon in C (PID $watcher) watches the UTC offset; it attached with cfg_init() and now only reads memory."
check 'the watcher is attached' wait_for 5 grep -q '^attached' /tmp/watcher.log

say 'A daemon in C++ changes the offset under the CFG lock.'
show setter-daemon utc-offset 180
check 'the watcher saw the change at once' wait_for 5 grep -q '^UTC offset is now 180 minutes: TZ=STD-3:0' /tmp/watcher.log
show switchcfg config get time.utc_offset_minutes
check 'so does everybody else' same "$(switchcfg config get time.utc_offset_minutes)" 180
show switchcfg config diff

chapter 'Locks belong to living processes'
setter-daemon hold-lock >/tmp/holder.log &
holder=$!
check 'a daemon holds the CFG lock' wait_for 5 grep -q '^holding' /tmp/holder.log
show switchcfg lock list
check 'the kernel says who holds it' contains "$(switchcfg lock list)" "$holder"
kill -KILL $holder
wait $holder 2>/dev/null || true
check 'killed, it holds nothing' switchcfg lock run CFG -- true

chapter 'What is left of a crash'
say 'The setter is told to crash; it dies of the real signal and leaves a report in the log it writes.'
setter-daemon crash 2>/tmp/crash.log &
crashed=0
wait $! 2>/dev/null || crashed=$?
check 'it died of SIGSEGV' same $crashed $((128 + 11))
cat /tmp/crash.log
check 'the report names the process' grep -q "Process 'setter-daemon' (PID [0-9]*) received signal 11 (code 1). Backtrace generated." /tmp/crash.log
check 'and the address' grep -q '\*\*\* Faulty address is 0x10, from 0x' /tmp/crash.log
check 'and the function at fault' grep -q 'crash_on_purpose' /tmp/crash.log

chapter 'Where is that thread?'
say "The watcher is asked with the first real-time signal where it is; it goes on afterwards."
kill -34 $watcher # SIGRTMIN: not every shell knows it by name
check 'it wrote a thread dump' wait_for 5 grep -q main /tmp/stack_trace.txt
cat /tmp/stack_trace.txt
check 'by its name' grep -q "^Process 'watcher-daemon' (PID $watcher) thread 'watcher-daemon' (TID $watcher)" /tmp/stack_trace.txt
setter-daemon utc-offset -90 >/dev/null
check 'and still follows changes' wait_for 5 grep -q '^UTC offset is now -90 minutes: TZ=STD1:30' /tmp/watcher.log
kill -TERM $watcher
wait $watcher 2>/dev/null || true
chapter_done
