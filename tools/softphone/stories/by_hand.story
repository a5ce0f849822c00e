# A request from the headset may be left alone, or carried out later.

auto off
plug jabra-link-380c as jabra
# Opened: dark.
expect report 02:00:00
expect report 02:00:00
device jabra
expect ready jabra
# Ready: shows that there is no call.
expect report 02:00:00
expect report 02:00:00
expect report 02:00:00
create 1 1
ringback 1
expect call 1 ringback
expect indicator off-hook on
connect 1
press mute
expect action muteCall 1
expect indicator mute off
expect call 1 unmuted
mute 1
expect indicator mute on
auto on
press mute
expect action unmuteCall 1
expect indicator mute off
dnd 1
expect log setDoNotDisturb
end 1
