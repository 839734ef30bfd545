#!/usr/bin/env bash
# The manual names every command, option, variable and exit status that the programs' help names,
# and no others; that of the library its functions.
# Usage: man_names.sh BIN-FOLDER MAN-FOLDER EXPORTED-NAMES
set -euo pipefail
bin=$1 man=$2 exported=$3

# "status --json" for every option of a program or command in its help.
options() {
    "$@" --help | sed -n '/^Options:/,/^$/s/^  \(-[^ ]*\).*/\1/p' | tr ',' '\n' | grep '^--' |
        sed "s/^/${*:2} /; s/^ *//"
}

# The commands in the help of a program or command.
commands() { "$@" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z][^ ]*\).*/\1/p'; }

# Every command, below one that has others, too; then its options. That of --help stands once.
all() {
    local command
    options "$@" | if [ $# = 1 ]; then cat; else grep -v ' --help$' || true; fi
    for command in $(commands "$@"); do
        printf '%s\n' "${*:2}${2:+ }$command"
        all "$@" "$command"
    done
    "$@" --help | grep -oE '\(Env:[A-Z_]+' | sed 's/(Env:/variable /' || true
}

statuses() { "$@" --help | sed -n '/^Exit codes:/,/^$/s/^  \([0-9]\) .*/status \1/p'; }

# The same of a manual: a command is an .Ss, an option an .It of it.
named() {
    awk '
        $1 == ".Ss" {
            command = ""
            for (i = 2; i <= NF && $i ~ /^[a-z][a-z-]*$/; i++) command = command (i > 2 ? " " : "") $i
            if (command != "") print command
        }
        $1 == ".Sh" { command = "" }
        $1 == ".It" && $2 == "Fl" {
            for (i = 3; i <= NF; i++)
                if ($i ~ /^-[a-z]/) print (command == "" ? "" : command " ") "-" $i
        }
        $1 == ".It" && $2 ~ /^[0-9]$/ { print "status " $2 }
        $1 == ".It" && $2 == "Ev" && $3 ~ /^PAGERFWD/ { print "variable " $3 }' "$1" | sort -u
}

same() {
    diff -u --label "help of $1" <(sort -u) --label "$1's manual" <(named "$man/$1.1")
}

differ=0
{
    all "$bin/pagerfwd"
    statuses "$bin/pagerfwd"
} | grep -vxE 'alarm|hours|line|node|page|token' | same pagerfwd || differ=1  # these alone do nothing
options "$bin/pagerfwd" web | sed 's/^web //' | grep -vx -- --help | same pagerfwd-web || differ=1
all "$bin/pagersim" | same pagersim || differ=1
diff -u --label "exported" <(sort "$exported") --label "the library's manual" <(
    sed -n '/^\.Sh SYNOPSIS/,/^\.Sh DESCRIPTION/s/^\.F[no] \([A-Za-z]*\).*/\1/p' "$man/libPagerFwd.3" |
        sort
) || differ=1
[ $differ = 0 ]
