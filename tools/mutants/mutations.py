"""Mutations made from a source's text: what could be mistyped or forgotten, one at a time.

A mutation keeps the number of lines, so that what reports a line reports the same one.
"""

import dataclasses
import re

LITERALS_AND_COMMENTS = re.compile(
    r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])+\'', re.DOTALL)
# What is checked while compiling, or says what something is and not what it does.
NOT_CODE = re.compile(
    r"^[ \t]*#(?:\\\n|[^\n])*|\bstatic_assert\([^;]*;|^[ \t]*template <[^\n]*>$|"
    r"^[ \t]*(?:using|inline namespace|namespace)\b[^\n]*|\b(?:alignas|\w+_FORMAT)\([^)]*\)",
    re.MULTILINE)

NUMBER = re.compile(r"(?<![\w.\"'])(?:0x[0-9a-fA-F]+|\d+\.?\d*(?:e[-+]?\d+)?)[fuUlL]*(?![\w.])")
TURNED = {"<": (">=", "<="), ">": ("<=", ">="), "<=": (">", "<"), ">=": ("<", ">"),
          "==": ("!=",), "!=": ("==",)}
EXCHANGED = {"+": "-", "-": "+", "*": "/", "/": "*", "&&": "||", "||": "&&", "+=": "-=",
             "-=": "+=", "*=": "/=", "|": "&", "&": "|", "|=": "&=", "&=": "|=", "<<": ">>",
             ">>": "<<"}
OPERATOR = re.compile(r"(?<= )(?:[<>=!]=|[<>]|&&|\|\||[-+*|&]=|<<|>>|[-+*/|&])(?= )")
# Channels, coordinates and parts that are of one type and stand in for one another.
TWINS = [("first", "second"), ("firstMicrophone", "secondMicrophone"), ("x", "y"), ("y", "z"),
         ("azimuth", "elevation"), ("range", "azimuth"), ("real", "imaginary"), ("re", "im"),
         ("low", "high"), ("true", "false"), ("begin", "end"), ("oldEnd", "recentEnd"),
         ("passed", "failed"), ("azimuthPairs", "elevationPairs"), ("AzimuthPairs", "ElevationPairs")]
# Their arguments may change places without anything else changing.
SYMMETRIC = {"add", "mul", "max", "min", "larger", "smaller", "mulAdd", "mulSub", "multiply",
             "_mm_add_ps", "_mm_mul_ps", "_mm256_add_ps", "_mm256_mul_ps", "_mm512_add_ps",
             "_mm512_mul_ps", "_mm_xor_ps", "_mm256_xor_ps", "_mm512_xor_epi32", "vaddq_f32",
             "vmulq_f32", "vadd_f32", "vmul_f32"}
CALL = re.compile(r"([\w:]+)(?:<[\w:, ]*>)?\(([^\s(),;][^\s(),]*), ([^\s(),;][^\s(),]*)(?=[,)])")
STATEMENT = re.compile(
    r"^[ \t]*(?:(?:if|for|while) \([^\n]*\) |else )?"
    r"((?:[\w:.\[\]*>-]|\([^()\s]*\))+(?: [-+*/|&]?= [^;{}]*|\([^;{}]*\));"
    r"|(?:return|break|continue);|[\w.\[\]>-]+(?:\+\+|--);)[ \t]*$", re.MULTILINE)


@dataclasses.dataclass(frozen=True)
class Mutation:
    line: int  # from 1
    before: str  # the line, without what stands around it
    after: str
    content: str  # the whole file

    def says(self):
        return f"{self.before}  ->  {self.after}"


def blank(match):
    return re.sub(r"[^\n]", " ", match[0])


def code_of(text):
    """The text with blanks for whatever is not to be changed, at the same places."""
    return NOT_CODE.sub(blank, LITERALS_AND_COMMENTS.sub(blank, text))


def third_digit(number):
    """The number with its third digit changed, the place counted from the first that is not 0."""
    mantissa = re.match(r"[\d.]+", number)[0]
    rest = number[len(mantissa):]
    if "." not in mantissa:
        mantissa += "."
    digits = [i for i, c in enumerate(mantissa) if c.isdigit()]
    first = next((i for i in digits if mantissa[i] != "0"), None)
    if first is None:
        return None
    while len([i for i in digits if i >= first]) < 3:
        mantissa += "0"
        digits = [i for i, c in enumerate(mantissa) if c.isdigit()]
    third = [i for i in digits if i >= first][2]
    changed = int(mantissa[third]) + (1 if mantissa[third] < "9" else -1)
    return mantissa[:third] + str(changed) + mantissa[third + 1:] + rest


def other_numbers(number):
    if number.startswith("0x"):
        return [f"{number[:-1]}{int(number[-1], 16) ^ 1:x}"] if number[-1] in "0123456789" else []
    if "." in number or "e" in number or number.endswith("f"):
        changed = third_digit(number)
        return [changed] if changed else []
    digits = re.match(r"\d+", number)[0]
    suffix = number[len(digits):]
    value = int(digits)
    return [f"{value + 1}{suffix}"] + ([f"{value - 1}{suffix}"] if value > 0 else [])


def replacements(code):
    """Of begin, end and the text that takes the place."""
    for match in NUMBER.finditer(code):
        for other in other_numbers(match[0]):
            yield match.start(), match.end(), other
    for match in OPERATOR.finditer(code):
        for other in TURNED.get(match[0], ()):
            yield match.start(), match.end(), other
        if match[0] in EXCHANGED:
            yield match.start(), match.end(), EXCHANGED[match[0]]
    for match in re.finditer(r"(?<=[ (])!(?=[\w(])", code):
        yield match.start(), match.end(), ""
    for one, other in TWINS:
        qualified = r"(?<=\.)" if len(one) <= 2 else r"(?<!\w)(?<!->)"
        for here, there in ((one, other), (other, one)):
            for match in re.finditer(rf"{qualified}{here}(?!\w)(?!\()", code):
                yield match.start(), match.end(), there
    for match in CALL.finditer(code):
        if match[2] != match[3] and match[1].split("::")[-1] not in SYMMETRIC:
            yield match.start(2), match.end(3), f"{match[3]}, {match[2]}"
    for match in STATEMENT.finditer(code):
        yield match.start(1), match.end(1), ";" + "\n" * match[1].count("\n")


def mutations_of(text):
    """All of a source, in the order of its lines; each changed text once."""
    seen = set()
    found = []
    for begin, end, other in replacements(code_of(text)):
        content = text[:begin] + other + text[end:]
        if content in seen:
            continue
        seen.add(content)
        line = text.count("\n", 0, begin) + 1
        before, after = (whole.split("\n")[line - 1].strip() for whole in (text, content))
        # A comment behind the code is not what a change is known by.
        before, after = (re.sub(r"\s*(//.*|/\*.*\*/)$", "", part) for part in (before, after))
        found.append(Mutation(line, before, after, content))
    return sorted(found, key=lambda mutation: (mutation.line, mutation.after))
