"""Under systemd, what takes minutes. scripts/supervision runs it."""

import unittest

from supervised_router import DEVICE, STATISTICS, SystemdRouter
from test_supervision_systemd import SETTINGS, WATCH_PACE

GAVE_UP = "Failed to open port 5 times, exiting"


class BootWithoutAModem(unittest.TestCase):
    """Three lives without a port, 40 s each, and then it is plugged in."""

    def test_it_is_tried_for_ever_and_found(self):
        with SystemdRouter(card=None, settings=SETTINGS) as router:
            router.wait_for(lambda: router.systemctl("is-active", "multi-user.target",
                                                     check=False) == "active", "the boot")
            router.wait_for(lambda: router.log().count(GAVE_UP) == 3, "three lives", 600)
            self.assertGreaterEqual(int(router.show("NRestarts")), 2)
            self.assertIn(router.show("ExecMainStatus"), ("0", "255"))
            self.assertEqual(router.systemctl("--failed", "--no-legend"), "")
            self.assertEqual(router.recorded().count("ResetPCMCIA now"), 3)
            router.plug_in_late()
            router.wait_for_work()


class Template(unittest.TestCase):
    """Without udev there are no device units: the binding to one is taken out."""

    def test_the_instance_takes_the_place_of_the_service(self):
        with SystemdRouter(settings=SETTINGS) as router:
            router.wait_for_work()
            daemon = router.daemon()
            router.shell("sed '/^BindsTo=/d; s/ dev-%i.device//'"
                         " /usr/lib/systemd/system/modemd@.service"
                         " >/etc/systemd/system/modemd@.service")
            router.systemctl("daemon-reload")
            router.systemctl("start", "modemd@ttyUSB0.service")
            router.wait_for_daemon(other_than=daemon)
            router.wait_for_work()
            self.assertEqual(router.show("MainPID", "modemd@ttyUSB0.service"), router.daemon())
            self.assertEqual(router.show("ActiveState"), "inactive")
            self.assertTrue(router.read(f"/proc/{router.daemon()}/cmdline")
                            .endswith(f"{DEVICE}\0"))


class LogThatStaysStuck(unittest.TestCase):
    """Starting the log again does not help: the second look kills the daemon."""

    def test_the_daemon_is_killed_and_started_again(self):
        defaults = SETTINGS["default/modemd"].replace("OPTIONS=", 'OPTIONS="-d -d -d"')
        settings = {**SETTINGS, "default/modemd": defaults + "RESTART_LOG=/bin/true\n",
                    "systemd/system/modemd-watch.timer.d/pace.conf": WATCH_PACE}
        with SystemdRouter(settings=settings) as router:
            router.wait_for_work()
            daemon = router.daemon()
            journal = router.show("MainPID", "systemd-journald.service")
            router.shell(f"kill -STOP {journal}")
            router.wait_for(lambda: "killing it" in router.read("/run/kernel-log"), "the watch")
            router.wait_for(lambda: router.show("MainPID") not in ("0", daemon), "another daemon")
            router.path(STATISTICS).unlink()
            router.shell(f"kill -CONT {journal}")
            router.wait_for_work()


if __name__ == "__main__":
    unittest.main()
