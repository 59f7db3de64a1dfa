# What every modem here can do: the commands of TS 27.007 and 27.005 that only tell the state.
# The models include this file and add or replace what is their own. All numbers are invented and
# come from ranges kept for tests: network 001, type approval 001017, telephone 555-01xx.

manufacturer = Example Modems
model = Generic
revision = 1.0.0
imei = 001017000000003
imsi = 001010123456789
iccid = 8900101000000000019
mdn = 2015550123
service-centre = +12015550100

operator = Example Net
plmn = 001010
roaming.operator = Harbor Cellular
roaming.plmn = 001020
operators = 200
operators-delay = 600ms

best-access = wcdma
signal = 17
service.none = No Service
service.gsm = GPRS
service.edge = EDGE
service.wcdma = UMTS
service.hspa = HSDPA/HSUPA
service.lte = LTE
temperature-base = 36
timezone = 0

# What answers look like; the control word "form" knows the others.
form.cnum = usual
form.cind = usual
form.page = usual
form.qmi = usual
form.simstat = usual

context 1 IP internet

> AT+CSQ
< +CSQ: {csq},{ber}
< OK

# Signal is the second of eight: battery, signal, service, message, call, sound, roaming, store full.
# With the strength of the signal, 0 to 5, behind all others.
> AT+CIND?
when form.cind=last
< +CIND: 5,99,{in-service},0,{sms-unread},0,{roaming},{sms-full},{indicator}
< OK
> AT+CIND?
< +CIND: 5,{indicator},{in-service},{sms-unread},0,0,{roaming},{sms-full}
< OK

> AT+CGATT?
< +CGATT: {in-service}
< OK

> AT+CCLK?
< +CCLK: "{stamp}"
< OK

> AT+CSCA?
< +CSCA: "{service-centre}",145
< OK

> AT+CIMI
when sim=ready
< {imsi}
< OK
> AT+CIMI
when sim=locked
< +CME ERROR: 11
> AT+CIMI
< +CME ERROR: 10

> AT+CNUM
when sim=ready
when form.cnum=no-name
delay 20ms
< +CNUM: ,"{mdn}",129
< OK
> AT+CNUM
when sim=ready
when form.cnum=plus
delay 20ms
< +CNUM: "","+1{mdn}",145
< OK
> AT+CNUM
when sim=ready
delay 20ms
< +CNUM: "Line 1","{mdn}",129
< OK
> AT+CNUM
< +CME ERROR: 10

> AT+GMI
< {manufacturer}
< OK

> AT+CGMI
< {manufacturer}
< OK

> AT+GMM
< {model}
< OK

> AT+CGMM
< {model}
< OK

> AT+CGMR
< {revision}
< OK

> AT+GSN
< {imei}
< OK

> AT+CGSN
< {imei}
< OK

# Not in the standard, but most modems take it.
> AT+CSQ?
< +CSQ: {csq},{ber}
< OK
