# Shell functions that prepare a run of the tool; they stand before each case's own setup.
# shellcheck shell=sh disable=SC2034
TRACE=
hangs='echo asked; trap "" ABRT; while :; do :; done'

# inject CALL FAULT [OPTION]: strace makes some of the tool's system calls fail, or kills it there.
inject() {
    export ASAN_OPTIONS=detect_leaks=0:verify_asan_link_order=0
    TRACE="strace $3 -qq -o trace -e trace=$1 -e inject=$1:$2"
}

# clock SETTING: a clock that runs fast, or one that stands still; to be set last.
clock() {
    export ASAN_OPTIONS=verify_asan_link_order=0 FAKETIME="$1" LD_PRELOAD="$FAKETIME_LIBRARY"
}

# only PROGRAM...: leaves nothing else on the search path.
only() {
    mkdir bin
    for program; do ln -s "$(command -v "$program")" bin; done
    PATH=$PWD/bin
}

# script NAME COMMANDS: a program on the search path that "only" has left.
script() {
    printf '#!/bin/sh\n%s\n' "$2" >"bin/$1"
    /bin/chmod +x "bin/$1"
}
