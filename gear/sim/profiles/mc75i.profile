# Cinterion MC75i: EDGE, spoken to at 115200 baud.

include base

manufacturer = Cinterion
model = MC75i
revision = REVISION 01.201
imei = 001017007500013
mdn = 2015550175
best-access = edge

> AT+CSQ?
< ERROR

> AT^SCID
when sim=ready
delay 60ms
< ^SCID: {iccid}
< OK
> AT^SCID
< +CME ERROR: 10
