"""A real system log of the small router, made into a story and played: the tools as a person runs
them, with what busybox makes of the daemon's lines."""

import subprocess
import tempfile
import unittest

from router_sandbox import BUILD, Router

TOOLS = BUILD / "gear" / "capture"
IMEI = "001017088100014"


def run(program, *words):
    return subprocess.run([TOOLS / program, *words], capture_output=True, text=True, check=False,
                          errors="replace")


class Capture(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        with Router("881") as router:
            router.start_daemon("-881", "-d", "-d", "-d", "-d", "/dev/ttyUSB0")
            router.wait_for(lambda: router.statistics().get("CELLMODEM_IMEI") == IMEI, "the IMEI")
            router.wait_for_log("Sending command: AT+CSQ", 2)
            cls.log = router.read("/var/log/messages")

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def write(self, name, text):
        path = f"{self.folder}/{name}"
        with open(path, "w", encoding="latin-1", errors="replace") as file:
            file.write(text)
        return path

    def test_a_log_becomes_a_story_that_plays(self):
        self.assertIn(IMEI, self.log)
        made = run("capture", self.write("messages", self.log))
        self.assertEqual(0, made.returncode, made.stderr)
        self.assertTrue(made.stdout.startswith("story 881\n"), made.stdout[:80])
        self.assertNotIn(IMEI, made.stdout)
        played = run("replay", self.write("story", made.stdout))
        self.assertEqual(0, played.returncode, played.stdout + played.stderr)
        self.assertRegex(played.stdout, r"CELLMODEM_IMEI=[0-9]{15}\n")
        self.assertIn("CELLMODEM_MODEL=Model 881\n", played.stdout)

    def test_what_cannot_be_placed_is_refused(self):
        dump = "".join(f"{ord(c):02x} " for c in "CARD BRAVO7")
        head = "Mar 14 09:15:00 router user.notice modemd: "
        made = run("capture", self.write("messages", f"{head}Sending command: AT\n"
                                         f"{head}Raw Response: {dump}\n"
                                         f"{head}Sending command: AT\n"))
        self.assertEqual((1, ""), (made.returncode, made.stdout))
        self.assertIn("messages:2:", made.stderr)
        self.assertIn("'BRAVO7'", made.stderr)

    def test_a_wrong_call_is_told_how(self):
        for words in ((), ("--nothing",), ("a", "b")):
            self.assertEqual(2, run("capture", *words).returncode, words)
        self.assertEqual(1, run("capture", "/no/such/log").returncode)
        self.assertEqual(1, run("replay", self.write("story", "not one\n")).returncode)
