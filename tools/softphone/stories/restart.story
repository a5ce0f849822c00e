# The plug-in is stopped during a call and started again: the call goes on, and is told of afterwards.

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
connect 1
expect indicator off-hook on
stop
expect indicator off-hook off
mute 1
incoming 2
end 2
forget
start
expect report 02:00:00
expect report 02:00:00
sync
device jabra
expect ready jabra
expect indicator off-hook on
expect indicator mute on
expect call 1 muted
start
stop
stop
start
