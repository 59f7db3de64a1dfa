"""The demo: its story, its keys, its screen, and what it says where it cannot run.

Simulated time shows that the beats come in order and that the screen holds at every moment; the
sandbox shows that the same story happens to the daemon in real life.
"""

import collections
import fcntl
import html
import os
import pathlib
import pty
import re
import select
import signal
import struct
import subprocess
import tempfile
import termios
import time
import unittest

from fair_clock import FairClock, slowness
from router_sandbox import PATIENCE, PROJECT

# Debian's own Python, as scripts/demo takes it: it is the one that has python3-rich.
DEMO = ["/usr/bin/python3", str(PROJECT / "gear" / "demonstration")]
FAST = ("--speed", "1000")
PROMISED = 90.0  # seconds in which the story of the default card is told
LONGEST = 600  # seconds of a FairClock; only a hang reaches this
# On a busy machine the daemon may miss the answer to the one question whether there are messages.
NO_MESSAGES = "Modem does not support CMGF SMS"

POWER, OVER = "Power on", "The story is over"
PLUG = ["Unplugged", "The modem's return", OVER]
TITLES = {
    "E362": [POWER, "Registered", "Call up", "Address", "A weak stretch", "A dropped call", *PLUG],
    "E371": [POWER, "Call up", "Registered", "Address", "A weak stretch", "A dropped call", *PLUG],
    "881": [POWER, "Registered", "A message arrives", "A message leaves", "A weak stretch", *PLUG],
    "USB305": [POWER, "Registered", "A weak stretch", *PLUG],
    "mc75i": [POWER, "A network is heard", "A weak stretch", *PLUG],
    "generic": [POWER, "A network is heard", "A weak stretch", *PLUG],
}


def run_demo(*arguments, **options):
    return subprocess.run([*DEMO, *arguments], stdin=subprocess.DEVNULL, capture_output=True,
                          text=True, check=False, timeout=LONGEST * slowness(), **options)


class Telling:
    """The lines of a run without a terminal: (second, kind, text)."""

    def __init__(self, output):
        found = re.findall(r"^ *([0-9.]+) s  (\w+) +(.*)$", output, re.MULTILINE)
        self.lines = [(float(second), kind, text) for second, kind, text in found]

    def titles(self):
        return [text.split(":")[0] for _, kind, text in self.lines if kind == "story"]

    def begin(self, title):
        return next(second for second, kind, text in self.lines
                    if kind == "story" and text.startswith(title + ":"))

    def during(self, title):
        """All that was told from this beat to the next, but the captions."""
        titles = self.titles()
        after = titles[titles.index(title) + 1:]
        end = self.begin(after[0]) if after else float("inf")
        return [line for line in self.lines
                if self.begin(title) <= line[0] < end
                and line[1] not in ("story", "modemd", "Look")]

    def first(self, title, kind, text):
        """When it was first told during the beat; fails when it was not."""
        for second, told_kind, told in self.during(title):
            if (told_kind, told) == (kind, text):
                return second
        raise AssertionError(f"no '{kind} {text}' during '{title}': {self.during(title)}")


class Story(unittest.TestCase):
    """In simulated time, where the same second of every event is the same on every machine."""

    @classmethod
    def setUpClass(cls):
        cls.runs = {card: run_demo("--card", card, *FAST) for card in TITLES}
        cls.told = {card: Telling(run.stdout) for card, run in cls.runs.items()}

    def test_each_card_tells_what_it_can_do_in_order(self):
        for card, run in self.runs.items():
            with self.subTest(card):
                self.assertEqual(run.returncode, 0, run.stdout + run.stderr)
                self.assertEqual(self.told[card].titles(), TITLES[card])
                self.assertNotIn("FAIL", run.stdout)

    def test_what_a_card_cannot_show_is_said(self):
        self.assertIn("Not with this card: messages (--card 881)", self.runs["E362"].stdout)
        self.assertIn("Not with this card: data call (--card E362)\n", self.runs["881"].stdout)

    def test_the_default_story_is_told_in_a_minute_and_a_half(self):
        self.assertLessEqual(self.told["E362"].begin(OVER), PROMISED)

    def test_a_weak_signal_reaches_the_bar_and_restarts_nothing(self):
        told = self.told["E362"]
        self.assertLess(told.first("A weak stretch", "signal", "4 of 31"),
                        told.first("A dropped call", "signal", "20 of 31"))
        self.assertEqual([line for line in told.during("A weak stretch") if line[1] == "log"], [])

    def test_a_dropped_call_is_dialled_again_and_gets_an_address(self):
        told, beat = self.told["E362"], "A dropped call"
        times = [told.first(beat, "call", "down"),
                 told.first(beat, "log", "LTE Connected returned 0, restarting connection"),
                 told.first(beat, "address", "none"), told.first(beat, "call", "up"),
                 told.first(beat, "address", "10.64.0.60")]
        self.assertEqual(times, sorted(times))

    def test_messages_come_and_go(self):
        told = self.told["881"]
        told.first("A message leaves", "messages", "received 1  in /tmp/sms/recv    sent 1")
        told.first("A message leaves", "log",
                   "Send Success: TO=+15550123, MSG=Hello from the router")

    def test_a_modem_that_is_gone_reads_as_gone_at_once(self):
        for card, told in self.told.items():
            with self.subTest(card):
                gone = told.first("Unplugged", "modem", "unplugged")
                self.assertLessEqual(gone - told.begin("Unplugged"), 0.5)
                self.assertEqual(told.first("Unplugged", "signal", "not known"), gone)
                self.assertEqual(told.first("Unplugged", "network", "no modem"), gone)

    def test_the_daemon_ends_without_its_modem_and_is_started_again(self):
        for card, told in self.told.items():
            with self.subTest(card):
                told.first("Unplugged", "daemon", "ended with status 255")
                told.first("The modem's return", "modem", "plugged in")
                told.first("The modem's return", "daemon", "runs")
                told.first("The modem's return", "log", "v1.45 starting")

    def test_no_part_begins_behind_the_given_time(self):
        run = run_demo("--for", "15", *FAST)
        self.assertEqual(run.returncode, 0, run.stdout)
        self.assertEqual(Telling(run.stdout).titles(), TITLES["E362"][:4])
        self.assertIn("ok   the call as connected in the statistics", run.stdout)

    def test_a_daemon_that_does_nothing_fails(self):
        run = run_demo("--for", "15", *FAST, env={**os.environ, "MODEMD": "/bin/true"})
        self.assertEqual(run.returncode, 1, run.stdout)
        self.assertIn("demo: the daemon ended by itself", run.stderr)


class RealLife:
    """The same story in the sandbox."""

    card = ""

    def tell(self):
        """Output and exit status; told anew when it cannot go on with its messages."""
        while True:
            with subprocess.Popen([*DEMO, "--card", self.card], stdin=subprocess.DEVNULL,
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                  text=True) as demo:
                told = ""
                for line in demo.stdout:
                    told += line
                    if self.card == "881" and NO_MESSAGES in line:
                        demo.terminate()
                        break
                else:
                    return told, demo.wait()

    def test_the_story_happens(self):
        told, status = self.tell()
        self.assertEqual(status, 0, told)
        self.assertEqual(Telling(told).titles(), TITLES[self.card])
        self.assertIn("ok   clean end on SIGTERM (exit status 0)", told)


class RealLifeOfAnE362(RealLife, unittest.TestCase):
    card = "E362"


class RealLifeOfAn881(RealLife, unittest.TestCase):
    card = "881"


class RealLifeOfAGenericModem(RealLife, unittest.TestCase):
    card = "generic"


class Terminal:
    """The demo on a pseudo terminal; `screen` is the one that the test looks at."""

    def __init__(self, *arguments, columns=80, rows=24):
        self.master, slave = pty.openpty()
        self.resize(columns, rows)
        self.before = termios.tcgetattr(slave)
        self.process = subprocess.Popen([*DEMO, *arguments], stdin=slave, stdout=slave,
                                        stderr=slave, start_new_session=True,
                                        env={**os.environ, "TERM": "xterm-256color",
                                             "LC_ALL": "C.UTF-8"},
                                        preexec_fn=self.sit_down)
        self.slave = slave
        self.output = b""
        self.whole = collections.deque()  # screens that nobody has looked at yet
        self.rest = b""
        self.screen = []
        self.judge = None

    @staticmethod
    def sit_down():
        """As a person's shell starts a program, also when the tests run in the background."""
        fcntl.ioctl(0, termios.TIOCSCTTY, 0)
        signal.signal(signal.SIGINT, signal.SIG_DFL)

    def close(self):
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()
        os.close(self.master)
        os.close(self.slave)

    def resize(self, columns, rows):
        fcntl.ioctl(self.master, termios.TIOCSWINSZ, struct.pack("HHHH", rows, columns, 0, 0))
        if hasattr(self, "process"):
            os.killpg(self.process.pid, signal.SIGWINCH)

    def press(self, keys):
        os.write(self.master, keys.encode())

    def read(self):
        """Goes on to the next screen; to what there is of one that is still being drawn."""
        if select.select([self.master], [], [], 0 if self.whole else 0.2)[0]:
            drawn = os.read(self.master, 65536)
            self.output += drawn
            *whole, self.rest = (self.rest + drawn).split(b"\x1b[H")
            self.whole += whole
        frame = self.whole.popleft() if self.whole else self.rest
        text = re.sub(rb"\x1b\[[0-9;?]*[a-zA-Z]", b"", frame).decode(errors="replace")
        self.screen = text.replace("\r", "").split("\n")
        # It begins with an empty page.
        if self.judge and frame is not self.rest and text.strip():
            self.judge(self.screen)

    def has(self, *texts):
        return all(any(text in line for line in self.screen) for text in texts)

    def wait_for(self, *texts):
        """Until one screen has all of them."""
        clock = FairClock()
        while not self.has(*texts):
            self.read()
            if clock.seconds() > PATIENCE or self.process.poll() is not None:
                raise AssertionError(f"waited in vain for {texts} in\n" + "\n".join(self.screen))

    def end(self, keys):
        """The exit status after these keys."""
        self.press(keys)
        clock = FairClock()
        while self.process.poll() is None:
            self.read()
            if clock.seconds() > PATIENCE:
                raise AssertionError("it does not end")
        self.read()
        return self.process.returncode


class OnTerminal(unittest.TestCase):
    def start(self, *arguments, **size):
        terminal = Terminal(*arguments, **size)
        self.addCleanup(terminal.close)
        return terminal


class Screen(OnTerminal):
    def watch_whole_story(self, card, columns, rows):
        terminal = self.start("--card", card, "--speed", "20", columns=columns, rows=rows)

        def judge(screen):
            self.assertTrue(self.is_whole(screen, rows), "\n".join(screen))
            self.assertLessEqual(max(map(len, screen)), columns)
        terminal.judge = judge
        terminal.wait_for("1 of")
        terminal.wait_for("Unplugged", "no modem")
        terminal.wait_for(OVER)
        return terminal

    def test_80x24_keeps_its_title_and_its_help(self):
        for card in TITLES:
            with self.subTest(card):
                self.watch_whole_story(card, 80, 24)

    def test_a_large_window_shows_when_each_part_began(self):
        terminal = self.watch_whole_story("E362", 120, 40)
        terminal.wait_for("✓  0:00  Power on", "A dropped call", "The modem's return")

    def test_follows_the_size_of_the_window(self):
        terminal = self.start(*FAST)
        terminal.wait_for(OVER)
        for columns, rows in ((100, 50), (70, 22), (80, 24)):
            terminal.resize(columns, rows)
            clock = FairClock()
            while not self.is_whole(terminal.screen, rows) and clock.seconds() < PATIENCE:
                terminal.read()
            self.assertTrue(self.is_whole(terminal.screen, rows), terminal.screen)
        terminal.resize(40, 10)
        terminal.wait_for("Please make this window")

    @staticmethod
    def is_whole(screen, rows):
        return (len(screen) == rows and screen[0].startswith(" modemd  with a simulated")
                and screen[-1].startswith(" q ends"))

    def test_leaves_a_clean_terminal(self):
        for keys, status in (("q", 0), ("\x03", 0)):
            terminal = self.start("--speed", "5")
            terminal.wait_for(POWER)
            self.assertEqual(terminal.end(keys), status)
            self.assertIn(b"\x1b[?1049h", terminal.output)
            tail = terminal.output[terminal.output.rindex(b"\x1b[?1049l"):]
            self.assertIn(b"\x1b[?25h", terminal.output)
            self.assertNotIn(b"Traceback", tail)
            self.assertEqual(termios.tcgetattr(terminal.slave), terminal.before)

    def test_an_unattended_run_that_is_interrupted_is_no_success(self):
        terminal = self.start("--for", "60", "--speed", "1")
        terminal.wait_for(POWER)
        self.assertEqual(terminal.end("\x03"), 130)


class ByHand(OnTerminal):
    def test_simulated_lte_card(self):
        terminal = self.start("--by-hand", "--speed", "20")
        terminal.wait_for("20 of 31", "10.64.0.60")
        terminal.wait_for("+ - signal   d drop call   u unplug")
        self.assertFalse(terminal.has("message"))
        terminal.press("-")
        terminal.wait_for("You set the signal to 16 of 31.", "16 of 31   (/var/log/lightbar)")
        terminal.press("\x1b[A")
        terminal.wait_for("20 of 31   (/var/log/lightbar)")
        terminal.press("d")
        terminal.wait_for("DOWN", "left over, the link is dead")
        terminal.wait_for("restarting connection")
        terminal.wait_for("10.64.0.60", "up          the daemon publishes")
        terminal.press("u")
        terminal.wait_for("UNPLUGGED", "no modem", "u plug in")
        terminal.wait_for("ENDED, status 255")
        terminal.press("u")
        terminal.wait_for("plugged in", "20 of 31   (/var/log/lightbar)", "Reg Home")
        self.assertEqual(terminal.end("q"), 0)

    def start_with_messages(self):
        while True:
            terminal = self.start("--by-hand", "--card", "881")
            terminal.wait_for("17 of 31", "Reg Home")
            if NO_MESSAGES.encode() not in terminal.output:
                return terminal
            terminal.end("q")

    def test_real_messages_and_a_real_plug(self):
        terminal = self.start_with_messages()
        terminal.wait_for("+ - signal   u unplug   i message in   o message out")
        self.assertFalse(terminal.has("drop call"))
        terminal.press("i")
        terminal.wait_for("received 1")
        terminal.press("o")
        terminal.wait_for("sent 1", "Send Success")
        terminal.press("u")
        terminal.wait_for("UNPLUGGED", "no modem")
        terminal.wait_for("ENDED, status 255")
        terminal.press("u")
        terminal.wait_for("plugged in", "17 of 31", "Reg Home")
        self.assertEqual(terminal.end("q"), 0)

    def test_real_call(self):
        terminal = self.start("--by-hand")
        terminal.wait_for("20 of 31", "10.64.0.", "CONNECTED")
        terminal.press("d")
        terminal.wait_for("DOWN", "left over, the link is dead")
        terminal.wait_for("up          the daemon publishes", "restarting connection")
        terminal.press("-")
        terminal.wait_for("16 of 31   (/var/log/lightbar)")
        self.assertEqual(terminal.end("\x03"), 0)

    def test_needs_a_terminal(self):
        run = run_demo("--by-hand")
        self.assertEqual(run.returncode, 2)
        self.assertIn("--by-hand needs a terminal", run.stderr)


class Command(unittest.TestCase):
    def test_the_picture_in_the_readme_is_what_the_demo_draws(self):
        with tempfile.TemporaryDirectory() as folder:
            drawn = pathlib.Path(folder) / "demo.svg"
            self.assertEqual(run_demo("--picture", str(drawn)).returncode, 0)
            now, kept = (self.texts(path) for path in (drawn, PROJECT / "docs" / "demo.svg"))
        self.assertIn("6 of 8: A dropped call", "".join(kept))
        self.assertEqual(now, kept, "scripts/demo --picture docs/demo.svg draws it anew")
        self.assertIn("](docs/demo.svg)", (PROJECT / "README.md").read_text())

    @staticmethod
    def texts(path):
        found = re.findall(r"<text[^>]*>(.*?)</text>", path.read_text(), re.DOTALL)
        return [html.unescape(text).replace("\xa0", " ") for text in found]

    def test_explains_itself(self):
        for words in (["--card", "X1"], ["--speed", "0"], ["--for", "-1"], ["--no-such"]):
            run = subprocess.run([str(PROJECT / "scripts" / "demo"), *words], check=False,
                                 stdin=subprocess.DEVNULL, capture_output=True, text=True)
            self.assertEqual(run.returncode, 2, words)
            self.assertIn("sage:", run.stderr)

    def test_takes_the_sandbox_along_when_it_is_ended(self):
        with subprocess.Popen(DEMO, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL, text=True) as demo:
            for line in demo.stdout:
                if "starting" in line:
                    break
            family = self.descendants(demo.pid)
            self.assertGreater(len(family), 5)
            demo.terminate()
            self.assertEqual(demo.wait(), 128 + signal.SIGTERM)
        clock = FairClock()
        while any(self.lives(one) for one in family) and clock.seconds() < PATIENCE:
            time.sleep(0.05)
        self.assertEqual([one for one in family if self.lives(one)], [])

    @staticmethod
    def lives(process):
        try:
            state = pathlib.Path(f"/proc/{process}/stat").read_text().rsplit(") ", 1)[1][0]
        except OSError:
            return False
        return state != "Z"

    def descendants(self, process):
        found = []
        try:
            names = pathlib.Path(f"/proc/{process}/task/{process}/children").read_text().split()
        except OSError:
            return found
        for child in map(int, names):
            found += [child, *self.descendants(child)]
        return found


class Sandbox(unittest.TestCase):
    """What is said where the sandbox cannot be made."""

    def run_where(self, *command):
        as_root = [] if os.geteuid() == 0 else ["--user", "--map-root-user"]
        return subprocess.run(["unshare", *as_root, "--mount", *command], check=False,
                              stdin=subprocess.DEVNULL, capture_output=True, text=True)

    def test_a_plain_chroot_is_told_how_to_become_a_fit_one(self):
        script = """
            cd "$1" && mkdir -p usr etc proc dev tmp ".$2" && cp /etc/passwd etc
            for name in bin sbin lib lib64; do
                if [ -L /$name ]; then cp -P /$name .; fi
            done
            mount --rbind /usr usr && mount --rbind /dev dev && mount --rbind /proc proc
            mount --rbind "$2" ".$2" && exec chroot . "$2/scripts/demo"
        """
        with tempfile.TemporaryDirectory() as folder:
            run = self.run_where("sh", "-c", script, "sh", folder, str(PROJECT))
        self.assertEqual(run.returncode, 1, run.stderr)
        self.assertIn("This is a chroot whose root is no mount point.", run.stderr)
        self.assertIn("mount --bind DIR DIR", run.stderr)
        self.assertEqual(run.stdout, "")  # neither built nor installed anything before

    def test_a_container_without_the_right_is_told_so(self):
        run = self.run_where("setpriv", "--bounding-set=-sys_admin", "--inh-caps=-sys_admin",
                             str(PROJECT / "scripts" / "demo"))
        self.assertEqual(run.returncode, 1, run.stderr)
        self.assertIn("This is a container without the right to make them.", run.stderr)


if __name__ == "__main__":
    unittest.main()
