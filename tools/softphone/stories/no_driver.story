# A headset of a vendor that has no driver is listed and can be chosen, and shows and asks for nothing.

plug yealink-wh66 as yealink
expect log "read_thread: Enter"
device yealink
expect ready yealink
incoming 1
connect 1
press mute
expect no action
expect no report for 0
expect indicator off-hook off
end 1
