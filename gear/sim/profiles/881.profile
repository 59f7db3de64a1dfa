# Sierra Wireless 881: WCDMA and HSPA, text messages, a status page. With "set model MC7700" and
# "service lte" it plays the MC7700, whose page looks different.

include sierra
include wcdma_town

model = Model 881
revision = K2_0_1_2 TEST 2026/03/02
imei = 001017088100014
mdn = 2015550188
best-access = hspa
temperature-base = 38
band.wcdma = WCDMA 1900
band.gsm = GSM 1900

> AT^HVER
< ^HVER:"HW {hardware}"
< OK

> AT!GETBAND?
when access=lte
< !GETBAND: LTE B17
< OK
> AT!GETBAND?
when access=none
< !GETBAND: No band
< OK
> AT!GETBAND?
when access=gsm
< !GETBAND: {band.gsm}
< OK
> AT!GETBAND?
when access=edge
< !GETBAND: {band.gsm}
< OK
> AT!GETBAND?
< !GETBAND: {band.wcdma}
< OK

> AT!ICCID?
when sim=ready
delay 60ms
< !ICCID: {iccid}
< OK
> AT!ICCID?
< +CME ERROR: 10

> AT*CNTI=0
delay 10ms
< *CNTI: 0,{service}
< OK

> AT+ECIO?
< Tot Ec/Io: {ecio} dB
< OK

# The fallback of modems whose network tells no time in +CCLK.
> AT!TIME?
< !TIME:
< {date}
< {time} (local)
< OK

> AT!GSTATUS?
when form.page=low-power
delay 25ms
< !GSTATUS:
< Current Time:  {uptime}\t\tTemperature: {temperature}
< Bootup Time:   6\t\tMode:        LOW POWER MODE
< OK

> AT!GSTATUS?
when form.page=carrier
when access=lte
delay 25ms
< !GSTATUS:
< Current Time:  {uptime}\t\tTemperature: {temperature}
< Bootup Time:   6\t\tMode:        ONLINE
< System mode:   LTE\t\tPS state:    Attached
< LTE band:      B17\t\tLTE bw:      10 MHz
< LTE Rx chan:   5790\t\tLTE Tx chan: 23790
< EMM state:     Registered\tNormal Service
< RRC state:     RRC Idle
< IMS reg state: No Srv
<
< RSSI (dBm):    {rssi}\t\tTx Power:    0
< RSRP (dBm):    {rsrp}\t\tTAC:         {lac} ({lac-decimal})
< RSRQ (dB):     {rsrq}\t\tCell ID:     {cell} ({cell-decimal})
< SINR (dB):     {ecio}
< OK

> AT!GSTATUS?
when form.page=carrier
when in-service=1
delay 25ms
< !GSTATUS:
< Current Time:  {uptime}\t\tTemperature: {temperature}
< Bootup Time:   6\t\tMode:        ONLINE
< System mode:   WCDMA\t\tPS state:    Attached
< WCDMA band:    WCDMA1900
< WCDMA channel: 9662
< GMM (PS) state:REGISTERED\tNORMAL SERVICE
< MM (CS) state: IDLE\tNORMAL SERVICE
<
< WCDMA L1 state:L1M_FACH\tRRC state:   CELL_FACH
< RX level Carrier 0 (dBm): {rssi}\tLAC:         {lac} ({lac-decimal})
< RX level Carrier 1 (dBm): --\tCell ID:     {cell} ({cell-decimal})
< OK

> AT!GSTATUS?
when access=lte
delay 25ms
< !GSTATUS:
< Current Time:  {uptime}\t\tTemperature: {temperature}
< Bootup Time:   6\t\tMode:        ONLINE
< System mode:   LTE\t\tPS state:    Attached
< LTE band:      B17\t\tLTE bw:      10 MHz
< LTE Rx chan:   5790\t\tLTE Tx chan: 23790
< GMM (PS) state:REGISTERED\tNORMAL SERVICE
< MM (CS) state: IDLE\tNORMAL SERVICE
<
< RSSI (dBm):    {rssi}
< RSRP (dBm):    {rsrp}\t\tTAC:         {lac} ({lac-decimal})
< RSRQ (dB):     {rsrq}\t\tCell ID:     {cell} ({cell-decimal})
< OK

> AT!GSTATUS?
when access=none
delay 25ms
< !GSTATUS:
< Current Time:  {uptime}\t\tTemperature: {temperature}
< Bootup Time:   6\t\tMode:        ONLINE
< System mode:   NO SERVICE\tPS state:    Not attached
< GMM (PS) state:DEREGISTERED\tNO CELL
< MM (CS) state: IDLE\tNO CELL AVAILABLE
< OK

> AT!GSTATUS?
when model=MC7700
delay 25ms
< !GSTATUS:
< Current Time:  {uptime}\t\tTemperature: {temperature}
< Bootup Time:   6\t\tMode:        ONLINE
< System mode:   WCDMA\t\tPS state:    Attached
< WCDMA band:    WCDMA1900
< WCDMA channel: 9662
< GMM (PS) state:REGISTERED\tNORMAL SERVICE
< MM (CS) state: IDLE\tNORMAL SERVICE
<
< WCDMA L1 State:L1M_FACH\tRRC State:   CELL_FACH
< RX level C0:   {rssi}\t\tLAC:         {lac} ({lac-decimal})
< RX level C1:   --\t\tCell ID:     {cell} ({cell-decimal})
< OK

> AT!GSTATUS?
delay 25ms
< !GSTATUS:
< Current Time:  {uptime}\t\tTemperature: {temperature}
< Bootup Time:   6\t\tMode:        ONLINE
< System mode:   WCDMA\t\tPS state:    Attached
< WCDMA band:    WCDMA1900\tGSM band:    GSM1900
< WCDMA channel: 9662\t\tGSM channel: 512
< GMM (PS) state:REGISTERED\tNORMAL SERVICE
< MM (CS) state: IDLE\tNORMAL SERVICE
<
< WCDMA L1 State:L1M_FACH\tRRC State:   CELL_FACH
< RX level (dBm):{rssi}
< Serving Cell:  {cell} ({cell-decimal})
< GPRS State:    READY
< OK
