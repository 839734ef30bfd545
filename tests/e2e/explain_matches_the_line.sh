#!/usr/bin/env bash
# Whatever goes over the line between dialling and hanging up stands in the explanation of the page,
# for a pager of every type.
# Usage: explain_matches_the_line.sh BIN-FOLDER EXAMPLES-FOLDER
set -euo pipefail
bin=$1 examples=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
export PAGERFWD_LOCKS=$folder

"$bin/pagerfwd" init >/dev/null
"$bin/pagerfwd" import "$examples/site.toml" >/dev/null

# The pieces of all steps but the one that waits for a question, which the example's service doesn't
# ask.
explained() {
    awk 'BEGIN { RS = "" } !/^yes, only if/ { print }' explained.txt |
        sed -n 's/^    //; t piece; b; : piece; s/  .*//; p' | tr -d '\n'
}

# What the program sent from the dial command on, up to the escape that ends the call.
sent() {
    sed -n 's/^.* program  > //p' said.txt | sed -n '/^ATDT/,/^+++/p' | grep -v '^+++' | tr -d '\n'
}

for pager in "duty phone" "manager phone" engineer technician porter "Osaka office"; do
    "$bin/pagerfwd" explain "$pager" >explained.txt
    "$bin/pagersim" --quiet --exchange "$examples/exchange.toml" --transcript said.txt -- \
        "$bin/pagerfwd" test "$pager" >/dev/null
    sent | grep -q '^ATDT0,'
    diff -u --label "explained for $pager" <(explained) --label "sent" <(sent)
done
