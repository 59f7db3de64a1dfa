# Novatel E362 (USB551L): LTE with a data call of its own.

include novatel

model = E362
revision = E362-T1.0 Apr 2 2026
imei = 001017036200015
mdn = 2015550136
service.lte = LTE

> AT$NWSYSMODE
delay 10ms
< {service}
< OK

> AT$NWRSSI=15
delay 15ms
< RSSI={rssi}
< ECIO={ecio}
< RSRP={rsrp}
< RSRQ={rsrq}
< OK

> AT$NWNN
when in-service=1
< {operator-now}
< OK
> AT$NWNN
< OK

> AT$NWMDN
when sim=ready
< {mdn}
< OK
> AT$NWMDN
< +CME ERROR: 10

# year.month.day.hour.minute.second
> AT$NWLTIME
when in-service=1
delay 20ms
< {date-dots}.{time-dots}
< OK
> AT$NWLTIME
< ERROR
