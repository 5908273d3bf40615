# Shell functions that prepare a run of the tool; they stand before each case's own setup.
# shellcheck shell=sh disable=SC2034
TRACE=
hangs='#!/bin/sh
echo asked; trap "" TERM; while :; do :; done'

# inject CALL FAULT: makes one of the tool's own system calls fail, or kills the tool at it.
inject() {
    export ASAN_OPTIONS=detect_leaks=0
    TRACE="strace -qq -o trace -e trace=$1 -e inject=$1:$2"
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
