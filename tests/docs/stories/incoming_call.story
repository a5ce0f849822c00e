# An incoming call that the user answers and ends in the client.

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

say A headset is active. There is no call.
incoming 42
expect report 02:00:00
connect 42
expect report 02:01:00
expect indicator off-hook on
end 42
expect report 02:01:00
expect report 02:00:00
expect report 02:00:00
expect indicator off-hook off
quit
