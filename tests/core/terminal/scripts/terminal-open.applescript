set wasRunning to application id "com.apple.Terminal" is running
tell application id "com.apple.Terminal"
    if wasRunning then
        do script "cd '/it'\\''s \"x\"' && codex"
    else
        -- Launching Terminal opens a window already: use it instead of a second one.
        repeat 30 times
            if (count of windows) > 0 then exit repeat
            delay 0.1
        end repeat
        if (count of windows) > 0 then
            do script "cd '/it'\\''s \"x\"' && codex" in window 1
        else
            do script "cd '/it'\\''s \"x\"' && codex"
        end if
    end if
    activate
end tell
