# Completion of @PROGRAM@ for bash, made of what it takes on its command line.

# What may follow a command: commands (which begin at "base"), options, operands.
_@PROGRAM@_command() {
    case $1 in
@COMMANDS@
    esac
}

# What the option's value is; nothing for an option without one.
_@PROGRAM@_value() {
    kind=
    case "$1 $2" in
@VALUES@
    esac
}

_@PROGRAM@_files() {
    compopt -o filenames 2>/dev/null
    current=${current//[\"\'\\]/}
    [[ $current != '~/'* ]] || current=$HOME/${current#'~/'}
    case $1 in
        directory) mapfile -t COMPREPLY < <(compgen -d -- "$current") ;;
        recording) mapfile -t COMPREPLY < <(compgen -d -- "$current"; compgen -f -X '!*.rec' -- "$current"; compgen -f -X '!*.tmp' -- "$current") ;;
        *) mapfile -t COMPREPLY < <(compgen -f -- "$current") ;;
    esac
}

# The value types of the recording on the line, the recorders of the configuration there. Words are expanded, so only plain
# ones are taken of files.
_@PROGRAM@_offer() {
    case $1 in
        words) mapfile -t COMPREPLY < <(compgen -W "$2" -- "$current") ;;
        type)
            [[ -z $recording ]] || mapfile -t COMPREPLY < <(compgen -W \
                "$(rectool types "$recording" 2>/dev/null | awk 'NR > 1 && $2 ~ /^[A-Za-z0-9_]+$/ { print $2 }')" -- "${current^^}")
            ;;
        recorder) mapfile -t COMPREPLY < <(compgen -W \
            "$(sed -n 's/^ *\[\([A-Za-z0-9_-]*\)\].*/\1/p' "${config:-/dev/null}" 2>/dev/null || true)" -- "$current") ;;
        file | directory | recording) _@PROGRAM@_files "$1" ;;
    esac
}

_@PROGRAM@() {
    local current=${COMP_WORDS[COMP_CWORD]} command=@PROGRAM@ base verbs options operand kind option
    local recording='' config='' word i
    COMPREPLY=()
    for word in "${COMP_WORDS[@]:1}"; do
        word=${word//[\"\'\\]/}
        [[ $word != *.@(rec|tmp) ]] || recording=${word/#'~/'/$HOME/}
    done
    _@PROGRAM@_command "$command"
    kind=
    for ((i = 1; i < COMP_CWORD; ++i)); do
        word=${COMP_WORDS[i]}
        if [[ $word == '=' ]]; then # "--time=utc" comes as three words
            continue
        elif [[ -n $kind ]]; then
            [[ $option != --config ]] || config=$word
            kind=
        elif [[ $word == -* ]]; then
            option=$word
            _@PROGRAM@_value "$command" "$option"
        elif [[ " $verbs " == *" $word "* ]]; then
            command="$base $word"
            _@PROGRAM@_command "$command"
        fi
    done
    [[ $current != '=' ]] || current=
    if [[ -n $kind ]]; then
        _@PROGRAM@_offer "${kind%% *}" "${kind#* }"
    elif [[ $current == -* ]]; then
        _@PROGRAM@_offer words "$options"
    else
        [[ -z $operand ]] || _@PROGRAM@_offer "$operand"
        [[ -z $verbs ]] || mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -W "$verbs" -- "$current")
    fi
}

complete -F _@PROGRAM@ @PROGRAM@
