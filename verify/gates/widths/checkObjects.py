#!/usr/bin/env python3
"""Checks the instructions and the symbols of the objects of each width of vectors.

    checkObjects.py OBJDUMP NM WIDTH OBJECT...      WIDTH: baseline, avx or avx512

Baseline objects hold no instruction that the oldest x86-64 machine lacks. No object fuses a product
with a sum, which would give other bits than the baseline has. A wide object defines no symbol that
the linker could take for baseline code: all that it shows stands in a namespace of its width.
"""

import re
import subprocess
import sys

INSTRUCTION = re.compile(r"^\s+[0-9a-f]+:\s+(?:(?:lock|rep|repz|repnz|bnd|notrack|data16) )*(\S+)(.*)$")
FUSED = re.compile(r"^vfn?m(add|sub)")
# tzcnt is not in the list: on a machine without it, its bytes are bsf, and compilers count on that.
# Everything that is encoded as AVX begins with v, as nothing of the baseline that compilers emit.
VECTOR_EXTENSION = re.compile(r"^v(?!err|erw)")
LATER_THAN_SSE2 = re.compile(
    r"^(haddp[sd]|hsubp[sd]|addsubp[sd]|movs[hl]dup|movddup|lddqu|fisttp"        # SSE3
    r"|pabs[bwd]|palignr|pshufb|psign[bwd]|phadd\w+|phsub\w+|pmaddubsw|pmulhrsw"  # SSSE3
    r"|round[sp][sd]|blendv?p[sd]|p?blend(vb|w)|dpp[sd]|insertps|extractps|p(ins|ext)r[bdq]"
    r"|pm(ax|in)(sb|sd|ud|uw)|pmulld|pmuldq|pmov[sz]x\w+|ptest|packusdw|pcmpeqq|pcmpgtq|phminposuw"
    r"|mpsadbw|movntdqa|crc32\w*|popcnt\w*"                                       # SSE4
    r"|lzcnt\w*|andn|bextr|bls\w+|bzhi|pdep|pext|mulx|rorx|sarx|shlx|shrx|movbe)$")
NAMESPACES = {
    "avx": re.compile(r"\d(at8|avx)(?![a-z0-9])|(3at8|3avx)(?!\d\d\d)"),
    "avx512": re.compile(r"4at16|6avx512"),
}
SHOWN = set("TDBRVWuSGCi")  # kinds of nm that another object's references can meet


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def instructions(objdump, path):
    for line in output_of(objdump, "--disassemble", "--no-show-raw-insn", path).splitlines():
        match = INSTRUCTION.match(line)
        if match:
            yield match[1], match[2]


def faults_of_instructions(objdump, width, path):
    for mnemonic, operands in instructions(objdump, path):
        if FUSED.match(mnemonic):
            yield f"fuses: {mnemonic}{operands}"
        if width == "baseline" and (VECTOR_EXTENSION.match(mnemonic)
                                    or LATER_THAN_SSE2.match(mnemonic)):
            yield f"above the baseline: {mnemonic}{operands}"
        if width == "avx" and "zmm" in operands:
            yield f"above AVX: {mnemonic}{operands}"


def faults_of_symbols(nm, width, path):
    if width == "baseline":
        return
    shown = [line.split() for line in output_of(nm, "--defined-only", path).splitlines()]
    shown = [(fields[-2], fields[-1]) for fields in shown if fields[-2] in SHOWN]
    if not shown:
        yield "defines nothing that could be called"
    for kind, symbol in shown:
        if not NAMESPACES[width].search(symbol):
            yield f"{symbol} ({kind}) could stand in for baseline code"


def main(objdump, nm, width, *objects):
    if not any(True for path in objects for _ in instructions(objdump, path)):
        return "no objects with instructions"
    faults = [f"{path}: {fault}" for path in objects
              for fault in (*faults_of_instructions(objdump, width, path),
                            *faults_of_symbols(nm, width, path))]
    print("\n".join(faults[:40]))
    return f"{len(faults)} faults" if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
