"""The tables of docs/endurance.md, made of what bench_year measured."""

import collections
import concurrent.futures
import re
import subprocess
import sys

from worlds import BUILD, PROJECT

sys.path.insert(0, str(PROJECT / "gear" / "sandbox"))
import cards  # noqa: E402

PROGRAM = BUILD / "gear" / "bench" / "bench_year"
DOCUMENT = PROJECT / "docs" / "endurance.md"
BEGIN, END = "<!-- measured: begin -->\n", "<!-- measured: end -->\n"
LINE = re.compile(r"^([^.]+)\.(idle|traffic)\.(\S+) (\d+)$", re.MULTILINE)
LOADS = {"idle": "an idle life", "traffic": "a life under traffic"}


def measure(days, chosen, jobs):
    """{(card, load): {key: value}}, in the order of the table of cards; `jobs` cards at a time."""
    def live(card):
        return subprocess.run([str(PROGRAM), str(days), card], check=True,
                              capture_output=True, text=True, cwd=BUILD).stdout

    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        return read("".join(pool.map(live, chosen)))


def read(text):
    lives = collections.defaultdict(dict)
    for card, load, key, value in LINE.findall(text):
        lives[card, load][key] = int(value)
    return dict(lives)


def row(*cells):
    return "| " + " | ".join(str(cell) for cell in cells) + " |\n"


def held_table(lives):
    """What is held at the end of the first and of the last day."""
    days = {life["days"] for life in lives.values()}
    assert len(days) == 1, days
    text = f"At the end of day 1 and of day {days.pop()}:\n\n"
    text += row("card", "", "memory, KiB", "descriptors", "heap blocks", "own log, bytes")
    text += row("---", "---", "--:", "--:", "--:", "--:")
    for (card, load), life in lives.items():
        pairs = [f"{life['first.' + key]:,} / {life['last.' + key]:,}"
                 for key in ("memory_kib", "descriptors", "blocks", "own_log_bytes")]
        text += row(card, load, *pairs)
    return text


def written_files(lives):
    """Whatever one of these lives has written."""
    names = []
    for life in lives:
        for key, count in life.items():
            name, _, what = key.rpartition(".")
            if what == "writes" and count and name not in names:
                names.append(name)
    return names


def written_table(lives, load):
    """Writings and bytes a day, of each file."""
    cards = [card for card, one in lives if one == load]
    text = f"A day of {LOADS[load]}, writings and KB:\n\n"
    text += row("file", *cards) + row("---", *["--:"] * len(cards))
    for name in written_files(lives[card, load] for card in cards):
        cells = []
        for card in cards:
            writes, size = (lives[card, load][f"{name}.{what}"] for what in ("writes", "bytes"))
            cells.append(f"{writes:,}, {size / 1000:,.1f}" if writes else "")
        shown = "system log, lines" if name == "log" else f"`{name}`"
        text += row(shown, *cells)
    return text


def tables(lives):
    return "\n".join([held_table(lives), *(written_table(lives, load) for load in LOADS)])


def renew(text):
    """Puts the tables into the page, between their marks."""
    page = DOCUMENT.read_text()
    before, rest = page.split(BEGIN)
    _, after = rest.split(END)
    DOCUMENT.write_text(before + BEGIN + text + END + after)
