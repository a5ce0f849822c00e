# A second call, for which the first one is held.

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
incoming 43
expect report 02:01:00
hold 42
expect report 02:01:00
connect 43
expect report 02:01:00
end 43
expect report 02:01:00
resume 42
expect report 02:01:00
expect indicator off-hook on
quit
