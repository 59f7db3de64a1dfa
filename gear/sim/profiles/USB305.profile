# Sierra Wireless USB 305 "Lightning": WCDMA and HSPA on a stick. It does not know *CNTI, so that
# its service is read with !GETRAT.

include sierra
include wcdma_town

model = USB305
revision = L1_0_2_1 TEST 2026/01/19
imei = 001017030500014
mdn = 2015550135
best-access = hspa
service.hspa = HSPA

> AT*CNTI=0
< ERROR
