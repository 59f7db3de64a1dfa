"""What documents and manual pages name is there: paths, links, keys, variables, options, tests."""

import fnmatch
import re
import unittest

import papers
from router_sandbox import PROJECT
from test_style import NAMED_TEST, cases_below
from tracked_files import tracked_files

# What a document may name though no program of this tree does, and what it is there.
OTHERS_PATHS = {
    "/dev/serial/by-path/": "made by udev",
    "/dev/ttyACM": "a pattern of the kernel's names",
    "/etc/runit/rc.shutdown": "of runit",
    "/opt/modemd-tools/watch": "an example of a foreign program",
    "/proc/PID/syscall": "of the kernel",
    "/tmp/answer": "of the look for the port in integration.md",
    "/tmp/cardstats.seen": "of the look from outside in hazards.md",
    "/tmp/copy": "an example of a copied tree",
    "/tmp/modemctl": "a copy to weigh",
    "/tmp/modemd": "a copy to weigh",
    "/tmp/report.tar": "an example of a report",
    "/tmp/sms/outgoing.XXXXXX": "made by mktemp",
    "/tmp/sms/recv/unread": "an example of a message",
    "/tmp/ttyModem": "an example of a link",
    "/usr/sbin/modemd": "where cmake --install puts it",
    "/var/lib/prometheus/node-exporter/modem.prom": "of Prometheus",
    "/var/log/csq.1": "the older generation of csq",
    "/var/log/wireless.": "what the files of a family begin with",
}
# Files that an example makes, and words of other programs.
EXAMPLE_FILES = {"tests/stories/roof.story"}
OTHERS_NAMES = {"BR2_EXTERNAL", "IMAGE_INSTALL"}
OTHERS_OPTIONS = {"--junit-xml"}
ROUTER_PATH = re.compile(r"(?<![\w./$*-])/(?:bin|dev|etc|lib|opt|path|proc|run|sbin|sys|tmp|usr|var)"
                         r"/[\w./+-]+")
TREE_PATH = re.compile(r"`([\w.-]+(?:/[\w.*<>-]*)+)`|(?<![\w./$<>-])((?:scripts|gear|tests|\.ci)/[\w.*/-]+)")
CAPITALS = re.compile(r"(?<![\w$])[A-Z][A-Z0-9]*_[A-Z0-9_]*[A-Z0-9](?![\w*])")
OPTION = re.compile(r"(?<![\w-])--[a-z][\w-]+")
LINK = re.compile(r"\]\(([^)#]*)(?:#([^)]*))?\)")


FILES = tracked_files()
FOLDERS = {name.rsplit("/", depth)[0] for name in FILES for depth in range(1, name.count("/") + 1)}
TOPS = {folder.split("/")[0] for folder in FOLDERS}
ROOMS = {folder.split("/")[1] for folder in FOLDERS if folder.startswith("src/")}


def is_document(name):
    return name.endswith(".md") or name.startswith("man/")


def sources(*folders):
    """The text of all that is no document, below these folders or everywhere."""
    own = ("test_paper_names.py", "test_paper.py")
    names = [name for name in FILES if not is_document(name) and not name.endswith(own)
             and (not folders or name.startswith(folders))]
    return "\n".join((PROJECT / name).read_text(errors="replace") for name in names)


def texts():
    """Name and text of each document; manual pages without their formatting."""
    for name in papers.documents() + papers.manual_pages():
        text = (PROJECT / name).read_text()
        if name.startswith("man/"):
            text = papers.plain(text)
        text = re.sub(r"^```diff\n.*?^```", "", text, flags=re.MULTILINE | re.DOTALL)
        yield name, re.sub(r"-D(?=[A-Z])", "", text)  # of the compiler's and CMake's options


def is_in_the_tree(path):
    """A file, a folder or a pattern of the tree; a room may go without src/ and its suffix."""
    pattern = re.sub(r"<\w+>", "*", path.rstrip("/."))
    places = (pattern, f"src/{pattern}", f"src/{pattern}.cpp", f"src/{pattern}.h")
    return any(fnmatch.fnmatch(name, place) for place in places
               for name in (FILES if "*" in place else ())) or any(
                   place in FOLDERS or place in FILES for place in places)


def slug(heading):
    return re.sub(r"[^\w -]", "", heading.lower()).replace(" ", "-")


class Names(unittest.TestCase):
    """Each failure names the document and what it names in vain."""

    def expect_all(self, pattern, holds, hint):
        found = {(name, match if isinstance(match, str) else next(filter(None, match)))
                 for name, text in texts() for match in pattern.findall(text)}
        self.assertTrue(found)
        self.assertEqual(sorted(f"{name}: {word}" for name, word in found if not holds(word)), [],
                         hint)

    def test_paths_of_the_tree(self):
        def holds(path):
            return (path in EXAMPLE_FILES or path.split("/")[0] not in TOPS | ROOMS
                    or is_in_the_tree(path))
        self.expect_all(TREE_PATH, holds, "no such file or folder (git ls-files); one that an example"
                        " makes belongs to EXAMPLE_FILES in tests/system/test_paper_names.py")

    def test_links_lead_somewhere(self):
        wrong = []
        for name in papers.documents():
            for target, anchor in LINK.findall((PROJECT / name).read_text()):
                if "://" in target:
                    continue
                place = (PROJECT / name).parent / target if target else PROJECT / name
                headings = re.findall(r"^#+ (.*)", place.read_text() if place.is_file() else "",
                                      re.MULTILINE)
                if not place.exists() or anchor and anchor not in map(slug, headings):
                    wrong.append(f"{name}: {target}#{anchor}")
        self.assertEqual(wrong, [])

    def test_paths_of_the_router(self):
        known = sources("src", "tools", "packaging", "gear", "scripts")

        def holds(path):
            path = path.rstrip(".")
            if path in OTHERS_PATHS or path.startswith("/path/to/"):
                return True
            path = re.sub(r"/[A-Z]+$", "", path.rstrip("/").replace("/PID", "/%d"))
            folder, _, name = path.rpartition("/")  # programs put some together of these two
            return path in known or (len(folder) > 5 and folder in known and f"/{name}" in known)
        self.expect_all(ROUTER_PATH, holds, "no source names it; a path of somebody else's belongs to"
                        " OTHERS_PATHS in tests/system/test_paper_names.py")

    def test_what_belongs_to_others_is_still_named(self):
        whole = "\n".join(text for _, text in texts())
        self.assertEqual([path for path in OTHERS_PATHS if path not in whole], [])

    def test_keys_and_variables(self):
        known = set(re.findall(r"\w+", sources()))

        def holds(name):
            return name in known | OTHERS_NAMES or f"CELLMODEM_{name}" in known
        self.expect_all(CAPITALS, holds, "no source knows this key, constant or variable; one of"
                        " somebody else's belongs to OTHERS_NAMES in tests/system/test_paper_names.py")

    def test_options(self):
        known = set(OPTION.findall(sources())) | OTHERS_OPTIONS
        self.expect_all(OPTION, known.__contains__, "no source knows this option; one of somebody"
                        " else's belongs to OTHERS_OPTIONS in tests/system/test_paper_names.py")

    def test_tests(self):
        known = cases_below(PROJECT / "tests")
        known |= {name.split(".")[0] + ".*" for name in known}
        self.expect_all(NAMED_TEST, known.__contains__, "no such test")


if __name__ == "__main__":
    unittest.main()
