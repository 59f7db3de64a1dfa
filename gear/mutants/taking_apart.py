"""C++ as far as a mutant needs it: words with their places, brackets, functions, statements."""

import dataclasses
import re

WORD = re.compile(r"""
    (?P<comment>//[^\n]*|/\*.*?\*/)
  | (?P<directive>^[ ]*\#(?:[^\n\\]|\\.)*)
  | (?P<text>(?:u8|[uUL])?"(?:[^"\\\n]|\\.)*"|'(?:[^'\\\n]|\\.)+')
  | (?P<number>\.?[0-9](?:[0-9A-Za-z_.]|'(?=[0-9A-Fa-f])|(?<=[eE])[+-])*)
  | (?P<name>[A-Za-z_]\w*)
  | (?P<sign><<=|>>=|\.\.\.|->|::|\+\+|--|&&|\|\||<<|<=|>=|==|!=|[-+*/%&|^]=|[^\s\w])
""", re.VERBOSE | re.MULTILINE | re.DOTALL)
OPENING = {"(": ")", "[": "]", "{": "}"}
CLOSING = set(OPENING.values())


@dataclasses.dataclass(frozen=True)
class Word:
    kind: str
    text: str
    start: int
    end: int


@dataclasses.dataclass(frozen=True)
class Statement:
    """`first` and `last` are numbers of words, both included."""
    kind: str  # simple, declaration, return, jump, if, loop, switch, block, label
    first: int
    last: int


def words_of(code):
    """What the compiler reads: no comments, no directives."""
    return [Word(m.lastgroup, m.group(), m.start(), m.end()) for m in WORD.finditer(code)
            if m.lastgroup not in ("comment", "directive")]


def pair_brackets(words):
    """Number of an opening bracket to that of its closing one."""
    pairs, open_ones = {}, []
    for number, word in enumerate(words):
        if word.text in OPENING and word.kind == "sign":
            open_ones.append(number)
        elif word.text in CLOSING and word.kind == "sign":
            pairs[open_ones.pop()] = number
    if open_ones:
        raise ValueError("a bracket is not closed")
    return pairs


class Source:
    """A file, taken apart. `lists` are the statements of each block, one behind the other; `owner`
    tells the function that a word is in; `rows` are the braced rows of tables."""

    def __init__(self, code):
        self.code = code
        self.words = words_of(code)
        self.pairs = pair_brackets(self.words)
        self.lists, self.conditions, self.rows = [], [], []
        self.owner = {}
        self.bodies = []  # of functions: the numbers of their braces
        self._read_scope(0, len(self.words))

    def text(self, number):
        return self.words[number].text if 0 <= number < len(self.words) else ""

    def function_at(self, number):
        return self.owner.get(number, "")

    def in_function(self, number):
        return number in self.owner

    def _read_scope(self, at, end):
        """Namespaces, classes, functions and tables."""
        first = at
        while at < end:
            word = self.text(at)
            if word == "{":
                self._read_braces(first, at)
                at = first = self.pairs[at] + 1
            elif word in ("(", "["):
                at = self.pairs[at] + 1
            else:
                at += 1
                if word in (";", "}"):
                    first = at

    def _read_braces(self, first, brace):
        close = self.pairs[brace]
        head = [n for n in self._flat(first, brace)]
        texts = [self.text(n) for n in head]
        if "namespace" in texts or (set(texts) & {"struct", "class", "enum", "union", "extern"}
                                    and "=" not in texts and "(" not in texts):
            self._read_scope(brace + 1, close)
        elif "(" in texts and "=" not in texts[:texts.index("(")]:
            name = self.text(head[texts.index("(")] - 1)
            for number in range(first, close + 1):
                self.owner[number] = name
            self.bodies.append((brace, close))
            self._read_list(brace + 1, close)
        else:
            self._read_rows(brace)

    def _flat(self, first, end):
        """Numbers of words, less those inside brackets."""
        while first < end:
            yield first
            first = self.pairs.get(first, first) + 1 if self.text(first) in OPENING else first + 1

    def _read_rows(self, brace):
        rows = []
        at = brace + 1
        while at < self.pairs[brace]:
            if self.text(at) == "{":
                rows.append((at, self.pairs[at]))
            at = self.pairs.get(at, at) + 1
        if len(rows) > 1:
            self.rows += rows

    def _read_list(self, at, end):
        found = []
        while at < end:
            statement = self._read_statement(at)
            found.append(statement)
            at = statement.last + 1
        self.lists.append(found)

    def _read_statement(self, at):
        word = self.text(at)
        if word == "{":
            self._read_list(at + 1, self.pairs[at])
            return Statement("block", at, self.pairs[at])
        if word in ("if", "while", "for", "switch"):
            return self._read_control(at)
        if word == "do":
            body = self._read_statement(at + 1)
            return Statement("loop", at, self._end(body.last + 1))
        if word in ("case", "default"):
            colon = next(n for n in self._flat(at, len(self.words)) if self.text(n) == ":")
            return Statement("label", at, colon)
        last = self._end(at)
        if word == "return":
            return Statement("return", at, last)
        if word in ("break", "continue"):
            return Statement("jump", at, last)
        return Statement("declaration" if self._declares(at, last) else "simple", at, last)

    def _read_control(self, at):
        kind = {"if": "if", "switch": "switch"}.get(self.text(at), "loop")
        opening = at + 1 if self.text(at + 1) == "(" else at + 2  # if constexpr
        if self.text(at) in ("if", "while"):
            self.conditions.append((opening, self.pairs[opening]))
        last = self._read_branch(self.pairs[opening] + 1)
        if kind == "if" and self.text(last + 1) == "else":
            last = self._read_branch(last + 2)
        return Statement(kind, at, last)

    def _read_branch(self, at):
        statement = self._read_statement(at)
        if statement.kind != "block":
            self.lists.append([statement])
        return statement.last

    def _end(self, at):
        """The semicolon; the bodies of lambdas on the way are read, too."""
        while self.text(at) != ";":
            if self.text(at) == "{":
                if self.text(at - 1) in (")", "mutable"):
                    self._read_list(at + 1, self.pairs[at])
                at = self.pairs[at]
            elif self.text(at) == "}":
                raise ValueError("a statement without an end")
            at += 1
        return at

    def _declares(self, first, last):
        if self.text(first) in ("const", "constexpr", "static", "auto", "using", "struct",
                                "static_assert", "typedef"):
            return True
        previous = None
        for number in self._flat(first, last):
            word = self.words[number]
            if word.text in ("=", "(", "[", "{") or word.text.endswith("="):
                return False
            if word.kind == "name" and previous in ("name", ">", "*", "&"):
                return number > first
            previous = "name" if word.kind == "name" else word.text
        return False
