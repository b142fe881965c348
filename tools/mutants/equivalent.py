"""The table of mutations that change nothing anybody could notice, each with its reason."""

import dataclasses
import pathlib
import re
import sys

from mutations import mutations_of
from tree import TREE


@dataclasses.dataclass(frozen=True)
class Row:
    file: pathlib.Path
    before: str
    after: str
    reason: str


def read_table(path):
    """Rows: a path, a reason in a line or more, then the line and what becomes of it, any number
    of times."""
    rows = []
    for record in re.split(r"\n\s*\n", re.sub(r"(?m)^#.*\n", "", path.read_text())):
        if not record.strip():
            continue
        match = re.fullmatch(r"(\S+): ((?:.+\n)+?)((?:  - .*\n  \+ .*\n?)+)", record.lstrip("\n"))
        if not match:
            sys.exit(f"{path}: not a record: {record.strip().splitlines()[0]}")
        reason = " ".join(match[2].split())
        for before, after in re.findall(r"  - (.*)\n  \+ (.*)", match[3]):
            rows.append(Row(pathlib.Path(match[1]), before, after, reason))
    return rows


def stale(rows):
    """Those rows of which no mutation of the tree speaks."""
    found = {}
    for file in {row.file for row in rows}:
        text = (TREE / file).read_text() if (TREE / file).is_file() else ""
        found[file] = {(mutation.before, mutation.after) for mutation in mutations_of(text)}
    return [row for row in rows if (row.before, row.after) not in found[row.file]]
