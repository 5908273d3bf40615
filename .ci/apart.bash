# For bash scripts that run a function of theirs apart from this machine, as root: with name spaces
# of its own for mounts and processes, and with a minimal Debian that stays in the user's cache.
# Callers set -a: run_apart starts a new bash, which must see the functions and variables.
# shellcheck shell=bash disable=SC1091,SC2016,SC2046 # os-release; apt's format; a number

skip() {
    printf 'skipped: %s\n0 passed, 0 failed, 1 skipped\n' "$1"
    exit
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

# The tree gets its name when it is whole. Two runs may both make one; the first stays.
make_tree() {
    [ -d "$tree" ] && return
    release=$(. /etc/os-release && echo "$VERSION_CODENAME")
    site=$(apt-get indextargets --format '$(SITE)' "Codename: $release" | head -n 1)
    debootstrap --variant=minbase --include="$packages" "$suite" "$scratch/tree" "$site"
    mv -T "$scratch/tree" "$tree" || [ -d "$tree" ]
}

# prepare SUITE PACKAGES: sets $tree, a Debian with these packages (separated by commas), and
# $scratch, a directory beside it for as long as the script runs.
prepare() {
    suite=$1 packages=$2 apart=
    [ "$(id -u)" = 0 ] || skip 'only root can make name spaces'
    "${BASH_SOURCE[0]%/*}/../tools/install-packages" apart >/dev/null 2>&1 ||
        skip 'the packages cannot be had'
    tree=${XDG_CACHE_HOME:-$HOME/.cache}/ostrel-updater/$suite+${packages//,/+}
    umask 022
    mkdir -p "${tree%/*}" || skip 'the cache cannot be written'
    scratch=$(mktemp -d "$tree.XXXXXX")
    trap clean_up EXIT
    run_apart make_tree &>"$scratch/log" || skip "$(tail -n 1 "$scratch/log")"
}
