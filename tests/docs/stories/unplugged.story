# The headset is pulled out in the middle of a call, and comes back.

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
unplug headset
expect removed headset
# The plug-in tells of the removal first and lets go of the headset then.
expect log "remove_device: now connected"
replug headset
expect report 02:00:00
expect report 02:00:00
device headset-A1B2C3 "Jabra Link 380c" A1B2C3
expect ready headset
expect report 02:01:00
expect report 02:01:00
expect indicator off-hook on
quit
