"""Single faults in arithmetic: where they can be put, and what they turn the source into."""

import random
import re
from dataclasses import dataclass
from pathlib import Path

SOURCES = ["cmodel/cfa/src/stages/*.cpp", "cmodel/cfa/src/kit/*.cpp", "cmodel/cfa/src/kit/*.h",
           "cmodel/cfa/src/lines/*.cpp", "cmodel/cfa/src/lines/*.h"]
# The engine's schedule, buffers and declarations are no arithmetic.
NO_KERNELS = re.compile(r"lines/(engine\w*|cfa_lines|settings|line_buffer|rows|kernels)\.")

# Loop headers, declarations, sizes and names of frames and debug images.
NO_ARITHMETIC = re.compile(
    r"\bfor \(|\btemplate <|\bstatic_assert\(|\bplane_like\(|\bdump_dbg_frame\(|\bCM_WritePPM5?\(|\bdebug_path_of\(|"
    r"\bCM_NewFRAME\(|\b__attribute__\(|\bstd::array<|\bdefined\(")

SWAPS = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==", "+": "-", "-": "+", "+=": "-=", "-=": "+=",
         "min": "max", "max": "min", "least": "largest", "largest": "least", "least32": "largest32",
         "largest32": "least32"}


@dataclass(frozen=True)
class Fault:
    path: str   # of the file, from the top folder
    line: int   # from 1
    kind: str   # constant, shift, comparison, sign, neighbour
    start: int  # place in the file
    old: str
    new: str

    def apply(self, text):
        assert text[self.start:self.start + len(self.old)] == self.old
        return text[:self.start] + self.new + text[self.start + len(self.old):]

    def lines(self, text):
        """The line that changes, before and after."""
        return (text.splitlines()[self.line - 1].strip(), self.apply(text).splitlines()[self.line - 1].strip())

    def key(self, text):
        before, after = self.lines(text)
        return f"{self.path}:{self.line}: {before} -> {after}"


def blanked(match):
    return re.sub(r"[^\n]", " ", match.group())


def closing(text, start):
    """The place behind the bracket that closes the one at `start`."""
    opening, close = text[start], {"(": ")", "<": ">"}[text[start]]
    depth = 0
    for i in range(start, len(text)):
        depth += (text[i] == opening) - (text[i] == close)
        if depth == 0:
            return i + 1
    return len(text)


def arithmetic_of(text):
    """The text with comments, literals, directives and what is no arithmetic replaced by blanks."""
    text = re.sub(r"//[^\n]*|/\*.*?\*/", blanked, text, flags=re.S)
    text = re.sub(r'"(\\.|[^"\\])*"|\'(\\.|[^\'\\])\'', blanked, text)
    text = re.sub(r"^[ \t]*#([^\n]*\\\n)*[^\n]*", blanked, text, flags=re.M)
    at = 0
    while match := NO_ARITHMETIC.search(text, at):
        end = closing(text, match.end() - 1)
        text = text[:match.start()] + re.sub(r"[^\n]", " ", text[match.start():end]) + text[end:]
        at = end
    return re.sub(r"\w<[\w, ]*>", blanked, text)


def constants(code, draw):
    for match in re.finditer(r"(?<![\w.])(\d+)(?![\w.])", code):
        before = code[:match.start()].rstrip()
        kind = "shift" if before.endswith((">>", "<<")) else "constant"
        number = int(match.group())
        yield kind, match.start(), match.group(), str(number + (1 if number == 0 else draw.choice([1, -1])))


def operators(code, draw):
    for match in re.finditer(r"(?<= )(<=|>=|==|!=|<|>|\+=|-=|\+|-)(?= )", code):
        kind = "sign" if match.group()[0] in "+-" else "comparison"
        if re.search(r"\[\w+ $", code[max(0, match.start() - 40):match.start()]):
            kind = "neighbour"
        yield kind, match.start(), match.group(), SWAPS[match.group()]
    for match in re.finditer(r"(?<=std::)(min|max)\b|\b(least|largest)(32)?(?=\()", code):
        if code[match.end():match.end() + 20].strip() and not re.search(r"(Sample|int32_t) $", code[:match.start()][-9:]):
            yield "comparison", match.start(), match.group(), SWAPS[match.group()]


def neighbours(code, draw):
    for match in re.finditer(r"(?<=\()(-?\d), (-?\d)(?=\))", code):
        dy, dx = int(match.group(1)), int(match.group(2))
        others = {(-dy, dx), (dy, -dx), (dx, dy), (dy - (dy > 0) + (dy < 0), dx)} - {(dy, dx)}
        if others:
            y, x = draw.choice(sorted(others))
            yield "neighbour", match.start(), match.group(), f"{y}, {x}"


def all_faults(root):
    """Every place, in a fixed order, each with one fault drawn from a fixed seed."""
    faults = []
    for pattern in SOURCES:
        for path in sorted(Path(root).glob(pattern)):
            name = str(path.relative_to(root))
            if NO_KERNELS.search(name):
                continue
            text = path.read_text()
            code = arithmetic_of(text)
            draw = random.Random(name)
            places = list(neighbours(code, draw))
            taken = {i for _, start, old, _ in places for i in range(start, start + len(old))}
            for kind, start, old, new in [*constants(code, draw), *operators(code, draw)]:
                if start not in taken:
                    places.append((kind, start, old, new))
            for kind, start, old, new in sorted(places, key=lambda place: place[1]):
                faults.append(Fault(name, text.count("\n", 0, start) + 1, kind, start, old, new))
    return faults


def chosen_faults(root, seed):
    """All faults in a random order that depends on nothing but the seed and the sources."""
    faults = all_faults(root)
    random.Random(seed).shuffle(faults)
    return faults
