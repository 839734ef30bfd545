#!/usr/bin/env bash
# Checks the model of leases and takeovers: as it is nothing can go wrong in it, all pages can leave,
# and each of the mistakes that can be planted in it is found.
# Usage: check.sh FOLDER-OF-THE-MODEL
set -euo pipefail
model=$(realpath "$1")/lease.pml
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

# Prints how many errors there are; fails where the search wasn't exhaustive.
errors_with() {
    spin -a "$@" "$model" >generated 2>&1 || { cat generated >&2; exit 1; }
    cc -O2 -w -DSAFETY -DCOLLAPSE -DVECTORSZ=1024 -DMEMLIM=6000 -o pan pan.c
    ./pan -m2000000 -w27 >result 2>&1 || true
    if grep -qE 'max search depth too small|out of memory|Search not completed' result &&
        ! grep -q 'errors: 1' result; then
        cat result >&2
        exit 1
    fi
    sed -n 's/.*errors: \([0-9]*\).*/\1/p' result
}

expect() {
    local wanted=$1 errors
    shift
    errors=$(errors_with "$@")
    if [ "$errors" != "$wanted" ]; then
        echo "with ${*:-nothing planted}: $errors error(s), expected $wanted" >&2
        exit 1
    fi
    echo "with ${*:-nothing planted}: $errors error(s), $(grep -oE '[0-9.e+]+ states, stored' result)"
}

expect 0
expect 0 -DNODES=3
expect 1 -DSEE_THE_END # or no page could leave at all
for mistake in WRITE_WITHOUT_TERM DEADLINE_BEHIND_EXPIRY CLAIM_IN_TWO_STATEMENTS; do
    expect 1 "-D$mistake"
done
