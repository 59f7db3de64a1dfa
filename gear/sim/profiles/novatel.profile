# What the two Novatel LTE modems share: the data call, the SIM's state, the temperature.

include base
include lte_town

manufacturer = Novatel
best-access = lte
signal = 20
features = lte qmi
service.wcdma = WCDMA
service.hspa = HSPA
service.edge = EDGE
service.gsm = GPRS
connect-time = 1500ms
disconnect-time = 400ms
call-survives = 60s

context 1 IPV4V6 ims
context 2 IPV4V6 admin
context 3 IPV4V6 internet

> AT$NWQMISTATUS
when form.qmi=names
delay 80ms
< $NWQMISTATUS: {call-result-name}
< \tQMI State: {call-state}
< \tCall End Reason:{call-end-reason}
< \tCall Duration: {call-seconds} seconds
< OK
> AT$NWQMISTATUS
delay 80ms
< $NWQMISTATUS: {call-result-word}: {call-result}
< QMI State: {call-state}
< Call End Reason: {call-end-reason}
< Call Duration: {call-duration}
< OK

> AT$QCSIMSTAT?
when sim=ready
when form.simstat=tight
delay 20ms
< $QCSIMSTAT: 0,SIM INIT COMPLETED
< OK
> AT$QCSIMSTAT?
when sim=ready
delay 20ms
< $QCSIMSTAT: 0, SIM INIT COMPLETED
< OK
> AT$QCSIMSTAT?
when sim=locked
< $QCSIMSTAT: 0, SIM PIN REQUIRED
< OK
> AT$QCSIMSTAT?
< $QCSIMSTAT: 1, SIM NOT INSERTED
< OK

> AT+TEMP
< +TEMP: {temperature}
< OK

> ATI3
< Manufacturer: {manufacturer}
< Revision: {revision}
< OK

> AT+ICCID?
when sim=ready
delay 60ms
< $NWICCID: {iccid}
< OK
> AT+ICCID?
< +CME ERROR: 10
