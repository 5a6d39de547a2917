# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# What the project needs of Debian 12, and installing what is missing of it.

packages_build=(build-essential cmake ninja-build pkg-config zlib1g-dev libcli11-dev nlohmann-json3-dev libfuse3-dev)
packages_test=(libgtest-dev libgmock-dev libbenchmark-dev iproute2 python3)
packages_lint=(clang-format clang-tidy)

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
    printf 'Installing %s\n' "${missing[*]}"
    local log
    log=$(mktemp)
    if ! { apt-get update && DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
        cat "$log" >&2
        rm -f "$log"
        exit 1
    fi
    rm -f "$log"
}
