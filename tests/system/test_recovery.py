"""Faults of docs/recovery.md in real time, under the keeper of packaging/.

What the page quotes of a fault's first minute must stand in the real system log, too.
"""

import re
import unittest

from router_sandbox import BUILD, PROJECT, Router

SCRIPT = str(PROJECT / "packaging" / "sysv" / "modemd")
LIBEXEC = PROJECT / "packaging" / "libexec"
STARTING = "v1.45 starting"
ROW = re.compile(r"^\| `(.*)` \| ([^|]*) \| (\d+)[^|]* \| [^|]*\|$", re.MULTILINE)
SOON = 60  # seconds
VARYING = {"HH:MM:SS": r"\d+:\d\d:\d\d", "attempt N": r"attempt \d"}


def told_lines(fault):
    """Patterns of the log lines that always come in the first minute of this fault."""
    page = (PROJECT / "docs" / "recovery.md").read_text()
    section = page.split(f"\n### {fault}\n")[1].split("\n### ")[0]
    lines = []
    for line, first, times in ROW.findall(section):
        latest = first.replace("at once", "0 s").split(" to ")[-1]
        soon = "min" not in latest and int(latest.split()[0]) < SOON
        if soon and times != "0":
            pattern = re.escape(line)
            for word, digits in VARYING.items():
                pattern = pattern.replace(re.escape(word), digits)
            lines.append(pattern)
    return lines


class Story:
    """A router whose link is up and known to be so, under its keeper."""

    @classmethod
    def setUpClass(cls):
        cls.router = router = Router("E362")
        router.path("/etc/default").mkdir(exist_ok=True)
        router.write("/etc/default/modemd", f"LIBEXEC={LIBEXEC}\nDAEMON={BUILD}/modemd\n")
        router.run(SCRIPT, "start")
        router.wait_for(router.addresses, "the first address")
        cls.wait_for_known_call()

    @classmethod
    def tearDownClass(cls):
        cls.router.close()

    @classmethod
    def wait_for_known_call(cls):
        cls.router.wait_for(lambda: cls.router.statistics().get("CELLMODEM_QMI_STATE", "")
                            .startswith("CONNECTED"), "the call to be known")

    def setUp(self):
        self.logged_before = len(self.router.log())
        self.leases_before = self.router.dhcp("DHCPACK")

    def log_since(self):
        return self.router.log()[self.logged_before:]

    def wait_for_told_lines(self, fault):
        patterns = told_lines(fault)
        self.assertTrue(patterns, "the page tells no line")
        for pattern in patterns:
            self.router.wait_for(
                lambda: any(re.fullmatch(pattern, line) for line in self.log_since()),
                f"the line {pattern}")

    def wait_for_a_new_lease(self):
        self.router.wait_for(lambda: self.router.dhcp("DHCPACK") > self.leases_before, "a lease")
        self.router.wait_for(self.router.addresses, "an address")
        self.router.wait_for(lambda: self.router.reaches("8.8.8.8"), "an answer from far away")

    def daemon(self):
        return self.router.read("/var/run/modemd.pid").strip()


class KilledDaemon(Story, unittest.TestCase):
    def test_is_mended_by_the_keeper_and_the_link_stays(self):
        before = self.daemon()
        self.router.shell(f"kill -9 {before}")
        self.assertTrue(self.router.addresses(), "the client is not the daemon's child")
        self.router.wait_for(lambda: self.daemon() not in ("", before), "the next daemon")
        self.wait_for_told_lines("killed")
        self.wait_for_known_call()
        self.assertTrue(self.router.addresses())


class SecondCopy(Story, unittest.TestCase):
    def test_gives_way(self):
        before = self.daemon()
        self.router.start_daemon("-E362", "/dev/ttyUSB0")
        self.assertEqual(self.router.wait_for_exit(), 255)
        self.wait_for_told_lines("second-copy")
        self.assertEqual(self.daemon(), before)


class DroppedCall(Story, unittest.TestCase):
    def test_comes_back(self):
        self.router.ctl("drop-call")
        self.wait_for_told_lines("call-dropped")
        self.wait_for_a_new_lease()


class PulledOutModem(Story, unittest.TestCase):
    def test_comes_back(self):
        before = self.daemon()
        self.router.ctl("unplug")
        self.wait_for_told_lines("unplugged")
        self.assertNotEqual(self.daemon(), before)
        self.assertIn("ResetPCMCIA now", self.router.recorded())
        self.router.ctl("plug")
        self.wait_for_a_new_lease()


class SilentCarrier(Story, unittest.TestCase):
    def test_gives_no_address(self):
        self.router.run("/sbin/carrier", "no-answer")
        self.router.ctl("drop-call")
        self.wait_for_told_lines("no-address")
        self.assertEqual(self.router.addresses(), [])
        self.router.run("/sbin/carrier", "answer")
        self.wait_for_a_new_lease()


class MissingClient(Story, unittest.TestCase):
    def test_is_started_when_it_is_there_again(self):
        self.router.shell("mv /sbin/udhcpc /sbin/udhcpc.away")
        self.router.ctl("drop-call")
        self.wait_for_told_lines("no-address")
        self.assertEqual(self.router.addresses(), [])
        self.router.shell("mv /sbin/udhcpc.away /sbin/udhcpc")
        self.wait_for_a_new_lease()


class PulledOutSim(Story, unittest.TestCase):
    def test_comes_back(self):
        self.router.ctl("sim", "absent")
        self.wait_for_told_lines("sim-out")
        self.router.ctl("sim", "ready")
        self.wait_for_a_new_lease()


if __name__ == "__main__":
    unittest.main()
