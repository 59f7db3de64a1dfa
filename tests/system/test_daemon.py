"""The daemon from start to end on a small router: files, pid file, signals, exit status."""

import os
import unittest

from router_sandbox import BUILD, Router

DEVICE = "/dev/ttyUSB0"


class Usage(unittest.TestCase):
    def test_a_person_without_a_device_path_learns_how_to_start_it(self):
        with Router() as router:
            line = f"{BUILD}/modemd; echo status=$?"
            output = router.shell(f"({line}) 2>&1")
            self.assertIn("status=1", output)
            router.wait_for_log("No /dev/device path given, exiting")


class Life(unittest.TestCase):
    """One run with a modem that has no data call, step by step."""

    @classmethod
    def setUpClass(cls):
        cls.router = Router("881")
        cls.router.start_daemon("-881", DEVICE)

    @classmethod
    def tearDownClass(cls):
        cls.router.close()

    def wait_for_signal(self, csq):
        self.router.wait_for(lambda: self.router.statistics().get("CELLMODEM_LOWSPEED_CSQ") == csq,
                             f"signal {csq} in the statistics")

    def test_1_publishes_what_the_modem_says(self):
        router = self.router
        router.wait_for(lambda: router.exists("/var/log/lightbar"), "the lightbar")
        router.wait_for(lambda: "CELLMODEM_CREG_ABR" in router.statistics(), "the statistics")
        # On a busy machine an answer can miss its moment; the next identity pass asks again.
        for key in ("CELLMODEM_IMEI", "CELLMODEM_MODEL", "CELLMODEM_CARRIER"):
            router.wait_for(lambda key=key: router.statistics().get(key) not in
                            (None, "", "Unknown"), f"a value of {key}")
        router.wait_for(lambda: router.read("/var/log/wireless.serialno").strip() ==
                        router.statistics().get("CELLMODEM_IMEI"), "the same serial number")

    def test_2_follows_the_registration(self):
        router = self.router
        status = "/var/log/wirelessactivation_status"
        router.wait_for(lambda: router.read(status) == "Reg Home\n", "the home network")
        router.ctl("deregister")
        router.wait_for(lambda: router.read(status) != "Reg Home\n", "the loss of the network")
        router.ctl("register", "roaming")
        router.wait_for(lambda: router.read(status) == "Reg Roam\n", "roaming")

    def test_3_follows_the_signal(self):
        router = self.router
        for signal in ("7", "28"):
            router.ctl("signal", signal)
            self.wait_for_signal(signal)
            router.wait_for(lambda: router.read("/var/log/lightbar") == f"+CSQ: {signal},99\n",
                            "the lightbar")

    def test_4_a_second_copy_ends_at_once(self):
        output = self.router.shell(f"{BUILD}/modemd -881 {DEVICE}; echo status=$?")
        self.assertIn("status=255", output)
        self.router.wait_for_log("Another modemd process is already running, exiting")

    def test_5_a_modem_that_falls_silent_is_survived(self):
        router = self.router
        router.ctl("silence", "8s")
        before = len(router.heard())
        router.wait_for(lambda: len(router.heard()) > before + 10, "commands after the silence")
        router.ctl("signal", "15")
        self.wait_for_signal("15")

    def test_6_ends_cleanly_on_sigterm(self):
        router = self.router
        router.signal_daemon("TERM")
        self.assertEqual(router.wait_for_exit(), 0)
        self.assertEqual(router.read("/var/log/lightbar"), "")
        left = [name for name in os.listdir(router.path("/var/log"))
                if name.startswith("wireless.")]
        self.assertEqual(left, [])
        self.assertTrue(router.exists("/var/run/modemd.pid"))
        last = ["received SIGINT/SIGTERM", "doing cleanup and exiting", "exit"]
        router.wait_for(lambda: router.log()[-3:] == last, "the last words")
        self.assertEqual(router.read("/run/output"), "")


class NoModem(unittest.TestCase):
    def test_gives_up_after_five_attempts_and_asks_for_a_reset(self):
        with Router() as router:
            router.start_daemon("/dev/ttyNONE")
            self.assertEqual(router.wait_for_exit(), 255)
            router.wait_for_log("Failed to open port 5 times, exiting")
            router.wait_for(lambda: router.recorded() == ["ResetPCMCIA now"], "the reset")


if __name__ == "__main__":
    unittest.main()
