# Novatel E371 (MC679): LTE with a data call of its own; other words for service and time.

include novatel

model = E371
revision = E371-T2.1 Feb 9 2026
imei = 001017037100016
mdn = 2015550137

# mode, domain, current state
> AT$NWRAT?
delay 10ms
< $NWRAT: 0,2,{nwrat-state}
< OK

# This model tells the power without its sign.
> AT$NWRSSI=15
delay 15ms
< RSSI={rssi-plain}
< ECIO={ecio}
< RSRP={rsrp}
< RSRQ={rsrq}
< OK

> AT$CCLK?
when in-service=1
delay 20ms
< $CCLK: "{stamp}"
< OK
> AT$CCLK?
< ERROR
