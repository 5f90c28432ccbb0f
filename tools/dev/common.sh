# shellcheck shell=bash
# What the other modules share: messages, the cache folder, locks, stamps, steps that keep a log,
# and children that end when ./dev is told to end. Sourced first.

: "${HOME:=$(getent passwd "$EUID" | cut -d: -f6)}"
CACHE=${XDG_CACHE_HOME:-$HOME/.cache}/kelvrostorage
[[ $CACHE == /* ]] || CACHE=$PWD/$CACHE
LOGS=$CACHE/logs
EXIT_HOOKS=()
CHILD=        # process id of the child waited for
CHILD_GROUP=  # set if that child leads a process group of its own

# A closed standard input would make the first redirection from it fail.
{ : <&0; } 2>/dev/null || exec </dev/null

say() {
    printf 'dev: %s\n' "$*" >&2
}

die() {
    say "$*"
    exit 1
}

usage_error() {
    say "$*; ./dev --help shows the usage"
    exit 2
}

on_exit() {
    local status=$? i
    trap '' INT TERM HUP
    trap - EXIT
    for ((i = ${#EXIT_HOOKS[@]} - 1; i >= 0; i--)); do
        "${EXIT_HOOKS[i]}" || true
    done
    exit "$status"
}

on_signal() {
    trap '' INT TERM HUP
    stop_child "$1"
    exit "$2"
}

trap on_exit EXIT
trap 'on_signal INT 130' INT
trap 'on_signal TERM 143' TERM
trap 'on_signal HUP 129' HUP

child_is_there() {
    kill -0 -- "${CHILD_GROUP:+-}$CHILD" 2>/dev/null
}

stop_child() {
    [[ -n $CHILD ]] || return 0
    # A child that shares our process group has got the terminal's Ctrl-C by itself.
    if [[ -n $CHILD_GROUP || $1 != INT ]]; then
        kill -s "$1" -- "${CHILD_GROUP:+-}$CHILD" 2>/dev/null || true
    fi
    local deadline=$((SECONDS + ${CHILD_PATIENCE:-10}))
    while child_is_there; do
        if ((SECONDS >= deadline)); then
            kill -s KILL -- "${CHILD_GROUP:+-}$CHILD" 2>/dev/null || true
            break
        fi
        sleep 0.05
    done
}

# run_child CMD…: runs CMD so that signals sent to ./dev end it, and hands on its exit status.
# (Bash would put off its traps until a foreground command ends, hence `wait`.)
run_child() {
    local status=0
    if [[ -t 0 ]]; then
        # Only the terminal's own process group may read from it.
        env --default-signal=INT,QUIT -- "$@" <&0 &
        CHILD=$! CHILD_GROUP=
    else
        start_group "$@" <&0
    fi
    wait "$CHILD" || status=$?
    CHILD=
    return "$status"
}

# start_group CMD…: starts a command or a function in the background as a process group.
start_group() {
    set -m
    "$@" &
    CHILD=$! CHILD_GROUP=yes
    set +m
}

# step LOG TITLE CMD…: runs CMD, a command or a function, with its output kept in a log; says now
# and then how far it is, and ends ./dev with the end of the log if it fails.
step() {
    local log=$LOGS/$1.log title=$2 start=$SECONDS next=$((SECONDS + 10)) status=0
    shift 2
    mkdir -p "$LOGS"
    say "$title …"
    start_group "$@" </dev/null >"$log" 2>&1
    while kill -0 "$CHILD" 2>/dev/null; do
        if ((SECONDS >= next)); then
            say "  $((SECONDS - start)) s: $(tail -n 1 "$log" | tr '\r' '\n' | grep . | tail -n 1 | cut -c 1-100)"
            next=$((SECONDS + 10))
        fi
        sleep 0.1
    done
    wait "$CHILD" || status=$?
    CHILD=
    if ((status == 0)); then
        say "$title: done in $((SECONDS - start)) s"
    else
        show_failure "$title failed (exit status $status)" "$log"
    fi
}

show_failure() {
    say "$1; the end of its log:"
    # Of a build, all that failed.
    { sed -n '/^FAILED: /,$p' "$2" | head -n 80 | grep . || tail -n 25 "$2"; } | sed 's/^/    /' >&2
    die "the whole log is $2"
}

project_version() {
    sed -n 's/^ *VERSION \([0-9.]*\)$/\1/p' "$PROJECT/CMakeLists.txt"
}

# hash_of FILE-OR-WORD…: one hash for what a step depends on.
hash_of() {
    local item
    for item in "$@"; do
        if [[ -f $item ]]; then cat -- "$item"; else printf '%s\n' "$item"; fi
    done | sha256sum | cut -d ' ' -f 1
}

# stamp_is FILE HASH
stamp_is() {
    [[ -f $1 && $(<"$1") == "$2" ]]
}

# lock FILE shared|exclusive: takes the lock, or says what it waits for. It lasts until `unlock` or
# the end of the process and of what the process has become by `exec`.
declare -A LOCK_FDS=()
lock() {
    if ! try_lock "$@"; then
        say "another ./dev is at work in ${1%.lock} and holds its lock; waiting for it to finish …"
        run_child flock "--$2" "${LOCK_FDS[$1]}"
    fi
}

try_lock() {
    local fd=${LOCK_FDS[$1]-}
    if [[ -z $fd ]]; then
        mkdir -p "$(dirname "$1")"
        exec {fd}>>"$1"
        LOCK_FDS[$1]=$fd
    fi
    flock --nonblock "--$2" "$fd"
}

unlock() {
    local fd=${LOCK_FDS[$1]}
    exec {fd}>&-
    unset "LOCK_FDS[$1]"
}

# remove_folder FOLDER: also refuses to reach into anything mounted below it.
remove_folder() {
    [[ -e $1 ]] || return 0
    ! grep -qF " $1/" /proc/self/mountinfo ||
        die "$1 is left alone, for something is mounted below it: see /proc/self/mountinfo"
    rm -rf --one-file-system -- "$1"
}
