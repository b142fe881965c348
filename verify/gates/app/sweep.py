"""voxloc sweep as a user meets it: its forms agree, its threads change nothing, it says no."""

import csv
import io
import json
import pathlib
import subprocess
import sys
import tempfile

import inputs

FEW = ["sweep", "--places", "11", "--frames", "26"]


def run(program, words):
    done = subprocess.run([*program, *words], capture_output=True, text=True)
    return done.returncode, done.stdout, done.stderr


def threads_change_nothing(program, _):
    """One thread and three give the same bytes."""
    words = [*FEW, "--array", "foxglove", "--room", "6,5,3", "--rt60", "0.15", "--snr", "10",
             "--json", "-", "--jobs"]
    one, three = run(program, [*words, "1"]), run(program, [*words, "3"])
    return one == three and one[0] == 0 and json.loads(one[1])[0]["places"] == 11, one[2]


def forms_agree(program, folder):
    """The CSV, the JSON and the text say the same."""
    csv_path, json_path = folder / "sweep.csv", folder / "sweep.json"
    status, text, error = run(program, [*FEW, "--array", "aster", "--array", "foxglove", "--csv",
                                        str(csv_path), "--json", str(json_path)])
    rows = list(csv.DictReader(io.StringIO(csv_path.read_text())))
    runs = json.loads(json_path.read_text())
    good = status == 0 and len(rows) == 8 and [one["array"] for one in runs] == ["aster",
                                                                                 "foxglove"]
    for row in rows:
        figures = next(one for one in runs if one["array"] == row["array"])[row["estimates"]]
        good = good and abs(float(row["azimuth_median"]) - figures["azimuth"]["median"]) <= 1e-4
        good = good and (row["elevation_median"] == "") == (row["array"] == "foxglove")
    shown = f"{runs[0]['frame_voice']['azimuth']['median']:.2f}"
    return good and shown in text and "no pairs tell the elevation" in text, (status, error, text)


def own_array(program, folder):
    """An array in a file is swept as the built-in one that it was printed from."""
    path = folder / "own.json"
    path.write_text(run(program, ["arrays", "elmwood", "--json"])[1])
    sweeps = [run(program, [*FEW, "--array", name, "--json", "-"]) for name in
              ("elmwood", str(path))]
    figures = [json.loads(out)[0] for _, out, _ in sweeps]
    return figures[0]["frame_voice"] == figures[1]["frame_voice"], [s[2] for s in sweeps]


def grid(program, _):
    """A grid has its product of places, less those outside of the room."""
    words = ["sweep", "--array", "aster", "--grid", "3,1,2", "--frames", "26", "--json", "-"]
    free = json.loads(run(program, words)[1])[0]["places"]
    room = json.loads(run(program, [*words, "--range", "1,6", "--room", "5,8,3", "--rt60",
                                    "0.1"])[1])[0]["places"]
    return free == 6 and room == 3, (free, room)


def voice_file(program, folder):
    """A voice must have one channel at 48 kHz."""
    mono, stereo = folder / "mono.wav", folder / "stereo.wav"
    inputs.write_wav(mono, 1, 48000)
    inputs.write_wav(stereo, 2, 4800)
    words = [*FEW, "--array", "foxglove", "--room", "6,5,3", "--voice"]
    good, bad = run(program, [*words, str(mono)]), run(program, [*words, str(stereo)])
    return (good[0] == 0 and bad[0] == 1 and bad[2].count("\n") == 1
            and "one channel at 48 kHz" in bad[2]), (good, bad)


def wrong_words(program, _):
    """What makes no sense has the status 2, a place that does not exist 1; one line each."""
    seen = []
    room = ["--array", "aster", "--room", "6,5,3"]
    for words, expected in (([], 2), (["--all", "--array", "aster"], 2), (["--all", "--snr", "5"], 2),
                            (["--all", "--grid", "1,2"], 2),
                            (["--all", "--grid", "1,2,3", "--places", "5"], 2),
                            (["--all", "--azimuth", "10,-10"], 2), (["--all", "--room", "6,5"], 2),
                            (["--array", "nobody"], 1), ([*room, "--rt60", "0.3", "--position", "7,2,1"], 1),
                            (["--array", "aster", "--room", "60,60,30", "--rt60", "0.1"], 2)):
        status, out, error = run(program, ["sweep", *words])
        if status != expected or out or error.count("\n") != 1:
            seen.append((words, status, error))
    return not seen, seen


CASES = [threads_change_nothing, forms_agree, own_array, grid, voice_file, wrong_words]


def main():
    inputs.options()
    program, failed = inputs.program(), 0
    for case in CASES:
        with tempfile.TemporaryDirectory() as folder:
            good, seen = case(program, pathlib.Path(folder))
        if not good:
            failed += 1
            print(f"failed: {case.__doc__} {seen}")
    print(f"{len(CASES) - failed} of {len(CASES)} hold")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
