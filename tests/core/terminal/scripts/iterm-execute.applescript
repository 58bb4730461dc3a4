tell application id "com.googlecode.iterm2"
    activate
    create window with default profile command "/usr/bin/ssh -p 22 -- 'h'"
end tell
