#!/usr/bin/env bash
# What libPagerFwd.so offers and what it asks of the process that loads it, against the lists
# beside this script.
# Usage: check_symbols.sh LIBRARY exported|platform|system|needed|format
set -euo pipefail
export LC_ALL=C

library=$1
lists=$(dirname "$0")

# The names in one of nm's listings. Names with a version (name@GLIBC_2.0) come from the libraries
# that `needed` lists; the rest is what the process must supply.
exported() { nm -D --defined-only "$library" | awk '{print $NF}' | sort; }
undefined() { nm -D --undefined-only "$library" | awk '$1 == "U" && $2 !~ /@/ {print $2}' | sort; }

asked_of_the_system() {
    nm -D --undefined-only "$library" | sed -n 's/.* U \([^@]*\)@.*/\1/p' | sort
}

case $2 in
    exported)
        diff -u "$lists/exported.txt" <(exported)
        ;;
    platform)
        # A host supplies the whole list; the library may do without some of it.
        diff -u /dev/null <(comm -13 "$lists/platform.txt" <(undefined))
        ;;
    system)
        # The calls of the system that a host may stand in front of go by these very names.
        diff -u /dev/null <(comm -13 <(asked_of_the_system) "$lists/system.txt")
        ;;
    needed)
        # The dynamic linker itself is part of the C library.
        diff -u <(printf '%s\n' libc.so.6 libgcc_s.so.1 libm.so.6 libstdc++.so.6) \
            <(readelf -d "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' | grep -v '^ld-linux' |
                cat - <(printf '%s\n' libc.so.6 libgcc_s.so.1 libm.so.6 libstdc++.so.6) | sort -u)
        ;;
    format)
        readelf -h "$library" | grep -q 'Class: *ELF32'
        readelf -h "$library" | grep -q 'Machine: *Intel 80386'
        ;;
    *)
        echo "unknown check: $2" >&2
        exit 2
        ;;
esac
