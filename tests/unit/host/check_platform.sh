#!/usr/bin/env bash
# Whether the host shows every function that the library asks of its process.
# Usage: check_platform.sh PROGRAM DYNAMIC_LIST PLATFORM_NAMES
set -euo pipefail
export LC_ALL=C

listed() { sed -n 's/^ *\([A-Za-z_]*\);$/\1/p' "$2" | sort; }
shown() { nm -D --defined-only "$1" | awk '$2 == "T" {print $3}' | sort; }

diff -u <(sort "$3") <(listed "$@")
missing=$(comm -23 <(sort "$3") <(shown "$@"))
if [ -n "$missing" ]; then
    printf 'not shown to the loaded library:\n%s\n' "$missing"
    exit 1
fi
