# Completion of `pagerfwd` for bash: goes to /usr/share/bash-completion/completions/pagerfwd.
#
# Commands and options are taken from the program's own help, so that they are those of the program
# that is installed.

# The names in a section of a help text: _pagerfwd_help_names SECTION, the text on standard input.
_pagerfwd_help_names() {
    awk -v section="$1:" '
        $0 == section { inside = 1; next }
        /^[^ ]/ { inside = 0 }
        inside && /^  [^ ]/ { print $1 }'
}

# The long options in a help text on standard input.
_pagerfwd_help_options() {
    grep -oE '^  (-[A-Za-z],)?--[a-z-]+' | grep -oE -- '--[a-z-]+'
}

_pagerfwd() {
    local program=${COMP_WORDS[0]}
    local current=${COMP_WORDS[COMP_CWORD]}
    local previous=${COMP_WORDS[COMP_CWORD - 1]}
    local -a command=()
    local help commands word index
    COMPREPLY=()

    # The command so far: words that the help, at each step, lists as commands.
    help=$("$program" --help 2>/dev/null)
    for ((index = 1; index < COMP_CWORD; ++index)); do
        word=${COMP_WORDS[index]}
        commands=$(_pagerfwd_help_names Subcommands <<<"$help")
        if [[ $word != -* && -n $word ]] && grep -qxF -- "$word" <<<"$commands"; then
            command+=("$word")
            help=$("$program" "${command[@]}" --help 2>/dev/null)
        fi
    done

    commands=$(_pagerfwd_help_names Subcommands <<<"$help")
    case $previous in
        --encoding) mapfile -t COMPREPLY < <(compgen -W "latin1 shift_jis" -- "$current") ;;
        --locks) mapfile -t COMPREPLY < <(compgen -d -- "$current") ;;
        --database | --library | --svg) mapfile -t COMPREPLY < <(compgen -f -- "$current") ;;
        *)
            if [[ $current == -* ]]; then
                mapfile -t COMPREPLY < <(
                    compgen -W "$(_pagerfwd_help_options <<<"$help")" -- "$current")
            elif [[ -n $commands ]]; then
                mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$current")
            else
                mapfile -t COMPREPLY < <(compgen -f -- "$current")
            fi
            ;;
    esac
}

complete -o filenames -F _pagerfwd pagerfwd
