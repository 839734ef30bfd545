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
# Names of the database that the command line names, blanks and all.
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cat >"$folder/site.toml" <<'END'
[[port]]
name = "COM 1"
[port.sms1]
dial = "ATDT1"
[[pager]]
description = "duty phone"
type = "sms1"
number = "1"
[[hours]]
name = "office"
all = true
[[route]]
pagers = ["duty phone"]
END
site=$folder/site.db
"$program" --database "$site" init >/dev/null
"$program" --database "$site" import "$folder/site.toml" >/dev/null
open=$("$program" --database "$site" alarm raise x 2>/dev/null)
over=$("$program" --database "$site" alarm raise y 2>/dev/null)
"$program" --database "$site" alarm ack "$over" >/dev/null
for command in test explain "trace --pager"; do
    offers "duty phone" --database "$site" $command ""
    offers "duty phone" --database = "$site" $command '"du'
    [ -z "$(offered --database "$site" $command x)" ] || fail "a pager is offered for $command x"
done
for command in in-hours "hours show" "hours edit"; do
    offers office --database "$site" $command of
done
offers "COM 1" --database "$site" explain duty --line ""
offers "$open" --database "$site" alarm ack ""
offers "$open" --database "$site" alarm withdraw ""
[[ $(offered --database "$site" alarm ack "") != *"$over"* ]] || fail "an alarm that is over is offered"
offers "COM 1" --database "$site" line pause ""
offers "$open" --database "$site" page cancel ""
offers "duty phone" --database "$site" page cancel "$open" du
offers "COM 1" --database "$site" page move "$open" "duty phone" --line ""
offers "$over" --database "$site" log ""
offers major --database "$site" alarm raise --severity ma
offers critical routes --severity ""
offers "duty phone" --database "$site" test --json ""
[ -z "$(offered --database "$folder/none.db" test "")" ] || fail "a pager of no database is offered"
[ ! -e "$folder/none.db" ] || fail "completion has made a database"

[ -z "$(offered nonsense --bogus)" ] || fail "something is offered for --bogus"
exit $failed
