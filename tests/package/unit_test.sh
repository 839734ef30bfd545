#!/usr/bin/env bash
# Holds the unit to how little it exposes, 0 to 10, and to what its guide promises.
# Usage: unit_test.sh UNIT
set -euo pipefail
unit=$1
most=15 # tenths

said=$(systemd-analyze security --offline=true --threshold="$most" --no-pager "$unit" 2>&1) || {
    tail -n 3 <<<"$said"
    exit 1
}
for line in 'NoExecPaths=/' 'DeviceAllow=char-ttyUSB rw' 'DeviceAllow=char-ttyACM rw' \
    'RuntimeDirectoryMode=0775' 'Type=notify'; do
    grep -qx "$line" "$unit" || { echo "the unit lacks $line"; exit 1; }
done
grep -qE '^(WatchdogSec|MemoryMax)=[1-9]' "$unit"
