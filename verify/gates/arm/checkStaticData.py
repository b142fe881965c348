#!/usr/bin/env python3
"""Checks that the shipped libraries keep no mutable static data but the few objects named here.

    checkStaticData.py ARCHIVE...
"""

import re
import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[3] / "tools" / "arm"))
import disassembly  # noqa: E402

ALLOWED = {
    "voxloc": {"(anonymous namespace)::module"},  # the tracker behind the classic interface
    "audunittest": {"audunittest::tests", "audunittest::current_context",
                    "audunittest::total_result", "(anonymous namespace)::tally",
                    "(anonymous namespace)::unfinished_runs",
                    "(anonymous namespace)::running_process"},
    "console": {"current_console"},  # the one that a program installed
}

_SYMBOL = re.compile(r"^[0-9a-f]+ ......O (\S+)\t[0-9a-f]+ (.*)$")
_MUTABLE = re.compile(r"^(\.t?data(?!\.rel\.ro)|\.t?bss|\*COM\*)")


def library_of(archive):
    return re.sub(r"^lib(voxloc_)?", "", Path(archive).stem)


def mutable_symbols(archive):
    command = [disassembly.OBJDUMP, "-t", "-C", archive]
    listing = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    for line in listing.splitlines():
        symbol = _SYMBOL.match(line)
        if symbol and _MUTABLE.match(symbol.group(1)):
            yield re.sub(r"^(0x[0-9a-f]+|\.hidden) ", "", symbol.group(2))


def main(archives):
    found = {library_of(archive): set(mutable_symbols(archive)) for archive in archives}
    wrong = 0
    for library, symbols in found.items():
        for symbol in symbols ^ ALLOWED.get(library, set()):
            where = "not allowed" if symbol in symbols else "allowed, but not there"
            print(f"{library}: {symbol} is {where}", file=sys.stderr)
            wrong += 1
    for library in ALLOWED.keys() - found.keys():
        print(f"{library}: its archive was not handed in", file=sys.stderr)
        wrong += 1
    print(f"{sum(map(len, found.values()))} mutable objects in {len(archives)} libraries")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
