# SPDX-License-Identifier: Apache-2.0
# lab:
# needs: switchlab-sntpd
. "$DEMO_LIB"

chapter 'SNTP: the daemon follows'
echo 'sntpd disabled switchlab-sntpd >>/tmp/sntpd.log' >/tmp/processes
mkfifo /tmp/pm.ready
exec 9<>/tmp/pm.ready # held open, so that a word said early waits
switchlab-pm /tmp/processes --ready-fd 3 3<>/tmp/pm.ready >/tmp/pm.log &
manager=$!
head -c 1 /tmp/pm.ready >/dev/null
says() { grep -q -- "$1" /tmp/sntpd.log; }

show switchcfg sntp key add 7 MD5 timeflys
say 'The key file, for the daemon alone to read:'
show cat /etc/ntp.keys
check 'one key, in its columns' same "$(cat -A /etc/ntp.keys)" '          7^I        MD5^I   timeflys $'
check 'readable by its owner only' same "$(stat -c %a /etc/ntp.keys)" 600
show switchcfg sntp enable
check 'no server, no daemon' test ! -e /tmp/sntpd.log
server=
if PATH=$PATH:/usr/sbin command -v chronyd >/dev/null; then
    say 'A real time server, chrony, reads the same file.'
    printf '%s\n' 'local stratum 5' 'allow 127.0.0.1' 'bindaddress 127.0.0.1' 'cmdport 0' 'bindcmdaddress /' \
        'pidfile /tmp/chronyd.pid' 'keyfile /etc/ntp.keys' >/tmp/chrony.conf
    PATH=$PATH:/usr/sbin chronyd -d -x -u root -f /tmp/chrony.conf 2>/tmp/chrony.log &
    server=$!
    check 'it listens' wait_for 5 grep -q 0100007F:007B /proc/net/udp
else
    say 'chrony is not installed: the daemon asks, and nobody answers.'
fi
show switchcfg sntp server add 127.0.0.1
check 'with a server the daemon runs' wait_for 5 says 'asks 127.0.0.1 every'
show switchcfg sntp bind 7 127.0.0.1
show switchcfg sntp auth on
check 'the daemon uses the key' wait_for 5 says 'asks 127.0.0.1 with key 7 .* authenticated'
if [ -n "$server" ]; then
    check 'the time comes, authenticated' wait_for 5 says 'answers, stratum 5, .* authenticated with key 7'
    check 'and everybody can see from whom' contains "$(switchcfg sntp show)" 'last answer of  127.0.0.1'
    kill "$server"
    wait "$server" 2>/dev/null || true
fi
cat /tmp/sntpd.log
show switchcfg sntp show
failed=0
switchcfg sntp server del 127.0.0.1 2>/tmp/why || failed=$?
cat /tmp/why
check 'the first server is not deleted by mistake' same $failed 1
show switchcfg sntp disable
check 'the manager has stopped the daemon' grep -q 'sntpd: exited with status 0' /tmp/pm.log
kill -TERM $manager
wait $manager
chapter_done
