"""The life of a daemon that was built for another processor; scripts/cross runs it.

MODEMD_BUILD holds a modem-sim of this machine, and a modemd that runs the daemon. Where that takes the
user-mode emulator, the daemon's whole memory lies from GUEST_BASE on, so that the emulator's own can
be told from it.
"""

import os
import re
import unittest

import test_daemon
from router_sandbox import figure

GUEST_BASE = int(os.environ.get("GUEST_BASE", "0"), 0)
# A 64-bit guest lies some 340 GiB above its base, and the emulator's own memory above 2^46.
GUEST_SIZE = 1 << 40


class Life(test_daemon.Life):
    def test_5_x_memory(self):
        """What a router would give for the daemon: private dirty and proportional set size."""
        pid = int(self.router.read("/var/run/modemd.pid"))
        maps = self.router.read(f"/proc/{pid}/smaps")
        sums = {"Private_Dirty": 0, "Pss": 0}
        guest = False
        for line in maps.splitlines():
            start = re.match(r"([0-9a-f]+)-[0-9a-f]+ ", line)
            if start:
                offset = int(start[1], 16) - GUEST_BASE
                guest = not GUEST_BASE or 0 <= offset < GUEST_SIZE
            name, _, value = line.partition(":")
            if guest and name in sums:
                sums[name] += int(value.split()[0])
        figure(f"memory {sums['Private_Dirty']} {sums['Pss']}")
        self.assertGreater(sums["Private_Dirty"], 10)
        self.assertLess(sums["Private_Dirty"], 2000)


if __name__ == "__main__":
    unittest.main(verbosity=2)
