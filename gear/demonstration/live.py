"""The router sandbox: real time, a real shell, DHCP client, interface and kernel counters."""

import os
import re
import time

from router_sandbox import BUILD, PROJECT, Router
from state import RESTART_PAUSE, Snapshot, Stage

SCRIPT = str(PROJECT / "packaging" / "sysv" / "modemd")
LIBEXEC = PROJECT / "packaging" / "libexec"
DEVICE = "/dev/ttyUSB0"
# Where the start script is told to find the daemon, so that its exit status can be seen.
WATCHED = "/sbin/modemd-watched"
# The keeper's SIGTERM is for the daemon; the shell waits to tell how that ended.
WATCHED_TEXT = f"#!/bin/sh\ntrap : TERM\nrm -f /run/exit\n{BUILD}/modemd \"$@\"\necho $? >/run/exit\n"
STEP = 0.2  # seconds between two looks


class Tail:
    """The lines that were added to a file of the sandbox since the last look."""

    def __init__(self, path):
        self.path = path
        self.place = 0
        self.rest = b""

    def lines(self):
        try:
            with open(self.path, "rb") as file:
                if os.fstat(file.fileno()).st_size < self.place:  # a new file under the old name
                    self.place = 0
                file.seek(self.place)
                added = file.read()
        except OSError:
            return []
        self.place += len(added)
        *whole, self.rest = (self.rest + added).split(b"\n")
        return [line.decode("utf-8", "replace") for line in whole]


class LiveRouter(Stage):
    """The daemon under its start script in the sandbox."""

    name = "real time"

    def __init__(self, card):
        super().__init__(card)
        self.router = Router(card.name)
        self.system_log = Tail(self.router.path("/var/log/messages"))
        self.modem_log = Tail(self.router.path("/carrier/modem.log"))
        self.call_up = False
        self.started_at = 0.0
        self.deadline = 0.0

    def close(self):
        self.router.close()

    def start(self):
        self.router.path("/etc/default").mkdir(exist_ok=True)
        self.router.write("/etc/default/modemd", f"LIBEXEC={LIBEXEC}\nDAEMON={WATCHED}\nCARD={self.card.option[1:]}\n"
                                                 f"DEVICE={DEVICE}\nPAUSE={RESTART_PAUSE}\n")
        self.router.write(WATCHED, WATCHED_TEXT)
        os.chmod(self.router.path(WATCHED), 0o755)
        self.started_at = self.deadline = time.monotonic()
        self.router.run(SCRIPT, "start")

    def step(self, wait):
        """Lets a moment pass in `wait(seconds)`."""
        self.deadline = max(self.deadline + STEP, time.monotonic() + STEP / 4)
        wait(self.deadline - time.monotonic())

    def look(self):
        router = self.router
        heard = []
        for line in self.modem_log.lines():
            _, direction, text = (line.split(" ", 2) + ["", ""])[:3]
            if direction == "<":
                heard.append(text)
            elif text in ("call up", "call down"):
                self.call_up = text == "call up"
        log = [re.sub(r"^.* user\.notice modemd: ", "", line) for line in self.system_log.lines()
               if " user.notice modemd: " in line]
        exit_status = router.read("/run/exit").strip()
        plugged = router.exists(DEVICE)
        return Snapshot(
            now=time.monotonic() - self.started_at, log=log, heard=heard,
            files={path: router.read(path) if router.exists(path) else None
                   for path in self.card.files},
            written={path: self._written(path) for path in self.card.files},
            address=self._address(), sent_bytes=self._counter("tx_bytes"),
            received_bytes=self._counter("rx_bytes"), plugged=plugged,
            running=exit_status == "", exit_status=int(exit_status) if exit_status else None,
            call_up=self.call_up and plugged, received=self._texts("/tmp/sms/recv"),
            waiting=self._names("/tmp/sms/send"))

    def ctl(self, *words):
        self.router.ctl(*words)

    def spool(self, name, number, text):
        # Made elsewhere and moved: the daemon takes whatever it finds in the folder.
        made = self.router.path("/tmp/message.new")
        made.write_text(f"TO={number}\nMSG={text}\n", encoding="utf-8")
        os.replace(made, self.router.path(f"/tmp/sms/send/{name}"))

    def stop(self):
        """Ends the daemon for good; returns its exit status."""
        self.router.run(SCRIPT, "stop")
        return self.router.wait_for_exit()

    def story(self):
        return self.router.story()

    def _address(self):
        """The kernel's own list: quicker than asking a program in the sandbox."""
        try:
            with open(f"/proc/{self.router.pid}/net/fib_trie", encoding="ascii") as table:
                found = re.findall(r"\|-- (\S+)\n\s+/32 host LOCAL", table.read())
        except OSError:
            return ""
        return next((a for a in found if not a.startswith("127.")), "")

    def _written(self, path):
        try:
            return os.stat(self.router.path(path)).st_mtime_ns
        except OSError:
            return None

    def _counter(self, name):
        return int(self.router.read(f"/sys/class/net/wwan0/statistics/{name}") or 0)

    def _names(self, folder):
        path = self.router.path(folder)
        return sorted(p.name for p in path.iterdir()
                      if not p.name.startswith(".")) if path.is_dir() else []

    def _texts(self, folder):
        return [self.router.read(f"{folder}/{name}") for name in self._names(folder)]
