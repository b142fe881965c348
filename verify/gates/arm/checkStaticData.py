#!/usr/bin/env python3
"""Compares the mutable static data of the shipped libraries with the reviewed list.

    checkStaticData.py LIST ARCHIVE...
"""

import re
import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools" / "arm"))
import disassembly  # noqa: E402

_SYMBOL = re.compile(r"^[0-9a-f]+ ......O (\S+)\t[0-9a-f]+ (.*)$")
_MUTABLE = re.compile(r"^(\.t?data(?!\.rel\.ro)|\.t?bss|\*COM\*)")


def mutable_symbols(archive):
    command = [disassembly.OBJDUMP, "-t", "-C", archive]
    listing = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    for line in listing.splitlines():
        symbol = _SYMBOL.match(line)
        if symbol and _MUTABLE.match(symbol.group(1)):
            yield re.sub(r"^(0x[0-9a-f]+|\.hidden) ", "", symbol.group(2))


def main(reviewed, archives):
    lines = (line.split("#")[0].strip() for line in Path(reviewed).read_text().splitlines())
    expected = {line for line in lines if line}
    found = {f"{Path(archive).name} {symbol}" for archive in archives
             for symbol in mutable_symbols(archive)}
    for symbol in sorted(found - expected):
        print(f"not on the reviewed list: {symbol}", file=sys.stderr)
    for symbol in sorted(expected - found):
        print(f"on the reviewed list but nowhere else: {symbol}", file=sys.stderr)
    print(f"{len(found)} mutable objects in {len(archives)} libraries")
    return 0 if found and found == expected else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], sys.argv[2:]))
