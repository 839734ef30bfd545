# The mistakes that a source file can have, one a line.
#   awk -f mistakes.awk FILE               lists them: the line's number, a tab, "line -> line with it"
#   awk -v planted=N -f mistakes.awk FILE  prints the file with the Nth of them

# The line reads `text` instead.
function emit(text) {
    if (++count == planted)
        lines[at_line] = text
    else if (!planted)
        print at_line "\t" trimmed($0) " -> " trimmed(text)
}

function trimmed(text) {
    sub(/^ +/, "", text)
    return text
}

# Where `what` stands outside texts, each time replaced by `with`.
function swap(what, with, at, from) {
    from = 1
    while ((at = index(substr(bare, from), what)) > 0) {
        at += from - 1
        from = at + length(what)
        emit(substr($0, 1, at - 1) with substr($0, from))
    }
}

# Decimal numbers, each one larger, or from a thousand on by a tenth, since those are milliseconds; not
# those that are a part of a name or of another number.
function larger(at, from, number, before, behind) {
    from = 1
    while (match(substr(bare, from), /[0-9]+/)) {
        at = from + RSTART - 1
        number = substr(bare, at, RLENGTH)
        before = substr(bare, at - 1, 1)
        behind = substr(bare, at + RLENGTH, 1)
        from = at + RLENGTH
        if (before !~ /[A-Za-z_0-9.]/ && behind !~ /[A-TV-Za-tv-z_.]/)
            emit(substr($0, 1, at - 1) (number + 0 < 1000 ? number + 1 : int(number * 1.1)) \
                 substr($0, from))
    }
}

# Hexadecimal ones: the last digit another, 0x7F becomes 0x7E, 0xA6 becomes 0xAE.
function other_hex(from) {
    from = 1
    while (match(substr(bare, from), /0x[0-9A-F]+/)) {
        from += RSTART + RLENGTH - 1
        emit(substr($0, 1, from - 2) (substr(bare, from - 1, 1) == "E" ? "D" : "E") substr($0, from))
    }
}

# A term of a sum, left out.
function shorten(at, from) {
    from = 1
    while (match(substr(bare, from), / \+ [A-Za-z_]+/)) {
        at = from + RSTART - 1
        from = at + RLENGTH
        if (substr(bare, from, 1) !~ /[A-Za-z0-9_(.]/)
            emit(substr($0, 1, at - 1) substr($0, from))
    }
}

# A condition without an operator, negated.
function negate(conditions, at) {
    conditions = bare
    gsub(/->/, "  ", conditions)
    if (match(conditions, /(if|while) \([^!=<>&|;]*\) \{$/)) {
        at = RSTART + index(substr(bare, RSTART), "(")
        emit(substr($0, 1, at - 1) "!" substr($0, at))
    }
    if (match(conditions, /(return|[^=!<>]=|\() [A-Za-z_]+ \? /) || match(conditions, /\([A-Za-z_]+ \? /)) {
        at = RSTART + match(substr(bare, RSTART), /[A-Za-z_]+ \? /) - 1
        emit(substr($0, 1, at - 1) "!" substr($0, at))
    }
}

# A statement that is no declaration, left out: a call whose result isn't used, unless it has a text,
# which is reworded anyway; an assignment; a step of a count.
function leave_out() {
    if ((bare ~ /^ +[A-Za-z_.>:()*-]+\(.*\);$/ && bare !~ /return|delete|=/ && quotes !~ /b/) ||
        bare ~ /^ +[A-Za-z_.>*:()[\]-]+ [-+|&*]?= .*;$/ || bare ~ /^ +(\+\+|--)[A-Za-z_.>-]+;$/)
        emit(";")
}

# Texts in quotes: their first character another.
function reword(at, first) {
    for (at = 1; at < length($0); ++at) {
        if (substr(quotes, at, 1) != "b")
            continue
        first = substr($0, at + 1, 1)
        if (first == "\"" || first == "'")
            continue
        if (first != "\\")
            emit(substr($0, 1, at) (first ~ /[0-8]/ ? first + 1 : first == "~" ? "!" : "~") \
                 substr($0, at + 2))
        else if (substr($0, at + 2, 1) == "x")  # \x02 becomes \x0E
            emit(substr($0, 1, at + 3) "E" substr($0, at + 5))
        else  # \r becomes \n
            emit(substr($0, 1, at + 1) (substr($0, at + 2, 1) == "n" ? "r" : "n") substr($0, at + 3))
    }
}

# Behind the last case a switch ends anyway; its brace stands two steps to the left.
function ends_switch() {
    return /^ +break;$/ && lines[at_line + 1] ~ /^ *}/ && indent($0) - indent(lines[at_line + 1]) == 8
}

function indent(text) {
    match(text, /[^ ]/)
    return RSTART
}

# bare: the line with everything in quotes and comments blanked. quotes: a b where a quotation begins.
function strip(at, c, inside) {
    bare = quotes = inside = ""
    for (at = 1; at <= length($0); ++at) {
        c = substr($0, at, 1)
        if (inside == "" && c == "/" && substr($0, at + 1, 1) == "/") {
            sub(/ +$/, "", bare)
            return
        }
        if (inside != "" && c == "\\") {
            bare = bare "  "
            quotes = quotes "  "
            ++at
        } else if (inside == "" && (c == "\"" || c == "'")) {
            inside = c
            quotes = quotes "b"
            bare = bare " "
        } else if (c == inside) {
            inside = ""
            quotes = quotes " "
            bare = bare " "
        } else {
            quotes = quotes " "
            bare = bare (inside == "" ? c : " ")
        }
    }
}

function plant_in_line() {
    if (/^[ \t]*(\/\/|#|$)/ || /^template|static_assert/)
        return
    strip()
    swap(" == ", " != ")
    swap(" != ", " == ")
    swap(" < ", " <= ")
    swap(" <= ", " < ")
    swap(" > ", " >= ")
    swap(" >= ", " > ")
    swap(" && ", " || ")
    swap(" || ", " && ")
    swap(" + ", " - ")
    swap(" - ", " + ")
    swap(" * ", " + ")
    swap(" += ", " -= ")
    swap(" >> ", " << ")
    swap(" & ", " | ")
    swap("(!", "(")
    swap("true", "false")
    swap("false", "true")
    swap("continue;", "break;")
    if (!ends_switch())
        swap("break;", ";")
    negate()
    larger()
    other_hex()
    shorten()
    leave_out()
    reword()
}

{ lines[NR] = $0 }
END {
    for (at_line = 1; at_line <= NR; ++at_line) {
        $0 = lines[at_line]
        plant_in_line()
    }
    for (n = 1; planted && n <= NR; ++n)
        print lines[n]
}
