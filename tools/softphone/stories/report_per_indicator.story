# A headset with an output report for every indicator: a change of several writes the report of the first only, so that
# they are written one after the other.

plug poly-blackwire-3220 as poly
# Opened: a report of the vendor's own.
expect report 16:02:00
device poly
expect ready poly
# Ready: unmuted, on-hook, unmuted.
expect report 09:00
expect report 17:00
expect report 09:00

incoming 7
expect indicator off-hook off
connect 7
expect indicator off-hook on
expect indicator mute off
press mute
expect action muteCall 7
expect indicator mute on
expect indicator off-hook on
press mute
expect action unmuteCall 7
expect indicator mute off
end 7
expect indicator off-hook off
expect no action
