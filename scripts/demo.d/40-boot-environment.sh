# SPDX-License-Identifier: Apache-2.0
# lab: --flash
. "$DEMO_LIB"

# A start: memory is new, the variables are loaded from flash, and the switch decides between flash and backup. Here
# "shutdown" and "umount" only take note.
start_switch() {
    rm -f /var/status /tmp/restarts
    switchcfg env start
}
restarts() { [ -e /tmp/restarts ] && grep -c '^shutdown -r now' /tmp/restarts || echo 0; }
keeps() { [ "$(switchcfg env export | sort | tr '\n' ' ')" = "$1" ]; }
