"""Changes the daemon on purpose, one place at a time, and tells which test notices."""

import argparse
import concurrent.futures
import fcntl
import json
import os
import pathlib
import queue
import random
import sys
import threading
import time

from hunt import Hunt, targets
from operators import OPERATORS, mutants_of
from report import Report, read_harmless
from taking_apart import Source
from workshop import PROJECT, Trouble, Workshop

HARMLESS = PROJECT / "tests" / "mutants.txt"


def arguments():
    parser = argparse.ArgumentParser(prog="scripts/mutants", description=__doc__)
    parser.add_argument("files", nargs="*", metavar="FILE",
                        help="only mutants of these files or folders of src/ (default: all)")
    parser.add_argument("--seed", type=int, default=1, help="which sample is drawn (default: 1)")
    parser.add_argument("--count", type=int, default=100, help="how many mutants (default: 100)")
    parser.add_argument("--operator", action="append", choices=sorted(OPERATORS),
                        help="only mutants of this kind (or another --operator)")
    parser.add_argument("--mutant", action="append", metavar="NAME", help="this one (or another)")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="workshops at work")
    parser.add_argument("--system", action="store_true",
                        help="let the survivors meet the system tests, too, in real time")
    parser.add_argument("--list", action="store_true", help="only show what would be tried")
    parser.add_argument("--known", action="store_true",
                        help="try the survivors that are listed as harmless, too")
    parser.add_argument("--folder", type=pathlib.Path, default=PROJECT / "build" / "mutants",
                        help="where the workshops are (default: build/mutants)")
    return parser.parse_args()


def files_of(names):
    """Paths from the project's folder."""
    chosen = [PROJECT / name for name in names] or [PROJECT / "src"]
    found = []
    for path in chosen:
        found += path.rglob("*") if path.is_dir() else [path]
    return sorted(str(p.relative_to(PROJECT)) for p in found if p.suffix in (".cpp", ".h"))


def all_mutants(files):
    for path in files:
        yield from mutants_of(path, Source((PROJECT / path).read_text(encoding="latin-1")))


def drawn(mutants, seed):
    """An endless hat's order: a folder by its size, then a kind of change, then a place."""
    dice = random.Random(seed)
    hats = {}
    for mutant in sorted(mutants, key=lambda one: (one.path, one.start, one.operator, one.name)):
        folder = mutant.path.split("/")[1]
        hats.setdefault(folder, {}).setdefault(mutant.operator, []).append(mutant)
    while hats:
        sizes = [sum(map(len, kinds.values())) for kinds in hats.values()]
        folder = dice.choices(list(hats), sizes)[0]
        kind = dice.choice(list(hats[folder]))
        yield hats[folder][kind].pop(dice.randrange(len(hats[folder][kind])))
        if not hats[folder][kind]:
            del hats[folder][kind]
        if not hats[folder]:
            del hats[folder]


def chosen_mutants(options):
    mutants = list(all_mutants(files_of(options.files)))
    if options.mutant:
        found = [one for one in mutants if one.name in options.mutant]
        if len(found) != len(set(options.mutant)):
            sys.exit("no such mutant (the code it changed has changed): "
                     + " ".join(set(options.mutant) - {one.name for one in found}))
        return found
    if options.operator:
        mutants = [one for one in mutants if one.operator in options.operator]
    return drawn(mutants, options.seed)


def open_workshops(options):
    """Each in a folder of its own, built; what a program takes is measured in the first."""
    options.folder.mkdir(parents=True, exist_ok=True)
    usual, hunts = {}, queue.Queue()
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        shops = [Workshop(options.folder / str(n + 1)) for n in range(options.jobs)]
        for shop in shops:
            shop.folder.mkdir(exist_ok=True)
        list(pool.map(lambda shop: shop.prepare(targets()), shops))
    hunt = Hunt(shops[0], usual, options.system)
    hunt.measure()
    for shop in shops:
        hunts.put(Hunt(shop, usual, options.system))
    return hunts


def try_them(mutants, options, report):
    """Hands out mutants until enough of them were tried that a compiler takes."""
    wanted = len(options.mutant) if options.mutant else options.count
    hunts = open_workshops(options)
    lock = threading.Lock()
    left = iter(mutants)
    in_work = 0

    def next_one():
        nonlocal in_work
        with lock:
            if report.counted + in_work >= wanted:
                return None
            in_work += 1
            return next(left, None)

    def work():
        nonlocal in_work
        hunt = hunts.get()
        while (mutant := next_one()) is not None:
            verdict = hunt.judge(mutant)
            with lock:
                in_work -= 1
                report.take(mutant, verdict)

    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        for done in [pool.submit(work) for _ in range(options.jobs)]:
            done.result()


def main():
    options = arguments()
    harmless = read_harmless(HARMLESS)
    mutants = chosen_mutants(options)
    if not options.known and not options.mutant:
        mutants = (one for one in mutants if one.name not in harmless)
    if options.list:
        for _, one in zip(range(options.count), mutants):
            print(f"{one.name}  {one.path}:{one.line}  {one.before}  =>  {one.after}")
        return 0
    os.nice(10)
    options.folder.mkdir(parents=True, exist_ok=True)
    with open(options.folder / "lock", "w", encoding="ascii") as lock:
        try:
            fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except BlockingIOError:
            sys.exit(f"{options.folder} is in use; --folder names another one")
        report = Report(harmless, options.folder / "results.jsonl")
        started = time.monotonic()
        try:
            try_them(mutants, options, report)
        except Trouble as trouble:
            sys.exit(str(trouble))
        report.close(time.monotonic() - started)
    return 1 if report.survivors else 0


if __name__ == "__main__":
    sys.exit(main())
