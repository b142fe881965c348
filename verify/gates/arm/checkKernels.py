#!/usr/bin/env python3
"""Checks the instructions of the loops in the 32-bit ARM objects of the signal library and tracker.

    checkKernels.py OBJECT...

The objects are told apart by name. A loop counts when it is innermost and multiplies floats; it
must do so on vectors of its engine's width alone, and call nothing.
"""

import re
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[3] / "tools" / "arm"))
import disassembly  # noqa: E402

CONDITION = f"({disassembly.CONDITIONS})?"
ARITHMETIC = re.compile(
    rf"^v(add|sub|mul|mla|mls|nmul|nmla|nmls|fma|fms|fnma|fnms|div|sqrt|abs|neg|max|min|cmpe?"
    rf"|cgt|cge|ceq|pmax|pmin){CONDITION}\.f(32|64)$")
MULTIPLY = re.compile(rf"^v(n?mul|n?mla|n?mls|fn?ma|fn?ms){CONDITION}\.f(32|64)$")
COMPARISON = re.compile(rf"^vcmpe?{CONDITION}\.f(32|64)$")
STRUCTURED = re.compile(r"^v(ld|st)[12]\.32$")


def width(instruction):
    """'s', 'd' or 'q' of a float operation; double precision is as scalar as single lanes are."""
    return "s" if instruction.mnemonic.endswith("f64") else instruction.operands[0]


def uses(loop, mnemonic):
    return any(i.mnemonic == mnemonic for i in loop.instructions)


def multiplying_loops(objects):
    return [loop for path in objects for function in disassembly.functions(path)
            for loop in disassembly.innermost_loops(function)
            if any(MULTIPLY.match(i.mnemonic) for i in loop.instructions)]


def impurities(loop, expected):
    """What a loop on vectors of the expected width must not hold."""
    for i in loop.instructions:
        if i.returns_here:
            yield f"{loop.where}: a call, {i.mnemonic} {i.operands}"
        elif ARITHMETIC.match(i.mnemonic) and width(i) != expected:
            yield f"{loop.where}: not on {expected} registers, {i.mnemonic} {i.operands}"


def check_transform(objects):
    """Two-lane vectors; de-interleaving loads in the leaf pass, interleaving stores in the last."""
    kinds = {"leaf": [], "inner": [], "last": []}
    for loop in multiplying_loops(objects):
        kind = "leaf" if uses(loop, "vld2.32") else "last" if uses(loop, "vst2.32") else "inner"
        kinds[kind].append(loop)
        yield from impurities(loop, "d")
        for mnemonic in ("vmla.f32", "vmls.f32"):
            if not uses(loop, mnemonic):
                yield f"{loop.where}: no {mnemonic}"
        if kind != "leaf" and not uses(loop, "vmul.f32"):
            yield f"{loop.where}: no vmul.f32"
        if kind == "leaf" and uses(loop, "vld1.32"):
            yield f"{loop.where}: loads that do not de-interleave in the leaf pass"
        if kind == "last" and uses(loop, "vst1.32"):
            yield f"{loop.where}: stores that do not interleave in the last pass"
        for i in loop.instructions:
            if STRUCTURED.match(i.mnemonic) and ":" not in i.operands:
                yield f"{loop.where}: no alignment hint, {i.mnemonic} {i.operands}"
    for kind, found in kinds.items():
        print(f"FFT, {kind} passes: {len(found)} loops on two lanes")
        if len(found) < 2:  # one for each direction
            yield f"FFT: {len(found)} loops of the {kind} pass"


def check_filters(objects):
    """Four-lane vectors, multiplied by one lane of the coefficients."""
    loops = multiplying_loops(objects)
    by_lane = []
    for loop in loops:
        yield from impurities(loop, "q")
        lanes = [i for i in loop.instructions
                 if MULTIPLY.match(i.mnemonic) and re.search(r"d\d+\[[01]\]$", i.operands)]
        if lanes:
            by_lane.append(loop)
    accumulating = [loop for loop in by_lane if uses(loop, "vmla.f32")]
    print(f"FIR: {len(loops)} loops on four lanes, {len(by_lane)} of them by one coefficient at a "
          f"time, {len(accumulating)} with multiply-accumulate")
    if len(by_lane) < 17:  # a case for each of 1 to 16 taps, and the engine for more
        yield f"FIR: {len(by_lane)} loops that multiply by a lane"
    if len(accumulating) < 13:  # up to four taps are multiplied separately and added
        yield f"FIR: {len(accumulating)} loops that multiply by a lane and accumulate"


def check_tracker(objects):
    """No scalar comparisons among vector arithmetic: that is a comparison taken apart."""
    count = 0
    for path in objects:
        for function in disassembly.functions(path):
            for loop in disassembly.innermost_loops(function):
                if not any(ARITHMETIC.match(i.mnemonic) and width(i) == "q"
                           for i in loop.instructions):
                    continue
                count += 1
                for i in loop.instructions:
                    if COMPARISON.match(i.mnemonic):
                        yield f"{loop.where}: {i.mnemonic} {i.operands} in a vector loop"
    print(f"tracker: {count} vector loops")
    if count == 0:
        yield "tracker: no vector loops"


def main(paths):
    def named(pattern):
        found = [path for path in paths if re.search(pattern, Path(path).name)]
        if not found:
            raise SystemExit(f"no object matches {pattern}")
        return found

    tracker = r"^(gridSearch|crossSpectrum|phaseTransform|realFftSplit|\w+Kernels)"
    violations = [*check_transform(named(r"^cfft_kernels")), *check_filters(named(r"^sp_fir")),
                  *check_tracker(named(tracker))]
    for violation in violations:
        print(violation, file=sys.stderr)
    return 1 if violations else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
