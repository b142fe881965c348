#!/usr/bin/env python3
"""Checks that nothing that runs once per frame can come to an allocator.

    checkAllocation.py BUILD_FOLDER
"""

import re
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[3] / "tools" / "arm"))
import callGraph  # noqa: E402

PER_FRAME = [
    "voxloc_calculate", "voxloc_track", "voxloc_resetTracker", "voxloc_calculateSignalEnergy",
    "voxloc_realFft", "voxloc_realIfft", "voxloc_firFilter", "voxloc_getUltraSoundLevel",
    "voxloc_hasEstimate", "voxloc_setFlag", "voxloc_getFlag", "cfft_pow2_conjpair_splitrad_c89",
    "cifft_pow2_conjpair_splitrad_c89", "sp_fftSPxSP", "sp_ifftSPxSP", "sp_fir_gen",
    "sp_fir_filter", "sp_fir_gen_downsample", "sp_fir_filter_downsample",
]
ALLOCATOR = re.compile(r"^(malloc|calloc|realloc|free|aligned_alloc|posix_memalign|memalign|strdup"
                       r"|strndup|asprintf|vasprintf|_Zn[wa].*|_Zd[la].*)$")

# What the per-frame path may call through a pointer: the console or the log that a program may
# install gets the log's text.
MAY_CALL_INDIRECTLY = {"console_printv", "voxloc::logText"}


def violations(graph):
    for root in PER_FRAME:
        for symbol, way in callGraph.reached(graph, root).items():
            names = " > ".join(callGraph.name_of(graph, step) for step in way)
            if ALLOCATOR.match(symbol):
                yield f"an allocator is reached: {names}"
            if symbol == callGraph.INDIRECT:
                if callGraph.name_of(graph, way[-2]) not in MAY_CALL_INDIRECTLY:
                    yield f"a call that cannot be followed: {names}"


def main(folder):
    graph = callGraph.read(folder)
    if not any("calloc" in node.calls for node in graph.values()):
        raise SystemExit("initialising calls no calloc: the graph is not what it should be")
    found = list(violations(graph))
    for violation in found:
        print(violation, file=sys.stderr)
    print(f"{len(PER_FRAME)} entry points, {len(found)} ways to an allocator")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
