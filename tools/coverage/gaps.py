#!/usr/bin/env python3
"""Compares what gcovr found unreached with the list of known gaps.

    gaps.py [--gaps] GAPS.TXT (NAME LIBRARIES.JSON ALL.JSON)...

Of each build, LIBRARIES.JSON tells of branches and ALL.JSON of lines.
"""

import argparse
import collections
import json
import pathlib
import re
import sys

BRANCHES_TO_REACH = 0.95

Gap = collections.namedtuple("Gap", "file kind text")


def known_gaps(path):
    """Gaps, and whether only some machines have them, of records: a path, a reason in a line or
    more, then the lines."""
    gaps = {}
    content = re.sub(r"(?m)^#.*\n", "", path.read_text())
    for record in re.split(r"\n\s*\n", content):
        if not record.strip():
            continue
        match = re.fullmatch(r"(\S+): ((?:.+\n)+?)((?:  (?:line|branch)\?? .*\n?)+)",
                             record.lstrip("\n"))
        if not match:
            sys.exit(f"{path}: not a record: {record.strip().splitlines()[0]}")
        for kind, machine, text in re.findall(r"  (line|branch)(\??) (.*)", match[3]):
            gaps[Gap(match[1], kind, text)] = machine == "?"
    return gaps


def files_of(report):
    for file in json.loads(pathlib.Path(report).read_text())["files"]:
        yield file["file"], file["lines"]


def counted(file, lines):
    """Of each line that has code: its text, count and counts of branches."""
    texts = pathlib.Path(file).read_text().split("\n")
    for line in lines:
        if line.get("gcovr/noncode"):
            continue
        text = texts[line["line_number"] - 1].strip()
        yield text, line["count"], [branch["count"] for branch in line["branches"]]


class Build:
    def __init__(self, name, libraries, everything):
        self.name = name
        self.gaps = set()
        self.lines = self.reached_lines = self.branches = self.reached_branches = 0
        for file, lines in files_of(everything):
            for text, count, _ in counted(file, lines):
                self.lines += 1
                self.reached_lines += count > 0
                if count == 0:
                    self.gaps.add(Gap(file, "line", text))
        for file, lines in files_of(libraries):
            for text, count, branches in counted(file, lines):
                self.branches += len(branches)
                self.reached_branches += sum(taken > 0 for taken in branches)
                if count > 0 and 0 in branches:
                    self.gaps.add(Gap(file, "branch", text))

    def summary(self):
        return (f"{self.name}: {self.reached_lines} of {self.lines} lines "
                f"({100 * self.reached_lines / self.lines:.2f} %), {self.reached_branches} of "
                f"{self.branches} branches ({100 * self.reached_branches / self.branches:.2f} %)")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--gaps", action="store_true")
    parser.add_argument("known", type=pathlib.Path)
    parser.add_argument("reports", nargs="+")
    arguments = parser.parse_args()
    known = known_gaps(arguments.known)
    reports = arguments.reports
    builds = [Build(*reports[k:k + 3]) for k in range(0, len(reports), 3)]
    found = set().union(*(build.gaps for build in builds))
    good = True
    for gap in sorted(found if arguments.gaps else found - set(known)):
        where = ", ".join(build.name for build in builds if gap in build.gaps)
        print(f"{'known' if gap in known else 'gap'}: {gap.file} ({where})\n"
              f"  {gap.kind} {gap.text}")
        good = good and gap in known
    for gap in sorted(gap for gap in set(known) - found if not known[gap]):
        print(f"no gap any more: {gap.file}\n  {gap.kind} {gap.text}")
        good = False
    for build in builds:
        print(build.summary())
        if build.reached_branches < BRANCHES_TO_REACH * build.branches:
            print(f"{build.name}: less than {100 * BRANCHES_TO_REACH:.0f} % of branches")
            good = False
    print(f"{len(found)} gaps, {len(found & set(known))} of them with a reason")
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
