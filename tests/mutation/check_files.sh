#!/usr/bin/env bash
# Holds tests/mutation/files.txt to the sources: each file of the host and the simulation fits a line,
# each line fits a file, and each program that it names is one.
# Usage: check_files.sh SOURCE-FOLDER
set -euo pipefail
shopt -s extglob globstar
cd "$1"
failed=0

fail() {
    echo "tests/mutation/files.txt: $*"
    failed=1
}

mapfile -t lines < <(grep -v -e '^#' -e '^$' tests/mutation/files.txt)

# The first line that a file fits, as scripts/mutate goes by it.
declare -A used
find_line() {
    local line
    for line in "${lines[@]}"; do
        # shellcheck disable=SC2053 # a pattern
        [[ $1 != ${line%%[ :]*} ]] || { used[$line]=yes && return; }
    done
    return 1
}

# The programs that are made, what is loaded by some, and the word that none is to notice.
known=$(
    echo none libpagersim-preload.so | tr ' ' '\n'
    sed -nE 's/^ *(pagerfwd_test|add_executable)\(([a-z0-9_]+)( .*)?$/\2/p' \
        {tests,host,sim}/**/CMakeLists.txt
)

for file in {host,sim,modem,engine,tables,linux}/**/*.cpp; do
    find_line "$file" || [[ $file != @(host|sim)/* ]] || fail "no line for $file"
done
for line in "${lines[@]}"; do
    [ -n "${used[$line]:-}" ] || fail "no file for: $line"
    for program in $(tr / ' ' <<<"${line#*: }"); do
        grep -qxF "$program" <<<"$known" || fail "no program $program, in: $line"
    done
done
exit $failed
