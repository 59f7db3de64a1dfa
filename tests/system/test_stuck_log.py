"""A log daemon that stops reading holds the daemon, and what can be seen of it from outside."""

import pathlib
import re
import time
import unittest

from router_sandbox import Router

DEVICE = "/dev/ttyUSB0"
STATISTICS = "/var/log/wireless.cardstats"
# Twice the longest pass, which is a restart of the call.
STALE = 30  # seconds


class StuckLogger(unittest.TestCase):
    """One story: the log daemon stops, everything stands still, it goes on and so does all else."""

    @classmethod
    def setUpClass(cls):
        cls.router = Router("E362")
        # Many lines, so that the socket is full within a pass.
        cls.router.start_daemon("-E362", "-d", "-d", DEVICE)
        cls.router.wait_for(cls.router.addresses, "an address")
        cls.router.wait_for(lambda: cls.router.exists(STATISTICS), "the status file")
        cls.logger = cls.router.shell("ps | awk '/[s]yslogd -n/ {print $1}'").strip()
        cls.daemon = cls.router.read("/var/run/modemd.pid").strip()

    @classmethod
    def tearDownClass(cls):
        cls.router.shell(f"kill -CONT {cls.logger}", check=False)
        cls.router.close()

    def age(self):
        """Seconds since the status file was written."""
        return time.time() - self.router.path(STATISTICS).stat().st_mtime

    def waits_in(self):
        """The system call in which the daemon stands, with its first argument."""
        process = self.router.path(f"/proc/{self.daemon}/syscall")
        return re.match(r"(\S+)(?: (0x[0-9a-f]+))?", process.read_text()).groups()

    def signal_is_pending(self):
        status = self.router.read(f"/proc/{self.daemon}/status")
        return int(re.search(r"^ShdPnd:\s*([0-9a-f]+)", status, re.MULTILINE)[1], 16) != 0

    def stands_at_the_log(self):
        descriptor = self.waits_in()[1]
        if descriptor is None:
            return False
        link = pathlib.Path(f"{self.router.root}/proc/{self.daemon}/fd/{int(descriptor, 16)}")
        return link.is_symlink() and str(link.readlink()).startswith("socket:")

    def test_1_status_files_grow_old_and_the_modem_hears_nothing(self):
        self.router.shell(f"kill -STOP {self.logger}")
        self.router.wait_for(lambda: self.age() > STALE and self.stands_at_the_log(),
                             "an old status file")
        heard = len(self.router.heard())
        self.router.wait_for(lambda: self.age() > STALE + 5, "an older one")
        self.assertEqual(len(self.router.heard()), heard)
        self.assertTrue(self.stands_at_the_log(), self.waits_in())

    def test_2_the_process_is_there_and_does_not_heed_sigterm(self):
        self.router.shell(f"kill -TERM {self.daemon}")
        self.router.wait_for(lambda: not self.signal_is_pending(), "the signal to arrive")
        self.router.wait_for(self.stands_at_the_log, "the daemon to stand again")
        self.assertTrue(self.router.exists(STATISTICS), "no clean-up has begun")

    def test_3_the_next_daemon_stands_at_its_first_line(self):
        self.router.shell(f"kill -KILL {self.daemon}")
        self.router.wait_for_exit()
        heard = len(self.router.heard())
        self.router.start_daemon("-E362", DEVICE)
        cls = type(self)
        cls.daemon = self.router.wait_for(
            lambda: self.router.shell("pidof modemd || true").strip(), "the next daemon")
        self.router.wait_for(self.stands_at_the_log, "it to stand")
        self.assertNotEqual(self.router.read("/var/run/modemd.pid"), self.daemon)
        self.assertEqual(len(self.router.heard()), heard)

    def test_4_it_goes_on_when_the_log_does(self):
        self.router.shell(f"kill -CONT {self.logger}")
        self.router.wait_for(lambda: self.age() < STALE, "a new status file")
        self.assertEqual(self.router.read("/var/run/modemd.pid"), self.daemon)


if __name__ == "__main__":
    unittest.main()
