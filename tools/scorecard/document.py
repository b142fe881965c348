"""The score card as a document."""

import re
import textwrap

import measure

HEAD = """# Accuracy

How well each built-in array finds a talker, by simulation; made by `scripts/scorecard`, which gives
the same figures again. `voxloc sweep` gives them for any other array, room or voice.

## How the figures come about

- **Talkers.** {generator} random places for the test generator, {places} for everything else, the
  same ones each time. They are drawn evenly over azimuth, elevation and range: the inner 70 % of
  the angles that the array searches, azimuths up to 60 and elevations up to 30 degrees, 1 to 5 m.
  Most lie between points of the grid. *Whole search* are talkers at all angles that the array
  searches: the azimuth is looked up as if the talker were at the array's height, which is off by
  degrees where both angles are large. For foxglove, which cannot tell elevations, they are at the
  array's height. At each place the clip of a woman's voice plays for 48 frames (2 s); the talker
  then jumps to the next, talking on. After ten places the tracker starts anew. Two seconds without
  a talker come before the first and after the last of the ten.
- **Sounds.** The *test generator* delays by whole samples and does nothing else. The *free field*
  has exact delays and sound that fades with the distance; no noise, no walls. The *rooms* are 6 x 5
  x 3 m with the array half a metre before the middle of a wall (0.25 m aside), 1.2 m high; their
  echoes are simulated by image sources, and each room's reflection is chosen so that the energy
  falls by 60 dB in the stated time (RT60). Noise comes from all directions alike, falls by 3 dB an
  octave, and has the stated mean power below the talker with echoes.
- **Errors** are differences of angles, wrapped, and of ranges. *Voice on* are frames with the voice
  flag from the 25th after a jump on: what a user looks at. *At all times* is every frame with an
  estimate since the first place, those of the jumps and of the silence after the tenth place among
  them. Each cell gives the median, what 90 % of the errors do not exceed, and the share of
  gross ones, above 15 degrees.
- **What simulation leaves out:** a mouth that points somewhere, microphones with a front and a
  case, people and furniture, walls that swallow more of the high sounds, the device's loudspeaker.

To reproduce: `scripts/scorecard` (the card), `scripts/scorecard --reduced` (what the tests check),
`voxloc sweep --array aster --room 6,5,3 --rt60 0.5 --snr 20` (one cell of it).
Whether an array is sound: see [doctor.md](doctor.md).
"""


def wrapped(text):
    """Paragraphs of 100 columns; tables, headings and list items' starts stay as they are."""
    parts = []
    for part in text.split("\n\n"):
        if part.startswith("- "):
            items = part.split("\n- ")
            items = [items[0][2:], *items[1:]]
            parts.append("\n".join(textwrap.fill(" ".join(item.split()), 100,
                                                 initial_indent="- ", subsequent_indent="  ",
                                                 break_on_hyphens=False) for item in items))
        elif part.lstrip().startswith(("|", "#")):
            parts.append(part)
        else:
            end = "\n" if part.endswith("\n") else ""
            parts.append(textwrap.fill(" ".join(part.split()), 100, break_on_hyphens=False) + end)
    return "\n\n".join(parts)


def number(value, digits=1):
    return "∞" if value is None else f"{value:.{digits}f}"


def percent(value, digits=0):
    return "-" if value is None else f"{100 * value:.{digits}f} %"


def table(header, rows):
    lines = ["| " + " | ".join(header) + " |", "|" + "---|" * len(header)]
    lines += ["| " + " | ".join(row) + " |" for row in rows]
    return "\n".join(lines) + "\n"


def by_condition(card, conditions, cell, first=None):
    """A row a product, a column a condition."""
    header = ["Array"] + ([first[0]] if first else []) + [c.title for c in conditions]
    rows = []
    for product in measure.PRODUCTS:
        row = [product] + ([first[1](card["generator"][product])] if first else [])
        rows.append(row + [cell(card[c.name][product]) for c in conditions])
    return table(header, rows)


def angles(kind, what):
    def cell(figures):
        spread = figures[kind][what]
        if not spread["count"]:
            return "-"
        return (f"{number(spread['median'], 2)} / {number(spread['p90'])} / "
                f"{percent(spread['gross'], 1)}")
    return cell


def ranges(kind):
    def cell(figures):
        spread = figures["frame_voice"][kind]
        if not spread["count"]:
            return "-"
        return f"{number(spread['median'], 2)} / {number(spread['p90'])}"
    return cell


def within(what, share):
    return lambda figures: percent(figures["frame_voice"][what][share])


def azimuths(card):
    step = ("told apart", lambda f: f"{f['geometry']['azimuth_step']:.2f}")
    parts = ["## Azimuth\n\nDegrees: median / 90 % / share above 15. *Told apart* is what the "
             "geometry resolves at these\nplaces: one lag of the pairs, or a step of the grid if "
             "that is more (median).\n\n### Single frames, voice on\n\n",
             by_condition(card, measure.ALL, angles("frame_voice", "azimuth"), step)]
    for kind, title in (("half_second_voice", "Half-second medians, voice on"),
                        ("frame_always", "Single frames, at all times"),
                        ("half_second_always", "Half-second medians, at all times")):
        parts.append(f"\n### {title}\n\n" + by_condition(card, measure.ALL,
                                                         angles(kind, "azimuth")))
    parts.append("\n### Within half a degree, and within one degree\n\nSingle frames, voice on.\n\n")
    parts.append(by_condition(card, measure.ALL, lambda f: within("azimuth", "within_0.5")(f)
                              + " / " + within("azimuth", "within_1")(f)))
    return "".join(parts)


def elevations(card):
    step = ("told apart", lambda f: number(f["geometry"]["elevation_step"], 2)
            if f["geometry"]["has_elevation"] else "no pairs")
    none = [p for p in measure.PRODUCTS if not card["generator"][p]["geometry"]["has_elevation"]]
    return ("## Elevation\n\nDegrees: median / 90 % / share above 15; single frames, voice on. "
            f"{' and '.join(none)} has no pairs that\ntell it: the elevation of its results means "
            "nothing.\n\n"
            + by_condition(card, measure.ALL, angles("frame_voice", "elevation"), step))


def range_part(card):
    step = ("metres a lag", lambda f: number(f["geometry"]["metres_per_lag"], 2))
    told = [f"{p} {card['generator'][p]['geometry']['range_told_to']:.1f} m"
            for p in measure.PRODUCTS]
    text = ("## Range\n\nMetres: median / 90 %; single frames, voice on. A range can be told where "
            "a metre changes the\nlags by one or more. Straight ahead that is up to "
            + ", ".join(told[:4]) + ",\n" + ", ".join(told[4:]) + "; aside less. Beyond, a range "
            "is a guess.\n\n")
    text += by_condition(card, measure.ALL, ranges("range"), step)
    text += "\n### Where the geometry tells it\n\n"
    share = ("share of places", lambda f: percent(f["geometry"]["range_told_share"]))
    text += by_condition(card, measure.ALL, ranges("range_near"), share)
    text += "\n### Within half a metre\n\n"
    return text + by_condition(card, measure.ALL, within("range", "within_0.5"))


def found(card):
    def cell(figures):
        after = figures["found_after"]
        return f"{number(after['median'], 0)} / {number(after['p90'], 0)} / {percent(after['never'])}"
    return ("## After a jump\n\nFrames until three in a row are within 5 degrees of the new "
            "azimuth: median / 90 % / share of jumps\nthat are never followed in 48 frames.\n\n"
            + by_condition(card, measure.ALL, cell))


def voices(card):
    def cell(name):
        def of(figures):
            return f"{percent(figures[name]['hits'])} / {percent(figures[name]['false_alarms'])}"
        return of
    return ("## Voice flags\n\nShare of the frames with a talker in which the flag is on / share "
            "of the frames without one for 1.5 s\nor more in which it is on, too; silence is "
            "digital with the test generator and in the free field. The time-domain flag only "
            "gates what the tracker learns from and is on nearly always: look at the other one."
            "\n\n### Frequency-domain\n\n"
            + by_condition(card, measure.ALL, cell("voice")) + "\n### Time-domain\n\n"
            + by_condition(card, measure.ALL, cell("td_voice")))


def curve(card, condition):
    """A row a product, a column a bin of quality."""
    bins = [row["quality"] for row in card[condition.name]["aster"]["quality_bins"]]
    rows = []
    for product in measure.PRODUCTS:
        cells = [product]
        for row in card[condition.name][product]["quality_bins"]:
            cells.append(f"{number(row['median'])} / {percent(row['gross'])}"
                         if row["share"] and row["share"] >= 0.01 else "")
        rows.append(cells)
    header = ["Array"] + [f"{low:.2f} to {high:.2f}" for low, high in zip(bins, bins[1:])]
    keep = [i for i in range(len(bins)) if any(row[i + 1] for row in rows)]
    header.append(f"{bins[-1]:.2f} on")
    return table([header[0]] + [header[i + 1] for i in keep],
                 [[row[0]] + [row[i + 1] for i in keep] for row in rows])


def curves(card):
    text = ("## Does quality mean something?\n\nThe quality that the tracker states against the "
            "azimuth error observed: median degrees / share above\n15 degrees of the frames with "
            "a quality in the column's span; single frames, voice on. Spans with less\nthan 1 % of "
            "the frames are left empty.\n")
    for condition in measure.ALL:
        text += f"\n### {condition.title}\n\n" + curve(card, condition)
    return text


WANTED = 5.0  # degrees that 90 % of the kept frames are to stay within
LEAST_KEPT = 0.10  # of the frames


def recommended(figures):
    """The lowest threshold that does; else the one with the best 90 % that keeps enough."""
    rows = [row for row in figures["quality_thresholds"] if (row["share"] or 0) >= LEAST_KEPT]
    good = [row for row in rows if row["p90"] is not None and row["p90"] <= WANTED]
    if good:
        return good[0], True
    return min(rows, key=lambda row: 1e9 if row["p90"] is None else row["p90"]), False


def thresholds(card):
    def cell(figures):
        row, reaches = recommended(figures)
        before = figures["quality_thresholds"][0]
        return (f"{'' if reaches else '('}{row['quality']:.2f}{'' if reaches else ')'}: "
                f"{percent(row['share'])}, {number(before['p90'])} → {number(row['p90'])}")
    return (f"## Thresholds of quality\n\nFor users of the result: the lowest quality from which on "
            f"90 % of the frames are within {WANTED:.0f} degrees of\nazimuth, the share of frames "
            "kept, and what 90 % stay within before → after. In brackets where no\nthreshold that "
            f"keeps {percent(LEAST_KEPT)} of the frames gets there: the one that comes nearest. "
            "Single frames, voice on.\n\n" + by_condition(card, measure.ALL, cell)
            + "\nFor a room that is not known, take the one for RT60 0.5 s at 20 dB.\n")


def written(card, places, generator_places):
    parts = [HEAD.format(places=places, generator=generator_places), azimuths(card),
             elevations(card), range_part(card), found(card), voices(card), curves(card),
             thresholds(card)]
    return re.sub("\n{3,}", "\n\n", wrapped("\n".join(parts))).rstrip("\n") + "\n"
