"""Which of all mutations are tried: drawn with a seed, in turns from each part of the libraries."""

import dataclasses
import hashlib
import re

from judge import Mutant
from mutations import mutations_of
from tree import TREE, shipped_sources

DSPLIB = "functional/audio/libraries/dsplib/"
TRACK = "functional/audio/voxloc/cmod/track/"

# The first pattern that a path matches says to which part the source belongs.
PARTS = [
    ("scalar vectors", rf"{DSPLIB}simd/simdScalar\.h"),
    ("NEON vectors", rf"{DSPLIB}simd/simdNeon\.h"),
    ("SSE vectors", rf"{DSPLIB}x86/simdSse\.h"),
    ("AVX vectors", rf"{DSPLIB}x86/simdAvx\.h"),
    ("AVX-512 vectors", rf"{DSPLIB}x86/simdAvx512\.h"),
    ("lanes", rf"{DSPLIB}(simd/(simdLanes|simdKernel|sp_simd))"),
    ("FFT", rf"{DSPLIB}(arm|x86)/cfft|{TRACK}realFft"),
    ("FIR", rf"{DSPLIB}(arm|x86)/sp_fir"),
    ("detectors", rf"{TRACK}(noiseLevel|frequencyDomainVad|timeDomain|UltraSound)"),
    ("generator", rf"{TRACK}unittestGenerator"),
    ("module", rf"{TRACK}\w+\.(cpp|h)$"),
    ("console", r"platform/console/"),
    ("harness", r"platform/audio/audtest/"),
]
# How often each has its turn.
TURNS = {"module": 4, "detectors": 3, "FFT": 2, "FIR": 2, "harness": 2}


@dataclasses.dataclass(frozen=True)
class Drawn:
    part: str
    mutant: Mutant


def part_of(file):
    return next((name for name, pattern in PARTS if re.match(pattern, file.as_posix())), None)


def rank(seed, file, mutation, occurrence):
    """A number that stays when other lines of the source, or other sources, change."""
    text = f"{seed}|{file}|{mutation.before}|{mutation.after}|{occurrence}"
    return hashlib.sha256(text.encode()).hexdigest()


def ranked(seed, files):
    """For each part its mutants, in the order in which they are drawn."""
    pools = {name: [] for name, _ in PARTS}
    for file in shipped_sources(files):
        part = part_of(file)
        if part is None:
            continue
        occurrences = {}
        for mutation in mutations_of((TREE / file).read_text()):
            key = (mutation.before, mutation.after)
            occurrences[key] = occurrences.get(key, 0) + 1
            name = rank(seed, file, mutation, occurrences[key])
            mutant = Mutant(name[:8], mutation.says(), file, mutation.line, mutation.content,
                            mutation.before, mutation.after)
            pools[part].append((name, mutant))
    return {part: [mutant for _, mutant in sorted(pool, key=lambda pair: pair[0])]
            for part, pool in pools.items()}


def draw(seed, files, left_out=()):
    """All mutants, the parts in turns: the first ones of a longer draw are those of a shorter."""
    pools = {part: iter(pool) for part, pool in ranked(seed, files).items()
             if part not in left_out}
    while pools:
        for part in list(pools):
            for _ in range(TURNS.get(part, 1)):
                mutant = next(pools[part], None)
                if mutant is None:
                    del pools[part]
                    break
                yield Drawn(part, mutant)
