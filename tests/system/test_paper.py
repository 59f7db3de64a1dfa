"""What the documents show and name: their commands work, and what they name is there.

How a block of commands is claimed is told in papers.py.
"""

import ast
import os
import re
import shlex
import subprocess
import tempfile
import unittest

import papers
from router_sandbox import BUILD, PROJECT, Router

HERE = re.compile(r"tried here(?:, only words of (?P<some>[^:]+): \S.*)?")
ON_A_ROUTER = re.compile(r"tried on a router(?: with an? (?P<card>\w+))?"
                         r"(?:, only words of (?P<some>[^:]+): \S.*)?")
WORDS = re.compile(r"only words: \S.*")
ELSEWHERE = re.compile(r"needs [\w ]+: \S.*")
BY_A_TEST = re.compile(r"(?P<test>tests/system/test_\w+\.py) .*")
WAYS = (HERE, ON_A_ROUTER, WORDS, ELSEWHERE, BY_A_TEST)
LIMIT = 120  # seconds for a command that is run; only one that hangs gets there
# Words in capitals that stand for something the reader has.
STANDS_FOR = {"/path/to/modemd": str(BUILD / "modemd"), "OLD_MODEMD": str(BUILD / "modemd"),
              "NEW_MODEMD": str(BUILD / "modemd")}


def way(block):
    """How a block is tried: the match of its mark, or None."""
    found = [match for match in (pattern.fullmatch(block.mark) for pattern in WAYS) if match]
    return found[0] if found else None


def claimed(pattern):
    return [(b, way(b)) for b in papers.everything() if way(b) and way(b).re is pattern]


def split_words(match, commands):
    """The commands to run, and those of which only the words count."""
    some = tuple(word.strip() for word in (match["some"] or "").split(",") if word.strip())
    only = [line for line in commands if some and bare(line).startswith(some)]
    return [line for line in commands if line not in only], only


def bare(line):
    """Without the variables in front."""
    return re.sub(r"^(?:[A-Z_]+=\S* )*", "", line.strip())


def read_by(test):
    """What block(DOCUMENT, BEGINNING) and blocks(DOCUMENT) of a test file name."""
    tree = ast.parse((PROJECT / test).read_text())
    constants = {target.id: node.value.value for node in tree.body if isinstance(node, ast.Assign)
                 and isinstance(node.value, ast.Constant) for target in node.targets
                 if isinstance(target, ast.Name)}
    for call in (node for node in ast.walk(tree) if isinstance(node, ast.Call)):
        name = getattr(call.func, "attr", getattr(call.func, "id", ""))
        words = [constants.get(getattr(word, "id", None), getattr(word, "value", None))
                 for word in call.args]
        if name == "block" and len(words) == 2:
            yield tuple(words)
        elif name == "blocks" and words and words[0]:
            yield words[0], ""


class Claims(unittest.TestCase):
    def test_every_block_of_commands_is_claimed(self):
        wrong = [f"{block} begins with {block.text.splitlines()[0]!r} and has the mark {block.mark!r}"
                 for block in papers.everything() if not way(block)]
        self.assertEqual(wrong, [], "Put a mark on the line above each that says who tries it;"
                         " tests/system/papers.py lists them")

    def test_a_test_that_claims_a_block_reads_it(self):
        wrong = []
        for block, match in claimed(BY_A_TEST):
            test = match["test"]
            if not (PROJECT / test).is_file():
                wrong.append(f"{block}: {test} is not there")
            elif not any(document == block.document and block.text.startswith(beginning)
                         for document, beginning in read_by(test)):
                wrong.append(f'{block}: {test} has no papers.block("{block.document}", "...") with'
                             " the beginning of this block")
        self.assertEqual(wrong, [])

    def test_a_fence_says_what_it_holds(self):
        """One of another kind, such as "bash", would slip by."""
        wrong = [f"{document}: {kind}" for document in papers.documents()
                 for kind in papers.kinds(document) - {"sh", "", "text", "cpp", "diff", "json"}]
        self.assertEqual(wrong, [], "a block of commands begins with ```sh")

    def test_a_card_of_a_mark_has_its_router(self):
        wanted = {match["card"] or "" for _, match in claimed(ON_A_ROUTER)}
        self.assertEqual(wanted, {router.card for router in OnARouter.__subclasses__()})

    def test_there_are_blocks(self):
        self.assertGreater(len(papers.everything()), 25)
        for pattern in (HERE, ON_A_ROUTER, WORDS, BY_A_TEST):
            self.assertTrue(claimed(pattern), pattern.pattern)


class Words(unittest.TestCase):
    """Commands that are not run: the program is there, and knows the words."""

    def test_of_what_is_not_run(self):
        lines = [(b, line) for b, _ in claimed(WORDS) for line in b.commands()]
        lines += [(b, line) for b, match in claimed(HERE) + claimed(ON_A_ROUTER)
                  for line in split_words(match, b.commands())[1]]
        for block, line in lines:
            for part in re.split(r" && ", line.split(" | ")[0]):  # what hears it is another's
                try:
                    self.check(shlex.split(bare(part), comments=True))
                except (AssertionError, OSError, subprocess.SubprocessError) as error:
                    self.fail(f"{block}: {part}\n{error}\n{getattr(error, 'stdout', '')}")

    def check(self, words):
        program, *rest = (STANDS_FOR.get(word, word) for word in words)
        options = [word.split("=")[0] for word in rest if word.startswith("--")]
        if program == "ctest":
            self.assertIn("Total Tests:", self.output("ctest", *rest, "-N"))
        elif program.endswith("python3") and rest[:2] == ["-m", "pytest"]:
            self.know(self.output(program, "-m", "pytest", "--help"), options)
            self.assertTrue((PROJECT / rest[2]).exists(), rest[2])
        elif program == "cmake":
            self.know(self.output("cmake", "--help-full"), options)
        elif program == "make":
            self.output("make", "--dry-run", *rest)
        elif program in ("modemctl", "modem-sim"):
            self.know(self.output(BUILD / program, *rest[:1], "--help"), options)
        elif "/tests/" in program or program.endswith("rig_selftest"):
            listing = self.output(PROJECT / program, *rest, "--gtest_list_tests")
            self.assertRegex(listing, r"(?m)^  \w")
        else:
            self.assertTrue(os.access(PROJECT / program, os.X_OK), f"no way to check {program}: it is"
                            " no program of the tree; add one to tests/system/test_paper.py")
            if options:
                self.know(self.source(program), options)

    def source(self, program):
        """Its text, and that of the files which it names: a wrapper leaves its options to others."""
        text = (PROJECT / program).read_text()
        for name in set(re.findall(r"[\w.-]+(?:/[\w.-]+)+|\b\w+\.py\b", text)):
            place = PROJECT / (name if "/" in name else f"scripts/{name}")
            parts = place.glob("*.py") if place.is_dir() else [place]
            text += "".join(part.read_text() for part in parts if part.suffix == ".py"
                            and part.is_file())
        return text

    def know(self, text, options):
        for option in options:
            self.assertTrue(re.search(rf"(?<![\w-]){re.escape(option)}(?![\w-])", text),
                            f"{option} is no option there")

    def output(self, *words):
        return subprocess.run([str(word) for word in words], cwd=PROJECT, check=True, text=True,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, timeout=LIMIT).stdout


def left_over():
    """Files that are neither known to git nor ignored."""
    return subprocess.run(["git", "-C", str(PROJECT), "ls-files", "-o", "--exclude-standard"],
                          capture_output=True, text=True, check=False).stdout.splitlines()


class Here(unittest.TestCase):
    def test_commands_for_this_tree(self):
        before = left_over()
        for block, match in claimed(HERE):
            self.run_block(block, split_words(match, block.commands())[0])
        self.assertEqual(set(left_over()) - set(before), set(), "a command left files in the tree")

    def run_block(self, block, commands):
        """As one script, as a later line may build on an earlier one; a command a line.

        "set -e" would pass over a failure in front of "&&".
        """
        with tempfile.TemporaryDirectory(prefix="modemd-paper-") as scratch:
            script = "".join(f"{line}\n[ $? -eq 0 ] || exit 1\n" for line in commands)
            for shown, meant in STANDS_FOR.items():
                script = script.replace(shown, meant)
            script = re.sub(r"(?<![\w/])/tmp/", f"{scratch}/", script)
            done = subprocess.run(["bash", "-uo", "pipefail", "-c", script], cwd=PROJECT,
                                  check=False, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                  stderr=subprocess.STDOUT, text=True, timeout=LIMIT)
            self.assertEqual(done.returncode, 0, f"{block}\n{script}\n{done.stdout}")


class OnARouter:
    """Commands for a technician, with what a router of the field would have around them."""

    card = ""

    def test_commands_for_the_router(self):
        blocks = [(b, match) for b, match in claimed(ON_A_ROUTER)
                  if (match["card"] or "") == self.card]
        self.assertTrue(blocks, "no block asks for this card")
        with Router(self.card) as router:
            self.prepare(router, self.card)
            for block, match in blocks:
                self.try_block(router, block, split_words(match, block.commands())[0])

    def prepare(self, router, card):
        router.shell("mkdir -p /var/lib/prometheus/node-exporter /tmp/copy/var/log")
        if not card:
            return
        router.start_daemon(f"-{card}", "/dev/ttyUSB0")
        router.wait_for(lambda: router.read("/var/log/wireless.cardstats").endswith("\n"),
                        "the statistics")
        router.wait_for(lambda: router.read("/var/log/wirelessactivation_status")
                        .startswith("Reg"), "the registration")
        if card == "881":
            router.wait_for(lambda: router.exists("/tmp/sms/send"), "the spool")
        if card == "E362":
            router.wait_for(router.addresses, "the address of wwan0")
        router.shell("cp /var/log/wireless* /var/log/messages /tmp/copy/var/log/")

    def try_block(self, router, block, commands):
        """Each for itself, as a person would type them; exit statuses of findings are no failure."""
        for line in commands:
            if line.endswith("&"):
                router.shell(f"{line[:-1]} >/run/paper.out 2>&1 </dev/null &")
                router.wait_for(lambda: router.read("/run/paper.out"), f"the first word of {line}")
                continue
            words = line.replace("'", "'\\''")
            output = router.shell(f"timeout {LIMIT} sh -c '{words}' 2>&1; echo status=$?")
            found = re.search(r"\b(why|doctor)\b", line)
            self.assertRegex(output, r"status=[01]\n\Z" if found else r"status=0\n\Z",
                             f"{block}: {line}")


class OnABareRouter(OnARouter, unittest.TestCase):
    card = ""


class OnA881(OnARouter, unittest.TestCase):
    card = "881"


class OnAnE362(OnARouter, unittest.TestCase):
    card = "E362"


class Costs(unittest.TestCase):
    def test_the_readme_has_the_figures_of_the_card(self):
        lines = (PROJECT / "gear/bench/footprint.card").read_text().splitlines()
        card = {key: float(value) for key, value in (line.split() for line in lines)}
        rows = {
            "program, stripped": [f"{card[f'{kind}.bytes'] / 1000:.0f} KB"
                                  for kind in ("release", "static_cxx")],
            "memory that is its alone": [f"{card[f'{kind}.private_dirty_kib']:.0f} KiB"
                                         for kind in ("release", "static_cxx")],
            "instructions for one pass of its loop": [
                f"{card['E362.instructions_a_pass']:,.0f}", ""],
            "shell lines a minute": [f"{card['E362.shell_lines_a_minute']:.2f}", ""],
            "heap blocks gained": [f"{card['E362.heap_blocks_gained']:.0f}", ""],
        }
        readme = (PROJECT / "README.md").read_text()
        for name, values in rows.items():
            row = " | ".join([f"| {name}", *filter(None, values)]) + " |" + " |" * values.count("")
            self.assertTrue(f"{row}\n" in readme, f"README.md, as gear/bench/footprint.card: {row}")

    def test_the_readme_stays_short(self):
        self.assertLessEqual(len((PROJECT / "README.md").read_text().splitlines()), 150)


class Recipes(unittest.TestCase):
    """Blocks that need a world of their own."""

    def test_a_look_from_outside_tells_of_a_daemon_that_stands_still(self):
        look = papers.block("docs/hazards.md", "# Every two minutes.")
        with Router("881") as router:
            router.start_daemon("-881", "/dev/ttyUSB0")
            statistics = "/var/log/wireless.cardstats"
            router.wait_for(lambda: router.read(statistics).endswith("\n"), "the statistics")

            def told():
                return router.read("/var/log/messages").count("modemd stands still")

            router.shell(look)
            first = router.read("/tmp/cardstats.seen")
            self.assertTrue(first.startswith("#File generated "), first)
            router.wait_for(lambda: router.read(statistics).splitlines()[:1] not in
                            ([], first.splitlines()), "new statistics")
            router.shell(look)
            self.assertEqual(told(), 0)
            router.shell("kill -STOP $(cat /var/run/modemd.pid)")
            router.shell(look)
            router.shell(look)
            router.wait_for(told, "the word of the look from outside")

    def test_a_send_file_arrives_on_air(self):
        drop = papers.block("docs/sms.md", "new=$(mktemp")
        with Router("881") as router:
            router.start_daemon("-881", "/dev/ttyUSB0")
            router.wait_for(lambda: router.exists("/tmp/sms/send"), "the spool")
            router.shell(f"number=5550100 text='The pump runs.'\n{drop}")
            router.wait_for(lambda: "The pump runs." in router.ctl("sent"), "the message on air")

    def test_a_program_is_run_for_each_message(self):
        follow = papers.block("docs/modemctl.md", "modemctl sms follow")
        with Router("881") as router:
            router.start_daemon("-881", "/dev/ttyUSB0")
            router.wait_for(lambda: router.exists("/tmp/sms/recv"), "the spool")
            router.shell(f"{follow.strip()} >/dev/null 2>&1 </dev/null &")
            router.ctl("sms", "15550100", "on my way")
            router.wait_for(lambda: re.search(r"sms: \+?15550100: on my way",
                                              router.read("/var/log/messages")),
                            "the program's word in the system log")


if __name__ == "__main__":
    unittest.main()
