# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# The voice of the demo, for its chapters: say what happens, do it, check it.

if [ -t 1 ] && [ -z "${NO_COLOR:-}" ]; then
    bold=$'\e[1m' green=$'\e[32m' red=$'\e[31m' dim=$'\e[2m' plain=$'\e[0m'
else
    bold='' green='' red='' dim='' plain=''
fi
checks_passed=0

chapter() { printf '\n%s== %s ==%s\n' "$bold" "$*" "$plain"; }
say() { printf '%s\n' "$*"; }

# show COMMAND...: prints the command as a person would type it, then runs it.
show() {
    printf '%s$ %s%s\n' "$dim" "$*" "$plain"
    "$@"
}

# check WHAT COMMAND...: the demo goes on only when the command succeeds.
check() {
    local what=$1
    shift
    if "$@"; then
        checks_passed=$((checks_passed + 1))
        printf '%s   ok%s  %s\n' "$green" "$plain" "$what"
    else
        printf '%s FAIL%s  %s\n       (%s)\n' "$red" "$plain" "$what" "$*"
        exit 1
    fi
}

same() { [ "$1" = "$2" ] || { printf "       got '%s', wanted '%s'\n" "$1" "$2"; return 1; }; }
contains() { [[ $1 == *"$2"* ]] || { printf "       '%s' not found in:\n%s\n" "$2" "$1"; return 1; }; }

# wait_for SECONDS COMMAND...: until the command succeeds.
wait_for() {
    local left=$(($1 * 20))
    shift
    until "$@" 2>/dev/null; do
        left=$((left - 1))
        [ $left -gt 0 ] || return 1
        sleep 0.05
    done
}

# Each chapter ends with this; the count goes to the summary.
chapter_done() { printf '%d\n' "$checks_passed" >>"$DEMO_COUNTS"; }
