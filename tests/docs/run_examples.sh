#!/usr/bin/env bash
# Does what a document says, as a new user would, and compares what is shown.
# Usage: run_examples.sh BIN-FOLDER LIB-FOLDER SOURCE-FOLDER DOCUMENT [COMPILER-FLAGS...]
#
# In the document:
#   ```console blocks    lines that begin with "$ " are run, what follows is their output. A line
#                        "..." stands for any lines, "..." within a line for any text. Every command
#                        must end with status 0; one that shouldn't says so: cmd; echo "status $?"
#   <!-- $ command -->   is run too, unseen by the reader
#   ```toml and ```c blocks whose first line is a comment with a file's name alone are written to
#                        that file
# All blocks of a document share a new folder, in which examples, include, scripts and build/release
# lie as in a checkout. The program runs on simulated lines, those of exchange.toml; its clock begins on a Monday
# at ten and goes on from one command to the next.
set -uo pipefail
shopt -s extglob
bin=$1 lib=$2 source=$3 document=$4
shift 4
compiler_flags=("$@")

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder" || exit 1
ln -s "$source/examples" "$source/include" "$source/scripts" .
mkdir -p build/release
ln -s "$bin" build/release/bin
ln -s "$lib" build/release/lib
cp "$source/examples/exchange.toml" .

export PATH=$bin:$PATH PAGERFWD_LOCKS=$folder PAGERFWD_BIN=$bin TZ=UTC
unset PAGERFWD_DATABASE NX_PAGEPROT JOURNAL_STREAM NOTIFY_SOCKET

pagerfwd() {
    pagersim --quiet --clock clock --start "2001-01-08 10:00:00" -- pagerfwd "$@"
}
# As in the document, but for this build's own flags.
cc() {
    local arguments=() argument
    for argument in "$@"; do
        [ "$argument" = -m32 ] || arguments+=("$argument")
    done
    command cc -Wall -Wextra -Werror "${compiler_flags[@]}" "${arguments[@]}"
}

failures=0
number=0          # of the line of the document
command=          # that runs next
command_line=0    # where it stands
expected=()

fail() {
    printf '%s:%d: %s\n' "$document" "$1" "$2"
    failures=$((failures + 1))
}

# The pattern, of bash, that the lines of an output must match.
pattern_of() {
    local line pattern= newline=$'\n'
    for line in "$@"; do
        if [ "$line" = ... ]; then
            pattern+="?(*$newline)"
            continue
        fi
        line=$(sed 's/[][*?+@!()|\\]/\\&/g' <<<"$line")
        pattern+=${line//.../"*([!$newline])"}$newline
    done
    printf '%s.' "$pattern"
}

run() {
    eval "$1" >"$folder/.out" 2>&1 </dev/null
    local status=$?
    [ $status = 0 ] || {
        fail "$2" "status $status: $1"
        cat "$folder/.out"
    }
}

# Runs the command that was read, and compares.
finish() {
    [ -n "$command" ] || return 0
    run "$command" "$command_line"
    local actual pattern
    actual=$(sed 's/[[:space:]]*$//; $a\' "$folder/.out" && printf .)
    pattern=$(pattern_of "${expected[@]}")
    # shellcheck disable=SC2053
    if [[ $actual != ${pattern%.}. ]]; then
        fail "$command_line" "what is shown is not what comes out of: $command"
        diff -u --label shown --label "came out" <(printf '%s\n' "${expected[@]}") "$folder/.out"
    fi
    command=
    expected=()
}

block=            # the language of the block that is read; empty: outside
file=
while IFS= read -r line; do
    number=$((number + 1))
    case $block in
        "")
            case $line in
                '```'*) block=${line#'```'} block=${block:-text} file= ;;
                '<!-- $ '*' -->')
                    hidden=${line#'<!-- $ '}
                    run "${hidden% -->}" $number
                    ;;
            esac
            continue
            ;;
        sh | bash | shell) fail $number "a block of commands that nobody runs" ;;
    esac
    if [ "$line" = '```' ]; then
        finish
        block=
    elif [ "$block" = console ]; then
        case $line in
            '$ '*)
                finish
                command=${line#'$ '} command_line=$number
                ;;
            *) expected+=("$line") ;;
        esac
    elif [[ $line == '$ '* ]]; then
        fail $number "a command in a block that isn't run"
    elif [[ -z $file && $line =~ ^(#|/\*)\ ([a-z0-9_/.-]+\.(toml|c|h))( \*/)?$ ]]; then
        file=${BASH_REMATCH[2]}
        case $file in */*) file= ;; *) : >"$file" ;; esac
    elif [ -n "$file" ]; then
        printf '%s\n' "$line" >>"$file"
    fi
done <"$document"

[ $failures = 0 ]
