#!/usr/bin/env bash
# The completion for bash offers every command and every option that the help names.
# Usage: completion_test.sh PROGRAM COMPLETION_FILE
set -euo pipefail
program=$1
. "$2"

failed=0
fail() {
    echo "completion: $*"
    failed=1
}

# What is offered behind these words, a line each.
offered() {
    COMP_WORDS=("$program" "$@")
    COMP_CWORD=$#
    _pagerfwd
    printf '%s\n' "${COMPREPLY[@]}"
}

offers() {
    local wanted=$1
    shift
    grep -qxF -- "$wanted" <<<"$(offered "$@")" || fail "'$*' is not completed by $wanted"
}

# Taken from the help in another way than the completion does.
names_in() { sed -n '/^Subcommands:/,/^$/p' | sed -nE 's/^  ([a-z-]+).*/\1/p'; }
options_in() { tr ' ,=' '\n' | grep -E '^--[a-z-]+$' | sort -u; }

checked=0
check_command() {
    local help option name
    help=$("$program" "$@" --help)
    # Only what the section of options says: examples name options of other commands too.
    while read -r option; do
        offers "$option" "$@" --
        checked=$((checked + 1))
    done < <(sed -n '/^Options:/,/^$/p' <<<"$help" | grep -E '^  -' | cut -c1-40 | options_in)
    while read -r name; do
        [ -n "$name" ] || continue
        offers "$name" "$@" ""
        checked=$((checked + 1))
        check_command "$@" "$name"
    done < <(names_in <<<"$help")
}

check_command
[ "$checked" -gt 40 ] || fail "only $checked names were looked at"

# Words that are no commands don't lead astray, and options come behind arguments too.
offers --brief --trace trace pageprot.txt --b
offers import --database site.db imp
offers latin1 trace --encoding ""
[ -z "$(offered nonsense --bogus)" ] || fail "something is offered for --bogus"
exit $failed
