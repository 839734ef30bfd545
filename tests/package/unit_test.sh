#!/usr/bin/env bash
# Holds a unit to how little it exposes, 0 to 10, and to what its guide promises.
# Usage: unit_test.sh UNIT
set -euo pipefail
unit=$1
most=15 # tenths

said=$(systemd-analyze security --offline=true --threshold="$most" --no-pager "$unit" 2>&1) || {
    tail -n 3 <<<"$said"
    exit 1
}
case ${unit##*/} in
    pagerfwd.service)
        promised=('DeviceAllow=char-ttyUSB rw' 'DeviceAllow=char-ttyACM rw' 'RuntimeDirectoryMode=0775')
        grep -qE '^WatchdogSec=[1-9]' "$unit"
        ;;
    pagerfwd-web.service) # no modem, no network but the sockets that are opened for it
        promised=('User=pagerfwd-web' 'Group=pagerfwd' 'PrivateDevices=yes' 'PrivateNetwork=yes'
            'Requires=pagerfwd-web.socket')
        ;;
esac
for line in 'NoExecPaths=/' 'Type=notify' "${promised[@]}"; do
    grep -qx "$line" "$unit" || { echo "the unit lacks $line"; exit 1; }
done
grep -qE '^MemoryMax=[1-9]' "$unit"
