"""Where single faults can be put into the arithmetic, and a copy of the sources that holds all of them.

Every fault has a number. The copy asks switches.h at each place which fault is on, so that one build serves all.
"""

import re
from collections import Counter, namedtuple
from pathlib import Path

MODEL = ["cmodel/cfa/src/stages/*", "cmodel/cfa/src/kit/*", "cmodel/common/curve.cpp"]
ENGINE = ["cmodel/cfa/src/lines/**/*"]
# Debug images and the root that no stage calls; the engine's schedule, buffers, declarations and file words.
LEFT_OUT = re.compile(r"kit/(debug_image|lut_intp)|lines/(engine|conditions|debug_places|debug_rows|file_rows|frame_rows|line_buffer|row_writer|rows|side_by_side)|"
                      r"kernels/(kernels|file_words|plane_words)")
# Loops over whole planes, declarations, sizes.
NO_ARITHMETIC = re.compile(r"\bfor \((?!int \w+ = -?\d+; \w+ <=? \d)|\b(template |std::array)<|\bif constexpr \(|"
                           r"\b(static_assert|assert|defined|__attribute__|plane_like|resize)\(")
ARRAY_SIZE = re.compile(r"(^\s*|[(,] ?)((static|const|constexpr) )*(?!return)[A-Za-z_]\w*(<[^>]*>)? \*?(const )?"
                        r"\w+(\[\w+\])*\[[^\]]*$")

OPERATORS = { # kind, what it is mistaken for, what stands in the copy
    "+": ("sign", "-", "+ fault::Op{#} +"), "-": ("sign", "+", "- fault::Op{#} -"),
    "+=": ("sign", "-=", "+= fault::Op{#} %="), "-=": ("sign", "+=", "-= fault::Op{#} %="),
    "<": ("comparison", "<=", "< fault::Op{#} <"), "<=": ("comparison", "<", "< fault::Op{#, false, true} <"),
    ">": ("comparison", ">=", "< fault::Op{#, true} <"), ">=": ("comparison", ">", "< fault::Op{#, true, true} <"),
    "==": ("comparison", "!=", "== fault::Op{#} =="), "!=": ("comparison", "==", "== fault::Op{#, true} =="),
    "*": ("wrap", "limited *", "* fault::Op{#} *")}
CODES = ["CODE_B", "CODE_GB", "CODE_GR", "CODE_R"]
BORDER = [f"{side}: {fault}" for side in ("before", "behind")
          for fault in ("stopped at the edge", "edge repeated", "one too far")]
REGISTER = ["read from the one before", "read from the next", "one bit short", "one bit more", "of the other sign",
            "at its reset", "one too many"]
REGISTERS = re.findall(r"^(?:CURVE_)?REG\((\w+), \d+, \w+, (-?\d+)", (Path(__file__).parents[2] /
                       "cmodel/cfa/src/reg_parse/cfa_reg_hw_def.inc").read_text(), re.M)
KEYS = [key for key, _ in REGISTERS]


# Characters of a file, what stands there instead (# is the number of the first fault), kind and names of its faults.
Place = namedtuple("Place", "start end code kind faults")


def blanked(match):
    return re.sub(r"[^\n]", " ", match.group())


def closing(text, start):
    """The place of the bracket that closes the one at `start`."""
    depth = 0
    for i in range(start, len(text)):
        depth += (text[i] == text[start]) - (text[i] == {"(": ")", "<": ">"}[text[start]])
        if depth == 0:
            return i
    return len(text) - 1


def line_at(text, place):
    return text[text.rfind("\n", 0, place) + 1:].split("\n", 1)[0]


def arithmetic_of(text):
    """The text with comments, literals, directives and what is no arithmetic replaced by blanks."""
    text = re.sub(r"//[^\n]*|/\*.*?\*/", blanked, text, flags=re.S)
    text = re.sub(r'"(\\.|[^"\\])*"|\'(\\.|[^\'\\])\'|^[ \t]*#([^\n]*\\\n)*[^\n]*', blanked, text, flags=re.M)
    at = 0
    while match := NO_ARITHMETIC.search(text, at):
        at = closing(text, match.end() - 1) + 1
        text = text[:match.start()] + re.sub(r"[^\n]", " ", text[match.start():at]) + text[at:]
    return re.sub(r"(\w)(<[\w, ]*( - 1)?>)", lambda match: match[1] + " " * len(match[2]), text)


def neighbours(code):
    """P(dy, dx): mirrored up or across, transposed, one nearer."""
    for match in re.finditer(r"(?<=\()(-?\d), (-?\d)(?=\))", code):
        y, x = int(match[1]), int(match[2])
        nearer_y, nearer_x = (v - (v > 0) + (v < 0) for v in (y, x))
        others = sorted({(-y, x), (y, -x), (x, y), (nearer_y, x), (y, nearer_x)} - {(y, x)})
        if others:
            rows, columns = (", ".join(str(other[k]) for other in others) for k in (0, 1))
            yield Place(*match.span(), f"fault::pick(#, {y}, {{{rows}}}), fault::pick(#, {x}, {{{columns}}})",
                        "neighbour", [f"{match[0]} -> {v}, {u}" for v, u in others])


def constants(code):
    """One more, one less; what is added for rounding also dropped."""
    for match in re.finditer(r"(?<![\w.])\d+(?![\w.])", code):
        line = code[code.rfind("\n", 0, match.start()) + 1:match.start()]
        if ARRAY_SIZE.search(line):
            continue
        n = int(match[0])
        rounds = n > 1 and n & (n - 1) == 0 and line.endswith("+ ") and not code.startswith(" *", match.end())
        bad = [n + 1] + [n - 1] * (n > 0) + [0] * rounds
        kind = "shift" if line.endswith((">> ", "<< ")) else "rounding" if rounds else "constant"
        yield Place(*match.span(), f"fault::pick(#, {n}, {{{', '.join(map(str, bad))}}})", kind,
                    [f"{n} -> {v}" for v in bad])


def operators(code, products):
    for match in re.finditer(rf"(?<=\s)({'|'.join(map(re.escape, OPERATORS))})(?=\s+[^\s,])", code):
        kind, bad, instead = OPERATORS[match[0]]
        if ARRAY_SIZE.search(code[code.rfind("\n", 0, match.start()) + 1:match.start()]):
            continue
        # 64 bits hold every product; the engine's stay within their range.
        if kind != "wrap" or products and not re.search(r"\bint64_t\b|std::fill_n", line_at(code, match.start())):
            yield Place(*match.span(), instead, kind, [f"{match[0]} -> {bad}"])


def limits(code):
    defined = r"(?<!Sample )(?<!int32_t )"
    for match in re.finditer(defined + r"\b(std::)?(min|max|least|largest)(32|_wide)?\b *\((?=.)", code):
        if match[2] in ("min", "max") and not match[1]:
            continue
        smaller = match[2] in ("min", "least")
        other = {"min": "max", "max": "min", "least": "largest", "largest": "least"}[match[2]]
        wraps = smaller and re.search(r"^\d+5, |, \d+5$", code[match.end():closing(code, match.end() - 1)]) # 255, 4095
        width = "" if match[1] else "<int32_t>" if match[3] == "32" else "<Sample>"
        name = match[0].rstrip("( ")
        yield Place(match.start(), match.start() + len(name), f"fault::{'least' if smaller else 'largest'}{width}", "limit", [])
        yield Place(match.end(), match.end(), "#, ", "limit", [f"{name} -> {other}"] + [f"{name} -> &"] * bool(wraps))
    for match in re.finditer(defined + r"\b(clip12|clip_sig|limited12|limited12_wide|limited_sig)\(", code):
        largest = 131071 if "sig" in match[1] else 4095
        yield Place(*match.span(), f"fault::limited(#, [](auto v) {{ return {match[0]}v); }}, {largest}, ", "limit",
                    [f"{match[1]} -> & {largest}", f"{match[1]} dropped"])


def borders(code, text):
    """Every mirror, and every window that is made: before its first and behind its last sample."""
    for match in re.finditer(r"(?<!int )\bmirror_index\(", code):
        inside = code[match.end():closing(code, match.end() - 1)]
        number = {"height_": "fault_", "width_": "fault_ + 6"}.get(inside.split()[-1], "#") # in the window itself
        yield Place(*match.span(), f"fault::mirrored({number}, mirror_index, ", "border", BORDER if number == "#" else [])
    for match in re.finditer(r"\b(?:Window|Raw) +(\w+\([^;]*);", code):
        radii = re.match(r"Window<(\d)(?:, (\d))?>", text[match.start():]) or ["", "1", "1"]
        rows, columns = radii[1] != "0", radii[2] != "0"
        faults = ["rows " + f for f in BORDER] * rows + ["columns " + f for f in BORDER] * columns
        for plane in re.finditer(r"(?:^|\), )\w+\(([^,()]*(?:\(\))?)", match[1]):
            first, end = (match.start(1) + place for place in plane.span(1))
            yield Place(first, first, f"fault::window_on(#{'' if rows else ' - 6'}, ", "border", faults)
            yield Place(end, end, ")", "border", [])


def codes(code):
    for match in re.finditer(r"\b(" + "|".join(CODES) + r")\b", code):
        others = [other for other in CODES if other != match[0]]
        yield Place(*match.span(), f"fault::pick(#, {match[0]}, {{{', '.join(others)}}})", "site colour",
                    [f"{match[0]} -> {other}" for other in others])


def registers(code):
    for match in re.finditer(r"\b(\w+(?:\(\))?\.)(reg_cfa_\w+)", code):
        k = KEYS.index(match[2])
        before, behind = (match[1] + KEYS[(k + step) % len(KEYS)] for step in (-1, 1))
        yield Place(*match.span(), f"fault::read(#, {match[0]}, {before}, {behind}, {REGISTERS[k][1]})", "register",
                    [f"{match[2]} {fault}" for fault in REGISTER])
    for match in re.finditer(r"\b(\w+)\[(\w+)\]\.read\((\w+\(\))\)", code): # the table of green sharpening
        yield Place(*match.span(), f"fault::entry(#, {match[1]}, {match[2]}, {match[3]})", "register",
                    [f"{key} {fault}" for key in KEYS if "_ghp_lut" in key for fault in REGISTER])


def places_of(text, products):
    """All places of a file in their order; of two that overlap the first found."""
    code = arithmetic_of(text)
    taken, kept = set(), []
    for place in [*neighbours(code), *limits(code), *borders(code, text), *codes(code), *registers(code), *constants(code),
                  *operators(code, products)]:
        span = set(range(place.start, place.end))
        if not span & taken:
            taken |= span
            kept.append(place)
    return sorted(kept, key=lambda place: (place.start, place.end))


def rewritten(path, first, products):
    """The text of a file with its faults, numbered from `first` on, and (kind, name) of each."""
    text = path.read_text()
    out, names, at, seen = "", [], 0, Counter()
    for place in places_of(text, products):
        out += text[at:place.start] + place.code.replace("#", str(first + len(names)))
        at = place.end
        line = line_at(text, place.start).strip()
        for fault in place.faults:
            seen[line, fault] += 1
            again = f" ({seen[line, fault]})" if seen[line, fault] > 1 else ""
            names.append((place.kind, f"{path.parent.name}/{path.name}: `{line}` {fault}{again}"))
    out += text[at:]
    # Constants are computed at start, when the fault is known. A window remembers where it was made.
    out = re.sub(r"(?<!if )\bconstexpr ([\w:<>]+ (?:\w+|operator\(\))\()", r"inline \1", out)
    out = re.sub(r"(?<!if )\bconstexpr ", "const ", out)
    out = re.sub(r"(class Window .*?private:\n)", r"\1    int fault_ = fault::window_id;\n", out, flags=re.S)
    include = '#include "tests/mutation/switches.h"\n'
    return (out.replace("#pragma once\n", "#pragma once\n" + include, 1) if path.suffix == ".h" else include + out), names


def put_all(root, patterns, products):
    """Writes all faults into the files of a copy. Returns (kind, name) of each; fault 1 comes first."""
    faults = []
    for path in sorted({path for pattern in patterns for path in root.glob(pattern) if path.suffix in (".h", ".cpp")}):
        if not LEFT_OUT.search(path.as_posix()):
            text, names = rewritten(path, len(faults) + 1, products)
            path.write_text(text)
            faults += names
    return faults
