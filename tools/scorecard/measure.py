"""Sweeps of the score card, by the program."""

import concurrent.futures
import json
import os
import subprocess

ROOM = ["--room", "6,5,3"]
PRODUCTS = ["aster", "bramble", "cinder", "dovetail", "elmwood", "foxglove", "gannet"]


class Condition:
    """What is heard."""

    def __init__(self, name, title, options):
        self.name, self.title, self.options = name, title, options


def room(rt60, snr):
    return Condition(f"room{rt60}at{snr}", f"RT60 {rt60} s, {snr} dB",
                     [*ROOM, "--rt60", str(rt60), "--snr", str(snr)])


GENERATOR = Condition("generator", "test generator", [])
WHOLE = Condition("whole", "test generator, whole search", ["--whole-search"])
FREE_FIELD = Condition("free", "free field", ROOM)
ROOMS = [room(rt60, snr) for rt60 in (0.3, 0.5, 0.8) for snr in (20, 5)]
ALL = [GENERATOR, WHOLE, FREE_FIELD, *ROOMS]


def sweep(program, product, condition, places, extra=()):
    """The figures of one product."""
    words = [*program, "sweep", "--array", product, "--places", str(places), "--jobs", "1",
             *condition.options, *(extra if "--room" in condition.options else ()), "--json", "-"]
    done = subprocess.run(words, capture_output=True, text=True)
    if done.returncode != 0:
        raise SystemExit(f"{' '.join(words)}: {done.stderr}")
    return json.loads(done.stdout)[0]


def card(program, conditions, places_of, jobs=None, extra=(), progress=None):
    """{condition: {product: figures}}. The longest work comes first."""
    found = {condition.name: {} for condition in conditions}
    work = [(condition, product) for condition in reversed(conditions) for product in PRODUCTS]
    with concurrent.futures.ThreadPoolExecutor(jobs or os.cpu_count()) as pool:
        runs = {pool.submit(sweep, program, product, condition, places_of(condition), extra):
                (condition, product) for condition, product in work}
        for count, run in enumerate(concurrent.futures.as_completed(runs), 1):
            condition, product = runs[run]
            found[condition.name][product] = run.result()
            if progress:
                progress(f"{count}/{len(work)} {product}, {condition.title}")
    return found
