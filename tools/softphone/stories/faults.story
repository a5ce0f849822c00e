# Headsets that misbehave. A fault lasts until it is taken back or the headset is plugged again.

say A headset that refuses to be opened is listed, but shows nothing.
stop
plug jabra-link-380c as jabra
fault jabra open-refused
start
device jabra
expect ready jabra within 4000
connect 1
expect no report
expect indicator off-hook off
end 1

say Plugged again, it works.
unplug jabra
forget
replug jabra
expect report 02:00:00
expect report 02:00:00
device jabra
expect ready jabra
expect report 02:00:00
expect report 02:00:00
expect report 02:00:00
connect 2
expect indicator off-hook on

say Writes fail, and work again.
fault jabra write-fails
end 2
expect indicator off-hook on within 0
fault jabra none
connect 3
end 3
expect indicator off-hook off

say A failed read takes the headset away from the plug-in.
fault jabra read-fails
expect removed jabra
expect log "remove_device: now connected"

say A headset that goes while it is written to is removed.
unplug jabra
forget
replug jabra
expect report 02:00:00
expect report 02:00:00
device jabra
expect ready jabra
expect report 02:00:00
expect report 02:00:00
expect report 02:00:00
connect 4
expect indicator off-hook on
fault jabra unplug-in-write
end 4
expect removed jabra
