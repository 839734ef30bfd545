#!/usr/bin/env bash
# Whether the host shows every function that the library asks of its process, and of the system's
# only such as the library asks for by that name.
# Usage: check_platform.sh PROGRAM DYNAMIC_LIST PLATFORM_NAMES SYSTEM_NAMES
set -euo pipefail
export LC_ALL=C

listed() { sed -n 's/^ *\([A-Za-z_]*\);$/\1/p' "$2" | sort; }
shown() { nm -D --defined-only "$1" | awk '$2 == "T" {print $3}' | sort; }

missing=$(comm -23 <(sort "$3") <(listed "$@"))
unasked=$(comm -13 <(sort "$3" "$4") <(listed "$@"))
hidden=$(comm -23 <(listed "$@") <(shown "$1"))
if [ -n "$missing$unasked$hidden" ]; then
    printf 'not in the list:\n%s\nnot asked for:\n%s\nnot shown to the loaded library:\n%s\n' \
        "$missing" "$unasked" "$hidden"
    exit 1
fi
