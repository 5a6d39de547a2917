# SPDX-License-Identifier: Apache-2.0
# lab:
. "$DEMO_LIB"

senders=()
start_loggerd() {
    rm -f /tmp/loggerd.ready
    mkfifo /tmp/loggerd.ready
    exec 9<>/tmp/loggerd.ready # held open, so that a word said early waits
    switchlab-loggerd --ready-fd 3 3<>/tmp/loggerd.ready &
    loggerd=$!
    head -c 1 /tmp/loggerd.ready >/dev/null
}

chapter 'Three processes log at once'
start_loggerd
say "A stand-in for the logging daemon (PID $loggerd) takes messages on /tmp/logtest and commands on port 63003."
for daemon in bridge router agent; do
    (for number in 1 2 3 4 5 6 7 8 9 10; do
        switchcfg log send --category "$daemon" --level info "message $number of the $daemon"
    done) &
    senders+=($!)
done
for sender in "${senders[@]}"; do
    check "sender $sender handed all its messages over" wait "$sender"
done
check 'thirty messages are in the store' wait_for 5 bash -c '[ "$(switchcfg log show ram | wc -l)" = 30 ]'
switchcfg log send --facility local0 --level err 'Link-Flap detected on port 1/5, blocking'
check 'an error is kept in flash as well' wait_for 5 bash -c 'switchcfg log show flash | grep -q Link-Flap'

chapter 'Shown, filtered, saved, cleared'
show switchcfg log show ram --match 'of the router'
check 'the filter shows the ten of one daemon' same "$(switchcfg log show ram --match 'of the router' | wc -l)" 10
show switchcfg log save ram /tmp/saved.log
check 'the file holds them all' same "$(wc -l </tmp/saved.log)" 31
show switchcfg log clear ram
check 'the store in memory is empty' same "$(switchcfg log show ram)" ''
check 'the one in flash is not' contains "$(switchcfg log show flash)" 'Link-Flap detected on port 1/5'

chapter 'One record, by hand'
say 'The same store asked for with the bytes of the command: code 7, then a word, then the name of the destination.'
printf 'FLASH_FILE' >/tmp/name
if [ "$(printf '\1\0' | od -An -d | tr -d ' ')" = 1 ]; then code='\7\0\0\0'; else code='\0\0\0\7'; fi
{ printf "$code"'\0\0\0\0'; cat /tmp/name; } >/tmp/record
show switchcfg request 63003 --file /tmp/record --length 4688 | sed -n 1,4p
switchcfg request 63003 --file /tmp/record --length 4688 --raw >/tmp/reply
check 'the reply is as long as the request' same "$(stat -c %s /tmp/reply)" 4688
length=$(od -An -j 4176 -N 4 -t u4 /tmp/reply | tr -d ' ')
check 'and announces the text that follows' same "$length" "$(switchcfg log show flash | wc -c)"

chapter 'Without the daemon'
kill -KILL $loggerd
wait $loggerd 2>/dev/null || true
say 'A message that finds no daemon is lost, and its sender is told; no file grows for it.'
failed=0
show switchcfg log send 'is anybody there?' 2>/tmp/why || failed=$?
cat /tmp/why
check 'the sender sees the failure' same $failed 1
check 'and its name' contains "$(cat /tmp/why)" 'LOGGERS_ERR_SERVER_CONNECT (-1018)'
check 'nothing is in the fallback file' test ! -e /mnt/flash/log/log_libloggers.txt
start_loggerd
check 'a new daemon takes over the socket of the dead one' switchcfg log send 'back again'
check 'and the flash store has outlived it' contains "$(switchcfg log show flash)" 'Link-Flap'
say 'What the daemon cannot be handed goes into the fallback file: this text is too long for its length field.'
failed=0
switchcfg log send "$(head -c 65535 /dev/zero | tr '\0' 'x')" 2>/tmp/why || failed=$?
cut -c 1-150 /tmp/why
check 'it was not sent' test $failed -ne 0
check 'its line is in the file' same "$(cut -c 1-8 /mnt/flash/log/log_libloggers.txt | tail -1)" ' [Error '
kill -TERM $loggerd
wait $loggerd 2>/dev/null || true
chapter_done
