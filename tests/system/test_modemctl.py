"""modemctl as a technician, a script and a fleet use it."""

import json
import os
import pathlib
import pty
import re
import select
import shlex
import subprocess
import tempfile
import time
import unittest

import jsonschema
import papers
from fair_clock import FairClock
from router_sandbox import BUILD, PATIENCE, PROJECT, Router

TOOL = str(BUILD / "modemctl")
UNPACKED = PROJECT / "build" / "unpacked" / "bin"  # see scripts/unpack
SUBCOMMANDS = ("status", "watch", "why", "log", "sms", "doctor", "metrics", "get")
MOST_BYTES = 500 * 1024
LIBRARIES = {"libc.so.6", "libstdc++.so.6", "libm.so.6", "libgcc_s.so.1"}
SANITIZERS = {"libasan.so.8", "libubsan.so.1"}


def tool(*arguments, stdin="", **environment):
    return subprocess.run([TOOL, *arguments], input=stdin, capture_output=True, text=True,
                          check=False, env={"PATH": os.environ["PATH"], "TZ": "UTC", **environment})


def check(testcase, text):
    """The document, when it fits the schema that it names."""
    document = json.loads(text)
    name, version = re.fullmatch(r"modemctl\.(\w+)/(\d+)", document["schema"]).groups()
    testcase.assertEqual(version, "1")
    schema = json.loads((PROJECT / "docs" / "schema" / f"modemctl-{name}.json").read_text())
    jsonschema.Draft7Validator(schema).validate(document)
    return document


def wait_for(condition, what):
    clock = FairClock()
    while clock.seconds() < PATIENCE:
        result = condition()
        if result:
            return result
        time.sleep(0.1)
    raise AssertionError(f"waited in vain for {what}")


class Tree:
    """Files of a router, for --root."""

    def __init__(self):
        self.folder = tempfile.TemporaryDirectory(prefix="modemctl-tree-")
        self.root = pathlib.Path(self.folder.name)

    def write(self, path, text):
        target = self.root / path.lstrip("/")
        target.parent.mkdir(parents=True, exist_ok=True)
        target.write_bytes(text if isinstance(text, bytes) else text.encode())


class CommandLine(unittest.TestCase):
    def test_each_subcommand_helps_with_an_example(self):
        for name in SUBCOMMANDS:
            done = tool(name, "--help")
            self.assertEqual(done.returncode, 0, name)
            self.assertRegex(done.stdout, rf"Examples:\n  .*modemctl {name}", name)
            self.assertIn(f"  {name} ", tool("--help").stdout)

    def test_manual_page_names_every_subcommand_and_option(self):
        page = subprocess.run(["man", "-l", str(PROJECT / "man" / "modemctl.1")], check=True,
                              capture_output=True, text=True,
                              env={**os.environ, "MANWIDTH": "80"}).stdout \
            if pathlib.Path("/usr/bin/man").exists() else \
            (PROJECT / "man" / "modemctl.1").read_text().replace("\\-", "-")
        for name in SUBCOMMANDS:
            self.assertIn(name, page)
            for option in re.findall(r"^  (--[a-z-]+)", tool(name, "--help").stdout, re.MULTILINE):
                self.assertIn(option, page, name)

    def test_completion_offers_subcommands_and_their_options(self):
        def offered(*words):
            line = (f"PATH={shlex.quote(str(BUILD))}:$PATH; source {PROJECT}/tools/modemctl.bash;"
                    f" COMP_WORDS=({shlex.join(words)}); COMP_CWORD=$((${{#COMP_WORDS[@]}}-1));"
                    " _modemctl; printf '%s\\n' \"${COMPREPLY[@]}\"")
            return subprocess.run(["bash", "-c", line], check=True, capture_output=True,
                                  text=True).stdout.split()

        self.assertEqual(set(SUBCOMMANDS) - set(offered("modemctl", "")), set())
        self.assertEqual(offered("modemctl", "wat"), ["watch"])
        self.assertIn("--explain", offered("modemctl", "log", "--e"))
        self.assertNotIn("--explain", offered("modemctl", "status", "--"))
        self.assertEqual(offered("modemctl", "status", "--color", "n"), ["never"])

    def test_wrong_use_ends_with_2_and_prints_nothing(self):
        for words in ((), ("stat",), ("status", "--x"), ("log", "--since", "soon"),
                      ("log", "--lines", "x"), ("get",), ("watch", "--signal-step", "0")):
            done = tool(*words)
            self.assertEqual((done.returncode, done.stdout), (2, ""), words)
            self.assertTrue(done.stderr.startswith("modemctl: "), words)

    def test_is_small_and_links_the_language_libraries_only(self):
        dynamic = subprocess.run(["readelf", "-d", TOOL], check=True, capture_output=True,
                                 text=True).stdout
        needed = set(re.findall(r"\(NEEDED\).*\[(.+)\]", dynamic))
        self.assertTrue(needed)
        self.assertLessEqual(needed - SANITIZERS, LIBRARIES)
        if needed & SANITIZERS:
            return
        with tempfile.TemporaryDirectory() as folder:
            stripped = pathlib.Path(folder) / "modemctl"
            subprocess.run(["strip", "-o", str(stripped), TOOL], check=True)
            self.assertLessEqual(stripped.stat().st_size, MOST_BYTES)


NASTY = (b"\x1b[2J\x1b]0;owned\x07\x9b31m\xc2\x9b2J\r\x00\x7f\xe2\x80\xae\xff\xc0\xaf\"\\{{}}"
         b"\xf3\xa0\x81\x81%s%n`$(reboot)`")
LINES = ("ESN IMEI SIM_ID MDN MANU MODEL FIRMWARE_V HARDWARE_V CARRIER CARRIER_PLMN BAND"
         " CURRENT_RSSI CURRENT_CSQ CURRENT_ECIO LTE_RSRP LTE_RSRQ QMI_RESULT QMI_STATE"
         " QMI_END_REASON QMI_CALL_TIME SERVICE_TYPE CREG CREG_ABR TEMPERATURE").split()


class HostileFiles(unittest.TestCase):
    def tree(self, value):
        tree = Tree()
        head = time.strftime("#File generated %Y-%m-%d %H:%M:%S \n", time.gmtime()).encode()
        tree.write("/var/log/wireless.cardstats",
                   head + b"".join(f"CELLMODEM_{key}=".encode() + value + b"\n" for key in LINES))
        for name in ("wirelessactivation_status", "lightbar"):
            tree.write(f"/var/log/{name}", value + b"\n")
        stamp = time.strftime("%Y-%m-%dT%H:%M:%S+00:00", time.gmtime()).encode()
        tree.write("/var/log/messages", b"".join(
            stamp + b" router modemd: " + line + b"\n" for line in
            (value, b"Service Type changed from '" + value + b"' to 'No Service'",
             b"Got SMS from " + value + b" at , Message: " + value)))
        tree.write("/tmp/sms/send/" + "x" * 200, value)
        tree.write("/modemctl.facts", b"address=" + value + b"\n")
        return tree

    def assert_harmless(self, text, words):
        for character in text:
            self.assertTrue(" " <= character <= "~" or character == "\n",
                            f"{character!r} of {words} reaches the terminal")

    def test_nothing_foreign_reaches_the_terminal_unescaped(self):
        for value in (NASTY.replace(b"\0", b""), NASTY, b"A" * 100000, b"", b"Unknown"):
            tree = self.tree(value)
            for words in (("status",), ("why",), ("log",), ("metrics",), ("get", "CARRIER"),
                          ("status", "--json"), ("why", "--json"), ("log", "--json"),
                          ("get", "MODEL", "--json"), ("log", "--explain", "exit \x1b[2J")):
                done = subprocess.run([TOOL, *words, "--root", str(tree.root)], check=False,
                                      capture_output=True, env={"TZ": "UTC", "LC_ALL": "C"})
                self.assertIn(done.returncode, (0, 1, 3, 4), words)
                self.assertEqual(done.stderr, b"", words)
                text = done.stdout.decode()
                if "--json" in words:
                    for line in text.splitlines():
                        check(self, line)
                    text = "".join(c for c in text if ord(c) < 128)
                self.assert_harmless(text, words)

    def test_files_of_every_kind_are_survived(self):
        for make in (os.mkfifo, os.mkdir, lambda path: os.symlink("/dev/zero", path),
                     lambda path: os.symlink(path, path), lambda path: open(path, "w").close()):
            tree = Tree()
            (tree.root / "var/log").mkdir(parents=True)
            make(tree.root / "var/log/wireless.cardstats")
            for name in ("status", "why", "metrics"):
                done = tool(name, "--root", str(tree.root))
                self.assertIn(done.returncode, (0, 3), name)

    def test_a_link_leads_nowhere_out_of_the_tree(self):
        tree = Tree()
        (tree.root / "var/log").mkdir(parents=True)
        (tree.root / "var/log/messages").symlink_to("/etc/hostname")
        done = tool("log", "--root", str(tree.root))
        self.assertEqual((done.returncode, done.stdout), (3, ""))

    def test_metrics_of_anything_are_well_formed(self):
        for value in (NASTY.replace(b"\0", b""), b"\"", b"\\", b"", b"-1e999", b"7"):
            tree = self.tree(value)
            text = tool("metrics", "--root", str(tree.root)).stdout
            done = subprocess.run([str(UNPACKED / "promtool"), "check", "metrics"], input=text,
                                  capture_output=True, text=True, check=False)
            self.assertEqual((done.returncode, done.stdout + done.stderr), (0, ""), value)


def run_on_terminal(*words, **environment):
    """What the command writes to a terminal of its own."""
    pid, terminal = pty.fork()
    if pid == 0:
        os.execve(TOOL, [TOOL, *words], {"TZ": "UTC", "TERM": "xterm", **environment})
    output = b""
    clock = FairClock()
    while clock.seconds() < PATIENCE:
        if not select.select([terminal], [], [], 1)[0]:
            continue
        try:
            piece = os.read(terminal, 65536)
        except OSError:
            break
        if not piece:
            break
        output += piece
    os.close(terminal)
    os.waitpid(pid, 0)
    return output


class Colour(unittest.TestCase):
    def setUp(self):
        self.tree = Tree()
        self.words = ("status", "--root", str(self.tree.root))

    def test_only_on_a_terminal(self):
        self.assertIn(b"\x1b[", run_on_terminal(*self.words))
        self.assertNotIn("\x1b", tool(*self.words).stdout)
        self.assertIn("\x1b[", tool(*self.words, "--color", "always").stdout)

    def test_never_with_no_color(self):
        self.assertNotIn(b"\x1b", run_on_terminal(*self.words, NO_COLOR="1"))
        self.assertNotIn("\x1b", tool(*self.words, "--color", "always", NO_COLOR="1").stdout)
        self.assertNotIn(b"\x1b", run_on_terminal(*self.words, TERM="dumb"))
        self.assertNotIn(b"\x1b", run_on_terminal(*self.words, "--color", "never"))


class Log(unittest.TestCase):
    def test_follows_a_file_also_when_it_is_replaced(self):
        tree = Tree()
        log = tree.root / "var/log/messages"
        tree.write("/var/log/messages", "2026-03-14T09:15:02Z router modemd: v1.45 starting\n")
        with subprocess.Popen([TOOL, "log", "--follow", "--json", str(log)], text=True,
                              stdout=subprocess.PIPE) as process:
            self.assertIn("starting", process.stdout.readline())
            with log.open("a") as file:
                file.write("2026-03-14T09:15:03Z router modemd: Resetting device\n")
            self.assertIn("Resetting", process.stdout.readline())
            log.rename(log.with_suffix(".0"))
            log.write_text("2026-03-14T09:15:04Z router modemd: exit\n")
            self.assertEqual(check(self, process.stdout.readline())["plain"], "ended")
            process.terminate()

    def test_reads_the_journal_where_there_is_one(self):
        """Its program, as it answers to "-o export", is played by a script."""
        with Router() as router:
            router.shell("mkdir -p /run/systemd/journal /run/bin;"
                         " printf '%s\\n' '#!/bin/sh' 'echo \"$@\" >/run/asked'"
                         " 'printf \"__REALTIME_TIMESTAMP=1773479702000000\\\\nMESSAGE=exit"
                         "\\\\n\\\\n\"' >/run/bin/journalctl; chmod +x /run/bin/journalctl")
            shown = router.shell(f"PATH=/run/bin:$PATH TZ=UTC {TOOL} log --since 2026-03-14")
            self.assertIn("09:15:02  daemon   ended", shown)
            asked = router.read("/run/asked").split()
            self.assertIn("--identifier", asked)
            self.assertIn("--output=export", asked)
            self.assertTrue([word for word in asked if word.startswith("--since=@")])


class Screen:
    """A real terminal, of tmux, with a command in it."""

    count = 0

    def __init__(self, router, command, columns=80, rows=24):
        Screen.count += 1  # a server that ends may still hold its socket
        self.socket = f"modemctl-{os.getpid()}-{Screen.count}"
        enter = shlex.join([str(PROJECT / "scripts" / "router"), "enter", str(router.pid), "--",
                            "/bin/sh", "-c", f"{command}; echo ended with $?; cat"])
        self.tmux("-f", "/dev/null", "new-session", "-d", "-x", str(columns), "-y", str(rows),
                  enter)

    def tmux(self, *words):
        return subprocess.run(["tmux", "-L", self.socket, *words], check=True,
                              capture_output=True, text=True).stdout

    def text(self):
        return self.tmux("capture-pane", "-p")

    def keys(self, *keys):
        self.tmux("send-keys", *keys)

    def wait_for(self, words):
        wait_for(lambda: words in self.text(), f"{words!r} on the screen:\n{self.text()}")

    def close(self):
        self.tmux("kill-server")


class OnTheRouter(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.router = Router("E362")

    @classmethod
    def tearDownClass(cls):
        cls.router.close()

    def ask(self, words):
        """Output and exit status of modemctl in the sandbox."""
        text = self.router.shell(f"{TOOL} {words} 2>&1; echo status=$?")
        output, _, status = text.rpartition("status=")
        return output, int(status)

    def document(self, words):
        return check(self, self.ask(words + " --json")[0])

    def test_1_without_a_daemon_there_are_no_data(self):
        self.assertEqual(self.ask("status")[1], 3)
        self.assertEqual(self.document("why")["cause"]["id"], "daemon_never_started")
        self.assertEqual(self.ask("get CARRIER")[1], 3)

    def test_2_with_one_the_page_is_good(self):
        self.router.start_daemon("-E362", "/dev/ttyUSB0")
        self.router.wait_for(lambda: self.ask("status")[1] == 0, "a good link")
        document = self.document("status")
        self.assertEqual(document["modem"]["model"], {"state": "value", "text": "E362"})
        self.assertEqual(document["link"]["address"], self.router.addresses()[0])
        self.assertEqual(document["daemon"]["state"], "running")
        page, _ = self.ask("status")
        self.assertLessEqual(len(page.splitlines()), 23)
        self.assertLessEqual(max(map(len, page.splitlines())), 80)
        self.router.wait_for(lambda: self.ask("get CARRIER") == ("Example Net\n", 0), "the name")
        self.router.wait_for(lambda: self.document("why")["cause"] is None, "no cause for trouble")

    def test_3_the_log_is_told_in_plain_words(self):
        text, status = self.ask("log --lines 0")
        self.assertEqual(status, 0)
        self.assertIn("started for a Novatel E362", text)
        self.assertNotIn("?  ", text)

    def test_4_metrics_are_replaced_by_rename_and_please_promtool(self):
        self.router.shell("echo old >/tmp/modem.prom; ln /tmp/modem.prom /tmp/link")
        self.assertEqual(self.ask("metrics --output /tmp/modem.prom")[1], 0)
        text = self.router.read("/tmp/modem.prom")
        self.assertIn("\nmodem_link_up 1\n", "\n" + text)
        self.assertEqual(self.router.read("/tmp/link"), "old\n")
        self.assertEqual(self.router.shell("ls /tmp | grep -c prom"), "1\n")
        done = subprocess.run([str(UNPACKED / "promtool"), "check", "metrics"], input=text,
                              capture_output=True, text=True, check=False)
        self.assertEqual((done.returncode, done.stdout + done.stderr), (0, ""))

    def test_5_watch_shows_its_pages_and_ends_cleanly(self):
        screen = Screen(self.router, f"LC_ALL=C.UTF-8 {TOOL} watch")
        self.addCleanup(screen.close)
        screen.wait_for("[1 Overview]")
        screen.wait_for("Example Net")
        for key, words in (("2", "IMEI"), ("3", "dBm"), ("5", "The link is up."),
                           ("4", "watching:"), ("Right", "[5 Why]"), ("Left", "[4 Events]"),
                           ("Tab", "[5 Why]"), ("1", "Carrier")):
            screen.keys(key)
            screen.wait_for(words)
        # At every size: whole lines, the title above and the keys below.
        for columns, rows in ((100, 30), (60, 20), (80, 24)):
            screen.tmux("resize-window", "-x", str(columns), "-y", str(rows))
            # With the last column lost, the clock would lack its last digit.
            wait_for(lambda: re.search(r"\d\d:\d\d:\d\d$", screen.text().splitlines()[0]) and
                     "q: end" in screen.text().splitlines()[-1], f"a picture of {columns}x{rows}")
        screen.keys("q")
        screen.wait_for("ended with 0")
        self.assertNotIn("Overview", screen.text())

    def test_6_watch_gives_the_terminal_back_when_it_is_killed(self):
        screen = Screen(self.router, f"{TOOL} watch; echo gave $?; stty -a")
        self.addCleanup(screen.close)
        screen.wait_for("Example Net")
        self.router.shell("kill -TERM $(pidof modemctl)")
        screen.wait_for("ended with 0")
        self.assertIn("gave 0", screen.text())
        self.assertRegex(screen.text(), r"(?<!-)\bicanon\b")
        self.assertRegex(screen.text(), r"(?<!-)\becho\b")

    def test_7_watch_feeds_a_broker(self):
        router, unpacked = self.router, UNPACKED
        router.write("/tmp/broker.conf", "listener 1883 127.0.0.1\nallow_anonymous true\n"
                     "user root\nlog_type all\n")
        router.shell(f"ip link set lo up; {unpacked}/mosquitto -c /tmp/broker.conf"
                     " >/tmp/broker.log 2>&1 </dev/null &")
        router.wait_for(lambda: "running" in router.read("/tmp/broker.log"), "the broker")
        router.shell(f"{unpacked}/mosquitto_sub -t router/7/modem >/tmp/heard 2>&1 </dev/null &")
        router.wait_for(lambda: "SUBACK" in router.read("/tmp/broker.log"), "the subscriber")
        feed = papers.block("docs/modemctl.md", "modemctl watch").strip()
        router.shell(f"PATH=$PATH:{unpacked}; ({feed}) >/dev/null 2>&1 </dev/null &")

        def heard():
            lines = [line for line in router.read("/tmp/heard").splitlines()
                     if line.startswith('{"schema"')]
            return [check(self, line) for line in lines]

        router.wait_for(lambda: [e for e in heard() if e["event"] == "start"], "the first message")
        router.ctl("drop-call", "4")
        router.wait_for(lambda: [e for e in heard() if e["event"] == "log"
                                 and e["line"].startswith("LTE Connected returned 0")],
                        "the dropped call in the feed")
        router.ctl("register", "roaming")
        events = router.wait_for(lambda: [e for e in heard() if e["event"] == "registration"
                                          and e["to"] == "Registered, Roaming"], "the roaming")
        self.assertEqual(events[0]["state"]["registration"], "Registered, Roaming")

    def test_8_a_killed_daemon_is_told_from_one_that_was_asked_to_end(self):
        self.router.signal_daemon("KILL")
        self.router.wait_for_exit()
        self.assertEqual(self.document("why")["cause"]["id"], "daemon_gone")
        output, status = self.ask("status --max-age 0")
        self.assertEqual(status, 4, output)
        self.assertTrue(output.startswith("Too old: "), output)


if __name__ == "__main__":
    unittest.main()
