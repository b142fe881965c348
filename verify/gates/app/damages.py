"""Every damage and misuse ends with one clear line and the right status, and what was computed
before is kept.

--document is the list of these messages for users: it must hold what this script finds.
--write renews it.
"""

import argparse
import dataclasses
import os
import pathlib
import subprocess
import sys
import tempfile

import inputs

RECORD = 8 + inputs.ASTER_CHANNELS * inputs.FRAME * 4


@dataclasses.dataclass
class Case:
    """What is done, with which words, and what comes of it."""
    what: str
    arguments: list
    message: str  # after "voxloc: "; DIR stands for the folder of the inputs
    status: int = 1
    rows: int = -1  # frames that are kept; -1: no run at all
    stdin: bytes = b""


def make_inputs(folder):
    """The files that the cases name."""
    whole = inputs.recording(3)
    write = lambda name, data: (folder / name).write_bytes(data)
    write("good.rec", whole)
    write("torn.rec", whole[:4 + 2 * RECORD + 1000])
    write("bits.rec", whole[:4 + RECORD] + b"\x28\0\0\0" + whole[8 + RECORD:])
    write("header.rec", whole[:3])
    write("channels.rec", bytes([172, 1, 0, 12]))
    write("product.rec", inputs.recording(1, product=3))
    write("own.rec", inputs.recording(1, product=255))
    write("empty.rec", b"")
    write("other.bin", b"This is a text and no sound.\n")
    write("two.raw", b"\1\2" * 2 * inputs.FRAME + b"\1\2\3")
    inputs.write_wav(folder / "six.wav", 6, 5000)
    inputs.write_wav(folder / "two.wav", 2, 5000)
    inputs.write_wav(folder / "cd.wav", 6, 5000, 44100)
    write("torn.wav", (folder / "six.wav").read_bytes()[:-3000])
    write("far.csv", b"from,to\n0,1\n2,x\n")
    write("list.json", b"[1, 2]")
    write("text.json", b"microphones")
    write("typo.json", b'{"voxloc_array": 1, "microfones": []}')
    write("pair.json", b'{"voxloc_array": 1, "microphones": [[0,0,0],[0,0.1,0]], '
                       b'"azimuth_pairs": [[0, 5]]}')
    flags = "voice,td_voice,sound,far_end,noise_input,ultrasound,position_valid"
    names = f"frame,sample,time,azimuth,elevation,range,quality,estimate,{flags},ultrasound_level"
    run = f'# {{"type":"header","schema":1}}\n{names}\n0,0,0.0,1,2,3,0.5,0,0,0,0,0,0,0,1,-90\n'
    write("cut.csv", run.encode())
    write("off.csv", run.replace("0.5,0", "half,0").encode())


def locate(*words):
    """What a case that locates is called with."""
    return ["locate", *words, "-f", "csv"]


def cases():
    """The list that users see."""
    return [
        Case("a recording that ends inside a frame", locate("DIR/torn.rec"),
             f"DIR/torn.rec: damaged at byte {4 + 2 * RECORD + 1000}: the file ends inside frame 2",
             rows=2),
        Case("a frame with impossible bits", locate("DIR/bits.rec"),
             f"DIR/bits.rec: damaged at byte {4 + RECORD}: frame 1 has 40 significant bits, "
             "1 to 32 are possible", rows=1),
        Case("a recording without a whole header", locate("DIR/header.rec"),
             "DIR/header.rec: ends at byte 3, inside the header of a recording"),
        Case("a recording with too many channels", locate("DIR/channels.rec"),
             "DIR/channels.rec: byte 3: a recording has 1 to 8 channels, not 12"),
        Case("a recording of an unknown product", locate("DIR/product.rec"),
             "no product has the number 3"),
        Case("a recording of an array of one's own, which is not given", locate("DIR/own.rec"),
             "DIR/own.rec: was made with an array of its own; give its array with --array", 2),
        Case("a file that is neither recording nor sound", locate("DIR/other.bin", "-a", "aster"),
             "DIR/other.bin: is neither a recording nor a sound file (Format not recognised.)"),
        Case("a pipe that is no recording", locate("-"),
             "standard input: byte 0: this is not a recording (for raw samples give --raw)",
             stdin=b"sound?"),
        Case("an empty file", locate("DIR/empty.rec"), "DIR/empty.rec: is empty"),
        Case("an empty pipe", locate("-"), "standard input: is empty"),
        Case("a directory", locate("DIR"), "DIR is a directory"),
        Case("a file that is not there", locate("DIR/none.wav"),
             "cannot open DIR/none.wav: No such file or directory"),
        Case("a WAV that ends early", locate("DIR/torn.wav", "-a", "aster"),
             "DIR/torn.wav: damaged at byte 57044: the file ends, 3000 bytes of sound are missing",
             rows=2),
        Case("raw samples that end inside a sample",
             locate("DIR/two.raw", "-a", "foxglove", "--raw", "S16", "--raw-channels", "4"),
             "DIR/two.raw: damaged at byte 8195: the samples end before all 4 channels have theirs",
             rows=0),
        Case("raw samples that end inside a frame",
             locate("-", "-a", "foxglove", "--raw", "S16", "--raw-channels", "4"),
             "standard input: the last 100 samples fill no frame and are left out", 0, 1,
             b"\1\2" * 4 * (inputs.FRAME + 100)),
        Case("another rate with --strict", locate("DIR/cd.wav", "-a", "aster", "--strict"),
             "DIR/cd.wav: runs at 44100 Hz; --strict takes 48000 Hz alone"),
        Case("a sound file without an array", locate("DIR/six.wav"),
             "DIR/six.wav: says nothing of its microphones; give its array with --array", 2),
        Case("an array that is not there", locate("DIR/six.wav", "-a", "astra"),
             "no array is called 'astra': there are aster, bramble, cinder, elmwood, dovetail, "
             "foxglove, gannet, and files (NAME.json)"),
        Case("channels that do not fit", locate("DIR/two.wav", "-a", "aster"),
             "DIR/two.wav: has 2 channels, array aster has 6; choose and order them with "
             "--channels"),
        Case("a channel that the input lacks",
             locate("DIR/two.wav", "-a", "aster", "--channels", "0,1,0,1,0,2"),
             "DIR/two.wav: --channels names channel 2, the input has 0 to 1"),
        Case("channels that are no numbers", locate("DIR/two.wav", "--channels", "a,b"),
             "--channels takes channels from 0 on with commas between, not 'a,b'", 2),
        Case("far-end times that are none", locate("DIR/good.rec", "--far-end", "DIR/far.csv"),
             "DIR/far.csv: line 3: must be two times in seconds, from,to, not '2,x'"),
        Case("an array file that is no JSON", locate("DIR/six.wav", "-a", "DIR/text.json"),
             "DIR/text.json: is not JSON from byte 1 on"),
        Case("an array file that is no object", locate("DIR/six.wav", "-a", "DIR/list.json"),
             "DIR/list.json: must be an object in braces"),
        Case("an array file with an unknown field", locate("DIR/six.wav", "-a", "DIR/typo.json"),
             "DIR/typo.json: 'microfones': is not a field here"),
        Case("an array file with an impossible pair", locate("DIR/six.wav", "-a", "DIR/pair.json"),
             "DIR/pair.json: azimuth_pairs[0][1]: 5 is not one of the channels"),
        Case("a full disk", locate("DIR/good.rec", "-o", "-", ">/dev/full"),
             "cannot write standard output: No space left on device"),
        Case("an output folder that is not there", locate("DIR/good.rec", "-o", "DIR/no/run.csv"),
             "cannot write DIR/no/run.csv: No such file or directory"),
        Case("a page on a full disk", locate("DIR/good.rec", "--report", "/dev/full"),
             "cannot write /dev/full: No space left on device"),
        Case("a page and records in one place", locate("DIR/good.rec", "--report", "-"),
             "--report and the records go to the same place; give one another file", 2),
        Case("sound without a page", locate("DIR/good.rec", "--embed-audio"),
             "--embed-audio needs a page to go into; give its file with --report", 2),
        Case("a tolerance without a run", locate("DIR/good.rec", "--tolerance", "1"),
             "--tolerance needs a run to compare with; give it with --compare", 2),
        Case("a run to compare with that is none", locate("DIR/good.rec", "--compare",
                                                          "DIR/other.bin"),
             "DIR/other.bin: line 1: is not the header of a run; voxloc locate writes one as CSV "
             "or JSON lines"),
        Case("a run to compare with that was cut off", locate("DIR/good.rec", "--compare",
                                                              "DIR/cut.csv"),
             "DIR/cut.csv: line 3: is the last one; the run was cut off before its summary",
             rows=3),
        Case("a run to compare with that is damaged", locate("DIR/good.rec", "--compare",
                                                             "DIR/off.csv"),
             "DIR/off.csv: line 3: column quality is 'half', not a number"),
    ]


def cases_without_extras():
    """The same for a program that was built for a board."""
    left_out = lambda what: f"this voxloc was built for a board, without {what}"
    here = [case for case in cases() if case.what != "a page on a full disk"]
    several = left_out("--output-dir and several files in one call")
    return here + [
        Case("a page", locate("DIR/good.rec", "--report", "DIR/x.html"), left_out("--report"), 2),
        Case("several files", locate("DIR/good.rec", "DIR/six.wav"), several, 2),
        Case("a folder of runs", locate("DIR/good.rec", "--output-dir", "DIR/runs"), several, 2),
        Case("merging", ["merge", "DIR/runs", "-o", "DIR/all.jsonl"], left_out("merge"), 2),
        Case("sweeping", ["sweep", "--array", "aster"], left_out("sweep"), 2),
    ]


def run(program, folder, case):
    """Gives (status, standard output, standard error)."""
    words = [word.replace("DIR", str(folder)) for word in case.arguments]
    full = ">/dev/full" in words
    words = [word for word in words if word != ">/dev/full"]
    with open("/dev/full", "wb") as disk:
        done = subprocess.run([*program, *words], input=case.stdin, check=False,
                              stdout=disk if full else subprocess.PIPE, stderr=subprocess.PIPE,
                              timeout=60)
    return done.returncode, (done.stdout or b"").decode(), done.stderr.decode()


def check(program, folder, case):
    """Prints what differs; gives whether nothing does."""
    status, output, error = run(program, folder, case)
    expected = "voxloc: " + case.message.replace("DIR", str(folder)) + "\n"
    rows = sum(1 for line in output.splitlines() if line[:1].isdigit())
    fine = status == case.status and error == expected and rows == max(case.rows, 0)
    if case.rows >= 0:
        fine = fine and '"type":"summary"' in output
    if not fine:
        print(f"{case.what}: status {status}, {rows} rows, {error!r};\n"
              f"    expected {case.status}, {case.rows} rows, {expected!r}")
    return fine


def table():
    """The document."""
    lines = ["# Damage and misuse", "",
             "What `voxloc` says, each in one line on standard error after `voxloc: `, and its exit",
             "status. What was computed before the damage is kept: the run ends with its summary.",
             "", "| | Message | Status |", "|---|---|---|"]
    for case in cases():
        message = case.message.replace("DIR/", "")
        message = "DIR is a directory" if message.startswith("DIR ") else message
        lines.append(f"| {case.what} | {message} | {case.status} |")
    return "\n".join(lines) + "\n"


def main():
    """Runs all cases."""
    parser = argparse.ArgumentParser()
    parser.add_argument("--document", type=pathlib.Path, required=True)
    parser.add_argument("--write", action="store_true")
    parser.add_argument("--without-extras", action="store_true")
    options = inputs.options(parser)
    program = inputs.program()
    if options.write:
        options.document.write_text(table())
    os.environ["LC_ALL"] = "C"
    selected = cases_without_extras() if options.without_extras else cases()
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        make_inputs(folder)
        fine = [check(program, folder, case) for case in selected]
    if options.document.read_text() != table():
        print(f"{options.document.name} holds other messages; --write renews it")
        fine.append(False)
    sys.exit(0 if all(fine) else 1)


main()
