#!/usr/bin/env python3
"""The score card: prints the document, or checks a reduced card against its limits.

--program [EMULATOR ...] PROGRAM -- [--reduced LIMITS [--renew]] [--extra "SWEEP OPTIONS"]
"""

import argparse
import json
import os
import shlex
import sys

import document
import measure

PLACES, GENERATOR_PLACES = 100, 200
BY_GENERATOR = [measure.GENERATOR, measure.WHOLE]
REDUCED_PLACES = 20
REDUCED = [measure.GENERATOR, measure.room(0.3, 20)]

# What is guarded, and how much worse than measured it may be: a share, and something on top.
GUARDED = {
    "azimuth median": (1.10, 0.02),
    "azimuth 90 %": (1.10, 0.1),
    "azimuth gross": (1.10, 0.01),
    "elevation median": (1.10, 0.02),
    "range median": (1.10, 0.02),
    "found after": (1.10, 1.0),
    "voice missed": (1.10, 0.005),
}


def guarded_figures(figures):
    errors = figures["frame_voice"]
    found = {
        "azimuth median": errors["azimuth"]["median"],
        "azimuth 90 %": errors["azimuth"]["p90"],
        "azimuth gross": errors["azimuth"]["gross"],
        "elevation median": errors["elevation"]["median"],
        "range median": errors["range"]["median"],
        "found after": figures["found_after"]["median"],
        "voice missed": 1.0 - figures["voice"]["hits"],
    }
    if not figures["geometry"]["has_elevation"]:
        del found["elevation median"]
    return found


def limits_of(card):
    limits = {}
    for condition, products in card.items():
        limits[condition] = {}
        for product, figures in products.items():
            limits[condition][product] = {
                name: round(value * GUARDED[name][0] + GUARDED[name][1], 3)
                for name, value in guarded_figures(figures).items()}
    return limits


def losses(card, limits):
    """What is beyond its limit; what is not there or not a number is, too."""
    found = []
    for condition, products in limits.items():
        for product, guarded in products.items():
            figures = guarded_figures(card[condition][product])
            for name, limit in guarded.items():
                value = figures.get(name)
                if value is None or not value <= limit:
                    found.append(f"{product}, {condition}: {name} is {value}, more than {limit}")
    return found


def check(program, arguments):
    card = measure.card(program, REDUCED, lambda _: REDUCED_PLACES, extra=arguments.extra)
    if arguments.renew:
        with open(arguments.reduced, "w", encoding="utf-8") as file:
            file.write(json.dumps(limits_of(card), indent=1) + "\n")
        return 0
    with open(arguments.reduced, encoding="utf-8") as file:
        limits = json.load(file)
    if set(limits) != set(card) or any(set(limits[c]) != set(card[c]) for c in card):
        print("the limits are not those of this card; scripts/scorecard --renew")
        return 1
    lost = losses(card, limits)
    count = sum(len(guarded) for products in limits.values() for guarded in products.values())
    print("\n".join(lost) or f"{count} figures are within their limits")
    return 1 if lost else 0


def program_words():
    end = sys.argv.index("--")
    return sys.argv[2:end], sys.argv[end + 1:]


def main():
    program, words = program_words()
    parser = argparse.ArgumentParser()
    parser.add_argument("--reduced", metavar="LIMITS")
    parser.add_argument("--renew", action="store_true")
    parser.add_argument("--extra", type=shlex.split, default=[])
    arguments = parser.parse_args(words)
    if arguments.reduced:
        return check(program, arguments)
    card = measure.card(
        program, measure.ALL,
        lambda condition: GENERATOR_PLACES if condition in BY_GENERATOR else PLACES,
        extra=arguments.extra,
        progress=lambda text: print(text, file=sys.stderr, flush=True))
    kept = os.environ.get("VOXLOC_SCORECARD_JSON")
    if kept:
        with open(kept, "w", encoding="utf-8") as file:
            json.dump(card, file)
    print(document.written(card, PLACES, GENERATOR_PLACES), end="")
    return 0


if __name__ == "__main__":
    sys.exit(main())
