tell application id "com.googlecode.iterm2"
    activate
    set newWindow to (create window with default profile)
    tell current session of newWindow to write text "cd '/it'\\''s \"x\"' && codex"
end tell
