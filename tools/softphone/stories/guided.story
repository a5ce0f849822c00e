# A call with a headset from beginning to end, told step by step. Every claim is checked.

say The user chooses the headset for calls before it is there: audio devices show up early.
device usb-Jabra_Link_380c_50C2ED83A1F4-00 "Jabra Link 380c" 50C2ED83A1F4

say The headset is plugged in. The plug-in finds it and makes it dark: mute off, off-hook off.
plug jabra-link-380c as jabra
expect report 02:00:00 within 4000
expect report 02:00:00

say It tells the client that the headset is ready, and shows that there is no call.
expect ready jabra within 4000
expect report 02:00:00
expect report 02:00:00
expect report 02:00:00

say A call comes in. Ringing lights no indicator: it is the client that plays the sound.
incoming 42
expect call 42 ringing
expect report 02:00:00
expect indicator off-hook off

say The client answers. The off-hook indicator is lit.
connect 42
expect report 02:01:00
expect indicator off-hook on

say The user presses the mute key. The plug-in asks the client, and the client mutes the call.
press mute
expect action muteCall 42
expect call 42 muted
expect indicator mute on

say The user presses it again.
press mute
expect action unmuteCall 42
expect call 42 unmuted
expect indicator mute off

say The call is held, and a second one comes in. The headset stays in use.
hold 42
incoming 43
connect 43
expect call 42 held
expect call 43 connected
expect indicator off-hook on

say The second call ends, the first is taken up again.
end 43
resume 42
expect call 43 ended
expect call 42 connected
expect indicator off-hook on

say In the middle of the call the headset is pulled out. The call goes on.
unplug jabra
expect removed jabra
expect call 42 connected
# The plug-in tells of the removal first and lets go of the headset then.
expect log "remove_device: now connected"
forget

say It comes back, dark at first.
replug jabra
expect report 02:00:00
expect report 02:00:00
expect indicator off-hook off

say The client chooses it again, and it shows the call that is still up.
device jabra
expect ready jabra
expect report 02:01:00
expect report 02:01:00
expect indicator off-hook on
press mute
expect action muteCall 42
expect indicator mute on

say The call ends, and all is dark.
end 42
expect call 42 ended
expect indicator off-hook off
expect indicator mute off
expect no action
