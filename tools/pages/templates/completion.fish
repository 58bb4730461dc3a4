# fish completion for @PROGRAM@.

# Prints the verb, or an empty line before it, and then, once the command has begun, a line with "--" and
# a line for each of its words before the cursor.
function @FUNCTION@_line
    set -l verb ''
    set -l words (commandline -opc)[2..]
    while set -q words[1]
        set -l word $words[1]
        set -e words[1]
        if contains -- $word (string split ' ' -- '@VALUED@')
            set -e words[1]
        else if test "$word" = --; and contains -- "$verb" (string split ' ' -- '@COMMANDS@')
            printf '%s\n' "$verb" -- $words
            return
        else if string match -q -- '-*' $word
            continue
        else if test -z "$verb"
            set verb $word
        else if contains -- "$verb" (string split ' ' -- '@COMMANDS@')
            printf '%s\n' "$verb" -- $word $words
            return
        end
    end
    printf '%s\n' "$verb"
end

# Tells whether options of our own may come here.
function @FUNCTION@_takes_ours
    set -l line (@FUNCTION@_line)
    test (count $line) -lt 2
end

# Tells whether they may, behind one of these verbs.
function @FUNCTION@_is_at
    set -l line (@FUNCTION@_line)
    test (count $line) -lt 2; and contains -- "$line[1]" $argv
end

# Tells whether a command, or a word of it, may come here.
function @FUNCTION@_takes_command
    set -l line (@FUNCTION@_line)
    if test (count $line) -lt 2; and string match -q -- '-*' (commandline -ct)
        return 1
    end
    test -n "$line[1]"; and contains -- "$line[1]" (string split ' ' -- '@COMMANDS@')
end

# Completes the command as if it stood alone.
function @FUNCTION@_command
    set -l line (@FUNCTION@_line)
    complete --do-complete=(string join ' ' -- (string escape -- $line[3..]) (commandline -ct))
end

complete -c @PROGRAM@ -f
complete -c @PROGRAM@ -n @FUNCTION@_takes_command -a '(@FUNCTION@_command)'
@TABLES@
