"""What a router maker does: install, build without the gear, with another toolchain, without CMake."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

import papers
from router_sandbox import BUILD, PROJECT, Router
from test_contributing import Tree

PAGES = "share/man"
DAEMON = {"sbin/modemd", f"{PAGES}/man8/modemd.8"}
PROFILES = {f"share/modemd/profiles/{path.name}" for path in (PROJECT / "gear/sim/profiles").iterdir()}
SIMULATOR = {"bin/modem-sim", f"{PAGES}/man1/modem-sim.1"} | PROFILES
TOOLS = {"bin/modemctl", f"{PAGES}/man1/modemctl.1", "share/bash-completion/completions/modemctl"}


def installed(*words):
    """The files that cmake --install puts below a prefix."""
    with tempfile.TemporaryDirectory() as prefix:
        subprocess.run(["cmake", "--install", BUILD, "--prefix", prefix, *words], check=True,
                       capture_output=True)
        return {str(path.relative_to(prefix)) for path in pathlib.Path(prefix).rglob("*")
                if not path.is_dir()}


def run_commands(lines, directory, **more):
    environment = {**os.environ, **more, "CXX": os.environ.get("CXX", "g++"),
                   "CMAKE_BUILD_PARALLEL_LEVEL": str(os.cpu_count())}
    return subprocess.run(["sh", "-ec", lines], cwd=directory, env=environment, check=True,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True).stdout


class Components(unittest.TestCase):
    def test_a_router_gets_the_daemon_and_its_page(self):
        self.assertEqual(installed(), DAEMON)
        self.assertEqual(installed("--component", "daemon"), DAEMON)

    def test_the_tools_by_name(self):
        self.assertEqual(installed("--component", "tools"), TOOLS)

    def test_the_simulator_by_name(self):
        self.assertEqual(installed("--component", "simulator"), SIMULATOR)


class WithoutTheGear(unittest.TestCase):
    """A tree of which a router maker has kept what is shipped."""

    def test_builds_and_installs_as_the_readme_says(self):
        copy, root = BUILD / "shipped", BUILD / "shipped-root"
        tree = Tree()
        tree.files = {name: content for name, content in tree.files.items()
                      if not name.startswith(("gear/", "tests/"))}
        tree.lay_down(copy)
        shutil.rmtree(root, ignore_errors=True)
        run_commands(papers.block("README.md", "cmake --preset release"), copy, DESTDIR=str(root))
        files = {str(path.relative_to(root)) for path in root.rglob("*") if not path.is_dir()}
        self.assertEqual({f"usr/{name}" for name in DAEMON | TOOLS} - files, set())
        self.assertIn("usr/lib/systemd/system/modemd.service", files)
        self.assertFalse([name for name in files if "modem-sim" in name or "profiles" in name])


class OwnToolchain(unittest.TestCase):
    """The README's commands, with this machine's compiler as the foreign one."""

    def test_with_cmake(self):
        tree = PROJECT / "build" / "router"
        run_commands(f"rm -rf {tree}", PROJECT)
        output = run_commands(papers.block("README.md", "cmake -S ."), PROJECT)
        files = {str(path.relative_to(tree / "root")) for path in (tree / "root").rglob("*")
                 if not path.is_dir()}
        self.assertEqual(files, {f"usr/local/{name}" for name in DAEMON})
        for folder in ("gear", "tests"):
            self.assertFalse((tree / folder).exists(), folder)
        self.assertNotIn("warning", output.lower())
        self.check_program(tree / "root/usr/local/sbin/modemd")

    def test_in_one_line(self):
        line = papers.block("README.md", "$CXX ")
        program = BUILD / "one-line" / "modemd"
        program.parent.mkdir(exist_ok=True)
        self.assertEqual(len(line.splitlines()), 1)
        run_commands(line.replace("-o modemd", f"-o {program}"), PROJECT)
        self.check_program(program)

    def check_program(self, program):
        self.assertLess(program.stat().st_size, 200_000)
        with Router() as router:
            output = router.shell(f"{program} 2>&1; echo status=$?")
            self.assertIn("status=1", output)
            router.wait_for(lambda: "No /dev/device path given, exiting" in router.log(),
                            "the reason in the system log")


if __name__ == "__main__":
    unittest.main()
