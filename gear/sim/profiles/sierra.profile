# What the Sierra Wireless modems share: system information, identity, carrier.

include base

manufacturer = Sierra Wireless
priid = 9900123
priid-revision = 01.02
hardware = 1.0

# status, domain, roaming, mode, SIM
> AT^SYSINFO
delay 10ms
< ^SYSINFO:{sysinfo-status},{sysinfo-domain},{roaming},{sysinfo-mode},{sysinfo-sim}
< OK

> AT!PRIID?
< PRI Part Number:    {priid}
< Revision:           {priid-revision}
< OK

> AT!GVER?
< !GVER: {revision}
< OK

> AT!GETRAT?
< !GETRAT: {service}
< OK

> AT!GSMINFO?
when in-service=1
delay 60ms
< PLMN: {plmn-spaced}
< LAC: 0x{lac} ({lac-decimal})
< Cell ID: 0x{cell} ({cell-decimal})
< OK
> AT!GSMINFO?
delay 60ms
< No service
< OK
