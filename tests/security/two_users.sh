#!/usr/bin/env bash
# What another user of the machine can't do to a service, and what its readers can: by programs that
# were built or installed, as real users.
# Usage: two_users.sh PAGERFWD
#
# As root the service runs as one user, a stranger as another, a reader and an operator in the
# service's group. Without root all four are this user: what needs a second one is named and left out.
set -euo pipefail
pagerfwd=$1
readonly service=64001 group=64000 stranger=64002 reader=64003 operator=64004 others=64005

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
chmod 755 "$folder"
cd "$folder"
unset PAGERFWD_DATABASE XDG_RUNTIME_DIR
mkdir site locks
chmod 770 site locks
export PAGERFWD_LOCKS=$folder/locks
umask 022

# Anyone may run a copy, wherever the original lies; the library lies beside it.
mkdir program
cp "$pagerfwd" program/pagerfwd
for library in "$(dirname "$pagerfwd")"/../lib/{,*/}libPagerFwd.so; do
    if [ -e "$library" ]; then cp "$library" program/; fi
done
chmod -R a+rX program
pagerfwd=$folder/program/pagerfwd

if [ "$(id -u)" = 0 ]; then
    as() { setpriv --reuid "$1" --regid "$2" --groups "$3" -- "${@:4}"; }
    chown $service:$group site locks
else
    echo "not root: all users are this one; what needs two is left out"
    as() { "${@:4}"; }
fi
as_service() { as $service $group $group "$@"; }
as_stranger() { as $stranger $others $others "$@"; }
as_reader() { as $reader $others $group "$@"; }
# Its own group is not the one that it shares with the service.
as_operator() { as $operator $others $others,$group "$@"; }
is_root() { [ "$(id -u)" = 0 ]; }

fail() { echo "two_users.sh: $*" >&2; exit 1; }
owned() { # FILE MODE: by the service, whoever made it
    local is
    is=$(stat -c "%u:%g %a" "$1")
    if is_root; then
        [ "$is" = "$service:$group $2" ] || fail "$1 is $is, not $service:$group $2"
    else
        [ "${is#* }" = "$2" ] || fail "$1 has the mode ${is#* }, not $2"
    fi
}
refused() { # WORDS COMMAND: fails, and says so with these words
    local words=$1
    shift
    if "$@" >out 2>&1; then fail "was done: $*"; fi
    grep -qF -- "$words" out || fail "says nothing of \"$words\": $(cat out)"
}

# The service, until it is told to end.
run_service() {
    rm -f run.log
    as_service env -C site "$pagerfwd" run --metrics "$folder/site/figures.prom" >run.log 2>&1 &
    running=$!
    for _ in $(seq 200); do
        grep -q "serving" run.log && return
        kill -0 $running 2>/dev/null || break
        sleep 0.1
    done
    fail "the service doesn't start: $(cat run.log)"
}
end_service() {
    kill -TERM "$(pgrep -P $running || echo $running)" 2>/dev/null || true
    wait $running 2>/dev/null || true
}
cat >site.toml <<'TOML'
[[port]]
name = "COM 1"
[port.sms1]
dial = "ATDT1"
[[pager]]
description = "duty"
type = "sms1"
number = "555"
[[route]]
pagers = ["duty"]
TOML
chmod 644 site.toml
export PAGERFWD_DATABASE=$folder/site/site.db

# A database is for its owner and group, whatever the umask says.
as_service "$pagerfwd" init >/dev/null
as_service "$pagerfwd" import "$folder/site.toml" >/dev/null
owned site/site.db 640

# Looking makes no file, by whomever, before the service has ever run.
for look in "status" "alarm list" "page list" "line list" "export" "check" "hours show"; do
    # shellcheck disable=SC2086
    "$pagerfwd" $look >/dev/null
    # shellcheck disable=SC2086
    as_reader "$pagerfwd" $look >/dev/null || fail "a reader can't: $look"
done
[ "$(ls site)" = site.db ] || fail "looking has made files:" site/*

# The same while the service runs, for who may only read: an alarm by its number and text.
see_all() {
    for look in "status" "alarm list" "page list" "line list" "log $1" "export" "check" "trace"; do
        # shellcheck disable=SC2086
        as_reader "$pagerfwd" $look >seen || fail "a reader can't, while the service runs: $look"
    done
    as_reader "$pagerfwd" status | grep -q "engine: run, process" || fail "the engine isn't seen"
    as_reader timeout --signal INT 2 "$pagerfwd" watch >seen || true
    grep -q "engine: run, process" seen || fail "a reader can't watch"
    as_reader "$pagerfwd" alarm list | grep -q "$2" || fail "the last alarm isn't seen"
    as_reader "$pagerfwd" log "$1" | grep -q "$2" || fail "what became of it isn't seen"
}
run_service
number=$(as_service "$pagerfwd" alarm raise "zero")
for journal in site/site.db-wal site/site.db-shm; do owned $journal 640; done
see_all "$number" zero
if is_root; then
    refused "" as_reader "$pagerfwd" alarm raise "three"
    refused "ermission denied" as_stranger "$pagerfwd" status
    refused "ermission denied" as_stranger cat site/site.db-lines/COM%201/pageprot.txt
fi
end_service
as_reader "$pagerfwd" status | grep -q "engine: not running" || fail "the engine still runs"
as_reader "$pagerfwd" alarm list | grep -q zero || fail "the alarm is gone"

# The operators of the group write to it, too. An alarm of an operator, and a test by root, leave what the service can use.
as_service rm -f site/site.db-engine site/site.db-owners site/pageprot.txt site/figures.prom
as_service chmod g+w site/site.db
as_operator "$pagerfwd" alarm raise "one" >/dev/null
cd site
"$pagerfwd" --trace test duty >/dev/null 2>&1 && fail "a page left without a modem"
cd ..
owned site/site.db 660
owned site/site.db-engine 660
owned site/pageprot.txt 660
for lock in locks/*; do owned "$lock" 660; done

# The service starts all the same.
run_service
number=$(as_operator "$pagerfwd" alarm raise "two")
for journal in site/site.db-wal site/site.db-shm; do owned $journal 660; done
for _ in $(seq 100); do [ -e site/figures.prom ] && break; sleep 0.1; done
owned site/figures.prom 644
owned site/site.db-room 640
owned site/site.db-lines/COM%201/pageprot.txt 640
see_all "$number" two
end_service
as_reader "$pagerfwd" status | grep -q "engine: not running" || fail "the engine still runs"

# Locks in a folder where strangers were first: a link, a pipe, junk that is held.
mkdir shared
chmod 1777 shared
as_stranger ln -s "$folder/site/site.db" shared/pagerfwd-ttyS0
refused "it is a link" as_service "$pagerfwd" --locks "$folder/shared" test duty
rm shared/pagerfwd-ttyS0
as_stranger mkfifo shared/pagerfwd-ttyS0
refused "" as_service "$pagerfwd" --locks "$folder/shared" test duty
rm shared/pagerfwd-ttyS0
[ "$(as_service "$pagerfwd" export | grep -c description)" = 1 ] || fail "the database is harmed"
if is_root; then
    as_stranger sh -c "echo 'run, process 1; call 0900-CHEAP' >shared/pagerfwd-ttyS0 &&
        chmod 666 shared/pagerfwd-ttyS0"
    # Held by a program that is not ours. The shell's own locks are of another kind.
    as_stranger /usr/bin/python3 - "$folder/shared/pagerfwd-ttyS0" <<'PYTHON' &
import fcntl, sys, time
file = open(sys.argv[1], "r+")
fcntl.lockf(file, fcntl.LOCK_EX)
time.sleep(60)
PYTHON
    holder=$!
    for _ in $(seq 100); do
        grep -q "POSIX.*:$(stat -c %i shared/pagerfwd-ttyS0) " /proc/locks && break
        sleep 0.1
    done
    refused "belongs to user $stranger" \
        as_service "$pagerfwd" --locks "$folder/shared" test duty
    if grep -q CHEAP out; then fail "the stranger's words are shown: $(cat out)"; fi
    kill "$(pgrep -P $holder || echo $holder)" 2>/dev/null || true
    wait $holder 2>/dev/null || true
fi

# A library that lies where root stands.
mkdir planted
cp program/libPagerFwd.so planted/libPagerFwd.so 2>/dev/null || true
mkdir alone
cp program/pagerfwd alone/
refused "the library can't be loaded" env -C planted LD_LIBRARY_PATH="$folder/planted" \
    "$folder/alone/pagerfwd" test duty

echo "two_users.sh: passed"
