#!/usr/bin/env bash
# Holds the lists that scripts/mutate goes by to the sources. Each file of the host and the simulation
# fits a line, each line fits a file, and each program that it names is one. What is planted by name has
# its place, and its test.
# Usage: check_lists.sh SOURCE-FOLDER
set -euo pipefail
shopt -s extglob globstar
cd "$1"
failed=0

fail() {
    echo "tests/mutation/$*"
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
    find_line "$file" || [[ $file != @(host|sim)/* ]] || fail "files.txt: no line for $file"
done
for line in "${lines[@]}"; do
    [ -n "${used[$line]:-}" ] || fail "files.txt: no file for: $line"
    for program in $(tr / ' ' <<<"${line#*: }"); do
        grep -qxF "$program" <<<"$known" || fail "files.txt: no program $program, in: $line"
    done
done

has_place() { ! sed "$2" "$1" | cmp -s - "$1"; }

# Whether a test of that name, which may have stars, stands in a source.
has_test() {
    local suite=${1%%.*} test=${1#*.}
    grep -rqE --include='*.cpp' "^TEST(_F|_P)?\\(${suite##*[*/]}, ${test%%\**}" tests
}

while IFS='|' read -r file program filter edit; do
    read -r file program filter <<<"$file $program $filter"
    has_place "$file" "$edit" || fail "planted.txt: no such place in $file:$edit"
    has_test "$filter" || fail "planted.txt: no test $filter"
done < <(grep -v '^#' tests/mutation/planted.txt)
exit $failed
