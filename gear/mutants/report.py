"""What is told of each mutant, and of all of them."""

import collections
import json
import re

ENTRY = re.compile(r"^([a-z0-9_]+(?:\.h)?-[a-z]+-[0-9a-f]{7})\b")


def read_harmless(path):
    """Name to reason: a line with the name and the change, the reason in the lines below it."""
    reasons, name = {}, None
    for line in path.read_text().splitlines() if path.is_file() else []:
        entry = ENTRY.match(line)
        if entry:
            name = entry[1]
            reasons[name] = ""
        elif name and line.startswith("    "):
            reasons[name] = f"{reasons[name]} {line.strip()}".strip()
    return reasons


class Report:
    def __init__(self, harmless, results):
        self.harmless = harmless
        self.results = open(results, "a", encoding="utf-8")
        self.tally = collections.defaultdict(collections.Counter)
        self.survivors = []

    @property
    def counted(self):
        return sum(count["killed"] + count["lived"] + count["harmless"]
                   for count in self.tally.values())

    def take(self, mutant, verdict):
        outcome = verdict.outcome
        if outcome == "lived" and mutant.name in self.harmless:
            outcome = "harmless"
        folder = mutant.path.split("/")[1]
        self.tally[folder][outcome] += 1
        self.tally[folder][verdict.stage] += 1
        if outcome == "lived":
            self.survivors.append(mutant)
        words = {"killed": f"killed by {verdict.by}", "lived": "LIVED",
                 "harmless": f"lived: {self.harmless.get(mutant.name)}",
                 "same": "the same machine code", "broken": "does not compile"}[outcome]
        print(f"{mutant.path}:{mutant.line}  {mutant.operator}  {mutant.before}  =>  "
              f"{mutant.after}  {words}  [{mutant.name}, {verdict.seconds:.1f} s]", flush=True)
        json.dump({"name": mutant.name, "path": mutant.path, "line": mutant.line,
                   "outcome": verdict.outcome, "by": verdict.by, "stage": verdict.stage,
                   "seconds": round(verdict.seconds, 1)}, self.results)
        self.results.write("\n")
        self.results.flush()

    def close(self, seconds):
        print("\nfolder       killed  by units  lived  harmless")
        for folder, count in sorted(self.tally.items()):
            units = sum(count[s] for s in ("unit of the room", "units of the folder", "all units"))
            print(f"{folder:12} {count['killed']:6} {units:9} {count['lived']:6} "
                  f"{count['harmless']:9}")
        for one in self.survivors:
            print(f"\nLIVED {one.path}:{one.line}, in {one.function or 'no function'}, "
                  f"{one.operator}\n  - {one.before}\n  + {one.after}\n"
                  f"  scripts/mutants --mutant {one.name}")
        killed = sum(count["killed"] for count in self.tally.values())
        print(f"\n{self.counted} mutants in {seconds / 60:.1f} minutes: {killed} killed, "
              f"{len(self.survivors)} lived")
