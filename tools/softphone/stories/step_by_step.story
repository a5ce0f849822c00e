# A call step by step, each report waited for before the next step: the same on every platform, headsets in the process or
# headsets of the system, since nothing is left to who is faster.

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

incoming 42
expect report 02:00:00
connect 42
expect report 02:01:00

# The key asks, and its release has the headset told once more that it is in use; only then the client mutes.
press mute
expect action muteCall 42
expect report 02:01:00
mute 42
expect report 02:05:00
press mute
expect action unmuteCall 42
expect report 02:05:00
unmute 42
expect report 02:01:00

hold 42
expect report 02:01:00
resume 42
expect report 02:01:00

# Pulled out in the middle of the call, and back: the call is shown again.
unplug jabra
expect removed jabra
replug jabra
expect report 02:00:00
expect report 02:00:00
device jabra
expect ready jabra
expect report 02:01:00
expect report 02:01:00

# Another headset takes over; this one goes dark.
plug poly-blackwire-3220 as poly
expect report 16:02:00 poly
device poly
expect report 02:01:00 jabra
expect report 02:00:00 jabra
expect ready poly
expect report 17:01 poly
expect report 09:00 poly

end 42
expect report 09:00 poly
expect report 17:00 poly
expect report 09:00 poly
stop
expect report 09:00 poly
expect report 17:00 poly
expect no report
