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


def _scopes(symbol):
    """The names in a mangled symbol, joined: what GCC's label lacks for some functions."""
    names, rest = [], re.sub(r"^.*_ZN", "", symbol)
    while length := re.match(r"\d+", rest):
        end = length.end() + int(length.group())
        names.append(rest[length.end():end])
        rest = rest[end:]
    return "::".join(names)


def name_of(graph, symbol):
    """The function's name without result, parameters and anonymous namespaces."""
    label = graph[symbol].name if symbol in graph else symbol
    if not re.search(r"\w", label):
        return _scopes(symbol)
    label = re.sub(r"(\{anonymous\}|\(anonymous( namespace)?\))::", "", label)
    return re.sub(r"( \[with .*|\(.*)", "", label).split(" ")[-1]


def _components(graph, root):
    """The functions below root, callees first, those that call each other together (Tarjan)."""
    number, lowest, stack, found = {}, {}, [], []

    def visit(symbol):
        number[symbol] = lowest[symbol] = len(number)
        stack.append(symbol)
        for callee in sorted(graph[symbol].calls & graph.keys()):
            if callee not in number:
                visit(callee)
                lowest[symbol] = min(lowest[symbol], lowest[callee])
            elif callee in stack:
                lowest[symbol] = min(lowest[symbol], number[callee])
        if lowest[symbol] == number[symbol]:
            component = stack[stack.index(symbol):]
            del stack[stack.index(symbol):]
            found.append(component)

    visit(root)
    return found


def deepest(graph, root, recursion):
    """The largest sum of frames from root down, and the chain that has it.

    `recursion` says of functions that call themselves or each other, by name without namespaces,
    how many of their frames there are at most at a time. A function outside the graph counts 0.
    """
    best = {}
    for component in _components(graph, root):
        names = {name_of(graph, symbol) for symbol in component}
        calls = set().union(*(graph[symbol].calls for symbol in component))
        frames = 1
        if calls & set(component):
            plain = {name.split("::")[-1] for name in names}
            if len(plain) != 1 or not plain <= recursion.keys():
                raise SystemExit(f"recursion without a bound: {', '.join(sorted(names))}")
            frames = recursion[min(plain)]
        if not all(graph[symbol].is_bounded for symbol in component):
            raise SystemExit(f"a frame without a bound: {', '.join(sorted(names))}")
        below = max((best[callee] for callee in calls - set(component) if callee in best),
                    key=lambda way: way[0], default=(0, []))
        frame = max(graph[symbol].frame or 0 for symbol in component)
        step = [(min(names), frame, frames)] if frame else []
        for symbol in component:
            best[symbol] = (frame * frames + below[0], step + below[1])
    return best[root]
