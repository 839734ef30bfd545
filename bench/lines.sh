#!/usr/bin/env bash
# Pages of 1, 2, 4 and 8 lines in virtual time, the memory of a line's process, and the processor
# time of a page and of a line that waits. Each line gets as many pages as one alone: the time that
# one takes, by the time that all of them take, is what each line is worth.
#   bench/lines.sh BIN-FOLDER    run by scripts/bench
set -euo pipefail
bin=$(cd "$1" && pwd)
export PATH=$bin:$PATH TZ=UTC
pages_of_a_line=24
begin=36000 # of the day, in seconds
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
export PAGERFWD_LOCKS=$folder

site() {
    local number
    for ((number = 1; number <= $1; ++number)); do
        printf '[[port]]\nname = "COM %d"\nbaud = 9600\ninit = "AT&F&D2S12=2"\nreset = "ATZ"\n' "$number"
        printf '[port.sms1]\nprotocol = "TAP"\ndial = "ATDT0,5550101"\ndata = 7\nparity = "even"\n'
    done
    printf '[[hours]]\nname = "always"\nall = true\n'
    for ((number = 1; number <= $1 * pages_of_a_line; ++number)); do
        printf '[[pager]]\ndescription = "pager %d"\ntype = "sms1"\nnumber = "%d"\nretries = 0\ndelay = 1\nhours = "always"\n' \
            "$number" "$((5550000 + number))"
    done
    printf '[[route]]\nseverities = ["critical"]\npagers = ["pager 1"'
    for ((number = 2; number <= $1 * pages_of_a_line; ++number)); do
        printf ', "pager %d"' "$number"
    done
    printf ']\n'
}

exchange() {
    local number
    for ((number = 1; number <= $1; ++number)); do
        printf '[[line]]\nport = "COM %d"\n' "$number"
    done
    printf '[[centre]]\nname = "tap"\nprotocol = "tap"\nnumbers = ["5550101"]\n'
}

look_at_memory() {
    # The process that runs this is the node; its children are the lines'.
    printf '[[at]]\ntime = "2001-01-08 10:01:00"\n'
    # shellcheck disable=SC2016
    printf 'run = "cat $(printf '\''/proc/%%s/status '\'' $(cat /proc/$PPID/task/$PPID/children)) | grep VmRSS >memory"\n'
}

simulated() {
    pagersim --quiet --clock clock --start "2001-01-08 10:00:00" -- pagerfwd "$@" >said 2>&1 ||
        { cat said; return 1; }
}

new_site() {
    rm -rf pagerfwd.db* clock memory
    site "$1" >site.toml
    exchange "$1" >exchange.toml
    simulated init
    simulated import site.toml
}

# Of the engine, its lines and the exchange, in seconds, to the file `processor`.
timed() {
    local TIMEFORMAT='%U %S'
    { time "$@"; } 2>processor
}
processor_time() { awk '{ print $1 + $2 }' processor; }

# Seconds from the alarm to the end of the last page.
seconds_of() {
    local number=$1
    new_site "$number"
    simulated alarm raise --group ALL --severity critical --server bench "One of many"
    look_at_memory >>exchange.toml
    timed simulated run --until-done
    pagerfwd trace --json >trace.json
    awk -v begin=$begin -v wanted=$((number * pages_of_a_line)) '
        $1 == "\"time\":" { split(substr($2, 2, 8), t, ":"); at = t[1] * 3600 + t[2] * 60 + t[3] - begin }
        $1 == "\"seconds\":" { seconds = $2 + 0 }
        $1 == "\"outcome\":" && $2 == "\"sent\"," { ++sent }
        { if (at + seconds > last) last = at + seconds; seconds = 0 }
        END {
            if (sent != wanted) { print "lines: " sent + 0 " of " wanted " pages" >"/dev/stderr"; exit 1 }
            print last
        }' trace.json
}

# Of so many lines that wait.
hours_waited=4
processor_time_waiting() {
    new_site "$1"
    # shellcheck disable=SC2016
    printf '[[at]]\ntime = "2001-01-08 %d:00:00"\nrun = "kill -TERM $PPID"\n' \
        $((10 + hours_waited)) >>exchange.toml
    timed simulated run
    processor_time
}

row() { printf '%-58s  %12s  %12s  %6s\n' "$@"; }
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.3f", a / b }'; }

one=$(seconds_of 1)
row "$pages_of_a_line pages by one line, virtual time" "$one s" - ""
failed=0
for number in 2 4 8; do
    all=$(seconds_of "$number")
    worth=$(ratio "$one" "$all")
    row "$((number * pages_of_a_line)) pages by $number lines (reference: one line's share by one)" \
        "$all s" "$one s" "$(ratio "$all" "$one")"
    # What n lines send in a time is at least 0.95 of n times what one does.
    awk -v worth="$worth" 'BEGIN { exit !(worth < 0.95) }' && failed=1
done
row "a page of these, processor time" \
    "$(awk -v all="$(processor_time)" -v pages=$((8 * pages_of_a_line)) 'BEGIN { printf "%.1f ms", all / pages * 1e3 }')" - ""
largest=$(awk '{ if ($2 > largest) largest = $2 } END { print largest + 0 }' memory)
row "resident size of a line's process, the largest of 8" \
    "$(awk -v kib="$largest" 'BEGIN { printf "%.1f MB", kib * 1024 / 1e6 }')" - ""
row "a line that waits an hour, processor time" \
    "$(awk -v one="$(processor_time_waiting 1)" -v eight="$(processor_time_waiting 8)" -v hours=$hours_waited \
        'BEGIN { printf "%.1f ms", (eight - one) / 7 / hours * 1e3 }')" - ""
[ "$largest" -gt 0 ] && [ "$largest" -le $((12 * 1024)) ] || failed=1
exit $failed
