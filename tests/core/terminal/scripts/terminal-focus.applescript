tell application id "com.apple.Terminal"
    repeat with w in windows
        repeat with t in tabs of w
            if tty of t is "/dev/ttys003" then
                set selected of t to true
                set index of w to 1
                activate
                return "ok"
            end if
        end repeat
    end repeat
end tell
return "missing"
