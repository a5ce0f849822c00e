# Two headsets: the chosen one shows the call and is listened to, the other one is dark.

plug jabra-link-380c as jabra
expect log "read_thread: Enter"
plug epos-impact-d as epos
expect log "read_thread: Enter"
device jabra
expect ready jabra
connect 1
expect indicator off-hook on jabra
expect indicator off-hook off epos
press epos mute
expect no action

device epos
expect ready epos
expect indicator off-hook on epos
expect indicator off-hook off jabra
press epos mute
expect action MuteCall 1
expect indicator mute on epos
expect indicator mute off jabra

# No device changes nothing.
device none
expect indicator off-hook on epos

# The same headset again, and the call with its mute state.
device jabra
expect ready jabra
expect indicator mute on jabra
end 1
expect indicator off-hook off jabra
unplug epos
expect removed epos
unplug jabra
expect removed jabra
