#!/usr/bin/env bash
# Uses what is installed below a root, and nothing else: a site with two alarms on simulated lines,
# and the host in C that finds the library by pkg-config and by CMake.
# Usage: try_installed.sh ROOT LIBRARY-FOLDER COMPILER [FLAGS]    the folder as below the root
set -euo pipefail
root=$1 compiler=$3 flags=${4:-}
library=$root/$2
here=$(cd "$(dirname "$0")" && pwd)
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
export PATH=$root/usr/bin:$PATH PAGERFWD_LOCKS=$folder LD_LIBRARY_PATH=$library
unset PAGERSIM_PRELOAD PAGERFWD_DATABASE
"$here/../security/two_users.sh" "$root/usr/bin/pagerfwd"
examples=$root/usr/share/doc/pagersim/examples

simulated() { pagersim --quiet --exchange "$examples/exchange.toml" --clock clock "$@"; }

[ "$(command -v pagerfwd)" = "$root/usr/bin/pagerfwd" ]
pagerfwd init
pagerfwd import "$root/usr/share/doc/pagerfwd/examples/site.toml"
simulated --expect nothing -- pagerfwd alarm raise --group OFFICE/1 --severity minor --server lobby \
    "Door 3 is open" >number
# The SMS once; the others, which nobody confirms, as often as the site says.
simulated --expect "tap:5550111=OFFICE/Minor/lobby/Door 3 is open" \
    --expect "plain:2002=" --expect "plain:2002=" --expect "plain:2002=" \
    --expect "ntt:5550103=3/LOBBY" --expect "ntt:5550103=3/LOBBY" --expect "ntt:5550103=3/LOBBY" \
    -- pagerfwd run --until-done
pagerfwd status | tee status
[ "$(grep -c "$(cat number)" status)" = 3 ]

# A program of the other word size joins a world, where there is what it takes.
join_other() {
    local size=$1
    cat >other.c <<'END'
#include <stdio.h>
#include <time.h>
#include <unistd.h>

int main(void) {
    sleep(5);
    const time_t now = time(NULL);
    char text[32];
    strftime(text, sizeof text, "%H:%M:%S", localtime(&now));
    printf("%zu %s\n", sizeof(void*) * 8, text);
}
END
    "$compiler" -m"$size" -Wall -Wextra -Werror other.c -o other
    pagersim world --quiet --exchange "$examples/exchange.toml" --until-left night &
    until [ -s night/preloads ]; do sleep 0.05; done
    [ "$(pagersim join night -- ./other)" = "$size 10:00:05" ]
    wait $!
}
for size in 32 64; do
    [ ! -e "$library/pagersim/libpagersim-preload-$size.so" ] || join_other "$size"
done

# The example host of the sources, against the library that is installed.
host() {
    simulated --expect "tap:5550111=PLANT/Critical/pumps/Pump 3 stands still" -- "$1"
}
host_sources=("$here"/../../examples/host/*.c)

export PKG_CONFIG_PATH=$library/pkgconfig
# shellcheck disable=SC2046,SC2086
"$compiler" $flags -Wall -Wextra -Werror "${host_sources[@]}" -o found_by_pkg_config \
    $(pkg-config --cflags --libs pagerfwd)
host ./found_by_pkg_config

cmake -G Ninja -S "$here/find_package" -B build -D CMAKE_C_COMPILER="$compiler" \
    -D CMAKE_C_FLAGS="$flags" -D CMAKE_PREFIX_PATH="$root/usr" >cmake.log
cmake --build build >>cmake.log || { cat cmake.log; exit 1; }
host build/host
