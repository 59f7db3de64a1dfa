"""Text messages both ways: a file in the spool, and a message over the air."""

import os
import unittest

from router_sandbox import Router


class Gateway(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.router = Router("881")
        cls.router.shell("mkdir -p /tmp/sms/send /tmp/sms/recv /tmp/sms/send_fail")
        cls.router.start_daemon("-881", "/dev/ttyUSB0")

    @classmethod
    def tearDownClass(cls):
        cls.router.close()

    def received(self):
        folder = self.router.path("/tmp/sms/recv")
        return sorted(os.listdir(folder)) if folder.is_dir() else []

    def test_1_a_file_in_the_spool_is_sent_and_removed(self):
        router = self.router
        router.write("/tmp/sms/send/note", "TO=+15550100\nMSG=The pump is dry\n")
        router.wait_for(lambda: not router.exists("/tmp/sms/send/note"), "the file to go")
        self.assertIn('AT+CMGS="+15550100"', [line.strip() for line in router.heard()])
        self.assertIn("The pump is dry", router.ctl("sent"))
        self.assertFalse(os.listdir(router.path("/tmp/sms/send_fail")))

    def test_2_a_message_over_the_air_becomes_a_file(self):
        router = self.router
        router.ctl("sms", "+15550123", "Level of tank 4?")
        name = router.wait_for(self.received, "the received file")[0]
        path = f"/tmp/sms/recv/{name}"
        self.assertRegex(name, r"^sms_msg\d{8}-\d{6}\.1$")
        router.wait_for(lambda: "MSG=" in router.read(path), "the text")
        lines = router.read(path).splitlines()
        self.assertEqual(lines[0], "FROM=15550123")
        self.assertRegex(lines[1], r"^TIME=\S+")
        self.assertEqual(lines[2], "MSG=Level of tank 4?")

    def test_3_a_message_that_fails_three_times_is_put_aside(self):
        router = self.router
        router.ctl("sms-fails", "38", "3")
        router.write("/tmp/sms/send/unlucky", "TO=+15550100\nMSG=Hello\n")
        router.wait_for(lambda: os.listdir(router.path("/tmp/sms/send_fail")),
                        "the file in the failure directory")
        self.assertFalse(router.exists("/tmp/sms/send/unlucky"))

    def test_4_what_a_name_says_is_never_run(self):
        router = self.router
        router.write("/tmp/sms/send/$(touch surprise) `touch surprise`", "nothing to send\n")
        router.wait_for(lambda: not os.listdir(router.path("/tmp/sms/send")), "the file to go")
        self.assertEqual(router.shell("find / -xdev -name surprise"), "")


if __name__ == "__main__":
    unittest.main()
