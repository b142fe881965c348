#!/usr/bin/env python3
"""What voxloc doctor says of whole files, and its status for the shell."""

import argparse
import array
import json
import math
import pathlib
import subprocess
import sys
import tempfile
import wave

import inputs

FOXGLOVE = (-0.24, -0.08, 0.1, 0.28)  # metres along the array
SPEED = 348.0
PLACES = ((1.5, 0.9), (2.0, -1.0), (1.2, 0.1))  # metres ahead and along the array
SECONDS_A_PLACE = 2


def clip(path):
    """One second of speech, 16 bits."""
    with wave.open(path) as file:
        data = file.readframes(file.getnframes())
    return [int.from_bytes(data[i + 1:i + 3], "little", signed=True)
            for i in range(0, len(data), 3)]


def talk(voice):
    """What foxglove hears of a talker in three places: channels of samples."""
    channels = [[] for _ in FOXGLOVE]
    for x, y in PLACES:
        for channel, microphone in zip(channels, FOXGLOVE):
            delay = round(math.hypot(x, y - microphone) / SPEED * 48000)
            late = voice[-delay:] + voice[:-delay]
            channel.extend(late * SECONDS_A_PLACE)
    return channels


def write(path, channels):
    samples = array.array("h", [x for row in zip(*channels) for x in row])
    with wave.open(str(path), "wb") as out:
        out.setnchannels(len(channels))
        out.setsampwidth(2)
        out.setframerate(48000)
        out.writeframes(samples.tobytes())


def make_inputs(folder, voice):
    sound = talk(voice)
    write(folder / "sound.wav", sound)
    write(folder / "swapped.wav", [sound[1], sound[0], *sound[2:]])
    write(folder / "silent.wav", [[x // 200 for x in channel[:20000]] for channel in sound])
    inputs.write_wav(folder / "noise.wav", 4, 100000)
    whole = inputs.recording(3, 6, 4)
    (folder / "torn.rec").write_bytes(whole[:-1000])


CASES = (
    # words, status, what standard output holds, what standard error holds
    (["sound.wav"], 0, "sound.wav: sound (array foxglove", ""),
    (["swapped.wav"], 1, "  swapped: channels 0 and 1 are swapped", ""),
    (["swapped.wav", "--channels", "1,0,2,3"], 0, ": sound", ""),
    (["noise.wav"], 3, ": cannot tell", ""),
    (["silent.wav"], 3, "too little speech", ""),
    (["torn.rec"], 3, "the input is damaged", "the file ends inside frame 2"),
    (["none.wav"], 3, "", "cannot open none.wav"),
    (["sound.wav", "swapped.wav", "noise.wav"], 1, "noise.wav: cannot tell", ""),
    (["sound.wav", "noise.wav"], 3, "sound.wav: sound", ""),
    ([], 2, "", "files"),
    (["sound.wav", "--clock", "now"], 2, "", "--clock"),
    (["sound.wav", "--format", "csv"], 2, "", "csv"),
)


def check_cases(program, folder):
    for words, status, out, error in CASES:
        done = subprocess.run([*program, "doctor", "--array", "foxglove", *words], cwd=folder,
                              capture_output=True, text=True, check=False)
        if done.returncode != status or out not in done.stdout or error not in done.stderr or (
                not error and done.stderr):
            yield f"{words}: status {done.returncode}\n{done.stdout}{done.stderr}"


def check_json(program, folder):
    """The same from standard input, as a line of JSON in a file."""
    with open(folder / "swapped.wav", "rb") as file:
        raw = file.read()[44:]
    done = subprocess.run(
        [*program, "doctor", "-", "-a", "foxglove", "--raw", "S16", "--raw-channels", "4",
         "--format", "json", "-o", "out.json"], cwd=folder, input=raw, capture_output=True,
        check=False)
    found = json.loads((folder / "out.json").read_text(encoding="utf-8"))
    if done.returncode != 1 or found["verdict"] != "faults" or (
            [(one["fault"], one["channels"]) for one in found["findings"]]
            != [("swapped", [0, 1])]):
        yield f"json: status {done.returncode} {found}"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("clip")
    voice = clip(inputs.options(parser).clip)
    program = inputs.program()
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        make_inputs(folder, voice)
        wrong = [*check_cases(program, folder), *check_json(program, folder)]
    print("\n".join(wrong) or f"{len(CASES) + 1} runs say what they should")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
