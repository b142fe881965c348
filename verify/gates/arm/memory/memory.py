#!/usr/bin/env python3
"""Memory of the tracker on 32-bit ARM: a table for each product.

    memory.py [--write] FILE BUILD_FOLDER ARCHIVE... -- HEAP_PROGRAM...

Compares with FILE, or renews it; HEAP_PROGRAM comes with its emulator. FILE holds the table between
two marks. Heap and static data must be as the table says; code, constants and stack depend on the
compiler's version and are renewed with the table.
"""

import argparse
import re
import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[4] / "tools" / "arm"))
import callGraph  # noqa: E402

SIZE = "arm-linux-gnueabihf-size"
BEGIN, END = "<!-- memory: begin -->", "<!-- memory: end -->"
ALLOCATORS = {"malloc", "realloc", "aligned_alloc", "posix_memalign", "memalign"}

# Nodes of the transform's tree call themselves for their children: whole nodes for children of at
# most a quarter of their size, from 4096 over 1024 and 256 down to 64 elements; nodes whose ends
# alone are wanted for children of at most half, from 4096 down to 32.
RECURSION = {"noLeaves": 4, "nodeEnds": 8}


def sections(archives):
    """Bytes of code, constants and static data."""
    total = {"code": 0, "constants": 0, "static": 0}
    command = [SIZE, "-A", *archives]
    listing = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    for name, size in re.findall(r"^(\.\S+)\s+(\d+)\s+\d+$", listing, re.M):
        if name.startswith(".text"):
            total["code"] += int(size)
        elif name.startswith((".rodata", ".data.rel.ro", ".ARM.ex")):
            total["constants"] += int(size)
        elif name.startswith((".data", ".bss")):
            total["static"] += int(size)
    return total


def heap(command):
    """Bytes and blocks of each product, by name."""
    output = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    lines = (line.split() for line in output.splitlines())
    return {product: (int(size), int(blocks)) for product, size, blocks in lines}


def check_allocators(graph):
    """heap.cpp counts what calloc gives; nothing that initialising reaches allocates otherwise."""
    for symbol, way in callGraph.reached(graph, "voxloc_initialize").items():
        if symbol in ALLOCATORS or symbol.startswith("_Zn"):
            raise SystemExit("not counted: " + " > ".join(way))


def table(arguments):
    graph = callGraph.read(arguments.build)
    check_allocators(graph)
    size = sections(arguments.archives)
    depth, chain = callGraph.deepest(graph, "voxloc_calculate", RECURSION)
    rows = ["| Product | Code | Constants | Static data | Heap after initialise | Worst stack |",
            "|---|---|---|---|---|---|"]
    for product, (held, blocks) in heap(arguments.program).items():
        rows.append(f"| {product} | {size['code']:,} | {size['constants']:,} "
                    f"| {size['static']:,} | {held:,} in {blocks} blocks | {depth:,} |")
    steps = " > ".join(f"`{name}` {frame}" + (f" x {frames}" if frames > 1 else "")
                       for name, frame, frames in chain)
    return "\n".join(rows) + f"\n\nThe deepest chain: {steps}."


def held_figures(text):
    """Static data and heap of each product, as the table gives them."""
    row = r"^\| (\w+) \| [\d,]+ \| [\d,]+ \| ([\d,]+) \| ([\d,]+ in \d+ blocks) \|"
    return re.findall(row, text, re.M)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("file", type=Path)
    parser.add_argument("build")
    parser.add_argument("archives", nargs="+")
    parser.add_argument("--write", action="store_true")
    end = sys.argv.index("--")
    arguments = parser.parse_args(sys.argv[1:end])
    arguments.program = sys.argv[end + 1:]

    found = table(arguments)
    text = arguments.file.read_text()
    before, rest = text.split(BEGIN)
    recorded, after = rest.split(END)
    print(found)
    if arguments.write:
        arguments.file.write_text(f"{before}{BEGIN}\n{found}\n{END}{after}")
        return 0
    if held_figures(found) and held_figures(found) == held_figures(recorded):
        return 0
    print(f"static data or heap differ from {arguments.file.name}; after a change that is meant, "
          "renew it with scripts/memory", file=sys.stderr)
    return 1


if __name__ == "__main__":
    sys.exit(main())
