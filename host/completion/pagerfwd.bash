# Completion of `pagerfwd` for bash: goes to /usr/share/bash-completion/completions/pagerfwd.
#
# Commands and options are taken from the program's own help, so that they are those of the program
# that is installed; pagers, hours and alarms from the database that the command line names.

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

# What the command line says of an option's value; nothing where it doesn't.
_pagerfwd_value_of() {
    local index
    for ((index = 1; index < COMP_CWORD; ++index)); do
        if [[ ${COMP_WORDS[index]} == "$1" ]]; then
            # Bash takes --option=value for three words.
            [[ ${COMP_WORDS[index + 1]} == = ]] && ((++index))
            printf '%s' "${COMP_WORDS[index + 1]}"
            return
        fi
    done
}

# Offers the names of a kind that begin with the word so far; the quotation mark that it begins with
# is no part of it.
_pagerfwd_offer_names() {
    local database name word=${current#[\"\']}
    local -a options=()
    database=$(_pagerfwd_value_of --database)
    [[ -z $database ]] || options=(--database "${database/#\~/$HOME}")
    while IFS= read -r name; do
        [[ $name == "$word"* ]] && COMPREPLY+=("$name")
    done < <("$program" "${options[@]}" names "$1" 2>/dev/null)
}

# An alarm, and behind it a pager.
_pagerfwd_offer_page() {
    if [[ $previous =~ ^[0-9]+$ ]]; then
        _pagerfwd_offer_names pagers
    else
        _pagerfwd_offer_names open-alarms
    fi
}

# What stands where an option's value or a word of the command may stand.
_pagerfwd_offer_words() {
    case ${command[*]} in
        test | explain) _pagerfwd_offer_names pagers ;;
        in-hours | "hours show" | "hours edit") _pagerfwd_offer_names hours ;;
        "alarm ack" | "alarm withdraw") _pagerfwd_offer_names open-alarms ;;
        "line pause" | "line resume" | "line test") _pagerfwd_offer_names lines ;;
        "page cancel" | "page move" | "page resend" | "page done") _pagerfwd_offer_page ;;
        "node drain" | "node resume" | "node remove") _pagerfwd_offer_names nodes ;;
        log) _pagerfwd_offer_names alarms ;;
        *) mapfile -t COMPREPLY < <(compgen -f -- "$current") ;;
    esac
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
        --severity) _pagerfwd_offer_names severities ;;
        --pager) _pagerfwd_offer_names pagers ;;
        --line) _pagerfwd_offer_names lines ;;
        --node) _pagerfwd_offer_names nodes ;;
        --database | --library | --svg | --metrics) mapfile -t COMPREPLY < <(compgen -f -- "$current") ;;
        *)
            if [[ $current == -* ]]; then
                mapfile -t COMPREPLY < <(
                    compgen -W "$(_pagerfwd_help_options <<<"$help")" -- "$current")
            elif [[ -n $commands ]]; then
                mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$current")
            else
                _pagerfwd_offer_words
            fi
            ;;
    esac
}

complete -o filenames -F _pagerfwd pagerfwd
