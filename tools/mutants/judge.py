"""Puts mutants into private copies of the tree, builds what changes, and runs what covers it.

A mutant goes through the kinds of build that its source is meant for. In each, the suites nearest
to the source run first; only what they leave alive meets all others. A program that comes out byte
for byte as before does not run: nothing in it has changed.
"""

import dataclasses
import os
import pathlib
import re
import resource
import shutil
import signal
import subprocess
import sys
import threading
import time
import xml.etree.ElementTree

from tree import copy_tree

SECONDS_TO_BUILD = 600
SLOW_SECONDS = 0.25  # tests that take longer run after the others
MEMORY = 6 << 30  # bytes that a mutant may ask for
FILE = 4 << 30  # bytes; the tests make one of 2 GiB with nothing in it
# Holds limits of time against the library and is no suite of what it computes.
NO_SUITES = {"verify_countedFrames", "verify_lanes"}


@dataclasses.dataclass(frozen=True)
class Mutant:
    name: str
    fault: str
    file: pathlib.Path
    line: int
    content: str  # of the whole file
    before: str = ""  # the line that a drawn mutant changes, and what becomes of it
    after: str = ""


@dataclasses.dataclass
class Verdict:
    kind: str  # caught, survived, same program, does not build
    why: str = ""
    seconds: float = 0.0


# Quick to compile, and no warning or missing optimisation makes a mutant fail to build.
SETTINGS = ["-G", "Ninja", "-D", "CMAKE_BUILD_TYPE=Release", "-D", "CMAKE_C_FLAGS_RELEASE=-O1",
            "-D", "CMAKE_CXX_FLAGS_RELEASE=-O1", "-D", "VOXLOC_VERIFY=ON", "-D", "VOXLOC_APP=OFF",
            "-D", "VOXLOC_STRICT=OFF"]
KINDS = {
    "desk": [],
    "scalar": ["-D", "VOXLOC_SIMD_SCALAR=ON"],
    "board": ["-D", "CMAKE_TOOLCHAIN_FILE=cmake/toolchains/armhf.cmake"],
}
# The first pattern that a path matches says which builds the source is meant for.
KINDS_OF_SOURCES = [
    (r"simdScalar\.h", ["scalar"]),
    (r"simdNeon\.h", ["board"]),
    (r"", ["desk"]),
]
LAYER = ["simd", "simd_avx", "simd_avx512", "cfft", "sp_fir"]
# And these, which suites lie nearest; a suite that is named as the source comes before them.
NEAREST = [
    (r"x86/simdAvx512", ["simd_avx512"]),
    (r"x86/simdAvx", ["simd_avx", "simd_avx512"]),
    (r"dsplib/(simd|x86)/simd", LAYER),
    (r"dsplib/.*cfft", ["cfft"]),
    (r"dsplib/.*sp_fir", ["sp_fir"]),
    (r"platform/console/", ["console"]),
    (r"platform/audio/", ["audunittest"]),
    (r"platform/assertion/", ["assertion"]),
    (r"track/test/", ["testChecks", "testRegistration", "runAllUnitTests", "testFigures"]),
    (r"UltraSound", ["ultraSound"]),
    (r"track/realFft", ["realFft"]),
    (r"track/noiseLevel", ["noiseLevel"]),
    (r"track/timeDomain", ["timeDomainVad"]),
    (r"unittestGenerator", ["generator", "clips"]),
    (r"track/", ["tracker", "tracker_memory"]),
]
# What is written once and compiled for several widths meets its suites at each of them.
SEVERAL_WIDTHS = r"dsplib/|track/(realFftSplit|\w+Kernels)"
# The other kinds of build are there for a back end: the layer and what is built on it directly.
SUITES_OF_OTHERS = {"verify_simd", "verify_cfft", "verify_sp_fir", "verify_realFft",
                    "verify_phaseTransform", "verify_noiseLevel"}


def kinds_of(file):
    return next(kinds for pattern, kinds in KINDS_OF_SOURCES if re.search(pattern, file.as_posix()))


def nearest_suites(file):
    listed = next((names for pattern, names in NEAREST if re.search(pattern, file.as_posix())), [])
    return ["verify_" + name for name in dict.fromkeys([file.stem, *listed])]


def runs_here(kind):
    """Whether this machine can run what such a build, or a suite for such vectors, makes."""
    if kind == "board":
        return bool(shutil.which("arm-linux-gnueabihf-g++") and shutil.which("qemu-arm-static"))
    processor = pathlib.Path("/proc/cpuinfo")
    flags = processor.read_text() if processor.exists() else ""
    return {"avx": " avx ", "avx512": " avx512f "}.get(kind, "") in flags


def suits(kind, target):
    """Whether a suite has its turn in such a build on this machine."""
    if target in NO_SUITES or not runs_here(target.removeprefix("verify_simd_")):
        return False
    return kind == "desk" or target in SUITES_OF_OTHERS


def lanes_of(file):
    """Widths of vectors to run at; None is the widest of the machine."""
    return (None, 4, 8) if re.search(SEVERAL_WIDTHS, file.as_posix()) else (None,)


def limited():
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
    resource.setrlimit(resource.RLIMIT_FSIZE, (FILE, FILE))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


RUNNING = set()


def end_at(number, _):
    """For a signal: ends what runs, which has sessions of its own, and this program."""
    for process in list(RUNNING):
        os.killpg(process.pid, signal.SIGKILL)
    os._exit(128 + number)


def end_with_what_runs():
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, end_at)


def run(command, folder, seconds, limits=None, lanes=None):
    """Output and status; a status of None when the time was up."""
    process = subprocess.Popen(command, cwd=folder, stdin=subprocess.DEVNULL, text=True,
                               errors="replace", stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                               start_new_session=True, preexec_fn=limits,
                               env={**os.environ, "SP_SIMD_LANES": str(lanes or "")})
    RUNNING.add(process)
    try:
        return process.communicate(timeout=seconds)[0], process.returncode
    except subprocess.TimeoutExpired:
        return "", None
    finally:
        RUNNING.discard(process)
        if process.poll() is None:  # and what it started, for instance for a test of a crash
            os.killpg(process.pid, signal.SIGKILL)
            process.communicate()


class Suite:
    """A program of tests, as it is without a fault."""

    def __init__(self, build, target, program):
        self.build = build
        self.target = target
        self.program = program
        self.slow = []
        self.content = None

    def command(self, *options):
        return [*self.build.emulator, str(self.program), "--gtest_brief=1", *options]

    def learn(self):
        """Runs it without a fault: how long its tests take."""
        report = self.build.folder / "report.xml"
        report.unlink(missing_ok=True)
        for _ in range(2):  # a machine that is busy may once be too slow for a test
            begin = time.monotonic()
            output, status = run(self.command(f"--gtest_output=xml:{report}"),
                                 self.program.parent, 900, self.build.limits)
            if status == 0:
                break
        else:
            raise RuntimeError(f"{self.target} fails without any fault:\n{output[-3000:]}")
        self.seconds = time.monotonic() - begin
        cases = xml.etree.ElementTree.parse(report).iter("testcase") if report.exists() else ()
        for case in cases:
            if float(case.get("time", 0)) > SLOW_SECONDS:
                self.slow.append(f"{case.get('classname')}.{case.get('name')}")
        self.content = self.program.read_bytes()

    def changed(self):
        return self.program.read_bytes() != self.content

    def failure(self, lanes):
        """What fails on vectors of so many lanes, or nothing."""
        filters = [[]]
        if self.slow and self.seconds > 2:
            names = ":".join(self.slow)
            filters = [[f"--gtest_filter=-{names}"], [f"--gtest_filter={names}"]]
        for chosen in filters:
            output, status = run(self.command("--gtest_fail_fast", *chosen), self.program.parent,
                                 10 + 8 * self.seconds, self.build.limits, lanes)
            if status is None:
                return f"{self.target}: does not end"
            if status != 0:
                failed = re.search(r"\[  FAILED  \] (\S+?)[, ]*(?:where .*)?(?:\(|$)", output,
                                   re.MULTILINE)
                return f"{self.target}: {failed[1] if failed else f'status {status}'}"
        return None


class Build:
    """One kind of build in a private copy of the tree."""

    def __init__(self, copy, kind):
        self.copy = copy
        self.kind = kind
        self.folder = copy / "build" / kind
        board = kind == "board"
        self.emulator = ["qemu-arm-static", "-L", "/usr/arm-linux-gnueabihf"] if board else []
        self.limits = None if board else limited  # the emulator maps the board's whole memory
        self.suites = {}  # of those that have run without a fault
        self.configure()

    def configure(self):
        output, status = run(["cmake", *SETTINGS, *KINDS[self.kind], "-B", str(self.folder)],
                             self.copy, SECONDS_TO_BUILD)
        if status != 0:
            raise RuntimeError(f"{self.kind}: does not configure:\n{output[-3000:]}")
        listing, _ = run(["ninja", "-C", str(self.folder), "-t", "targets", "all"], self.copy, 60)
        linked = re.findall(r"^(\S*/(verify_\w+)): CXX_EXECUTABLE_LINKER", listing, re.MULTILINE)
        self.programs = {target: self.folder / path for path, target in linked
                         if suits(self.kind, target)}

    def make(self, targets):
        return run(["ninja", "-C", str(self.folder), "-j", "1", *targets], self.copy,
                   SECONDS_TO_BUILD)

    def learn(self, targets):
        """Builds and runs these without a fault, if that has not been done."""
        missing = [target for target in targets if target not in self.suites]
        if not missing:
            return
        output, status = self.make([*missing, *self.companions(missing)])
        if status != 0:
            raise RuntimeError(f"{self.kind}: does not build:\n{output[-3000:]}")
        for target in missing:
            suite = Suite(self, target, self.programs[target])
            suite.learn()
            self.suites[target] = suite

    @staticmethod
    def companions(targets):
        """Programs that suites run."""
        return ["voxloc_unittest"] if "verify_voxloc_unittest" in targets else []


class Worker:
    """A private copy of the tree with its builds."""

    def __init__(self, folder, files):
        folder.mkdir(parents=True, exist_ok=True)
        copy_tree(files, folder)
        self.copy = folder
        self.builds = {}

    def build(self, kind):
        if kind not in self.builds:
            self.builds[kind] = Build(self.copy, kind)
        return self.builds[kind]

    def stages(self, mutant):
        """Build and suites, the nearest ones first."""
        for kind in kinds_of(mutant.file):
            if not runs_here(kind):
                continue
            build = self.build(kind)
            near = [name for name in nearest_suites(mutant.file) if name in build.programs]
            for name in near:
                yield build, [name]
            yield build, [name for name in build.programs if name not in near]

    def judge(self, mutant):
        begin = time.monotonic()
        verdict = self.verdict(mutant)
        verdict.seconds = time.monotonic() - begin
        return verdict

    def verdict(self, mutant):
        place = self.copy / mutant.file
        original = place.read_text()
        widths = lanes_of(mutant.file)
        changed = False
        try:
            for build, targets in self.stages(mutant):
                if any(target not in build.suites for target in targets):
                    place.write_text(original)
                    build.learn(targets)
                if place.read_text() != mutant.content:
                    place.write_text(mutant.content)
                output, status = build.make([*targets, *build.companions(targets)])
                if status != 0:
                    error = re.search(r"error: .*", output)
                    return Verdict("does not build", error[0] if error else output[-200:])
                for target in targets:
                    suite = build.suites[target]
                    if not suite.changed() and target != "verify_voxloc_unittest":
                        continue
                    changed = changed or target != "verify_voxloc_unittest"
                    near = len(targets) == 1 or target in SUITES_OF_OTHERS
                    for lanes in widths if near else widths[:1]:
                        failure = suite.failure(lanes)
                        if failure:
                            at = f" at {lanes} lanes" if lanes else ""
                            return Verdict("caught", f"{build.kind}{at}, {failure}")
        finally:
            if place.read_text() != original:
                place.write_text(original)
        return Verdict("survived") if changed else Verdict("same program")


def groups_of(mutants):
    """Mutants of one source stand together: nothing else is then built between two of them."""
    groups = {}
    for mutant in mutants:
        groups.setdefault((kinds_of(mutant.file)[0], mutant.file), []).append(mutant)
    # Long ones first, so that the workers end together; cut so that several may share one.
    pieces = [(kind, group[k:k + 8]) for (kind, _), group in groups.items()
              for k in range(0, len(group), 8)]
    return sorted(pieces, key=lambda piece: -len(piece[1]))


class Queue:
    """Hands out groups; a worker gets those whose build it has before it makes another."""

    def __init__(self, mutants):
        self.groups = groups_of(mutants)
        self.taken = set()
        self.lock = threading.Lock()

    def take(self, worker):
        with self.lock:
            if not self.groups:
                return []

            def cost(piece):
                kind = piece[0]
                return (kind not in worker.builds, kind in self.taken and kind != "desk")
            best = min(self.groups, key=cost)
            self.groups.remove(best)
            self.taken.add(best[0])
            return best[1]


def judge_all(mutants, workers, report):
    """Verdicts by mutant; report(mutant, verdict) is called as they come."""
    queue = Queue(mutants)
    verdicts = {}
    failures = []

    def work(worker):
        try:
            while not failures and (group := queue.take(worker)):
                for mutant in group:
                    verdict = worker.judge(mutant)
                    with queue.lock:
                        verdicts[mutant] = verdict
                        report(mutant, verdict)
        except Exception as failure:  # ends the other workers, too
            failures.append(failure)

    threads = [threading.Thread(target=work, args=(worker,)) for worker in workers]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    if failures:
        sys.exit(str(failures[0]))
    return verdicts


def make_workers(folder, files, count):
    end_with_what_runs()
    return [Worker(folder / str(k), files) for k in range(count)]
