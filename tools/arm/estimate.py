#!/usr/bin/env python3
"""Estimates the time of a frame on small 32-bit ARM cores, for all products.

    estimate.py BUILD_FOLDER PROGRAM EMULATOR > docs/estimate.md

An emulator counts how often each instruction of a frame is executed; the time that it takes itself
says nothing. llvm-mca gives the cycles of each innermost loop. Their product, summed up, is the
estimate.
"""

import collections
import re
import subprocess
import sys
import textwrap

import callGraph
import disassembly
import stages

FRAME_MS = 2048 / 48.0
CYCLES_PER_MS = 1e6  # at 1 GHz
WARM_FRAMES = 3  # the frame after them is counted: its blocks are full
ITERATIONS = 200
RARE = 0.5  # instructions executed in fewer of a loop's iterations are priced one by one

# name: processor of llvm-mca, and what it is
# The other models of small cores are no use here: the cortex-a7, a8 and a53 have none for 32-bit
# code, and that of the cortex-a9 makes llvm-mca 14 divide by zero.
CORES = {"cortex-r52": "in order and issues two instructions a cycle",
         "cortex-a57": "out of order and issues three"}

FILLER = "cmp r0, #0"  # an instruction that does next to nothing

# Instructions that a model has no entry for, and the nearest that it has: on the cortex-r52 a
# vector multiplication like an addition, as its scalar ones are, and a multiply-accumulate like its
# fused counterpart, which takes as long as the scalar one.
SUBSTITUTES = [
    (r"^vml([as])\.f32 (\w+), (\w+), d(\d+)\[\d\]$",
     lambda m: f"vfm{m[1]}.f32 {m[2]}, {m[3]}, {like(m[2], int(m[4]))}"),
    (r"^vml([as])\.f32 (.*)$", lambda m: f"vfm{m[1]}.f32 {m[2]}"),
    (r"^vmul\.f32 (\w+), (\w+), d(\d+)\[\d\]$",
     lambda m: f"vadd.f32 {m[1]}, {m[2]}, {like(m[1], int(m[3]))}"),
    (r"^vmul\.\w+ (.*)$", lambda m: f"vadd.f32 {m[1]}"),
    (r"^vpadd\.f32 (.*)$", lambda m: f"vadd.f32 {m[1]}"),
    (r"^vpmax\.f32 (.*)$", lambda m: f"vmax.f32 {m[1]}"),
    (r"^vmovl\.\w+ (q\d+), d(\d+)$", lambda m: f"vneg.f32 {m[1]}, q{int(m[2]) // 2}"),
    (r"^vmovn\.\w+ (d\d+), q(\d+)$", lambda m: f"vneg.f32 {m[1]}, d{int(m[2]) * 2}"),
    (r"^vmov\.32 (r\w+|[a-z]{2}), d(\d+)\[\d\]$",
     lambda m: f"vmov {m[1]}, s{2 * (int(m[2]) % 16)}"),
    (r"^vmov\.32 d(\d+)\[\d\], (\w+)$", lambda m: f"vmov s{2 * (int(m[1]) % 16)}, {m[2]}"),
    (r"^vld1\.32 \{d(\d+)\[\]-d\d+\[\]\}, (.*)$", lambda m: f"vld1.32 {{d{m[1]}}}, {m[2]}"),
    (r"^vmov(?:[a-z]{2})?\.f32 s(\d+), s(\d+)$",
     lambda m: f"vorr d{int(m[1]) // 2}, d{int(m[2]) // 2}, d{int(m[2]) // 2}"),
    (r"^vmov(?:[a-z]{2})?\.f32 s(\d+), #.*$",
     lambda m: f"vorr d{int(m[1]) // 2}, d{int(m[1]) // 2}, d{int(m[1]) // 2}"),
    (r"^v(ld|st)mia (\w+)(!?), \{(s\d+)\}$", lambda m: f"v{m[1]}r {m[4]}, [{m[2]}]"),
    (r"^v(ld|st)mia (\w+)(!?), \{(d\d+)-.*\}$", lambda m: f"v{m[1]}r {m[4]}, [{m[2]}]"),
    (r"^(ldrd|strd) \w+, \w+, \[(\w+), #-?\d+\]$", lambda m: f"{m[1]} r2, r3, [{m[2]}, #8]"),
    (r"^(ldrd|strd) \w+, \w+, (.*)$", lambda m: f"{m[1]} r2, r3, {m[2]}"),
    (r"^vmov\.i32 (q\d+), #0$", lambda m: f"vorr {m[1]}, {m[1]}, {m[1]}"),
    (r"^(add|sub|orn)w? (\w+), (\w+), #\d+$", lambda m: f"add {m[2]}, {m[3]}, #1"),
    (r"^orn (\w+), (\w+), (\w+)$", lambda m: f"orr {m[1]}, {m[2]}, {m[3]}"),
    (r"^mov (\w+), #\d+$", lambda m: f"movw {m[1]}, #1"),
    (r"^(cmp|cmn|tst) (\w+), #\d+$", lambda m: f"cmp {m[2]}, #1"),
    (r"^ldrs?[bh] (\w+), (\[\w+, \w+, lsl #\d\])$", lambda m: f"ldr {m[1]}, {m[2]}"),
    (r"^ldm(?:ia)?(?:\.w)? (\w+)!?, \{.*\}$", lambda m: f"ldrd r0, r1, [{m[1]}]"),
    (r"^stm(?:ia)?(?:\.w)? (\w+)!?, \{.*\}$", lambda m: f"strd r0, r1, [{m[1]}]"),
    (r"^vswp (\w+), (\w+)$", lambda m: f"vtrn.32 {m[1]}, {m[2]}"),
    (r"^vmrs .*$", lambda m: "cmp r0, r0"),
    (r"^vcmpe?\.f32 (\w+), #0\.0$", lambda m: f"vcmpe.f32 {m[1]}, {m[1]}"),
]


def like(register, d):
    """The register of the first one's width that holds the d register."""
    return f"q{d // 2}" if register[0] == "q" else f"d{d}"


def execution_counts(emulator, program, product, frames, ranges):
    """How often each address is executed, from the emulator's log of blocks."""
    command = [emulator, "-d", "exec,nochain,in_asm", "-dfilter", ranges, program, product,
               str(frames)]
    blocks, runs, current = {}, collections.Counter(), None
    process = subprocess.Popen(command, stderr=subprocess.PIPE, text=True, bufsize=1 << 20)
    for line in process.stderr:
        if line.startswith("Trace "):
            runs[line.split("/", 2)[1]] += 1
        elif line.startswith("0x"):
            address = line[2:10]
            if current is None:
                current = blocks[address] = []
            current.append(int(address, 16))
        else:
            current = None
    if process.wait() != 0:
        raise SystemExit("the program failed under the emulator")
    counts = collections.Counter()
    for start, count in runs.items():
        for address in blocks[start]:
            counts[address] += count
    return counts


def frame_counts(emulator, program, product, ranges):
    before = execution_counts(emulator, program, product, WARM_FRAMES, ranges)
    after = execution_counts(emulator, program, product, WARM_FRAMES + 1, ranges)
    return after - before


class Part:
    """A function that a frame may execute."""

    def __init__(self, size, stage):
        self.size, self.stage = size, stage


def parts_of_frame(build, program):
    """What the call graph reaches and what moves memory, by address."""
    stage_of = stages.of_frame(callGraph.read(build))
    listing = subprocess.run(["arm-linux-gnueabihf-nm", "-S", program], check=True,
                             capture_output=True, text=True).stdout
    found = {}
    for address, size, _, name in re.findall(r"^(\w+) (\w+) (\w) (\S+)$", listing, re.M):
        memory_move = re.match(r"_*(mem(cpy|move|set))", name)
        symbol = memory_move[1] if memory_move else stages.plain(name)
        if memory_move or symbol in stage_of:
            stage = stage_of.get(symbol, stages.REMAINDER)
            found[int(address, 16) & ~1] = Part(int(size, 16), stage)
    return found


def source_of(instruction):
    """The instruction as llvm-mca takes it, in the encoding that needs no blocks of conditions."""
    mnemonic = re.sub(r"\.[nw]$", "", instruction.mnemonic)
    if mnemonic.startswith("cb"):
        return FILLER
    if re.match(r"it[te]*$", mnemonic):
        return FILLER
    if instruction.target is not None or instruction.returns_here:
        return f"{mnemonic} somewhere"
    text = re.sub(r"\[(\w+) :(\d+)\]", r"[\1:\2]", f"{mnemonic} {instruction.operands}")
    return re.sub(r"\s+", " ", re.sub(r"<.*>", "", text)).strip()


def analyse(core, lines):
    """Cycles of ITERATIONS passes over the lines, or None where the model lacks an instruction."""
    result = subprocess.run(
        ["llvm-mca", "-mtriple=armv8-linux-gnueabihf", f"-mcpu={core}", "-mattr=+neon",
         f"-iterations={ITERATIONS}"],
        input="\n".join([".syntax unified", *lines, ""]), capture_output=True, text=True)
    total = re.search(r"Total Cycles: +(\d+)", result.stdout)
    return int(total.group(1)) if total else None


class Core:
    """A processor of llvm-mca."""

    def __init__(self, name):
        self.name = name
        self.known = {}  # an instruction, or what stands for it
        self.substituted = set()
        self.missing = set()
        self.prices = {}

    def line_for(self, text):
        if text not in self.known:
            self.known[text] = self.nearest(text)
        return self.known[text]

    def nearest(self, text):
        if analyse(self.name, [text]) is not None:
            return text
        for pattern, replace in SUBSTITUTES:
            match = re.match(pattern, text)
            if match and analyse(self.name, [replace(match)]) is not None:
                self.substituted.add(text.split()[0])
                return replace(match)
        self.missing.add(text)
        return FILLER

    def price(self, instructions):
        """Cycles for one iteration of a loop."""
        key = tuple(i.address for i in instructions)
        if key not in self.prices:
            lines = [self.line_for(source_of(i)) for i in instructions]
            cycles = analyse(self.name, lines)
            if cycles is None:
                raise SystemExit(f"llvm-mca on the {self.name} fails at\n" + "\n".join(lines))
            self.prices[key] = cycles / ITERATIONS
        return self.prices[key]


class Estimate:
    """A frame of one product: cycles by core and stage, and the loops that they are made of."""

    def __init__(self):
        self.stages = {core: collections.Counter() for core in CORES}
        self.loops = []  # function, iterations, instructions, cycles by core
        self.instructions = 0

    def milliseconds(self, core, stage=None):
        chosen = self.stages[core]
        return (chosen[stage] if stage else sum(chosen.values())) / CYCLES_PER_MS


class Estimator:
    def __init__(self, program, parts):
        self.parts = parts
        self.functions = [f for f in disassembly.functions(program) if f.instructions]
        self.loops = {}
        self.cores = {name: Core(name) for name in CORES}

    def loops_of(self, function):
        key = function.instructions[0].address
        if key not in self.loops:
            self.loops[key] = disassembly.innermost_loops(function)
        return self.loops[key]

    def estimate(self, counts):
        result = Estimate()
        for function in self.functions:
            executed = {i.address: counts[i.address] for i in function.instructions
                        if counts[i.address]}
            if executed:
                self.add(function, executed, result)
        return result

    def add(self, function, executed, result):
        stage = self.parts[function.instructions[0].address].stage
        result.instructions += sum(executed.values())
        for loop in self.loops_of(function):
            iterations = max(executed.get(i.address, 0) for i in loop.instructions)
            body = [i for i in loop.instructions
                    if executed.get(i.address, 0) >= RARE * iterations > 0]
            if not body:
                continue
            prices = {name: core.price(body) for name, core in self.cores.items()}
            for core, price in prices.items():
                result.stages[core][stage] += price * iterations
            for i in body:
                del executed[i.address]
            result.loops.append((function.name, loop.instructions[0].address, iterations, len(body),
                                 prices))
        for core in CORES:  # outside of the loops: a cycle for each instruction
            result.stages[core][stage] += sum(executed.values())


def totals(estimates):
    yield "| Product | " + " | ".join(f"{core}, ms | share of a frame" for core in CORES) + " |"
    yield "|---|" + "---|---|" * len(CORES)
    for product, estimate in estimates.items():
        cells = (f"{estimate.milliseconds(core):.2f} | {estimate.milliseconds(core) / FRAME_MS:.1%}"
                 for core in CORES)
        yield f"| {product} | " + " | ".join(cells) + " |"


def stage_table(estimates, shown):
    cores = list(CORES)
    yield "| Stage | " + " | ".join(f"{core}, ms | share of a frame" for core in cores) + " |"
    yield "|---|" + "---|---|" * len(cores)
    shown = estimates[shown]
    for stage in sorted(shown.stages[cores[0]], key=lambda s: -shown.stages[cores[0]][s]):
        cells = (f"{shown.milliseconds(core, stage):.3f} | "
                 f"{shown.milliseconds(core, stage) / FRAME_MS:.1%}" for core in cores)
        yield f"| {stage} | " + " | ".join(cells) + " |"


def loop_table(estimates, shown):
    cores = " | ".join(f"{core}, cycles" for core in CORES)
    yield f"| Loop in | Instructions | Iterations | {cores} |"
    yield "|---|---|---|" + "---|" * len(CORES)
    heaviest = sorted(estimates[shown].loops, key=lambda loop: -loop[2] * max(loop[4].values()))
    for name, _, iterations, length, prices in heaviest[:30]:
        short = re.sub(r"\((cfft::)?\w+\)", "", re.sub(r"\([^()]*\)$", "", name.replace(
            "(anonymous namespace)::", ""))).replace("void ", "").replace("int ", "")
        yield f"| `{short}` | {length} | {iterations} | " + " | ".join(
            f"{prices[core]:.1f}" for core in CORES) + " |"


def dearest(estimates):
    """The product whose stages and loops are listed."""
    return max(estimates, key=lambda product: sum(map(estimates[product].milliseconds, CORES)))


def worst_stage(estimates):
    return max(((estimate.milliseconds(core, stage) / FRAME_MS, stage, product, core)
                for product, estimate in estimates.items() for core in CORES
                for stage in estimate.stages[core]))


def paragraph(text):
    return textwrap.fill(" ".join(text.split()), 100, break_on_hyphens=False)


def report(estimates, estimator):
    shown = dearest(estimates)
    share, stage, product, core = worst_stage(estimates)
    limit = "above" if share > 0.25 else "below"
    cores = "; ".join(f"the {core} is {what}" for core, what in CORES.items())
    missing = "; ".join(f"{name}: {', '.join(sorted(core.substituted))}"
                        for name, core in estimator.cores.items() if core.substituted)
    return "\n".join([
        "# Estimated time of a frame",
        "",
        paragraph("""**An estimate, not a measurement**, made by `scripts/estimate`: an emulator
            counts how often each instruction of a frame is executed, llvm-mca prices each innermost
            loop for a core, and what is outside of the loops is charged one cycle an instruction.
            Missed caches and mispredicted branches are not in it. Times measured under the emulator
            would mean nothing and are not used."""),
        "",
        paragraph(f"""Of the cores, {cores}. Both run 32-bit code on Advanced SIMD. A frame lasts
            {FRAME_MS:.1f} ms."""),
        "",
        "## Products, at 1 GHz",
        "",
        *totals(estimates),
        "",
        paragraph(f"""The largest stage of all is {stage} of {product} on the {core} with
            {share:.1%} of a frame, {limit} a quarter."""),
        "",
        f"## Stages of {shown}, at 1 GHz",
        "",
        paragraph(f"""Stages are those of `bench/stages.txt`; a function counts for the listed one
            that calls it. "{stages.REMAINDER}" is what none of them calls, "{stages.SHARED}" what
            more than one calls."""),
        "",
        *stage_table(estimates, shown),
        "",
        f"## The heaviest loops of {shown}",
        "",
        "Cycles are for one iteration; iterations are those of a frame.",
        "",
        *loop_table(estimates, shown),
        "",
        paragraph(f"""Where llvm-mca's model of a core lacks an instruction, the nearest that it has
            is priced (`SUBSTITUTES` in `tools/arm/estimate.py`): {missing}."""),
    ])


def main(build, program, emulator):
    parts = parts_of_frame(build, program)
    ranges = ",".join(f"{address:#x}+{part.size:#x}" for address, part in parts.items())
    estimator = Estimator(program, parts)
    estimates = {}
    products = subprocess.run([emulator, program], check=True, capture_output=True, text=True)
    for name in products.stdout.split():
        counts = frame_counts(emulator, program, name, ranges)
        estimates[name] = estimator.estimate(counts)
        print(f"{name}: {estimates[name].instructions} instructions", file=sys.stderr)
    missing = {f"{core.name}: {text}" for core in estimator.cores.values() for text in core.missing}
    if missing:
        raise SystemExit("llvm-mca does not know these; add them to SUBSTITUTES\n" +
                         "\n".join(sorted(missing)))
    print(report(estimates, estimator))


if __name__ == "__main__":
    main(*sys.argv[1:])
