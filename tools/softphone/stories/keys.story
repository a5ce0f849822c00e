# Which keys ask for something: the mute key, for a connected call. The hook switch and the flash key do not.

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
incoming 1
press mute
expect no action
press hook
expect no action
connect 1
press hook
press flash
key hook down
key hook up
expect no action
press mute
expect action muteCall 1
press 0B:2F
expect action unmuteCall 1
hold 1
press mute
expect no action
end 1
