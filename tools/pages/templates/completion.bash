# bash completion for @PROGRAM@. Needs no other completions; where bash-completion is loaded, the words of
# a command are completed as that command's own.

# Sets what may follow a verb, or a line without one.
@FUNCTION@_tables() {
    options= values= operands=none
    case $1 in
@TABLES@    esac
}

# Completes the value of an option.
@FUNCTION@_value() {
    local how=()
    case $1 in
@VALUES@        *) return ;;
    esac
    @FUNCTION@_offer "${how[@]}" -- "$2"
}

# Offers what compgen finds. A name of a file may have spaces in it.
@FUNCTION@_offer() {
    local IFS=$'\n'
    [[ $1 == -[df] ]] && compopt -o filenames 2>/dev/null # as bash 4 has it
    COMPREPLY=($(compgen "$@"))
}

# Completes a command that begins at a word of the line.
@FUNCTION@_command() {
    if declare -F _comp_command_offset >/dev/null; then
        _comp_command_offset "$1"
    elif declare -F _command_offset >/dev/null; then
        _command_offset "$1"
    elif [[ $1 == "$COMP_CWORD" ]]; then
        @FUNCTION@_offer -c -- "$2"
    else
        @FUNCTION@_offer -f -- "$2"
    fi
}

@FUNCTION@() {
    local verbs='@VERBS@' current=${COMP_WORDS[COMP_CWORD]} verb= i word
    local options values operands
    COMPREPLY=()
    @FUNCTION@_tables ''
    for ((i = 1; i < COMP_CWORD; ++i)); do
        word=${COMP_WORDS[i]}
        if [[ $word && $values == *" $word "* ]]; then
            # bash makes a word of the sign in --option=value.
            [[ ${COMP_WORDS[i + 1]} == = ]] && i=$((i + 1))
            i=$((i + 1))
            if ((i >= COMP_CWORD)); then
                [[ $current == = ]] && current=
                @FUNCTION@_value "$word" "$current"
                return
            fi
        elif [[ $word == -- && $operands == command ]]; then
            @FUNCTION@_command $((i + 1)) "$current"
            return
        elif [[ $word == -* ]]; then
            continue
        elif [[ $verbs && ! $verb ]]; then
            verb=$word
            @FUNCTION@_tables "$verb"
        elif [[ $operands == command ]]; then
            @FUNCTION@_command "$i" "$current"
            return
        fi
    done
    if [[ $current == -* ]]; then
        COMPREPLY=($(compgen -W "$options" -- "$current"))
    elif [[ $verbs && ! $verb ]]; then
        COMPREPLY=($(compgen -W "$verbs" -- "$current"))
    elif [[ $operands == command ]]; then
        @FUNCTION@_command "$COMP_CWORD" "$current"
    elif [[ $operands == folder ]]; then
        @FUNCTION@_offer -d -- "$current"
    fi
}

complete -F @FUNCTION@ @PROGRAM@
