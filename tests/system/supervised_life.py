"""A life that is the same under each supervisor: what has to be told is how it is asked."""

from router_sandbox import BUILD
from supervised_router import DEVICE, STATISTICS, SupervisedRouter

PAUSE = 2  # seconds between two lives in these tests


def settings(**changes):
    values = {"CARD": "881", "DEVICE": DEVICE, "OPTIONS": "", "PAUSE": PAUSE, **changes}
    return "".join(f"{name}={value}\n" for name, value in values.items())


class SupervisedLife:
    """Mixed into a TestCase, which says what the supervisor is called and how it is told."""

    supervisor = ""
    more_settings = {}

    def stop(self):
        raise NotImplementedError

    def start(self):
        raise NotImplementedError

    @classmethod
    def setUpClass(cls):
        cls.router = SupervisedRouter(
            cls.supervisor, "881", {"default/modemd": settings(), **cls.more_settings})

    @classmethod
    def tearDownClass(cls):
        cls.router.close()

    def signal(self, name):
        self.router.shell(f"kill -{name} {self.router.wait_for_daemon()}")

    def ends(self):
        return self.router.log().count("doing cleanup and exiting")

    def test_1_starts_at_boot(self):
        self.router.wait_for_work()
        self.assertEqual(self.router.starts(), 1)

    def test_2_a_killed_daemon_is_started_again(self):
        daemon = self.router.daemon()
        self.signal("KILL")
        self.router.wait_for_daemon(other_than=daemon)
        self.router.wait_for_work()
        self.assertEqual(self.router.starts(), 2)

    def test_3_after_a_hangup_that_reset_the_modem_too(self):
        daemon = self.router.daemon()
        self.signal("HUP")
        self.router.wait_for_daemon(other_than=daemon)
        self.assertIn("ResetPCMCIA now", self.router.recorded())
        self.router.wait_for_work()

    def test_4_a_stop_is_clean_and_lasts(self):
        ends, starts = self.ends(), self.router.starts()
        self.stop()
        self.assertEqual(self.router.daemon(), "")
        self.router.wait_for_log("exit", times=ends + 1)
        self.assertFalse(self.router.exists(STATISTICS))
        self.assertEqual(self.router.starts(), starts)

    def test_5_a_wrong_command_line_is_not_tried_for_ever(self):
        starts = self.router.starts()
        self.router.write("/etc/default/modemd", settings(DEVICE=""))
        self.start()
        self.router.wait_for(lambda: "modemd-run: no DEVICE" in
                             self.router.read("/var/log/messages"), "the complaint")
        self.router.wait_for(self.has_given_up, "it to be left alone")
        self.assertEqual(self.router.starts(), starts)

    def test_6_an_upgrade_and_better_settings_are_taken_at_the_next_start(self):
        self.router.shell(f"cp {BUILD}/modemd /usr/sbin/modemd.new;"
                          " mv /usr/sbin/modemd.new /usr/sbin/modemd")
        self.router.write("/etc/default/modemd", settings())
        self.try_again()
        self.router.wait_for_work()
        program = self.router.run("/usr/bin/readlink", f"/proc/{self.router.daemon()}/exe")
        self.assertNotIn("(deleted)", program)

    def has_given_up(self):
        raise NotImplementedError

    def try_again(self):
        self.start()
