# SPDX-License-Identifier: Apache-2.0
# lab: --flash
. "$DEMO_LIB"

# The restart must not become one of this machine: these only take note.
mkdir -p /tmp/programs
printf '#!/bin/sh\necho "${0##*/} $*" >>/tmp/notes\n' | tee /tmp/programs/umount >/tmp/programs/shutdown
chmod +x /tmp/programs/*
PATH=/tmp/programs:$PATH
if [ -e /sbin/shutdown ]; then
    mount --bind /tmp/programs/shutdown "$(readlink -f /sbin/shutdown)"
else
    # A small machine has none: it gets its place in this lab only.
    mkdir /tmp/sbin /tmp/sbin/upper /tmp/sbin/work
    mount -t overlay overlay -o "lowerdir=/usr/sbin,upperdir=/tmp/sbin/upper,workdir=/tmp/sbin/work" /usr/sbin
    cp /tmp/programs/shutdown /usr/sbin/shutdown
fi
# shellcheck disable=SC2329
restarted() { grep -qs '^shutdown -r now$' /tmp/notes; }

fails() { ! "$@"; }

# A start: memory is new, the variables are loaded from flash, and the switch decides between flash and backup.
start_switch() {
    rm -f /var/status /tmp/notes
    show switchcfg env start
}

chapter 'Boot variables'
say 'The factory programs an environment into flash, made on a workstation.'
printf 'bootcmd=bootm 0xe8000000\nbootdelay=3\nserial=4711\n' >/tmp/factory.txt
show switchcfg env --image /tmp/factory.image import /tmp/factory.txt
show dd if=/tmp/factory.image of=/dev/flash_env status=none
say 'At its first start the switch marks the environment as its own (HV) and makes a backup.'
start_switch
show switchcfg env list
check 'flash and backup are whole and in step' switchcfg env check

say 'A change is seen by every process at once; flash gets it with the save.'
show switchcfg env set bootdelay 7
check 'nothing is written yet' contains "$(switchcfg env check)" 'Not saved yet'
show switchcfg env save
show switchcfg env check
check 'now it is, and the backup has it, too' contains "$(switchcfg env check --json)" '"unsaved": []'

chapter 'The power goes in the middle of a save'
before=$(switchcfg env export | sort)
show switchcfg env set bootdelay 0
say 'A save erases 4 blocks and programs 257 pages. This one ends when the CRC is programmed and no variable yet.'
show switchlab flash cut-after 5
check 'the save fails' fails switchcfg env save
show switchlab flash power-on
say 'What flash holds now is neither the old environment nor the new one; the backup is whole.'
show switchcfg env check || true
check 'flash holds nothing that can be loaded' contains "$(switchcfg env check || true)" 'no end: nothing can be loaded'
say 'The switch starts: it finds no environment of its own, writes the backup to flash and restarts.'
start_switch
check 'it asked for a restart' restarted
start_switch
check 'the second start stays up' fails restarted
show switchcfg env list
check 'the environment is the one before the save, whole' same "$(switchcfg env export | sort)" "$before"
check 'in flash and in the backup' switchcfg env check

chapter 'The power goes when the variables are written, and the padding behind them is not'
show switchcfg env set bootdelay 0
show switchlab flash cut-after 100
check 'the save fails' fails switchcfg env save
show switchlab flash power-on
start_switch
check 'the new variables are there' same "$(switchcfg env get bootdelay)" 0
say 'But the boot loader, which checks the CRC, would not take them:'
show switchcfg env check || true
say 'A further save mends flash and backup.'
show switchcfg env save
check 'both are whole again' switchcfg env check
chapter_done
