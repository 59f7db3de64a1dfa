"""A private copy of the tree with a build of its own, in which one mutant after the other lives."""

import ctypes
import hashlib
import os
import pathlib
import resource
import shutil
import signal
import subprocess
import sys
import time

PROJECT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(PROJECT / "gear" / "machine"))
from tracked_files import tracked_files  # noqa: E402

PR_SET_PDEATHSIG = 1
MEMORY = 4 << 30  # bytes; a mutant may ask for all there is
LARGEST_FILE = 8 << 30  # a test has a log beyond 2 GiB, with nothing in it
# The units run where nothing of the machine's own can be reached by a mutant: what they write lies
# in /dev/shm, which is theirs alone. The scenarios make such a root by themselves.
COVERED = """mount --make-rprivate /
for folder in /var/log /run /tmp/sms /etc/kvt /etc/ssh; do
    [ ! -d "$folder" ] || mount -t tmpfs covered "$folder"
done
mount -t tmpfs -o size=1g covered /dev/shm
mount --bind /etc /etc && mount -o remount,bind,ro /etc
! command -v ip >/dev/null || ip link set lo up
exec "$@"
"""


class Trouble(Exception):
    """The tree itself does not build, or a test of it fails without any change."""


def take_over(folder):
    """Makes `folder` a copy of the tree; files that are alike keep their time."""
    names = set(tracked_files())
    for old in [p for p in folder.rglob("*") if p.is_file()]:
        name = str(old.relative_to(folder))
        if not name.startswith("build/") and name not in names:
            old.unlink()
    for name in names:
        source, copy = PROJECT / name, folder / name
        if copy.exists() and copy.read_bytes() == source.read_bytes():
            continue
        copy.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(source, copy)
        shutil.copymode(source, copy)


def limited():
    """In the child: bounds, and an end with the tool that started it."""
    ctypes.CDLL(None).prctl(PR_SET_PDEATHSIG, signal.SIGKILL)
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
    resource.setrlimit(resource.RLIMIT_FSIZE, (LARGEST_FILE, LARGEST_FILE))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def run(command, seconds, cwd, **options):
    """Exit status and output; None for one that was still running and has been ended."""
    process = subprocess.Popen(command, cwd=cwd, stdin=subprocess.DEVNULL,
                               stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                               start_new_session=True, **options)
    try:
        output, _ = process.communicate(timeout=seconds)
        return process.returncode, output.decode(errors="replace")
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        output, _ = process.communicate()
        return None, output.decode(errors="replace")


class Workshop:
    def __init__(self, folder):
        self.folder = folder
        self.build_folder = folder / "build" / "release"
        self.built = set()  # targets that are those of the file that stands there now

    def prepare(self, targets):
        """Builds the unchanged tree."""
        take_over(self.folder)
        if not (self.build_folder / "build.ninja").exists():
            configured = self._tool(["cmake", "--preset", "release", "-DMODEMD_TESTS=ON"])
            if configured[0] != 0:
                raise Trouble(configured[1])
        status, output = self.build(targets)
        if status != 0:
            raise Trouble("the tree does not build:\n" + output[-3000:])

    def _tool(self, command):
        environment = dict(os.environ, CCACHE_BASEDIR=str(self.folder), CCACHE_NOHASHDIR="1")
        return run(command, 3600, self.folder, env=environment)

    def build(self, targets):
        return self._tool(["cmake", "--build", str(self.build_folder), "-j", "2", "--target",
                           *targets])

    def program(self, name):
        return self.build_folder / "tests" / name.split("_")[0] / name

    def test(self, name, choice, seconds):
        """Runs a program of tests up to its first failure: exit status, output, seconds."""
        command = [str(self.program(name)), "--gtest_fail_fast"]
        if choice:
            command.append("--gtest_filter=" + choice)
        if name.startswith("unit_"):
            user = ["--map-root-user"] if os.geteuid() != 0 else []
            command = ["unshare", *user, "--mount", "--mount-proc", "--pid", "--net", "--fork",
                       "--kill-child", "sh", "-c", COVERED, "sh", *command]
        started = time.monotonic()
        status, output = run(command, seconds, self.folder, preexec_fn=limited)
        return status, output, time.monotonic() - started

    def code(self, path):
        return (self.folder / path).read_text(encoding="latin-1")

    def write(self, path, code):
        (self.folder / path).write_text(code, encoding="latin-1")

    def digest(self, path):
        """Of what the compiler has made of a file; of the daemon for a header."""
        machine_code = self.build_folder / "src/CMakeFiles/modemd_rooms.dir" / (path[4:] + ".o")
        if not path.endswith(".cpp"):
            machine_code = self.build_folder / "modemd"
        if path == "src/core/main.cpp":
            machine_code = self.build_folder / "modemd"
        return hashlib.sha1(machine_code.read_bytes()).hexdigest()
