"""`voxloc live` on pipes and on a device: ALSA's own plug-in that reads a file."""

import argparse
import os
import pathlib
import signal
import statistics
import struct
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))
import inputs

CHANNELS = 6
FRAME_BYTES = inputs.FRAME * CHANNELS * 3
RAW = ["--array", "aster", "--raw", "S24_3", "--raw-channels", str(CHANNELS)]
LATENCY_LIMIT = 5.0  # ms


class Check:
    """What every check works with."""

    def __init__(self, arguments, folder):
        self.program = inputs.program()
        self.devices = str(arguments.devices)
        # Times and memory are measured of the program as it is alone.
        self.is_measured = not arguments.sanitised and len(self.program) == 1
        self.folder = folder
        talker = [*self.program[:-1], arguments.talker]
        self.sound = subprocess.run([*talker, "aster", "2", "-30", "40"], stdout=subprocess.PIPE,
                                    check=True).stdout
        self.frames = len(self.sound) // FRAME_BYTES

    def live(self, words, sound=b"", environment=None):
        """A run to its end: status, standard output, standard error."""
        run = subprocess.run([*self.program, "live", *words], input=sound, capture_output=True,
                             timeout=60, env={**os.environ, **(environment or {})})
        return run.returncode, run.stdout.decode(), run.stderr.decode()

    def locate(self, words, sound):
        """The records that locate gives, without the heading with the input's name."""
        run = subprocess.run([*self.program, "locate", "-", *words], input=sound,
                             capture_output=True, timeout=60, check=True)
        return run.stdout.decode().splitlines()[1:]

    def short(self):
        """16 bits of the sound, for devices."""
        sound = bytearray()
        for at in range(0, len(self.sound), 3):
            sound += self.sound[at + 1:at + 3]
        return bytes(sound)

    def alsa(self):
        """The environment in which the device `walk` gives that sound."""
        raw = self.folder / "walk.s16"
        raw.write_bytes(self.short())
        config = self.folder / "asound.conf"
        config.write_text("pcm.nothing { type null }\n"
                          f"pcm.walk {{ type file slave.pcm nothing file /dev/null infile {raw} "
                          "format raw }\n")
        return {"ALSA_CONFIG_PATH": str(config)}

    def device_with(self, **faults):
        """The same where the device does what devices.c is told."""
        return {**self.alsa(), "LD_PRELOAD": self.devices, **faults,
                "ASAN_OPTIONS": "verify_asan_link_order=0"}


DEVICE = ["--capture", "walk", "--array", "aster", "--raw", "S16", "--raw-channels", str(CHANNELS)]


def pipe_gives_what_locate_gives(check):
    status, records, error = check.live(["-", *RAW, "-f", "csv"], check.sound)
    expected = check.locate([*RAW, "-f", "csv"], check.sound)
    return status == 0 and error == "" and records.splitlines()[1:] == expected, (status, error)


def wav_needs_no_form(check):
    """As arecord writes it into a pipe: its header knows no length."""
    short = check.short()
    header = b"RIFF\xff\xff\xff\xffWAVEfmt " + struct.pack(
        "<IHHIIHH", 16, 1, CHANNELS, 48000, 48000 * CHANNELS * 2, CHANNELS * 2, 16)
    wav = header + b"data\x00\x00\x00\x80" + short
    status, records, error = check.live(["-", "--array", "aster", "-f", "csv"], wav)
    words = ["--array", "aster", "--raw", "S16", "--raw-channels", str(CHANNELS), "-f", "csv"]
    return (status == 0 and error == ""
            and records.splitlines()[1:] == check.locate(words, short)), (status, error)


def device_gives_what_its_file_holds(check):
    seconds = check.frames * inputs.FRAME / 48000
    status, records, error = check.live([*DEVICE, "-f", "csv", "--duration", str(seconds)],
                                        environment=check.alsa())
    words = ["--array", "aster", "--raw", "S16", "--raw-channels", str(CHANNELS), "-f", "csv"]
    expected = check.locate(words, check.short())
    return status == 0 and error == "" and records.splitlines()[1:] == expected, (status, error)


def overrun_is_counted(check):
    """The frame during which samples were lost is left out; times go on with the clock."""
    environment = check.device_with(VOXLOC_OVERRUN_AT="12")
    status, records, error = check.live([*DEVICE, "-f", "csv", "--duration", "2"],
                                        environment=environment)
    rows = [row for row in records.splitlines() if row[:1].isdigit()]
    numbers = [int(row.split(",")[0]) for row in rows]
    return (status == 0 and "overrun 1: the device had more than was taken" in error
            and numbers == list(range(len(rows))) and len(rows) == 47), (status, error, len(rows))


def device_comes_back(check):
    environment = check.device_with(VOXLOC_GONE_AT="12", VOXLOC_GONE_OPENS="2")
    began = time.monotonic()
    status, records, error = check.live([*DEVICE, "-f", "csv", "--duration", "2"],
                                        environment=environment)
    away = time.monotonic() - began
    samples = [int(row.split(",")[1]) for row in records.splitlines() if row[:1].isdigit()]
    jump = max(b - a for a, b in zip(samples, samples[1:])) / 48000
    # It was tried after 0.2, 0.6 and 1.4 seconds; the time that is lost is counted.
    return (status == 0 and "walk is gone: No such device; waiting for it" in error
            and "walk is back" in error and len(samples) == 47
            and 1.4 <= away < 10 and 1.4 < jump <= away + 2 * inputs.FRAME / 48000), \
        (status, error, away, jump)


def busy_device_is_named(check):
    busy = check.live(DEVICE, environment=check.device_with(VOXLOC_BUSY="1"))
    missing = check.live(["--capture", "absent", "--array", "aster"], environment=check.alsa())
    return (busy == (1, "", "voxloc: cannot open the capture device walk: "
                            "Device or resource busy\n")
            and missing == (1, "", "voxloc: cannot open the capture device absent: "
                                   "No such file or directory\n")), (busy, missing)


def damage_keeps_what_came_before(check):
    seen = []
    for sound, status, message, frames in (
            (b"", 1, "voxloc: standard input is empty\n", 0),
            (check.sound[:FRAME_BYTES + 7], 1, "voxloc: standard input ends at byte "
             f"{FRAME_BYTES + 7}, in the middle of a sample\n", 1),
            (check.sound[:FRAME_BYTES + 36], 0,
             "voxloc: the last 2 samples fill no frame and are left out\n", 1)):
        got = check.live(["-", *RAW, "-f", "jsonl"], sound)
        rows = got[1].count('"type":"frame"')
        if (got[0], got[2], rows) != (status, message, frames) or '"summary"' not in got[1]:
            seen.append(got)
    return not seen, seen


def wrong_words_are_refused(check):
    seen = []
    for words, status, message in (
            ([], 2, "live takes a device"),
            (["-", "--capture", "x"], 2, "live takes a device"),
            (["a.wav"], 2, "locate reads files"),
            (["-", "--raw", "S16"], 2, "--raw needs --raw-channels"),
            (["-", "--serve", "99999"], 2, "port from 0 to 65535"),
            (["-", "--serve", "0.0.0.0:0"], 2, "needs --token-file"),
            (["-", "--record", "/nowhere/x", "--raw", "S16", "--raw-channels", "6"], 1,
             "cannot write /nowhere/x: No such file or directory")):
        got = check.live(["--array", "aster", *words], b"RIFF" + bytes(100))
        if got[0] != status or message not in got[2] or got[2].count("\n") != 1:
            seen.append((words, got))
    return not seen, seen


def interrupted(check):
    """Ctrl-C finishes the records with their summary, and the recording."""
    recording = check.folder / "live.rec"
    run = subprocess.Popen([*check.program, "live", "-", *RAW, "--record", str(recording)],
                           stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    run.stdin.write(check.sound[:20 * FRAME_BYTES])
    run.stdin.flush()
    for _ in range(22):  # two lines of heading
        run.stdout.readline()
    run.send_signal(signal.SIGINT)
    try:
        rest, error = run.communicate(timeout=10)
    finally:
        run.kill()
    size = 4 + 20 * (8 + CHANNELS * inputs.FRAME * 4)
    marks = pathlib.Path(str(recording) + ".marks.jsonl")
    return (run.returncode == 130 and error == b"" and rest.startswith(b"# 0.9 s in 20 frames")
            and recording.stat().st_size == size and marks.exists()), (run.returncode, error, rest)


def full_disk_is_noticed(check):
    """The library says why it loses frames, the program how many."""
    recording = check.folder / "full.rec"
    limit = 40 * 8 * CHANNELS  # KiB: of 94 frames about 40
    run = subprocess.run(["bash", "-c", f'trap "" XFSZ; ulimit -f {limit}; exec "$@"', "-",
                          *check.program, "live", "-", *RAW, "-f", "csv",
                          "--record", str(recording)],
                         input=check.sound, capture_output=True, timeout=60)
    error = run.stderr.decode()
    rows = run.stdout.decode().count("\n")
    frame = 8 + CHANNELS * inputs.FRAME * 4
    kept = (limit * 1024 - 4) // frame
    return (run.returncode == 1 and "loses frames, the file may not grow any more" in error
            and f"full.rec lacks {check.frames - kept} frames" in error
            and recording.stat().st_size == 4 + kept * frame
            and rows == check.frames + 3), (run.returncode, error, rows)


def latency_is_small(check):
    """From the write of a frame's last sample to the whole line of its record."""
    run = subprocess.Popen([*check.program, "live", "-", *RAW, "-f", "csv"], bufsize=0,
                           stdin=subprocess.PIPE, stdout=subprocess.PIPE)
    lines = run.stdout
    times = []
    try:
        while not lines.readline().startswith(b"frame,"):
            pass
        for at in range(0, 80 * FRAME_BYTES, FRAME_BYTES):
            frame = check.sound[at:at + FRAME_BYTES]
            for part in range(0, FRAME_BYTES - 18, 4096):
                run.stdin.write(frame[part:min(part + 4096, FRAME_BYTES - 18)])
            time.sleep(0.01)  # so that all but the last sample has been taken
            began = time.perf_counter()
            run.stdin.write(frame[-18:])
            line = lines.readline()
            times.append(1000 * (time.perf_counter() - began))
            if int(line.split(b",")[0]) != at // FRAME_BYTES:
                return False, line
    finally:
        run.stdin.close()
        run.wait(timeout=10)
    median, worst = statistics.median(times), max(times)
    print(f"latency: {median:.2f} ms median, {worst:.2f} ms at worst of {len(times)} frames")
    return median < LATENCY_LIMIT or not check.is_measured, times


def memory_stays_flat(check):
    """With the page's history full, more sound takes no more memory."""
    if not check.is_measured:
        print("memory: not measured, the sanitiser keeps what was freed")
        return True, None
    run = subprocess.Popen([*check.program, "live", "-", *RAW, "--serve", "0"],
                           stdin=subprocess.PIPE, stderr=subprocess.PIPE)

    def resident():
        status = pathlib.Path(f"/proc/{run.pid}/status").read_text()
        return int(status.split("VmRSS:")[1].split()[0])

    loops = 4300 // check.frames + 1  # the history has 4219 frames
    for _ in range(loops):
        run.stdin.write(check.sound)
    before = resident()
    for _ in range(2 * loops):
        run.stdin.write(check.sound)
    after = resident()
    run.stdin.close()
    status = run.wait(timeout=20)
    print(f"memory: {before} KiB, later {after} KiB")
    return status == 0 and after - before < 512 and after < 65536, (status, before, after)


CHECKS = [pipe_gives_what_locate_gives, wav_needs_no_form, device_gives_what_its_file_holds,
          overrun_is_counted, device_comes_back, busy_device_is_named,
          damage_keeps_what_came_before, wrong_words_are_refused, interrupted,
          full_disk_is_noticed, latency_is_small, memory_stays_flat]

# Those that put a library in front of ALSA's, which would get in front of an emulator's, too.
FAULTY = [overrun_is_counted, device_comes_back, busy_device_is_named]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--talker", required=True)
    parser.add_argument("--devices", required=True)
    parser.add_argument("--sanitised", action="store_true")
    arguments = inputs.options(parser)
    failed = 0
    with tempfile.TemporaryDirectory() as folder:
        check = Check(arguments, pathlib.Path(folder))
        for one in CHECKS:
            if one in FAULTY and len(check.program) > 1:
                print("left out under an emulator: " + one.__name__)
                continue
            passed, seen = one(check)
            print(("ok      " if passed else "FAILED  ") + one.__name__)
            if not passed:
                print("        " + str(seen))
                failed += 1
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
