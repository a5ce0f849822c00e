# A headset with an output report for every indicator: a change of several writes the report of the first only, so that
# they are written one after the other.

plug poly-blackwire-3220 as poly
expect log "read_thread: Enter"
device poly
expect ready poly
incoming 7
expect indicator off-hook off
connect 7
expect indicator off-hook on
expect indicator mute off
press mute
expect action MuteCall 7
expect indicator mute on
expect indicator off-hook on
press mute
expect action UnmuteCall 7
expect indicator mute off
end 7
expect indicator off-hook off
expect no action
