"""The commands that documents show: where they stand, and what the mark beside them says.

A block of shell commands, or the examples of a manual page, has a mark on the line above it, in an
HTML comment or in a comment of the page:

    <!-- tried here -->                      as it stands, in this tree; /tmp is a folder of its own
    <!-- tried on a router -->               in the sandbox; "with an 881": and the daemon at work
    <!-- only words: REASON -->              the commands and options exist, nothing is run
    <!-- tried here, only words of A, B: REASON -->   the lines that begin so are not run
    <!-- needs WHAT: REASON -->              something that no test has; nothing is checked
    <!-- tests/system/test_x.py ... -->      that test reads the block with block("DOCUMENT", "BEGINNING")
"""

import dataclasses
import re

from router_sandbox import PROJECT

FENCE = re.compile(r"(?:^<!-- (?P<mark>[^\n]+?) -->\n+)?^```(?P<kind>\w*)\n(?P<text>.*?)^```",
                   re.MULTILINE | re.DOTALL)
EXAMPLES = re.compile(r'^\.SH "?EXAMPLES?"?\n(?:\.\\" (?P<mark>[^\n]+)\n)?(?P<text>.*?)(?=^\.SH|\Z)',
                      re.MULTILINE | re.DOTALL)


@dataclasses.dataclass(frozen=True)
class Block:
    document: str
    line: int
    mark: str
    text: str

    def __str__(self):
        return f"{self.document}:{self.line}"

    def commands(self):
        """One for each line; a line that ends in a backslash goes on."""
        lines = re.sub(r"\\\n", " ", self.text).splitlines()
        return [line for line in lines if line.strip() and not line.lstrip().startswith("#")]


def documents():
    paths = [*PROJECT.glob("*.md"), *(PROJECT / "docs").glob("*.md")]
    return sorted(str(p.relative_to(PROJECT)) for p in paths if p.name != "CHANGELOG.md")


def manual_pages():
    return sorted(str(p.relative_to(PROJECT)) for p in (PROJECT / "man").iterdir())


def blocks(document, kind="sh"):
    """The fenced blocks of this kind."""
    text = (PROJECT / document).read_text()
    return [Block(document, text.count("\n", 0, found.start("text")), found["mark"] or "",
                  found["text"])
            for found in FENCE.finditer(text) if found["kind"] == kind]


def kinds(document):
    """What the fences of a document say that they hold."""
    return {found["kind"] for found in FENCE.finditer((PROJECT / document).read_text())}


def block(document, beginning):
    """The text of the one block of commands that begins so."""
    found = [b.text for b in blocks(document) if b.text.startswith(beginning)]
    if len(found) != 1:
        raise AssertionError(f"{document} has {len(found)} blocks that begin with: {beginning}")
    return found[0]


def plain(line):
    """A line of a manual page without its formatting."""
    line = re.sub(r"\\f.", "", line.replace("\\-", "-"))
    return line.replace('\\(dq', '"').removeprefix(".B ").strip()


def examples(page):
    """The commands of a manual page: bold lines behind .TP, or a block that is not filled."""
    text = (PROJECT / page).read_text()
    found = EXAMPLES.search(text)
    if not found:
        return []
    lines = re.findall(r"^\.TP\n(\.B .*)", found["text"], re.MULTILINE)
    for unfilled in re.findall(r"^\.nf\n(.*?)^\.fi", found["text"], re.MULTILINE | re.DOTALL):
        lines += unfilled.splitlines()
    commands = "".join(f"{plain(line)}\n" for line in lines)
    return [Block(page, text.count("\n", 0, found.start("text")), found["mark"] or "", commands)]


def everything():
    shown = [b for document in documents() for b in blocks(document)]
    return shown + [b for page in manual_pages() for b in examples(page)]
