"""CONTRIBUTING.md as its reader takes it: the commands work, and the steps lead to a card."""

import os
import re
import shlex
import subprocess
import time
import unittest

import cards
import papers
from router_sandbox import BUILD, PROJECT, figure
from tracked_files import tracked_files

GUIDE = "CONTRIBUTING.md"
COPY = BUILD / "card-recipe"  # a tree beside the build, kept so that only what changes is built
DEMO = ("/usr/bin/python3", "gear/demonstration", "--check", "--card")


def run(*command, cwd=PROJECT, status=0, **more):
    result = subprocess.run([str(word) for word in command], cwd=cwd, stdin=subprocess.DEVNULL,
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                            check=False, **more)
    if status is not None and result.returncode != status:
        raise AssertionError(f"{shlex.join(map(str, command))}: status {result.returncode}\n"
                             + result.stdout[-6000:])
    return result.stdout


class Papers(unittest.TestCase):
    """What people read names the cards of the table, in its order, and no others."""

    def setUp(self):
        self.models = cards.read_models(PROJECT / "src/state/cards.h")
        self.options = [model.option for model in self.models if model.option]

    def test_usage_lines(self):
        usage = "[" + "|".join(self.options) + "] [-cind1] [-d]... DEVICE"
        self.assertEqual(f"modemd {usage}\n", papers.block("README.md", "modemd ["))
        self.assertIn(f"usage: modemd {usage}\n", self.usage_of_the_daemon())

    def usage_of_the_daemon(self):
        """Only inside a router: the daemon writes its pid file before it looks at its options."""
        return run("scripts/router", "--quiet", "--build", BUILD, "--", BUILD / "modemd", status=1)

    def test_manual_of_the_daemon(self):
        page = (PROJECT / "man/modemd.8").read_text().replace("\\-", "-")
        self.assertIn(".RB [ " + " | ".join(self.options) + " ]\n", page)
        described = re.findall(r"^\.B -(\w+)\n(.*)", page, re.MULTILINE)
        models = {model.name: model.title for model in self.models if model.option}
        self.assertEqual([name for name, _ in described if name not in ("cind1", "d")],
                         list(models))
        for name, text in described:
            self.assertTrue(text.startswith(models.get(name, "")), f"-{name}: {text}")

    def test_manual_of_the_simulator(self):
        names = [model.name for model in self.models if model.option]
        self.assertIn("The model:\n.BR " + ' ", " '.join(names) + "\nor\n.BR generic ,",
                      (PROJECT / "man/modem-sim.1").read_text())

    def test_help_of_the_simulator_and_the_demo(self):
        simulator = run(BUILD / "modem-sim", "--help")
        for model in self.models:
            self.assertRegex(simulator, rf"(?m)^  {model.name} +{model.title}$")
        names = " ".join(model.name for model in self.models)
        self.assertIn(f" {names}.\n", run("scripts/demo", "--help"))


class UnknownCards(unittest.TestCase):
    """A card that is in no table is an error, and never the generic modem."""

    def test_of_the_simulator(self):
        self.assertIn("the models are generic, 881,",
                      run(BUILD / "modem-sim", "--profile", "X1", status=1))

    def test_of_the_sandbox(self):
        self.assertIn("the models are generic, 881,",
                      run("scripts/router", "--build", BUILD, "--card", "X1", "--", "true",
                          status=2))

    def test_of_the_demo(self):
        self.assertIn("invalid choice: 'X1'", run(*DEMO, "X1", status=2))


class Commands(unittest.TestCase):
    def test_each_does_what_its_line_says(self):
        lines = [line for block in papers.blocks(GUIDE) for line in block.commands()]
        self.assertGreater(len(lines), 8)
        for line in lines:
            with self.subTest(line):
                self.check(line)

    def check(self, line):
        words = shlex.split(line, comments=True)
        seed = dict(word.split("=", 1) for word in words if re.match("[A-Z_]+=", word))
        program, *rest = [word for word in words if not re.match("[A-Z_]+=", word)]
        environment = {**os.environ, **seed}
        if program.startswith("scripts/"):
            self.assertTrue(os.access(PROJECT / program, os.X_OK))
            text = run(program, "--help")
            for option in (word for word in rest if word.startswith("--")):
                self.assertIn(option, text)
        elif program.endswith("python3"):
            self.assertRegex(run(program, *rest), r"\b[1-9]\d* passed")
        elif program == "cmake":
            self.assertIn(f"{rest[-1]}:", run("cmake", "--build", "build/release", "--target",
                                              "help"))
        elif program == "ctest":
            self.assertRegex(run(program, *rest, "-N"), r"Total Tests: [1-9]")
        else:
            self.assertRegex(run(program, *rest, env=environment), r"PASSED  \] [1-9]")


class Tree:
    """The files of the project, changed in memory and laid down where they differ."""

    def __init__(self):
        self.files = {name: (PROJECT / name).read_bytes() for name in tracked_files()}

    def apply(self, block):
        """A patch without line numbers: what stays and what goes is looked for downwards."""
        for part in re.split(r"^--- ", block, flags=re.MULTILINE)[1:]:
            name, *changes = part.splitlines()
            lines, place = self.files.get(name, b"").decode().splitlines(), 0
            for sign, text in ((line[:1], line[1:]) for line in changes):
                if sign == "+":
                    lines.insert(place, text)
                    place += 1
                    continue
                if text not in lines[place:]:
                    raise AssertionError(f"{GUIDE}: {name} has no line: {text}")
                place = lines.index(text, place) + (sign == " ")
                if sign == "-":
                    del lines[place]
            self.files[name] = ("\n".join(lines) + "\n").encode()

    def lay_down(self, folder):
        for path in [p for p in folder.rglob("*") if p.is_file() and "build" not in
                     p.relative_to(folder).parts[:1]]:
            if str(path.relative_to(folder)) not in self.files:
                path.unlink()
        for name, content in self.files.items():
            path = folder / name
            if not path.is_file() or path.read_bytes() != content:
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_bytes(content)
            path.chmod((PROJECT / name).stat().st_mode if (PROJECT / name).exists() else 0o644)


class AddACard(unittest.TestCase):
    """The steps, as they stand, for the card that they invent."""

    build = COPY / "build" / "release"

    def test_1_the_steps_fit_the_tree(self):
        tree = Tree()
        for block in papers.blocks(GUIDE, "diff"):
            tree.apply(block.text)
        tree.lay_down(COPY)
        table = cards.read_models(COPY / "src/state/cards.h")
        self.assertEqual((table[-1].name, table[-1].number), ("X1", 9))

    def test_2_it_is_built(self):
        """At no optimisation, behind all else that runs, through a cache where there is one."""
        started = time.monotonic()
        environment = {**os.environ, "CCACHE_BASEDIR": str(COPY), "CCACHE_NOHASHDIR": "1"}
        run("cmake", "-S", COPY, "-B", self.build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
            "-DMODEMD_TESTS=ON", "-DMODEMD_WERROR=ON", env=environment)
        run("nice", "cmake", "--build", self.build, "--parallel", os.cpu_count(), "--target",
            "modemd", "modem-sim", "scenarios_cards", env=environment)
        figure(f"a card was added and built in {time.monotonic() - started:.0f} s")

    def test_3_it_comes_up(self):
        program = self.build / "tests/scenarios/scenarios_cards"
        told = run(program, "--gtest_filter=*X1*")
        for name in ("Table/EveryCard.TellsItsSerialNumber/X1",
                     "Table/EveryCard.IsAskedForItsRegistrationWhenItCanTell/X1",
                     "Table/EveryCard.IsAskedNothingThatTheRandomWorldsDoNotKnow/X1",
                     "ExampleX1.TellsItsModel"):
            self.assertIn(f"[       OK ] {name} (", told)

    def test_4_the_papers_and_the_tools_know_it(self):
        """By the tests above, as they stand in the copy."""
        self.assertIn("4 passed", run(
            "/usr/bin/python3", "-m", "pytest", "tests/system/test_contributing.py::Papers",
            cwd=COPY, env={**os.environ, "MODEMD_BUILD": str(self.build)}))

    def test_5_the_demo_shows_it(self):
        run(*DEMO, "X1", cwd=COPY)

    def test_6_it_lives_on_a_router(self):
        script = (f"{self.build}/modemd -X1 /dev/ttyUSB0 & "
                  "until grep -q ^Reg /var/log/wirelessactivation_status; do sleep 1; done; "
                  "until grep IMEI= /var/log/wireless.cardstats | grep 91; do sleep 1; done")
        self.assertIn("CELLMODEM_IMEI=001017000000091",
                      run("scripts/router", "--quiet", "--build", self.build, "--card", "X1", "--",
                          "timeout", "3000", "sh", "-c", script, cwd=COPY))


if __name__ == "__main__":
    unittest.main()
