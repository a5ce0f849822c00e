# The mute key of the headset, in a call. The client carries out what it asks for.

plug jabra-link-380c A1B2C3 as headset
# Opened: dark.
expect report 02:00:00
expect report 02:00:00
device headset-A1B2C3 "Jabra Link 380c" A1B2C3
expect ready headset
# Ready: shows that there is no call.
expect report 02:00:00
expect report 02:00:00
expect report 02:00:00
connect 42
expect report 02:01:00

say Call 42 is up.
key headset mute down
expect action muteCall 42
expect call 42 muted
expect report 02:05:00
expect indicator mute on
# The release means nothing, so that the headset is told once more what to show.
key headset mute up
expect report 02:05:00
key headset mute down
expect action unmuteCall 42
expect call 42 unmuted
expect report 02:01:00
expect indicator mute off
key headset mute up
expect report 02:01:00
quit
