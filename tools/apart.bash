# For bash scripts that run a function of theirs apart from this machine, as root: with name spaces
# of its own for mounts and processes, and with a minimal Debian that stays in the user's cache.
# Callers set -a: run_apart starts a new bash, which must see the functions and variables.
# shellcheck shell=bash disable=SC1091,SC2016,SC2046,SC2086 # os-release; apt's format; lists

# Status 77: nothing was tried, because this machine lacks what it takes.
unavailable() {
    printf '%s: %s\n' "${0##*/}" "$1" >&2
    exit 77
}

# The end of the first process of its name spaces ends all that was started there.
clean_up() {
    if [ -n "$apart" ]; then
        kill -KILL $(cat "/proc/$apart/task/$apart/children") || kill -KILL "$apart" || true
    fi
    wait
    rm -rf "$scratch"
} 2>/dev/null

# Runs function $1. In a session of its own, so that a signal to this process group leaves the rest
# to clean_up.
run_apart() {
    local status=0
    setsid unshare --mount --pid --fork --kill-child --mount-proc bash -euc "$1" &
    apart=$!
    wait "$apart" || status=$?
    apart=
    return "$status"
}

# inside ROOT COMMAND...: as chroot, without what this machine's environment says of its files.
inside() {
    env -u TMPDIR HOME=/root LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive \
        PATH=/usr/sbin:/usr/bin:/sbin:/bin chroot "$@"
}

# The tree gets its name when it is whole. Two runs may both make one; the first stays.
make_tree() {
    [ -d "$tree" ] && return
    release=$(. /etc/os-release && echo "$VERSION_CODENAME")
    site=$(apt-get indextargets --format '$(SITE)' "Codename: $release" | head -n 1)
    new=$scratch/tree
    debootstrap --variant=minbase "$suite" "$new" "$site" || exit 77
    for architecture in $(printf '%s\n' $packages | sed -n 's/.*://p'); do
        inside "$new" dpkg --add-architecture "$architecture"
    done
    mount -t proc proc "$new/proc"
    inside "$new" apt-get -qq update
    inside "$new" apt-get -qq install --yes --no-install-recommends $packages
    inside "$new" apt-get clean
    umount "$new/proc"
    mv -T "$new" "$tree" || [ -d "$tree" ]
}

# prepare SUITE PACKAGE...: sets $tree, a Debian with these packages, of this machine's or, with
# NAME:ARCHITECTURE, of another architecture, and $scratch, a directory beside it for as long as
# the script runs.
prepare() {
    suite=$1 packages=${*:2} apart=
    [ "$(id -u)" = 0 ] || unavailable 'run it as root, who may make name spaces'
    tools/install-packages apart >/dev/null 2>&1 || unavailable 'debootstrap cannot be installed'
    tree=${XDG_CACHE_HOME:-$HOME/.cache}/ostrel-updater/$(echo "$@" | tr ' :' '+_')
    umask 022
    mkdir -p "${tree%/*}" || unavailable 'the cache cannot be written'
    scratch=$(mktemp -d "$tree.XXXXXX")
    trap clean_up EXIT
    run_apart make_tree &>"$scratch/log" && return
    [ $? -ne 77 ] || unavailable "$suite cannot be had: $(tail -n 1 "$scratch/log")"
    cat "$scratch/log" >&2
    exit 1
}

# Makes $tree the file system of $scratch/machine, in run_apart. What is changed there is in memory.
mount_machine() {
    machine=$scratch/machine
    mount -t tmpfs tmpfs "$scratch"
    mkdir "$scratch/upper" "$scratch/work" "$machine"
    mount -t overlay -o "lowerdir=$tree,upperdir=$scratch/upper,workdir=$scratch/work" \
        overlay "$machine"
    mount -t proc proc "$machine/proc"
    mount -t devpts -o newinstance,ptmxmode=666,gid=5 devpts "$machine/dev/pts"
    mount -t tmpfs -o mode=1777 tmpfs "$machine/dev/shm"
    # On an overlay, a file and its directory can have different device numbers, and the tests of
    # flushes compare them.
    mount -t tmpfs -o mode=1777 tmpfs "$machine/tmp"
    cp /etc/hosts /etc/resolv.conf "$machine/etc"
}
