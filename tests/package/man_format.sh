#!/usr/bin/env bash
# The manual pages, formatted without a warning.
# Usage: man_format.sh MAN-FOLDER
set -euo pipefail

for page in "$1"/*; do
    warnings=$(groff -mdoc -ww -K utf8 -T utf8 "$page" 2>&1 >/dev/null)
    if [ -n "$warnings" ]; then
        printf '%s\n' "$warnings"
        exit 1
    fi
done
