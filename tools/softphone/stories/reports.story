# Every output report of a call, byte by byte, on a headset that has all its indicators in one report: bit 0 of the
# second byte is off-hook, bit 2 is mute.

plug jabra-link-380c as jabra
# Opened: mute off, off-hook off.
expect report 02:00:00
expect report 02:00:00
device jabra
expect ready jabra
# Ready: shows that there is no call.
expect report 02:00:00
expect report 02:00:00
expect report 02:00:00

# Ringing writes the mute indicator only.
incoming 1
expect report 02:00:00
connect 1
expect report 02:01:00

press mute
expect action muteCall 1
# The key's release means nothing, so the headset is told once more that it is in use; in which order the two come
# depends on how fast the client is.
expect indicator mute on
expect call 1 muted
expect no ready

end 1
expect indicator off-hook off
expect indicator mute off
