# Shell commands before the setup of a case, which can use $CONFIG and $OTHER_DISK, a directory on
# another disk.
# shellcheck shell=sh disable=SC2034,SC2154 # variables for the case, and from the test program
export PATH="$source/tools/stand-ins:$PATH" HOME="$PWD/home"
export TMPDIR="$PWD/tmp" SYSTEMCTL_STATE="$PWD/state"
export LC_ALL=C # as where a service manager starts the tool
unset XDG_DATA_HOME
CONFIG=$PWD/root$HOME/.local/share/.ostrelsmart
LAUNCHER=

# through PROGRAM ARGUMENT...: this program starts the tool.
through() {
    export ASAN_OPTIONS=detect_leaks=0:verify_asan_link_order=0
    LAUNCHER=$(printf '%s\n' "$@")
}

# inject CALL FAULT OPTION...: strace makes system calls of the tool fail, or kills it there.
inject() {
    call=$1
    fault=$2
    shift 2
    through strace -qq -o trace -e "trace=$call" -e "inject=$call:$fault" "$@"
}

# clock SETTING: a clock that runs fast or starts at a time; set last.
clock() {
    export ASAN_OPTIONS=verify_asan_link_order=0 FAKETIME="$1" LD_PRELOAD="$faketime"
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
