"""What is changed: each operator yields the places of a file where it applies, and the new text."""

import dataclasses
import hashlib
import re

COMPARISONS = {"<": ("<=", ">"), "<=": ("<", ">"), ">": (">=", "<"), ">=": (">", "<"),
               "==": ("!=",), "!=": ("==",)}
ARITHMETIC = {"+": "-", "-": "+", "*": "/", "/": "*", "%": "/", "+=": "=", "-=": "+=",
              "++": "--", "--": "++", "&&": "||", "||": "&&"}
FLAG = re.compile(r"(?:[A-Z][A-Z0-9]*_)?[A-Z][A-Z0-9_]+$")
MODES = ("0600", "0644", "0666", "0755", "022", "077", "0")
RESET_CALLS = {"clear", "Stop", "reset", "ResetLeaseFailCounter", "ResetLteStats", "SetPeriod"}
PAUSE = "usleep(100000); "
NEEDED_FOR_PAUSE = "#include <unistd.h>\n"


@dataclasses.dataclass(frozen=True)
class Mutant:
    """A change of one place. `name` outlives changes elsewhere in the file."""
    path: str      # from the project's folder
    function: str  # "" outside of any
    operator: str
    start: int
    end: int
    new: str
    line: int = 0
    before: str = ""
    after: str = ""
    name: str = ""

    def apply(self, code):
        changed = code[:self.start] + self.new + code[self.end:]
        return NEEDED_FOR_PAUSE + changed if self.operator == "pause" else changed


def apart(source, number):
    """A sign with blanks around it is no bracket of a template and no sign of a type."""
    word = source.words[number]
    return source.code[word.start - 1] == " " and source.code[word.end] in " \n"


def comparisons(source):
    for number, word in enumerate(source.words):
        if word.text in COMPARISONS and apart(source, number) and source.in_function(number):
            for new in COMPARISONS[word.text]:
                yield number, number, new


def arithmetic(source):
    for number, word in enumerate(source.words):
        if word.kind != "sign" or word.text not in ARITHMETIC or not source.in_function(number):
            continue
        if word.text in ("++", "--") or apart(source, number):
            yield number, number, ARITHMETIC[word.text]


def constants(source):
    for number, word in enumerate(source.words):
        found = re.fullmatch(r"([1-9][0-9]*|0)([uUlL]*)", word.text)
        if word.kind != "number" or not found or source.text(number - 2) == "static_assert":
            continue
        value = int(found[1])
        yield number, number, f"{value + 1}{found[2]}"
        if value > 0:
            yield number, number, f"{value - 1}{found[2]}"


def modes(source):
    for number, word in enumerate(source.words):
        if word.kind == "number" and re.fullmatch(r"0[0-7]{2,3}", word.text):
            for mode in MODES:
                if int(mode, 8) != int(word.text, 8):
                    yield number, number, mode


def flags(source):
    """One name of A | B | C left out, sign and all."""
    for number, word in enumerate(source.words):
        if word.kind != "name" or not FLAG.match(word.text):
            continue
        if source.text(number - 1) == "|":
            yield number - 1, number, ""
        elif source.text(number + 1) == "|":
            yield number, number + 1, ""


def conditions(source):
    for first, last in source.conditions:
        inner = [word.text for word in source.words[first + 1:last]]
        if "=" in inner or ";" in inner:
            continue
        code = source.code[source.words[first].end:source.words[last].start]
        if inner[0] == "!" and not {"&&", "||"} & set(inner):
            yield first + 1, first + 1, ""
        else:
            yield first, last, f"(!({code}))"


def values(source):
    for number, word in enumerate(source.words):
        if word.text in ("true", "false"):
            yield number, number, "false" if word.text == "true" else "true"
    for number, word in enumerate(source.words):
        if word.text == "?" and source.in_function(number):
            yield from swapped_alternatives(source, number)


def swapped_alternatives(source, question):
    colon = next(n for n in source._flat(question + 1, len(source.words)) if source.text(n) == ":")
    end = next((n for n in source._flat(colon + 1, len(source.words))
                if source.text(n) in (",", ";", ")", "}", "]")), None)
    if end is None:
        return
    words = source.words
    first = source.code[words[question].end:words[colon].start]
    second = source.code[words[colon].end:words[end].start]
    yield question + 1, end - 1, f"{second.strip()} : {first.strip()}"


def is_reset(source, statement):
    texts = [word.text for word in source.words[statement.first:statement.last]]
    return bool(RESET_CALLS & set(texts)) or ("=" in texts and texts.index("=") == len(texts) - 2)


def statements(source, kinds=("simple",)):
    for found in source.lists:
        yield from (s for s in found if s.kind in kinds)


def dropped(source):
    for one in statements(source, ("simple", "jump", "if")):
        if not is_reset(source, one):
            yield one.first, one.last, ";"
    for one in statements(source, ("return",)):
        if one.last == one.first + 1:
            yield one.first, one.last, ";"


def resets(source):
    for one in statements(source):
        if is_reset(source, one):
            yield one.first, one.last, ";"


def swapped(source):
    kinds = ("simple", "if", "loop")
    for found in source.lists:
        for one, other in zip(found, found[1:]):
            if one.kind not in kinds or other.kind not in kinds:
                continue
            words = source.words
            start, middle = words[one.first].start, words[one.last].end
            start2, end = words[other.first].start, words[other.last].end
            if "(" not in source.code[start:middle] or "(" not in source.code[start2:end]:
                continue  # two plain values have no order that anybody sees
            yield one.first, other.last, (source.code[start2:end] + source.code[middle:start2]
                                          + source.code[start:middle])


def rows(source):
    for first, last in source.rows:
        comma = last + 1 if source.text(last + 1) == "," else last
        yield first, comma, ""


def pauses(source):
    """A tenth of a second in front of a statement."""
    for one in statements(source, ("simple",)):
        code = source.code[source.words[one.first].start:source.words[one.last].end]
        yield one.first, one.last, "{ " + PAUSE + code + " }"


OPERATORS = {"compare": comparisons, "arithmetic": arithmetic, "constant": constants,
             "mode": modes, "flag": flags, "negate": conditions, "value": values,
             "drop": dropped, "reset": resets, "swap": swapped, "row": rows, "pause": pauses}


def whole_lines(code, start, end):
    return code.rfind("\n", 0, start) + 1, (code.find("\n", end) + len(code) + 1) % (len(code) + 1)


def shown(text):
    return " ".join(re.sub(r"//[^\n]*", "", text).split())


def mutants_of(path, source):
    """All mutants of a file, each with a name that is its own."""
    seen = {}
    for operator, places in OPERATORS.items():
        for first, last, new in places(source):
            start, end = source.words[first].start, source.words[last].end
            line_start, line_end = whole_lines(source.code, start, end)
            before = shown(source.code[line_start:line_end])
            after = shown(source.code[line_start:start] + new + source.code[end:line_end])
            key = (path, source.function_at(first), operator, before, after)
            seen[key] = seen.get(key, 0) + 1
            digest = hashlib.sha1(repr((*key, seen[key])).encode()).hexdigest()[:7]
            stem = re.sub(r"\.cpp$", "", path.rsplit("/", 1)[-1])
            yield Mutant(path, key[1], operator, start, end, new,
                         source.code.count("\n", 0, start) + 1, before, after,
                         f"{stem}-{operator}-{digest}")
