"""docs/runtime.md has every command line that the daemon runs, and lives up to what it says."""

import re
import unittest

from router_sandbox import PROJECT, Router

PAGE = (PROJECT / "docs" / "runtime.md").read_text()
RUN = re.compile(r"\bRunShell\(")


def rows():
    """The table of programs: lists of cells."""
    table = PAGE.split("## Programs")[1].split("\n\n**")[0]
    return [[cell.strip() for cell in line.strip("|").split(" | ")]
            for line in table.splitlines() if line.startswith("| ")][1:]


def codes(cell):
    return [code for pair in re.findall(r"``(.+?)``|`([^`]+)`", cell) for code in pair if code]


def allowed_lines():
    """The command lines that the random worlds let the daemon run."""
    words = (PROJECT / "tests/scenarios/worlds/daemon_words.cpp").read_text()
    table = words.split("kShellLines[] = {")[1].split("};")[0]
    return re.findall(r'\{"(.+?)", ', table)


class EveryCommandLine(unittest.TestCase):
    def test_that_may_be_run_is_told(self):
        """A line is told as it stands, or by what it has in place of another."""
        told = [(codes(first), room, program) for first, room, program, _ in rows()]
        self.assertGreater(len(allowed_lines()), 10)
        for line in allowed_lines():
            places = line.split()
            self.assertTrue(any(line in words or words and places[0] == words[0].split()[0]
                                and self.is_variant(line, words) for words, _, _ in told),
                            f"docs/runtime.md does not tell of: {line}")

    def is_variant(self, line, words):
        """The first line of the row with words taken from the others of the row."""
        base, more = words[0], [word for others in words[1:] for word in others.split()]
        rest = [word for word in line.split() if word not in base.split()]
        return all(word in more or word.rpartition("/")[2] in more for word in rest)

    def test_of_the_source_has_its_room(self):
        source = PROJECT / "src"
        rooms = {str(path.relative_to(source).with_suffix("")) for path in source.rglob("*.cpp")
                 if RUN.search(path.read_text())}
        told = {code for row in rows() for code in codes(row[1])}
        self.assertEqual(rooms, told, "docs/runtime.md and the rooms that call RunShell differ")

    def test_begins_with_a_program_that_is_named(self):
        for first, _, program, _ in rows()[1:]:
            for line in codes(first)[0].split("; "):
                word = re.sub(r"kill `cat .*", "cat", line).split()[0].rpartition("/")[2]
                self.assertIn(f"`{word}`", program)

    def test_of_the_source_begins_as_one_that_is_told(self):
        """A program that is not in the table would be in a literal beside RunShell."""
        told = " ".join(code for row in rows() for code in codes(row[0]))
        for path in (PROJECT / "src").rglob("*.cpp"):
            for literal in re.findall(r'RunShell\((?:Format\(|std::string\()?"([^"]+)"',
                                      path.read_text()):
                self.assertIn(literal.split()[0], told, path)


class WithoutALog(unittest.TestCase):
    def test_the_daemon_works_on(self):
        with Router("881") as router:
            router.shell("rm /dev/log")
            router.start_daemon("-881", "/dev/ttyUSB0")
            router.wait_for(lambda: router.read("/var/log/wirelessactivation_status") ==
                            "Reg Home\n", "the registration")
            self.assertEqual(router.log(), [])
            router.signal_daemon("TERM")
            self.assertEqual(router.wait_for_exit(), 0)


class WithoutEcho(unittest.TestCase):
    def test_the_shell_empties_the_lightbar(self):
        with Router() as router:
            router.shell("echo '+CSQ: 17,99' >/var/log/lightbar; rm /bin/echo")
            line = next(line for line in allowed_lines() if line.startswith("/bin/echo"))
            router.shell(f"PATH=/sbin:/bin; {line} 2>/dev/null", check=False)
            self.assertEqual(router.read("/var/log/lightbar"), "")


if __name__ == "__main__":
    unittest.main()
