tell application id "com.googlecode.iterm2"
    repeat with w in windows
        repeat with t in tabs of w
            repeat with s in sessions of t
                if tty of s is "/dev/ttys1234" then
                    select w
                    tell t to select
                    tell s to select
                    activate
                    return "ok"
                end if
            end repeat
        end repeat
    end repeat
end tell
return "missing"
