#compdef @PROGRAM@
# zsh completion for @PROGRAM@.

# Sets what may follow a verb, or a line without one, as `_arguments` wants it.
@FUNCTION@_arguments() {
    arguments=()
    case $1 in
@TABLES@    esac
}

@FUNCTION@() {
    local curcontext=$curcontext verb= word
    local -a verbs arguments
    local -i i behind_verb=1
    verbs=(
@VERBS@    )
    @FUNCTION@_arguments ''
    for ((i = 2; i < CURRENT; ++i)); do
        word=$words[i]
        if [[ $word == -- && -n ${(M)arguments:#*:_normal} ]]; then
            @FUNCTION@_command $((i + 1))
            return
        elif [[ $word == --*=* ]]; then
            continue
        elif [[ -n ${(M)arguments:#(${word}=|${word}+)*} ]]; then
            ((++i))
        elif [[ $word == -* ]]; then
            continue
        elif [[ -z $verb && $#verbs -gt 0 ]]; then
            verb=$word
            behind_verb=$i
            @FUNCTION@_arguments $verb
        elif [[ -n ${(M)arguments:#*:_normal} ]]; then
            @FUNCTION@_command $i
            return
        fi
    done
    if [[ -z $verb && $#verbs -gt 0 ]]; then
        _arguments -S $arguments '1:verb:{_describe verb verbs}'
        return
    fi
    words=("$words[1]" "${(@)words[behind_verb + 1,-1]}")
    ((CURRENT -= behind_verb - 1))
    _arguments -S $arguments
}

# Completes a command that begins at a word of the line, as if it stood alone.
@FUNCTION@_command() {
    words=("${(@)words[$1,-1]}")
    ((CURRENT -= $1 - 1))
    _normal
}

@FUNCTION@ "$@"
