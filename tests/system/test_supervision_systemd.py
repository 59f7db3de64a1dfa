"""The daemon under systemd, booted in the sandbox: a life with the faults that matter."""

import re
import unittest

from router_sandbox import BUILD
from supervised_router import DEVICE, STATISTICS, SystemdRouter

# Pauses of a test; docs/supervision.md names the settings.
PACE = "[Service]\nRestartSec=1\n"
# Longer than a DHCP client may hold the daemon's thread.
WATCH_PACE = ("[Timer]\nOnActiveSec=\nOnUnitActiveSec=\n"
              "OnActiveSec=12\nOnUnitActiveSec=12\nAccuracySec=1us\n")
SETTINGS = {
    "systemd/system/modemd.service.d/pace.conf": PACE,
    "default/modemd": "CARD=E362\nDEVICE=/dev/ttyUSB0\nOPTIONS=\nKERNEL_LOG=/run/kernel-log\n",
}
OWN_GROUP_ONLY = "drwxrws--- root modemd-sms"


def settings_for(card):
    return {**SETTINGS,
            "default/modemd": SETTINGS["default/modemd"].replace("CARD=E362", f"CARD={card}")}


class SystemdLife:
    """One story; each step leaves a running daemon to the next."""

    card = ""

    @classmethod
    def setUpClass(cls):
        cls.router = SystemdRouter(cls.card, settings_for(cls.card))

    @classmethod
    def tearDownClass(cls):
        cls.router.close()

    def restarts(self):
        return int(self.router.show("NRestarts"))

    def kill(self, signal):
        self.router.systemctl("kill", "-s", signal, "--kill-whom=main", "modemd.service")


class LifeWithACall(SystemdLife, unittest.TestCase):
    card = "E362"

    def assert_call_ended(self):
        self.assertEqual(self.router.addresses(), [])
        self.assertFalse(self.router.link_is_up())
        self.router.wait_for(lambda: not self.router.dhcp_client(), "the DHCP client's end")
        self.assertIn("AT$NWQMIDISCONNECT", self.router.heard()[-1])

    def test_1_boots_with_a_spool_for_its_group_only(self):
        self.router.wait_for_link()
        self.assertEqual(self.router.show("MainPID"), self.router.daemon())
        self.assertEqual(self.router.systemctl("--failed", "--no-legend"), "")
        self.assertEqual(self.router.run(
            "/usr/bin/sh", "-c", "systemd-analyze verify --man=no modemd.service"
            " modemd@modem_at.service modemd-watch.timer modemd-reset.path 2>&1"), "")
        for directory in ("", "/send", "/recv", "/send_fail"):
            line = self.router.run("/usr/bin/stat", "-c", "%A %U %G", f"/tmp/sms{directory}")
            self.assertEqual(line.strip(), OWN_GROUP_ONLY, directory)

    def test_2_the_sandbox_holds_and_lets_the_work_be_done(self):
        self.assertTrue(self.router.default_routes())
        mounts = self.router.read(f"/proc/{self.router.daemon()}/mounts")
        self.assertRegex(mounts, r"(?m)^\S+ /usr\S* \S+ ro")
        self.assertNotRegex(mounts, r"(?m)^\S+ /tmp \S+ ro")
        self.assertEqual(self.router.run(
            "/usr/bin/nsenter", "-t", self.router.daemon(), "-m", "/bin/sh", "-c",
            "false &> /dev/null || echo both").strip(), "both")

    def test_3_a_killed_daemon_is_started_again_and_its_dhcp_client_lives_on(self):
        client = self.router.wait_for(self.router.dhcp_client, "the DHCP client")
        daemon, restarts = self.router.daemon(), self.restarts()
        self.kill("KILL")
        self.router.wait_for_daemon(other_than=daemon)
        # Now, before the next daemon looks at the call: an answer that comes late restarts it.
        self.assertEqual(self.router.dhcp_client(), client)
        self.assertEqual(self.restarts(), restarts + 1)

    def test_4_a_stop_in_the_middle_of_a_call_ends_the_call(self):
        self.router.wait_for_link()
        self.router.systemctl("stop", "modemd.service")
        self.assert_call_ended()
        self.assertEqual(self.router.show("Result"), "success")
        self.assertEqual(self.router.show("ActiveState"), "inactive")
        self.assertEqual(self.router.show("ActiveState", "modemd-watch.timer"), "inactive")

    def test_5_a_wrong_command_line_is_not_tried_again(self):
        settings = self.router.read("/etc/default/modemd")
        self.router.write("/etc/default/modemd", re.sub("DEVICE=.*", "DEVICE=", settings))
        self.router.systemctl("start", "modemd.service")
        self.router.wait_for(lambda: self.router.show("ActiveState") == "failed", "the end")
        self.assertEqual((self.router.show("ExecMainStatus"), self.restarts()), ("1", 0))
        self.router.write("/etc/default/modemd", settings)

    def test_6_a_shell_that_would_run_the_lines_in_the_background_is_refused(self):
        drop_in = "/etc/systemd/system/modemd.service.d/plain-shell.conf"
        self.router.write(drop_in, "[Service]\nBindReadOnlyPaths=\n")
        starts = self.router.starts()
        self.router.systemctl("daemon-reload")
        self.router.systemctl("reset-failed", "modemd.service")
        self.router.systemctl("start", "modemd.service")
        self.assertEqual(self.router.show("Result"), "exec-condition")
        journal = self.router.run("/usr/bin/journalctl", "-u", "modemd.service", "-o", "cat")
        self.assertIn("/bin/sh does not read &>", journal)
        self.assertEqual(self.router.starts(), starts)
        self.router.path(drop_in).unlink()
        self.router.systemctl("daemon-reload")
        self.router.systemctl("start", "modemd.service")
        self.router.wait_for_work()


class LifeWithFaults(SystemdLife, unittest.TestCase):
    card = "881"  # without a call to wait for

    def resets(self):
        return self.router.recorded().count("ResetPCMCIA now")

    def program(self):
        return self.router.run("/usr/bin/readlink", f"/proc/{self.router.daemon()}/exe")

    def test_1_an_unplugged_modem_comes_back_however_often_the_daemon_ends(self):
        self.router.wait_for_work()
        restarts = self.restarts()
        self.router.ctl("unplug")
        self.router.wait_for(lambda: self.restarts() > restarts, "a daemon that gave up")
        self.assertIn("Port error counter above 25, resetting modem", self.router.log())
        self.router.wait_for_log(f"Unable to open port {DEVICE}, attempt 1/5")
        self.router.path(STATISTICS).unlink(missing_ok=True)
        self.router.ctl("plug")
        self.router.wait_for_work()
        self.assertNotEqual(self.router.systemctl("is-failed", "modemd", check=False), "failed")

    def test_2_an_upgrade_goes_on_with_the_new_program(self):
        daemon = self.router.daemon()
        self.router.shell(f"cp {BUILD}/modemd /usr/sbin/modemd.new;"
                          " mv /usr/sbin/modemd.new /usr/sbin/modemd")
        self.assertIn("(deleted)", self.program())
        self.router.systemctl("daemon-reload")
        self.assertEqual(self.router.daemon(), daemon)
        self.router.systemctl("try-restart", "modemd.service")
        self.router.wait_for_daemon(other_than=daemon)
        self.assertNotIn("(deleted)", self.program())

    def test_3_a_hangup_resets_the_modem_outside_the_sandbox_and_starts_again(self):
        self.router.wait_for_work()
        daemon, restarts, resets = self.router.daemon(), self.restarts(), self.resets()
        self.kill("HUP")
        self.router.wait_for_daemon(other_than=daemon)
        self.router.wait_for(lambda: self.resets() == resets + 1, "the reset")
        self.router.wait_for_work()
        self.assertEqual(self.restarts(), restarts + 1)
        self.assertEqual(self.router.show("Result", "modemd-reset.service"), "success")


class StuckJournal(unittest.TestCase):
    """The log that does not read is started again, and the daemon goes on where it stood."""

    def test_the_watch_starts_the_log_again(self):
        settings = {**SETTINGS, "systemd/system/modemd-watch.timer.d/pace.conf": WATCH_PACE,
                    "default/modemd": SETTINGS["default/modemd"].replace(
                        "OPTIONS=", 'OPTIONS="-d -d -d"')}
        with SystemdRouter(settings=settings) as router:
            router.wait_for_work()
            daemon = router.daemon()
            journal = router.show("MainPID", "systemd-journald.service")
            router.shell(f"kill -STOP {journal}")
            router.wait_for(lambda: "stands still" in router.read("/run/kernel-log"), "the watch")
            before = router.read(STATISTICS).splitlines()[:1]
            router.wait_for(lambda: router.read(STATISTICS).splitlines()[:1] != before,
                            "a new status file")
            self.assertEqual(router.daemon(), daemon)
            self.assertNotEqual(router.show("MainPID", "systemd-journald.service"), journal)


if __name__ == "__main__":
    unittest.main()
