"""The daemon and a simulated modem in the router sandbox, watched from outside.

The system tests and the demo start a Router, wait for conditions (never for a length of time),
and look at the files, the interface, the DHCP server's log and the modem's command log from the
machine's side.
"""

import json
import os
import pathlib
import re
import subprocess
import tempfile
import time

from fair_clock import FairClock

PROJECT = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ.get("MODEMD_BUILD", PROJECT / "build" / "release")).resolve()

# Only a hang reaches this; on an idle machine every wait ends much earlier.
PATIENCE = 150.0  # seconds of a FairClock


def figure(text):
    """A measured value, shown beside the test's verdict."""
    print(f"\nfigure: {text}", flush=True)


class Router:
    """One sandbox. Use as a context manager, or call close()."""

    def __init__(self, card=None, command=("sleep", "100000")):
        self.directory = tempfile.TemporaryDirectory(prefix="modemd-system-")
        pid_file = pathlib.Path(self.directory.name) / "pid"
        # Even a killed test takes its sandbox along; and under nohup a shell inside heeds signals.
        router = ["/usr/bin/env", "--default-signal", "setpriv", "--pdeathsig", "TERM",
                  str(PROJECT / "scripts" / "router"), "--quiet", "--build", str(BUILD),
                  "--pid-file", str(pid_file)]
        if card:
            router += ["--card", card]
        self.process = subprocess.Popen([*router, "--", *command],
                                        stdin=subprocess.DEVNULL, start_new_session=True)
        self.started_at = None
        try:
            self.wait_for(pid_file.exists, "the sandbox to start")
            self.pid = int(pid_file.read_text())
            self.root = pathlib.Path(f"/proc/{self.pid}/root")
            self.wait_for(self.path("/run/router.ready").exists, "the sandbox to be ready")
        except Exception:
            self.close()
            raise

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        self.process.terminate()
        self.process.wait()
        self.directory.cleanup()

    # Files

    def path(self, path):
        return self.root / path.lstrip("/")

    def read(self, path):
        """The text of a file in the sandbox, "" when there is none."""
        try:
            return self.path(path).read_text(encoding="utf-8", errors="replace")
        except OSError:
            return ""

    def exists(self, path):
        return os.path.lexists(self.path(path))

    def write(self, path, text):
        """Writes beside the place and renames, as a careful program does."""
        target = self.path(path)
        beside = target.with_name(f".{target.name}.new")
        beside.write_text(text)
        os.replace(beside, target)

    def table(self, path):
        """A KEY=value file as a dictionary."""
        lines = (line.split("=", 1) for line in self.read(path).splitlines() if "=" in line)
        return dict(lines)

    def statistics(self):
        return self.table("/var/log/wireless.cardstats")

    # Commands

    def run(self, *command, check=True):
        done = subprocess.run([str(PROJECT / "scripts" / "router"), "enter", str(self.pid), "--",
                               *command], stdin=subprocess.DEVNULL, capture_output=True,
                              text=True, check=False)
        if check and done.returncode != 0:
            raise AssertionError(f"{command} ended with {done.returncode}:"
                                 f" {done.stdout}{done.stderr}")
        return done.stdout

    def shell(self, line, check=True):
        return self.run("/bin/sh", "-c", line, check=check)

    def ctl(self, *words):
        """Tells the simulated modem something."""
        return self.run(str(BUILD / "modem-sim"), "ctl", *words)

    def start_daemon(self, *arguments):
        """Starts the daemon as an init script would; its exit status goes to /run/exit."""
        line = " ".join([str(BUILD / "modemd"), *arguments])
        self.shell(f"rm -f /run/exit; ({line} >/run/output 2>&1 </dev/null; echo $? >/run/exit)"
                   " >/dev/null 2>&1 </dev/null &")
        self.started_at = time.monotonic()

    def signal_daemon(self, name):
        process = self.wait_for(lambda: self.read("/var/run/modemd.pid"), "the pid file")
        self.shell(f"kill -{name} {process}")

    def wait_for_exit(self):
        """The daemon's exit status."""
        self.wait_for(lambda: self.read("/run/exit").endswith("\n"), "the daemon to end")
        return int(self.read("/run/exit"))

    # What can be seen from outside

    def log(self):
        """What the daemon told the system log, without time and name."""
        found = re.findall(r"^.* user\.notice modemd: (.*)$", self.read("/var/log/messages"),
                           re.MULTILINE)
        return found

    def wait_for_log(self, line, times=1):
        """The log daemon takes its time to write, also after the line's writer has ended."""
        self.wait_for(lambda: self.log().count(line) >= times, f'"{line}" in the system log')

    def addresses(self):
        """The IPv4 addresses of wwan0, as the kernel says."""
        links = json.loads(self.run("/usr/bin/ip", "-json", "-4", "address", "show", "wwan0"))
        return [a["local"] for link in links for a in link.get("addr_info", [])]

    def link_is_up(self):
        links = json.loads(self.run("/usr/bin/ip", "-json", "link", "show", "wwan0"))
        return "UP" in links[0]["flags"]

    def reaches(self, address):
        """Whether an answer to a ping comes back."""
        answer = self.shell(f"ping -c 1 -W 5 -I wwan0 {address}", check=False)
        return ", 0% packet loss" in answer

    def default_routes(self):
        return json.loads(self.run("/usr/bin/ip", "-json", "route", "show", "default") or "[]")

    def dhcp(self, message):
        """How often the carrier's DHCP server has logged this message."""
        return len(re.findall(rf"\b{message}\(", self.read("/carrier/dhcp.log")))

    def heard(self):
        """The command lines that reached the modem."""
        return re.findall(r"^[0-9.]+ < (.*)$", self.read("/carrier/modem.log"), re.MULTILINE)

    def dhcp_client(self):
        """The process id of the DHCP client once it serves its lease from the background, else "".

        It goes there as a new process that leads a session of its own, and a moment passes until
        the pid file names it.
        """
        process = self.read("/var/run/udhcpc-wwan0.pid").strip()
        stat = self.read(f"/proc/{process}/stat") if process else ""
        session = stat.rpartition(")")[2].split()[3:4]
        return process if session == [process] else ""

    def recorded(self):
        """Calls of the tools that would have touched the machine, without their times."""
        return [line.split(" ", 2)[2] for line in self.read("/var/log/recorded").splitlines()]

    # Waiting

    def wait_for(self, condition, what, patience=PATIENCE):
        """Polls until the condition holds and returns what it gave."""
        clock = FairClock()
        while True:
            result = condition()
            if result:
                return result
            if self.process.poll() is not None:
                raise AssertionError(f"the sandbox ended while waiting for {what}")
            if clock.seconds() > patience:
                raise AssertionError(f"waited {patience:.0f} s in vain for {what}; the machine is"
                                     f" {clock.slowness:.1f} times slower than at rest\n"
                                     + self.story())
            time.sleep(0.2)

    def story(self):
        """The tail of every log, for a failed test."""
        parts = []
        for path in ("/var/log/messages", "/carrier/dhcp.log", "/carrier/modem.log",
                     "/run/output"):
            tail = "\n".join(self.read(path).splitlines()[-25:])
            parts.append(f"-- {path}\n{tail}")
        return "\n".join(parts)
