#!/usr/bin/env bash
# Programs of 32 bits fail at files of 2 GiB, and at those whose inode has a number of more than 32
# bits, unless they ask by the names that end in 64.
# Usage: large_files.sh PROGRAM…
set -euo pipefail

# Of the line driver, which `explain` has without using it: it asks for a device.
known='stat'

# Calls that have such another name.
small='[fl]?stat|fstatat|statv?fs|fstatv?fs|lseek|open|openat|creat|fopen|freopen|fseeko|ftello|readdir'
small+='|scandir|truncate|ftruncate|pread|pwrite|preadv|pwritev|mkstemp|mkostemp|tmpfile|mmap|lockf|fcntl'
small+='|sendfile|posix_fallocate|posix_fadvise|glob|nftw|getrlimit|setrlimit'

for program in "$@"; do
    asked=$(nm --dynamic --undefined-only "$program" | awk '{ sub(/@.*/, "", $2); print $2 }')
    grep -qx 'fstat64\|lstat64' <<<"$asked" # it is seen to look at files
    if grep -xE "$small" <<<"$asked" | grep -vx "$known"; then
        echo "$program: these would fail" >&2
        exit 1
    fi
done
