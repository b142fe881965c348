"""The call graph and the stack frames that GCC reports with -fcallgraph-info=su (files *.ci)."""

import re
from dataclasses import dataclass, field
from pathlib import Path

INDIRECT = "__indirect_call"

_NODE = re.compile(r'^node: \{ title: "(.*?)" label: "(.*?)"(.*)\}$')
_EDGE = re.compile(r'^edge: \{ sourcename: "(.*?)" targetname: "(.*?)"')
_FRAME = re.compile(r"\\n(\d+) bytes \((static|dynamic|dynamic,bounded)\)")


@dataclass
class Node:
    name: str  # as the source names it
    frame: int = None  # bytes; None outside the files that were read
    is_bounded: bool = True
    calls: set = field(default_factory=set)


def read(folder):
    """All functions of the .ci files below a folder, by linker symbol; static ones by file, too."""
    graph = {}
    paths = sorted(Path(folder).rglob("*.ci"))
    if not paths:
        raise SystemExit(f"{folder}: no call graphs; build the preset armhf")
    for path in paths:
        for line in path.read_text().splitlines():
            _read_line(line, graph)
    return graph


def _read_line(line, graph):
    node = _NODE.match(line)
    if node:
        title, label, _ = node.groups()
        known = graph.setdefault(title, Node(label.split("\\n")[0]))
        frame = _FRAME.search(label)
        if frame:
            known.frame = int(frame.group(1))
            known.is_bounded = frame.group(2) != "dynamic"
            known.name = label.split("\\n")[0]
        return
    edge = _EDGE.match(line)
    if edge:
        source, target = edge.groups()
        graph.setdefault(source, Node(source)).calls.add(target)


def reached(graph, root):
    """Every function that root may come to, with the way there."""
    if root not in graph:
        raise SystemExit(f"{root}: not in the call graph")
    ways, work = {root: [root]}, [root]
    while work:
        caller = work.pop()
        for callee in sorted(graph.get(caller, Node("")).calls):
            if callee not in ways:
                ways[callee] = ways[caller] + [callee]
                work.append(callee)
    return ways


def name_of(graph, symbol):
    """The function's name without result and parameters."""
    label = graph[symbol].name if symbol in graph else symbol
    label = re.sub(r" \[with .*", "", label)
    label = re.sub(r"\(.*", "", label.replace("{anonymous}", "{}").replace("(anonymous)", "{}"))
    return label.split(" ")[-1].replace("{}::", "")


def deepest(graph, root, recursion):
    """The largest sum of frames from root down, and the chain that has it.

    `recursion` maps names to how many frames of a function that calls itself there are at most.
    A function outside the graph counts 0.
    """
    done = {}

    def visit(symbol, above):
        if symbol in done:
            return done[symbol]
        node = graph.get(symbol)
        if node is None or node.frame is None:
            return 0, []
        if not node.is_bounded:
            raise SystemExit(f"{name_of(graph, symbol)}: the frame's size is not bounded")
        name = name_of(graph, symbol)
        frames = recursion.get(name, 1)
        best = (0, [])
        for callee in node.calls:
            if callee in above or callee == symbol:
                if name_of(graph, callee) not in recursion:
                    raise SystemExit(f"{name}: recursion to {callee} without a bound")
                continue
            best = max(best, visit(callee, above | {symbol}), key=lambda way: way[0])
        result = (node.frame * frames + best[0], [(name, node.frame, frames)] + best[1])
        if not above & _cycle(graph, symbol):
            done[symbol] = result
        return result

    return visit(root, frozenset())


def _cycle(graph, symbol):
    return {other for other in graph.get(symbol, Node("")).calls
            if symbol in graph.get(other, Node("")).calls}
