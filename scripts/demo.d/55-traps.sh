# SPDX-License-Identifier: Apache-2.0
# lab:
. "$DEMO_LIB"

mibs=$PWD/packaging/mibs
chapter 'A link flaps'
printf 'disableAuthorization yes\nformat2 %%v\\n\n' >/tmp/snmptrapd.conf
listens() { grep -q 0100007F:00A2 /proc/net/udp; }
receiver=
if PATH=$PATH:/usr/sbin command -v snmptrapd >/dev/null; then
    PATH=$PATH:/usr/sbin snmptrapd -f -C -c /tmp/snmptrapd.conf -Lf /tmp/received -M "$mibs:$mibs/base" -m SWITCHCFG-MIB \
        -p /tmp/snmptrapd.pid udp:127.0.0.1:162 2>/dev/null &
    receiver=$!
    check 'snmptrapd listens for notifications' wait_for 5 listens
else
    say 'snmptrapd is not installed: the notification is sent, and nobody receives it.'
fi
say 'Every notification is off on a new switch: a daemon that raises one logs it, and nothing is queued.'
switchcfg trap send link_flap_detected 0 4 2>/dev/null
check 'the queue is empty' same "$(switchcfg trap list)" ''
switchcfg trap enable link_flap_detected
switchcfg trap enable link_flap_detected --port 1/5
say 'Unit 1, port 5 in its own numbers: a daemon counts both from 0.'
show switchcfg trap send link_flap_detected 0 4
show switchcfg trap list
check 'the trap waits with its port' contains "$(switchcfg trap list)" '.2.1.1.1.5 = integer 5'
switchlab-agent --once 2>/tmp/agent.log
check 'the agent has taken it' same "$(switchcfg trap list)" ''
if [ -n "$receiver" ]; then
    check 'the receiver prints it by name' wait_for 5 grep -q swLinkFlapDetectedEvent /tmp/received
    check 'with its port' grep -q 'swPortNumber.5 = INTEGER: 5' /tmp/received
    grep swLinkFlapDetectedEvent /tmp/received | tr '\t' '\n'
fi

chapter 'More than the queue holds'
switchcfg trap enable high_memory_usage_detected
for usage in $(seq 1 101); do
    switchcfg trap send high_memory_usage_detected "$usage" 2>/dev/null
done
check 'a hundred entries wait' same "$(switchcfg trap list | grep -c '^[0-9]')" 100
check 'the last one tells that traps were lost' same "$(switchcfg trap list | tail -1)" '14 (traps were lost)'
switchcfg trap drain >/tmp/drained
check 'drained' same "$(switchcfg trap list)" ''
if [ -n "$receiver" ]; then
    kill "$receiver"
    wait "$receiver" 2>/dev/null || true
fi
chapter_done
