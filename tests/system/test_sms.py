"""Text messages both ways: a file in the spool, and a message over the air.

The daemon gives the modem a moment to answer, and on a busy machine an answer may miss it. What
then becomes of a message is told in simulated time; here a file is offered until it is through.
"""

import os
import unittest

from router_sandbox import PATIENCE, Router


class Gateway(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.router = Router("881")
        cls.router.shell("mkdir -p /tmp/sms/send /tmp/sms/recv /tmp/sms/send_fail")
        cls.start_the_gateway()

    @classmethod
    def tearDownClass(cls):
        cls.router.close()

    @classmethod
    def start_the_gateway(cls):
        """The modem is asked once at the start whether it has text messages."""
        words = {"Modem supports CMGF SMS": True, "Modem does not support CMGF SMS": False}
        while True:
            cls.router.start_daemon("-881", "/dev/ttyUSB0")
            cls.router.wait_for(lambda: words.keys() & set(cls.router.log()), "the gateway")
            if words[[line for line in cls.router.log() if line in words][-1]]:
                return
            cls.router.signal_daemon("TERM")
            cls.router.wait_for_exit()
            cls.router.shell(": >/var/log/messages")

    def offer(self, name, text, done, what):
        def is_done():
            if not done() and not self.router.exists(f"/tmp/sms/send/{name}"):
                self.router.write(f"/tmp/sms/send/{name}", f"TO=+15550100\nMSG={text}\n")
            return done()

        self.router.wait_for(is_done, what, patience=3 * PATIENCE)

    def received(self):
        folder = self.router.path("/tmp/sms/recv")
        return sorted(os.listdir(folder)) if folder.is_dir() else []

    def test_1_a_file_in_the_spool_is_sent_and_removed(self):
        router = self.router
        self.offer("note", "The pump is dry", lambda: "The pump is dry" in router.ctl("sent"),
                   "the message")
        router.wait_for(lambda: not router.exists("/tmp/sms/send/note"), "the file to go")
        self.assertIn('AT+CMGS="+15550100"', [line.strip() for line in router.heard()])

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
        router.ctl("sms-fails", "38", "forever")
        failed = router.path("/tmp/sms/send_fail")
        self.offer("unlucky", "Hello", lambda: os.listdir(failed),
                   "the file in the failure directory")
        self.assertRegex(os.listdir(failed)[0], r"^unlucky\.\d{8}-\d{6}$")

    def test_4_what_a_name_says_is_never_run(self):
        router = self.router
        router.write("/tmp/sms/send/$(touch surprise) `touch surprise`", "nothing to send\n")
        router.wait_for(lambda: not os.listdir(router.path("/tmp/sms/send")), "the file to go")
        self.assertEqual(router.shell("find / -xdev -name surprise"), "")


if __name__ == "__main__":
    unittest.main()
