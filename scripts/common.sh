# What the scripts share: sourced, not run.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
jobs=$(nproc)

say() { printf '%s\n' "$*"; }

# Builds a preset: quiet but for one line that moves, the log on failure. With a further option for
# cmake, and these targets instead of all, if they are given.
build() {
    local preset=$1 log="$root/build/$1.log" process
    mkdir -p "$root/build"
    # Steps side by side build the same: one after the other.
    (flock 9 && exec >"$log" 2>&1 && cd "$root" && cmake --preset "$preset" ${2:+"$2"} &&
        cmake --build --preset "$preset" -j "$jobs" ${3:+--target "${@:3}"}) 9>"$log.lock" &
    process=$!
    while kill -0 "$process" 2>/dev/null; do
        show_progress "$preset" "$log"
        sleep 1
    done
    if ! wait "$process"; then
        grep -m3 -nE "error|FAILED" "$log" | cut -c1-300 >&2 || true
        tail -n 30 "$log" | cut -c1-300 >&2
        say "building $preset failed; the whole log: $log" >&2
        return 1
    fi
    end_of_progress
    say "built $preset"
}

# Runs the tests of a preset that is built; options: of ctest. They wait for disks and for processes of
# theirs more than they work: more of them at once than there are cores.
run_tests() {
    (
        cd "$root"
        leave_in_memory
        ctest --preset "$1" -j "$((2 * jobs))" --progress "${@:2}"
    )
}

# From here on, what tests leave: none needs that a disk keeps anything.
leave_in_memory() {
    if [ -z "${TMPDIR:-}" ] && has_room /dev/shm; then
        export TMPDIR=/dev/shm
    fi
}

# For all that tests leave for a while; they run programs there, too.
has_room() {
    local kib
    kib=$(df --output=avail -k "$1" 2>/dev/null | tail -n 1) || return 1
    ((kib >= 2 * 1024 * 1024)) && [[ $(findmnt -no OPTIONS --target "$1") != *noexec* ]]
}

# "[12/230]" of the build tool.
show_progress() {
    local step
    step=$(grep -oE '^\[[0-9]+/[0-9]+\]' "$2" 2>/dev/null | tail -n 1) || true
    show "building $1 $step"
}

# A line that moves: on a terminal in place, elsewhere every half minute.
show() {
    if [ -t 1 ]; then
        printf '\r\033[K%s' "$1"
    elif ((SECONDS >= ${next_progress:-10})); then
        say "$1"
        next_progress=$((SECONDS + 30))
    fi
}

end_of_progress() { [ ! -t 1 ] || printf '\r\033[K'; }
