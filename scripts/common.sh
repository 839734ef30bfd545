# What the scripts share: sourced, not run.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
jobs=$(nproc)

say() { printf '%s\n' "$*"; }

# Builds a preset: quiet but for one line that moves, the log on failure. With a further option for
# cmake, and these targets instead of all, if they are given.
build() {
    local preset=$1 log="$root/build/$1.log" process
    mkdir -p "$root/build"
    (cd "$root" && cmake --preset "$preset" ${2:+"$2"} &&
        cmake --build --preset "$preset" -j "$jobs" ${3:+--target "${@:3}"}) \
        >"$log" 2>&1 &
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
