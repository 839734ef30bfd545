#!/usr/bin/env bash
# Who may include whom. A layer uses itself and the layers below it; the simulated far ends share
# nothing with the library, so that both sides can't agree on one mistake. What host and simulator
# share, support/, knows neither.
# Usage: check_layers.sh ROOT
set -euo pipefail
cd "$1"

declare -A may_use=(
    [linux]="linux"
    [tables]="tables linux"
    [modem]="modem tables linux"
    [engine]="engine modem tables linux"
    [support]="support"
    [sim]="sim support"
    [host]="host support"
)

# file: include, each with its reason.
# The look-up of a pager's row writes trace lines. The host explains a page with the library's own
# builders.
known_exceptions="
tables/pager_settings.cpp: modem/trace.h
"

failed=0
for layer in "${!may_use[@]}"; do
    while IFS=: read -r file include; do
        used=${include%%/*}
        case " ${may_use[$layer]} " in *" $used "*) continue ;; esac
        case "$file" in host/explain/* | host/cli/command_explain.cpp) continue ;; esac
        case "$known_exceptions" in *"
$file: $include
"*) continue ;; esac
        echo "$file includes $include: $layer may use only ${may_use[$layer]}"
        failed=1
    done < <(grep -rHoE '^ *# *include +"[^"]+"' --include='*.h' --include='*.cpp' "$layer" |
        sed -E 's/: *# *include +"([^"]+)"/:\1/')
done
# Within the host: what owns a modem, and what keeps those alive that do, share only what is below
# both; the command line knows the one for test pages, test calls and the process of a line, no more.
# What the network reaches knows neither, and is known to the command line alone; the reckoning, which
# reads tables only, it does for itself.
while IFS=: read -r file include; do
    case "$file: $include" in
        host/web/watchman.h:\ host/node/reckoning.h) continue ;;
        host/line/*:\ host/node/* | host/line/*:\ host/cli/* | host/node/*:\ host/line/* | \
            host/node/*:\ host/cli/* | host/web/*:\ host/line/* | host/web/*:\ host/node/* | \
            host/web/*:\ host/cli/* | host/web/*:\ host/snpp/* | host/snpp/*:\ host/line/* | \
            host/snpp/*:\ host/node/* | host/snpp/*:\ host/cli/* | host/net/*:\ host/web/* | \
            host/net/*:\ host/snpp/*) ;;
        host/web/*:\ host/web/* | host/cli/command_web.cpp:\ host/web/* | \
            host/cli/command_token.cpp:\ host/web/* | host/snpp/desk.cpp:\ host/web/token.h | \
            host/cli/web_demo.cpp:\ host/web/token.h) continue ;;
        host/web/*:\ host/net/* | host/snpp/*:\ host/net/* | host/net/*:\ host/net/* | \
            host/snpp/*:\ host/snpp/* | host/cli/command_web.cpp:\ host/snpp/* | \
            host/cli/command_web.cpp:\ host/net/*) continue ;;
        host/*:\ host/web/* | host/*:\ host/snpp/* | host/*:\ host/net/*) ;;
        host/cli/command_test.cpp:\ host/line/* | host/cli/command_serve_line.cpp:\ host/line/* | \
            host/cli/command_line_test.cpp:\ host/line/* | \
            host/cli/program.cpp:\ host/line/trace_switch.h) continue ;;
        host/cli/*:\ host/line/*) ;;
        *) continue ;;
    esac
    echo "$file includes $include"
    failed=1
done < <(grep -rHoE '^ *# *include +"[^"]+"' --include='*.h' --include='*.cpp' host |
    sed -E 's/: *# *include +"([^"]+)"/:\1/')
# The store knows of the host only what is below it: texts, files, and what a trace tells.
while IFS=: read -r file include; do
    case "$include" in host/store/* | host/text/* | host/files/* | host/trace/traced_page.h) continue ;; esac
    echo "$file includes $include: the store may use only texts and files"
    failed=1
done < <(grep -rHoE '^ *# *include +"[^"]+"' --include='*.h' --include='*.cpp' host/store |
    sed -E 's/: *# *include +"([^"]+)"/:\1/')
# All questions to a database are asked there, and nobody else knows which one it is.
sql='"[^"]*\<(SELECT|INSERT INTO|UPDATE|DELETE FROM|CREATE|ALTER TABLE|PRAGMA|WHERE|ORDER BY) |<sqlite3\.h>|<libpq-fe\.h>'
if grep -rnE "$sql" --include='*.h' --include='*.cpp' host | grep -v '^host/store/'; then
    echo "SQL belongs into host/store"
    failed=1
fi
exit $failed
