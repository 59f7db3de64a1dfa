# The same drive in a modem that knows no LTE.

at 0s    service hspa
at 0s    register home
at 0s    cell 1A2B 1C3D401
at 0s    signal 24 0
at 60s   signal 19 0
at 90s   cell 1A2B 1C3D402
at 90s   signal 22 1
at 150s  signal 12 2
at 200s  service wcdma
at 200s  signal 9 3
at 250s  service edge
at 250s  cell 1A2C 0A0B117
at 250s  signal 16 1
at 280s  register roaming
at 280s  cell 2F01 00C0DE1
at 280s  signal 14 1
at 340s  signal 6 4
at 370s  signal 2 6
at 380s  service none
at 380s  signal 99
at 450s  register roaming
at 450s  service edge
at 450s  signal 7 3
at 480s  register home
at 480s  service hspa
at 480s  cell 1A2B 1C3D403
at 480s  signal 13 1
at 530s  signal 19 0
at 570s  cell 1A2B 1C3D401
at 570s  signal 23 0
at 600s  repeat
