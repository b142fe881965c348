"""Which stage of a frame a function belongs to, by the list of stages and the call graph."""

import re
from pathlib import Path

import callGraph

LIST = Path(__file__).resolve().parents[2] / "bench" / "stages.txt"
REMAINDER = "remainder"  # of the frame: in no stage
SHARED = "shared by several"


def _functions():
    """Each stage's name with the functions where it begins."""
    for line in LIST.read_text().splitlines():
        if line and not line.startswith("#"):
            name, functions = line.split(": ")
            yield name, functions.split()


def plain(symbol):
    """A symbol without the file that GCC puts before static ones and the suffix of a clone."""
    return symbol.split(":")[-1].split(".")[0]


def _symbol_of(function, graph):
    form = re.compile(rf"_ZN6voxloc(4here)?{len(function)}{function}E.*|{function}")
    found = {symbol for symbol in graph if form.fullmatch(symbol)}
    if len(found) != 1:
        raise SystemExit(f"{LIST}: {len(found)} functions {function} in the call graph, not one")
    return found.pop()


def of_frame(graph):
    """The stage of every function that a frame may come to, by plain symbol."""
    starts = {_symbol_of(function, graph): stage
              for stage, functions in _functions() for function in functions}
    starts["voxloc_calculate"] = REMAINDER
    owners = {}
    for start, stage in starts.items():
        cut = {symbol: node for symbol, node in graph.items()
               if symbol == start or symbol not in starts}
        for symbol in callGraph.reached(cut, start):
            if symbol == start or symbol not in starts:
                owners.setdefault(plain(symbol), set()).add(stage)
    return {symbol: stages.pop() if len(stages) == 1 else SHARED
            for symbol, stages in owners.items()}
