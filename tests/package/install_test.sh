#!/usr/bin/env bash
# Installs a build into a clean root, compares what is there with a list, and uses it.
# Usage: install_test.sh BUILD-FOLDER LIBRARY-FOLDER COMPILER [FLAGS]
set -euo pipefail
build=$1 library=usr/$2
here=$(cd "$(dirname "$0")" && pwd)
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT

DESTDIR=$root cmake --install "$build" --prefix /usr >/dev/null

# The other word size's preload, if this machine could make it.
expected() {
    if compgen -G "$build/lib/libpagersim-preload-*.so" >/dev/null; then
        cat "$here/installed.txt"
    else
        grep -v OTHER "$here/installed.txt"
    fi
}

# The texts of docs/ come and go, and are left out.
diff -u <(expected | sort) \
    <(cd "$root" && find . -type f ! -path './usr/share/doc/pagerfwd/*.*' -o -type f -name '*.toml' |
        sed "s|^\./$library/|LIB/|; s|^\./||; s|Targets-[a-z]*|Targets-BUILD|; s|preload-[36][24]|preload-OTHER|" | sort)

# The unit runs the program that is installed with it.
DESTDIR=$root/elsewhere cmake --install "$build" --prefix /opt/pages --component host >/dev/null
units=$root/elsewhere/opt/pages/lib/systemd/system
unit=$units/pagerfwd.service
[ "$(grep -c '^Exec.*=/opt/pages/bin/pagerfwd ' "$unit")" = 2 ]
grep -q "^ExecStart=.* --library /opt/pages/${library#usr/}/libPagerFwd.so run" "$unit"
grep -q '^Exec.*=/usr/bin/chmod ' "$unit"
grep -q '^ExecStart=/opt/pages/bin/pagerfwd .* web$' "$units/pagerfwd-web.service"
rm -r "$root/elsewhere"
for unit in pagerfwd pagerfwd-web; do
    "$here/unit_test.sh" "$root/usr/lib/systemd/system/$unit.service"
done

# No path of the build folder or of the root in what is text.
if grep -rIlE "$(dirname "$build")|$root" "$root"; then
    echo "these files name folders of the build" >&2
    exit 1
fi
"$here/try_installed.sh" "$root" "$library" "${@:3}"
