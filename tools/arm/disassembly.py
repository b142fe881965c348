"""Reads 32-bit ARM object files: functions, their instructions, and their loops.

Works on what objdump of the cross binutils prints; nothing here runs target code.
"""

import re
import subprocess
from dataclasses import dataclass, field

OBJDUMP = "arm-linux-gnueabihf-objdump"
CONDITIONS = "eq|ne|cs|cc|mi|pl|vs|vc|hi|ls|ge|lt|gt|le"


@dataclass
class Instruction:
    address: int
    mnemonic: str
    operands: str
    target: int = None  # address inside the function that it may branch to
    returns_here: bool = False  # a call

    @property
    def is_conditional(self):
        return re.search(rf"^(cbn?z|.*({CONDITIONS}))(\.[nw])?$", self.mnemonic) is not None

    @property
    def never_falls_through(self):
        """Jumps, returns and table jumps; predicated ones fall through when they do not apply."""
        plain = self.mnemonic.split(".")[0]
        if plain in ("b", "bx", "tbb", "tbh", "udf"):
            return True
        writes_pc = re.search(r"\bpc\b", self.operands) and plain in ("pop", "ldmia", "ldr", "mov")
        if plain == "ldr" or plain == "mov":
            return self.operands.startswith("pc,")
        return bool(writes_pc)

    @property
    def is_table_jump(self):
        return self.mnemonic in ("tbb", "tbh")


@dataclass
class Function:
    name: str
    instructions: list = field(default_factory=list)


@dataclass
class Loop:
    function: Function
    instructions: list  # in address order

    @property
    def where(self):
        return f"{self.function.name} at {self.instructions[0].address:#x}"


_HEADER = re.compile(r"^[0-9a-f]+ <(.+)>:$")
_INSTRUCTION = re.compile(r"^ +([0-9a-f]+):\t(\S+)(?:\t(.*))?$")
_TARGET = re.compile(r"(?:^|[\s,])([0-9a-f]+) <")
_BRANCH = re.compile(rf"^(b({CONDITIONS})?|cbn?z)(\.[nw])?$")
_CALL = re.compile(rf"^blx?({CONDITIONS})?(\.[nw])?$")
_DATA = (".word", ".short", ".byte", ".inst")


def functions(path, objdump=OBJDUMP):
    """All functions of an object file or an archive, names demangled."""
    command = [objdump, "-d", "-C", "--no-show-raw-insn", path]
    listing = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    found = []
    for line in listing.splitlines():
        header = _HEADER.match(line)
        if header:
            found.append(Function(header.group(1)))
            continue
        match = _INSTRUCTION.match(line)
        if not match or not found or match.group(2).startswith(_DATA):
            continue
        operands = re.split(r"\s*[;@] ", match.group(3) or "")[0].strip()
        instruction = Instruction(int(match.group(1), 16), match.group(2), operands)
        if _BRANCH.match(instruction.mnemonic):  # `ble` and `bls` are branches, not calls
            address = _TARGET.search(operands)
            instruction.target = int(address.group(1), 16) if address else None
        elif _CALL.match(instruction.mnemonic):
            instruction.returns_here = True
        found[-1].instructions.append(instruction)
    return found


def _successors(code):
    """Of each instruction, as indices; a table jump may reach whatever nothing else reaches."""
    index = {instruction.address: i for i, instruction in enumerate(code)}
    after = [[] for _ in code]
    reached = {0}
    for i, instruction in enumerate(code):
        if instruction.target in index:
            after[i].append(index[instruction.target])
        if not instruction.never_falls_through and i + 1 < len(code):
            after[i].append(i + 1)
        reached.update(after[i])
    orphans = [i for i in range(len(code)) if i not in reached]
    for i, instruction in enumerate(code):
        if instruction.is_table_jump:
            after[i].extend(orphans)
    return after


def _dominators(after):
    """For each instruction that is reached, its immediate dominator."""
    order, seen, stack = [], {0}, [(0, iter(after[0]))]
    while stack:
        node, rest = stack[-1]
        following = next(rest, None)
        if following is None:
            order.append(node)
            stack.pop()
        elif following not in seen:
            seen.add(following)
            stack.append((following, iter(after[following])))
    rank = {node: i for i, node in enumerate(order)}
    before = {node: [] for node in order}
    for node in order:
        for following in after[node]:
            before[following].append(node)

    dominator = {0: 0}
    changed = True
    while changed:
        changed = False
        for node in reversed(order[:-1]):
            known = [b for b in before[node] if b in dominator]
            new = known[0]
            for other in known[1:]:
                while new != other:
                    while rank[new] < rank[other]:
                        new = dominator[new]
                    while rank[other] < rank[new]:
                        other = dominator[other]
            if dominator.get(node) != new:
                dominator[node] = new
                changed = True
    return dominator, before


def loops(function):
    """The natural loops of a function as sets of indices, one for each loop header."""
    code = function.instructions
    if not code:
        return []
    after = _successors(code)
    dominator, before = _dominators(after)

    def dominates(head, node):
        while node != head and node != 0:
            node = dominator[node]
        return node == head

    bodies = {}
    for latch in dominator:
        for head in after[latch]:
            if dominates(head, latch):
                body, work = bodies.setdefault(head, {head}), [latch]
                while work:
                    node = work.pop()
                    if node not in body:
                        body.add(node)
                        work.extend(before[node])
    return list(bodies.values())


def innermost_loops(function):
    bodies = loops(function)
    return [Loop(function, [function.instructions[i] for i in sorted(body)]) for body in bodies
            if not any(other < body for other in bodies)]
