# Two headsets: the chosen one shows the call and is listened to, the other one is dark.

plug jabra-link-380c as jabra
expect report 02:00:00 jabra
expect report 02:00:00 jabra
plug epos-impact-d as epos
expect report 03:00 epos
expect report 03:00 epos
device jabra
expect ready jabra
expect report 02:00:00 jabra
expect report 02:00:00 jabra
expect report 02:00:00 jabra
connect 1
expect indicator off-hook on jabra
expect indicator off-hook off epos
press epos mute
expect no action

# Chosen, it shows the call: off-hook, then its mute state.
device epos
expect ready epos
expect report 03:02 epos
expect report 03:02 epos
expect indicator off-hook off jabra
press epos mute
expect action muteCall 1
expect indicator mute on epos
expect indicator mute off jabra

# No device changes nothing.
device none
expect indicator off-hook on epos

# The first headset again: the call, and that it is muted.
forget
device jabra
expect ready jabra
expect indicator mute on jabra
expect indicator off-hook off epos
end 1
expect indicator off-hook off jabra
unplug epos
expect removed epos
unplug jabra
expect removed jabra
