# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# What the project needs of Debian 12, and installing what is missing of it.

packages_build=(build-essential cmake ninja-build pkg-config zlib1g-dev libcli11-dev nlohmann-json3-dev libfuse3-dev
    libsnmp-dev libncurses-dev libssl-dev libzmq3-dev libprotobuf-dev protobuf-compiler libboost-dev)
packages_demo=(procps snmptrapd busybox-static tftpd-hpa iproute2 chrony tidy)
packages_test=(libgtest-dev libgmock-dev libbenchmark-dev iproute2 libubootenv-tool mtd-utils smitools snmp chrony
    tidy)
# scripts/bench; the peers are measured where they are installed.
packages_bench=(libbenchmark-dev python3)
packages_bench_peers=(redis-server libhiredis-dev libsqlite3-dev liblmdb-dev procps)
packages_lint=(clang-format clang-tidy cppcheck doxygen)
packages_fuzz=(clang)
packages_analysis=(gcovr valgrind)
# The target, on a workstation: scripts/target-deps, the tests under emulation, the comparison of interfaces.
packages_target=(g++-powerpc-linux-gnu qemu-user-static dpkg-dev debian-archive-keyring file libzmq3-dev protobuf-compiler
    libprotobuf-dev libboost-dev abigail-tools)
# A whole system of the target: scripts/target-system.
packages_target_system=(linux-source-6.1 qemu-system-ppc bison flex bc cpio xz-utils)

# What proves the Debian packages (scripts/packages --check).
packages_package_check=(lintian debootstrap)

# need_packages PACKAGE...: installs the missing ones as root, else prints the exact line that would and ends.
need_packages() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q '^install ok installed' || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    if [ "$(id -u)" -ne 0 ]; then
        printf 'Packages are missing. Install them with:\n\n    sudo apt-get update && sudo apt-get install -y %s\n\n' "${missing[*]}" >&2
        exit 1
    fi
    printf 'Installing %d Debian packages and what they need, which can take some minutes: %s\n' ${#missing[@]} "${missing[*]}"
    local log status=0 policy=/usr/sbin/policy-rc.d
    log=$(mktemp)
    # The programs are needed, not the services that some packages would start.
    if [ -e $policy ]; then
        policy=
    else
        printf '#!/bin/sh\nexit 101\n' >$policy
        chmod +x $policy
    fi
    { apt-get update && DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${missing[@]}"; } >"$log" 2>&1 ||
        status=1
    [ -z "$policy" ] || rm -f "$policy"
    [ $status -eq 0 ] || cat "$log" >&2
    rm -f "$log"
    return $status
}
