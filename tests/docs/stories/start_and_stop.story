# The plug-in is started, stopped in a call and started again.

stop
plug jabra-link-380c A1B2C3 as headset

say The headset is plugged in.
start
expect report 02:00:00
expect report 02:00:00
device headset-A1B2C3 "Jabra Link 380c" A1B2C3
expect ready headset
expect report 02:00:00
expect report 02:00:00
expect report 02:00:00
incoming 42
expect report 02:00:00
connect 42
expect report 02:01:00
expect indicator off-hook on

say Stopped in the middle of the call. The call goes on.
stop
expect report 02:01:00
expect report 02:00:00
expect indicator off-hook off

say Started again. The plug-in knows no calls.
start
expect report 02:00:00
expect report 02:00:00
sync
device headset-A1B2C3 "Jabra Link 380c" A1B2C3
expect ready headset
expect report 02:01:00
expect report 02:01:00
expect indicator off-hook on
quit
