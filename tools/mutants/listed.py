"""The faults that stand in a list by name, and the places that they find in the tree."""

import dataclasses
import re
import sys

from judge import Mutant
from tree import TREE, shipped_sources


@dataclasses.dataclass
class Fault:
    name: str
    text: str
    changes: list  # of a text and its replacement


def read_table(path):
    change = r"  - (.+)\n  \+ (.+)\n"
    record = re.compile(rf"^([\w-]+): (.+)\n((?:{change})+)", re.MULTILINE)
    content = path.read_text()
    faults = [Fault(match[1], match[2], re.findall(change, match[3]))
              for match in record.finditer(content)]
    rest = re.sub(r"(?m)^#.*\n", "", record.sub("", content)).strip()
    if rest:
        sys.exit(f"{path}: not a record: {rest.splitlines()[0]}")
    names = [fault.name for fault in faults]
    for name in names:
        if names.count(name) > 1:
            sys.exit(f"{path}: two records are named {name}")
    return faults


def pattern_of(text):
    """Spaces become any white space or none, @ the fewest characters within a statement."""
    parts = {" ": r"\s*", "@": r"([^;{}]*?)"}
    pattern = "".join(parts.get(character, re.escape(character)) for character in text)
    before = r"(?<!\w)" if re.match(r"\w", text) else ""
    behind = r"(?!\w)" if re.search(r"\w$", text) else ""
    return re.compile(before + pattern + behind)


def filled(replacement, kept):
    """The replacement with its @ put back; those that it does not have are left out."""
    pieces = replacement.split("@")
    kept = list(kept) + [""] * len(pieces)
    return pieces[0] + "".join(text + piece for text, piece in zip(kept, pieces[1:]))


def files_for(fault, files):
    """The sources in which the fault's text may stand."""
    in_tests = fault.name.startswith("test-")
    return [file for file in shipped_sources(files) if ("test" in file.parts) == in_tests]


def place_of(fault, files):
    """The mutant, or a sentence on why there is no place for the fault."""
    places = []
    for file in files_for(fault, files):
        content = (TREE / file).read_text()
        for text, replacement in fault.changes:
            for match in pattern_of(text).finditer(content):
                changed = (content[:match.start()] + filled(replacement, match.groups())
                           + content[match.end():])
                line = content.count("\n", 0, match.start()) + 1
                places.append(Mutant(fault.name, fault.text, file, line, changed))
    if len(places) == 1:
        return places[0]
    found = ", ".join(sorted({str(place.file) for place in places}))
    return f"found in {len(places)} places ({found})" if places else "found nowhere"
