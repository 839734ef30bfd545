#!/usr/bin/env bash
# Holds the lists of the guides to the sources: nothing is missing, nothing is invented.
# Usage: check_lists.sh SOURCE-FOLDER failures|results|keys|words|code|links|licences
set -euo pipefail
export LC_ALL=C
cd "$1"

# The first cell of each row, without its backquotes, of the tables below a heading.
# Usage: first_cells FILE HEADING
first_cells() {
    awk -v heading="$2" '
        /^#/ { inside = ($0 == heading) }
        inside && /^\| `/ { sub(/^\| `/, ""); sub(/` \|.*/, ""); print }' "$1"
}

compare() { diff -u --label "in the sources" --label "in the guide" "$1" "$2"; }

# Texts of the trace that say why a page was not sent, and those of a port that can't be opened,
# which stand behind one that the viewer knows.
failures_in_sources() {
    sed -n 's/^ *{"\(.*\)", TraceKind::k\(Failed\|Cause\|ModemFailure\|OutsideHours\|GivenUp\|AskedUnknown\)\b.*/\1/p' \
        host/trace/trace_texts.cpp
    sed -n 's/^ *{-[0-9]*, "\(IE_.*\)", .*/\1/p' modem/port_open.cpp
    sed -n 's/.*"\(Modem FAILURE: [A-Z].*\)"}.*/\1/p' modem/wait_string.cpp
}
without_rest() { sed 's/[: ]*$//'; }

results_in_sources() {
    sed -n 's/^ *{\(-\{0,1\}[0-9]*\), ".*/\1/p' host/status/test_results.cpp
}

# "FUNCTION KEY DEFAULT" for every key that the reader of the site file asks for.
keys_in_sources() {
    sed -nE '
        /^[A-Za-z<>]+ Read[A-Za-z]+\(/ { s/^[A-Za-z<>]+ (Read[A-Za-z]+)\(.*/\1/; h; b }
        /^void ReadDocument\(/ { s/.*/ReadDocument/; h; b }
        /[a-z]+\.(Text|Texts|Number|Flag)\("/ {
            s/.*\.(Text|Texts|Number|Flag)\("([a-z_]+)"(, *([^)]*))?\).*/\2 \4/
            / (true|false)$/! s/ [a-zA-Z.]+$/ /
            G; s/^([^\n]*)\n(.*)$/\2 \1/; p
        }' host/site/site_file.cpp
}

# Where the keys of a function stand in the guide.
heading_of() {
    case $1 in
        ReadDocument) echo '## At the top' ;;
        ReadNotify) echo '## `[notify]`' ;;
        ReadHeartbeat) echo '## `[heartbeat]`' ;;
        ReadResolved) echo '## `[resolved]`' ;;
        ReadAlertmanager) echo '## `[alertmanager]`' ;;
        ReadUnknownOutcome) echo '## `[site]`' ;;
        ReadNode) echo '## `[[node]]`' ;;
        ReadPort) echo '## `[[port]]`' ;;
        ReadPagerService) echo '### `[port.pager]`' ;;
        ReadSmsService) echo '### `[port.sms1]` and `[port.sms2]`' ;;
        ReadLine) echo '### Line settings' ;;
        ReadPager) echo '## `[[pager]]`' ;;
        ReadTimeModel) echo '## `[[hours]]`' ;;
        ReadRoute) echo '## `[[route]]`' ;;
        *) echo "nowhere: $1" ;;
    esac
}

# "HEADING KEY DEFAULT" for a row "| `key` | type | default | ...".
keys_in_guide() {
    awk '
        /^#/ { heading = $0 }
        /^\| `[a-z_]+` \|/ {
            split($0, cell, / \| /); sub(/^\| /, "", cell[1])
            gsub(/`/, "", cell[1])
            default_value = ""
            if (cell[3] ~ /^`[^`]*`$/) default_value = substr(cell[3], 2, length(cell[3]) - 2)
            print heading " " cell[1] " " default_value
        }' docs/site-file.md | sort
}

# A default that is no literal stands in the guide in words, which nobody compares.
check_keys() {
    local function key value
    keys_in_sources | while read -r function key value; do
        printf '%s %s %s\n' "$(heading_of "$function")" "$key" "$value"
    done | sort >"$work/sources"
    keys_in_guide >"$work/guide"
    without_default() { sed -E 's/ (\S*)$//'; }
    compare <(without_default <"$work/sources") <(without_default <"$work/guide")
    compare <(grep -E ' ("[^ ]*"|true|false|[0-9]+)$' "$work/sources") \
        <(grep -E ' ("[^ ]*"|true|false|[0-9]+)$' "$work/guide")
}

# Every word of the site file's lists stands in its guide.
check_words() {
    local word missing=0
    while read -r word; do
        grep -qF "\`\"$word\"\`" docs/site-file.md || grep -qF "\`$word\`" docs/site-file.md || {
            echo "docs/site-file.md lacks the word $word"
            missing=1
        }
    done < <(sed -n '/kFlows/,/kSpeeds/p' host/site/words.h | grep -o '{"[^"]*", "' | cut -d'"' -f2
        sed -n '/kSpeeds/,/;/p' host/site/words.h | grep -oE '\b[0-9]+\b')
    return $missing
}

# Every block of C in the integrator's guide stands, line by line, in a file of the project.
check_code() {
    local block
    awk -v folder="$work" '
        /^```c$/ { block = folder "/block." ++count; next }
        /^```/ { block = "" }
        block { print > block }' docs/integrator-guide.md
    for block in "$work"/block.*; do
        stands_somewhere "$block" || {
            echo "this code of docs/integrator-guide.md stands in no file:"
            cat "$block"
            return 1
        }
    done
}

# Every link within the project leads somewhere: a file, and a heading of it.
check_links() {
    local document link target heading missing=0
    for document in ./*.md docs/*.md; do
        while IFS= read -r link; do
            target=${link%%#*} heading=${link#"$target"}
            target=$(dirname "$document")/${target:-$(basename "$document")}
            if [ ! -e "$target" ]; then
                echo "$document: there is no $target"
                missing=1
            elif [ -n "$heading" ] && ! headings_of "$target" | grep -qFx -- "${heading#\#}"; then
                echo "$document: $target has no heading $heading"
                missing=1
            fi
        done < <(tr '\n' ' ' <"$document" | grep -oE '\]\([^)]*\)' | sed 's/^](//; s/)$//' |
            grep -v '^[a-z]*:')
    done
    return $missing
}

# As the usual viewers name them: small letters, blanks as hyphens, no signs.
headings_of() {
    sed -n 's/^#\{1,\} //p' "$1" | tr '[:upper:]' '[:lower:]' | sed 's/[^a-z0-9 _-]//g; s/ /-/g'
}

stands_somewhere() {
    local file text
    text=$(cat "$1")
    for file in examples/host/*.[ch] include/pagerfwd/*.h; do
        [[ $(cat "$file") != *"$text"* ]] || return 0
    done
    return 1
}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# What is installed to be compiled or linked in.
packages_in_setup() {
    grep -oE '\b(lib[a-z0-9+]+-dev|[a-z0-9-]+-json3-dev|googletest|postgresql-15)\b' scripts/setup | sort -u
}

case $2 in
    failures)
        compare <(failures_in_sources | without_rest | sort -u) \
            <(first_cells docs/operator-guide.md '### Texts of the trace' | sort -u)
        ;;
    results)
        compare <(results_in_sources | sort -u) \
            <(first_cells docs/operator-guide.md '### Results' | sort -u)
        ;;
    keys | words | code | links) "check_$2" ;;
    licences)
        compare <(packages_in_setup) \
            <(sed -n '/^## Licence/,$s/^| `\([^`]*\)` |.*/\1/p' README.md | sort -u)
        ;;
    *)
        echo "unknown check: $2" >&2
        exit 2
        ;;
esac
