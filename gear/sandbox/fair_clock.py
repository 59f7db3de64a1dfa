"""Limits on waits that hold on any machine, also on one that is busy with other things."""

import subprocess
import sys
import time

# Seconds that the piece of work below takes on a developer's idle machine.
AT_REST = 0.02
WORK = "sum(range(500000))"


def slowness():
    """How many times longer than at rest a process start and a small sum take just now; >= 1."""
    started = time.monotonic()
    subprocess.run([sys.executable, "-I", "-S", "-c", WORK], stdin=subprocess.DEVNULL, check=True)
    return max(1.0, (time.monotonic() - started) / AT_REST)


class FairClock:
    """Real time as an idle machine would have spent it: the slower the machine, the slower it runs.

    It looks at the machine every few seconds, when it is asked for the time.
    """

    LOOK_EVERY = 4.0  # seconds

    def __init__(self):
        self.looked_at = time.monotonic()
        self.slowness = 1.0
        self.spent = 0.0

    def seconds(self):
        """Since the clock was made."""
        since = time.monotonic() - self.looked_at
        if since < self.LOOK_EVERY:
            return self.spent + since / self.slowness
        self.slowness = slowness()
        self.spent += since / self.slowness
        self.looked_at += since
        return self.spent
