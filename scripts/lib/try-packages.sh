# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# Runs inside a bare Debian (scripts/packages): installs the packages in /packages, tries what they bring, removes them.
set -euo pipefail
install() { DEBIAN_FRONTEND=noninteractive apt-get -qq -o Dpkg::Use-Pty=0 install -y --no-install-recommends "$@" >/tmp/apt.log 2>&1 || { cat /tmp/apt.log; exit 1; }; }
installed() { dpkg-query -W -f '${Package}\n' | sort; }
ours=(libswitchcfg0 libswitchcfg-funclist0 libswitchcfg-dev switchcfg-tools switchlab)
everything() { find / -xdev \( -path /proc -o -path /sys -o -path /dev -o -path /tmp -o -path /var/lib/dpkg -o -path /var/lib/apt \
    -o -path /var/log -o -path /var/cache -o -path /packages -o -path /sources \) -prune -o -print | sort; }

apt-get -qq update
before=$(installed)
install /packages/libswitchcfg0_*.deb
printf 'libswitchcfg0 brings along: %s\n' "$(comm -13 <(printf '%s\n' "$before") <(installed) | grep -vx libswitchcfg0 | tr '\n' ' ')"
apt-get -qq -y purge libswitchcfg0 >/dev/null

# A developer's machine, and what stays on it: the compilers.
install gcc g++ cmake make pkg-config iproute2 snmptrapd
everything >/tmp/files-before
packages_before=$(installed)
install /packages/*.deb
printf 'installed: %s\n' "${ours[*]}"
ldconfig -p | grep -c libswitchcfg | sed 's/$/ libraries known to the loader/'

switchcfg --version
[ -s /usr/share/man/man1/switchcfg.1.gz ] && [ -s /usr/share/bash-completion/completions/switchcfg ]
/sources/scripts/check-tutorial --installed
cp -r /usr/share/doc/libswitchcfg-dev/examples /tmp/examples
cmake -S /tmp/examples -B /tmp/examples/build >/dev/null
cmake --build /tmp/examples/build | tail -n 1
switchlab run --flash -- switchcfg init
switchlab up --units 2 -d >/tmp/up.log 2>&1 || { cat /tmp/up.log; exit 1; }
switchlab status
switchlab down

DEBIAN_FRONTEND=noninteractive apt-get -qq -y purge "${ours[@]}" >/dev/null
DEBIAN_FRONTEND=noninteractive apt-get -qq -y autoremove --purge >/dev/null
[ "$(installed)" = "$packages_before" ] || { diff <(printf '%s\n' "$packages_before") <(installed); exit 1; }
everything >/tmp/files-after
# What other packages' scripts leave is theirs.
if left=$(comm -13 /tmp/files-before /tmp/files-after | grep -i switch); then
    printf 'left behind: %s\n' "$left"
    exit 1
fi
comm -13 /tmp/files-before /tmp/files-after | sed 's/^/left by others: /'
printf 'removed, and nothing is left\n'
