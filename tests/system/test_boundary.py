"""The process boundary: what the daemon makes of a careless parent, and what its children get."""

import re
import unittest

from router_sandbox import BUILD, Router

DEVICE = "/dev/ttyUSB0"
# As a start script might: nothing open, nobody waits for children, all signals blocked or ignored,
# files for everybody.
CARELESS_START = ("umask 0; exec 0<&- 1>&- 2>&-;"
                  " exec /usr/bin/env --ignore-signal=CHLD,HUP,PIPE,USR1 --block-signal"
                  f" {BUILD}/modemd -E362 {DEVICE}")


def mask(status, name):
    """The signal numbers in a mask of /proc/PID/status."""
    bits = int(re.search(rf"^{name}:\s*([0-9a-f]+)", status, re.MULTILINE).group(1), 16)
    return {number for number in range(1, 65) if bits >> (number - 1) & 1}


def descriptors(listing):
    """Descriptor number to what is open there, of a long listing of /proc/PID/fd."""
    return {int(number): target for number, target in re.findall(r" (\d+) -> (\S+)", listing)}


def wait_for_client(router):
    """The process id of the DHCP client, once it has an address."""
    router.wait_for(router.addresses, "an address")
    return router.wait_for(router.dhcp_client, "the DHCP client in the background")


class Children(unittest.TestCase):
    """A client that lives on must not keep the port of a modem that is unplugged."""

    def test_the_client_holds_neither_port_nor_log_nor_pid_file(self):
        with Router("E362") as router:
            router.start_daemon("-E362", DEVICE)
            client = wait_for_client(router)
            self.assertIn("udhcpc", router.read(f"/proc/{client}/cmdline"))
            daemon = router.read("/var/run/modemd.pid").strip()
            own = descriptors(router.shell(f"ls -l /proc/{daemon}/fd"))
            own = {target for number, target in own.items() if number > 2}
            self.assertGreaterEqual(len(own), 3, "port, log, lock")
            inherited = descriptors(router.read("/run/udhcpc.inherited"))
            kept = descriptors(router.shell(f"ls -l /proc/{client}/fd"))
            self.assertTrue(inherited and kept, "nothing could be seen")
            self.assertEqual(own & {*inherited.values(), *kept.values()}, set())


class CarelessParent(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.router = Router("E362")
        cls.router.shell(f"({CARELESS_START}) &")
        cls.client = wait_for_client(cls.router)
        cls.status = cls.router.read(f"/proc/{cls.client}/status")

    @classmethod
    def tearDownClass(cls):
        cls.router.close()

    def test_the_daemon_has_its_port_above_the_standard_descriptors(self):
        daemon = self.router.read("/var/run/modemd.pid").strip()
        held = descriptors(self.router.shell(f"ls -l /proc/{daemon}/fd"))
        self.assertEqual([held.get(number) for number in range(3)], ["/dev/null"] * 3)
        self.assertTrue(any(target.startswith("/dev/pts/") for target in held.values()), held)

    def test_no_signal_reaches_the_client_blocked_or_ignored(self):
        self.assertEqual(mask(self.status, "SigBlk"), set())
        self.assertEqual(mask(self.status, "SigIgn") & {1, 10, 13, 17}, set())

    def test_the_client_writes_files_for_nobody_else(self):
        self.assertIn("Umask:\t0022", self.status)

    def test_a_shell_result_is_known_though_children_were_ignored(self):
        self.assertFalse([line for line in self.router.log() if "does not appear to exist" in line])

    def test_published_files_are_for_everybody_to_read_and_nobody_to_write(self):
        files = ("/var/log/wireless.cardstats", "/var/log/lightbar", "/tmp/udhcpc.wwan0.lfc",
                 "/var/run/modemd.pid")
        for path in files:
            self.router.wait_for(lambda path=path: self.router.exists(path), path)
        self.assertEqual(self.router.shell(f"stat -c %a {' '.join(files)}").split(), ["644"] * 4)


if __name__ == "__main__":
    unittest.main()
