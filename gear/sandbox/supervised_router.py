"""The sandbox's router under a real supervisor, which is process 1 of its own."""

import contextlib
import os
import pathlib
import re
import shlex
import signal

from fair_clock import FairClock
from router_sandbox import BUILD, PATIENCE, PROJECT, Router

# Where the machine has its second version of control groups: systemd wants a group of its own.
CONTROL_GROUPS = (pathlib.Path("/sys/fs/cgroup/unified"), pathlib.Path("/sys/fs/cgroup"))
DEVICE = "/dev/ttyUSB0"
STATISTICS = "/var/log/wireless.cardstats"


def children(pid):
    try:
        return [int(word) for word
                in pathlib.Path(f"/proc/{pid}/task/{pid}/children").read_text().split()]
    except OSError:
        return []


def is_first_of_inner_namespace(pid):
    status = pathlib.Path(f"/proc/{pid}/status").read_text()
    ids = status.split("NSpid:")[1].splitlines()[0].split()
    return len(ids) > 2 and ids[-1] == "1"


def remove_what_is_empty(group):
    for directory, _, _ in os.walk(group, topdown=False):
        with contextlib.suppress(OSError):
            os.rmdir(directory)


def remove_control_group(group):
    """Its last processes are gone a moment after they were killed."""
    clock = FairClock()
    while group.is_dir() and clock.seconds() < PATIENCE:
        remove_what_is_empty(group)


def remove_left_groups():
    """Those of a test that was killed: nobody has closed its router."""
    for place in CONTROL_GROUPS:
        for group in place.glob("modemd-supervised-*"):
            if not pathlib.Path(f"/proc/{group.name.split('-')[2]}").exists():
                remove_what_is_empty(group)


class SupervisedRouter(Router):
    """Boots the supervisor with the daemon installed. `settings` are files below /etc."""

    def __init__(self, supervisor, card="E362", settings=()):
        remove_left_groups()
        self.group = f"modemd-supervised-{os.getpid()}-{id(self):x}"
        script = PROJECT / "gear" / "sandbox" / "supervised"
        super().__init__(card, ("/usr/bin/bash", str(script), supervisor, self.group))
        try:
            self.sandbox_pid = self.pid
            for name, text in dict(settings).items():
                self.path(f"/settings/{name}").parent.mkdir(parents=True, exist_ok=True)
                self.write(f"/settings/{name}", text)
            self.path("/settings").mkdir(exist_ok=True)
            self.write("/settings/ready", "")
            self.pid = self.wait_for(self.find_process_1, f"{supervisor} to start")
            self.root = pathlib.Path(f"/proc/{self.pid}/root")
        except Exception:
            self.close()
            raise

    def close(self):
        super().close()
        for place in CONTROL_GROUPS:
            remove_control_group(place / self.group)

    def find_process_1(self):
        waiting = [self.sandbox_pid]
        while waiting:
            pid = waiting.pop()
            try:
                if is_first_of_inner_namespace(pid):
                    return pid
            except OSError:
                continue
            waiting += children(pid)
        return 0

    # The daemon

    def daemon(self):
        """The process id of the running daemon, as the supervisor sees it, else ""."""
        pid = self.read("/var/run/modemd.pid").strip()
        words = self.read(f"/proc/{pid}/cmdline").split("\0") if pid else [""]
        return pid if words[0].endswith("modemd") else ""

    def wait_for_daemon(self, other_than=""):
        return self.wait_for(lambda: self.daemon() not in ("", other_than) and self.daemon(),
                             "the daemon")

    def has_started_up(self):
        """Until then the daemon has no handlers: any signal just ends it."""
        status = self.read(f"/proc/{self.daemon() or 'none'}/status")
        caught = re.search(r"^SigCgt:\s*([0-9a-f]+)", status, re.MULTILINE)
        return caught and int(caught[1], 16) & 1 << (signal.SIGTERM - 1) != 0

    def wait_for_work(self):
        """The modem has answered this daemon."""
        self.wait_for(lambda: self.has_started_up() and self.exists(STATISTICS), "the start-up")

    def wait_for_link(self):
        self.wait_for(self.addresses, "an address")

    def plug_in_late(self, card="E362"):
        """A modem for a router that was started without one."""
        words = [str(BUILD / "modem-sim"), "--profile", card, "--link", DEVICE,
                 "--log", "/carrier/modem.log", "--on-call-up", "/sbin/carrier up",
                 "--on-call-down", "/sbin/carrier down"]
        self.shell(f"{shlex.join(words)} >/run/modem.out 2>&1 </dev/null &")

    def starts(self):
        return self.log().count("v1.45 starting")


class SystemdRouter(SupervisedRouter):
    def __init__(self, card="E362", settings=()):
        super().__init__("systemd", card, settings)

    def log(self):
        return self.run("/usr/bin/journalctl", "--no-pager", "-o", "cat", "-t", "modemd",
                        check=False).splitlines()

    def story(self):
        return "\n".join([self.run("/usr/bin/journalctl", "--no-pager", check=False)[-4000:],
                          super().story()])

    def systemctl(self, *words, check=True):
        return self.run("/usr/bin/systemctl", *words, check=check).strip()

    def show(self, what, unit="modemd.service"):
        return self.systemctl("show", "--value", "-p", what, unit)
