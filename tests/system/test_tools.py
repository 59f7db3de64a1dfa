"""The technician's tool and the start script, on the router they are made for."""

import unittest

from router_sandbox import BUILD, PROJECT, Router

TOOL = str(PROJECT / "tools" / "modemctl")
SCRIPT = str(PROJECT / "packaging" / "modemd.init")

STATISTICS = """#File generated 2026-03-14 09:15:02
#Device Properties :
CELLMODEM_IMEI=001017036200018
CELLMODEM_MDN=2015550136
CELLMODEM_MANU=Maker
CELLMODEM_MODEL=E362
CELLMODEM_FIRMWARE_V=1.2
CELLMODEM_CARRIER=Example\x1b[2JNet
CELLMODEM_CURRENT_RSSI=-73
CELLMODEM_CURRENT_CSQ=31
CELLMODEM_QMI_STATE=CONNECTED
CELLMODEM_QMI_CALL_TIME=00:01:02
CELLMODEM_SERVICE_TYPE=LTE
"""


class Modemctl(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.router = Router()

    @classmethod
    def tearDownClass(cls):
        cls.router.close()

    def page(self):
        lines = self.router.run("/bin/sh", TOOL, "status").splitlines()
        return {line[:14].strip(): line[15:] for line in lines}

    def test_1_says_so_when_the_daemon_has_written_nothing(self):
        answer = self.router.shell(f"{TOOL} status 2>&1; echo status=$?")
        self.assertIn("is the daemon running?", answer)
        self.assertIn("status=1", answer)

    def test_2_shows_the_page(self):
        self.router.write("/var/log/wireless.cardstats", STATISTICS)
        self.router.write("/var/log/wirelessactivation_status", "Reg Home\n")
        page = self.page()
        self.assertEqual(page["Modem"], "Maker E362")
        self.assertEqual(page["Signal"], "#" * 20 + " -73 dBm, CSQ 31")
        self.assertEqual(page["Call"], "CONNECTED 00:01:02")
        self.assertEqual(page["Address"], "-")
        self.assertEqual(page["Written"], "2026-03-14 09:15:02")

    def test_3_control_characters_never_reach_the_terminal(self):
        self.router.write("/var/log/wireless.cardstats", STATISTICS)
        self.assertEqual(self.page()["Network"], "Example[2JNet, Reg Home")

    def test_4_tells_one_value(self):
        self.router.write("/var/log/wireless.cardstats", STATISTICS)
        self.assertEqual(self.router.run("/bin/sh", TOOL, "get", "CELLMODEM_MDN"), "2015550136\n")
        self.assertIn("status=1", self.router.shell(f"{TOOL} get CELLMODEM_X; echo status=$?"))
        self.assertIn("status=2", self.router.shell(f"{TOOL} get '.*' 2>&1; echo status=$?"))

    def test_5_shows_the_daemons_lines_of_the_log(self):
        self.router.shell("logger -t other hello; for n in 1 2 3; do logger -t modemd line $n; done")
        self.router.wait_for(lambda: "line 3" in self.router.read("/var/log/messages"), "the log")
        lines = self.router.run("/bin/sh", TOOL, "log", "2").splitlines()
        self.assertEqual([line.split("modemd: ")[1] for line in lines], ["line 2", "line 3"])


class StartScript(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.router = Router("881")
        cls.router.shell(f"ln -sf {BUILD}/modemd /sbin/modemd; mkdir -p /etc/default;"
                         " echo CARD=881 >/etc/default/modemd;"
                         f" sed 's,^DAEMON=.*,DAEMON=/sbin/modemd,; s,^PAUSE=.*,PAUSE=1,' {SCRIPT}"
                         " >/etc/modemd.init; chmod +x /etc/modemd.init")

    @classmethod
    def tearDownClass(cls):
        cls.router.close()

    def wait_for_stop(self):
        for name in ("[m]odemd -881", "[m]odemd.init run"):
            self.router.wait_for(lambda name=name: self.router.shell(f"ps | grep '{name}' || true")
                                 == "", "the processes to end")

    def starts(self):
        return self.router.log().count("v1.45 starting")

    def daemon(self):
        return self.router.read("/var/run/modemd.pid")

    def test_1_starts_the_daemon_once(self):
        self.assertIn("not running", self.router.shell("/etc/modemd.init status || true"))
        self.router.shell("/etc/modemd.init start")
        self.router.wait_for(lambda: "card type set to Sierra 881" in self.router.log(),
                             "the daemon")
        self.assertIn("already", self.router.shell("/etc/modemd.init start"))
        self.assertEqual(self.starts(), 1)
        self.assertIn("is running", self.router.shell("/etc/modemd.init status"))

    def test_2_a_daemon_that_ended_is_started_again(self):
        first = self.router.wait_for(self.daemon, "the pid file")
        self.router.shell(f"kill -KILL {first}")
        self.router.wait_for(lambda: self.starts() == 2, "the second start")
        self.router.wait_for(lambda: self.daemon() not in ("", first), "its process id")

    def test_3_stop_ends_it_for_good(self):
        self.router.shell("/etc/modemd.init stop")
        self.assertIn("not running", self.router.shell("/etc/modemd.init status || true"))
        self.wait_for_stop()
        self.assertEqual(self.starts(), 2)
        self.assertTrue(self.router.shell("ls -ld /tmp/sms").startswith("drwx------"))


if __name__ == "__main__":
    unittest.main()
