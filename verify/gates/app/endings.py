"""How a run ends: by ctrl-C, by a reader who leaves, by wrong words."""

import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time

import inputs


def interrupted(program, folder):
    """Ctrl-C finishes the records with their summary; the status is that of shells."""
    output = folder / "live.csv"
    read, write = os.pipe()
    run = subprocess.Popen([*program, "locate", "-", "-o", str(output)], stdin=read,
                           stderr=subprocess.PIPE)
    os.close(read)
    os.write(write, inputs.recording(0))
    for n in range(3):
        for part in range(0, len(inputs.record(6)), 4096):
            os.write(write, inputs.record(6, seed=n)[part:part + 4096])
    time.sleep(0.3)
    run.send_signal(signal.SIGINT)
    time.sleep(0.1)
    for n in range(2):  # the read that waits ends with the next frame
        try:
            os.write(write, inputs.record(6, seed=n))
        except BrokenPipeError:
            break
    os.close(write)
    error = run.communicate(timeout=20)[1].decode()
    text = output.read_text() if output.exists() else ""
    rows = sum(1 for line in text.splitlines() if line[:1].isdigit())
    return (run.returncode == 130 and error == "" and 3 <= rows <= 4
            and '"type":"summary"' in text), (run.returncode, error, rows)


def reader_leaves(program, folder):
    """A closed pipe ends the program quietly."""
    path = folder / "long.rec"
    path.write_bytes(inputs.recording(1) + inputs.record(6) * 400)
    run = subprocess.Popen([*program, "locate", str(path), "-f", "jsonl"], stdout=subprocess.PIPE,
                           stderr=subprocess.PIPE)
    run.stdout.readline()
    run.stdout.close()
    error = run.stderr.read().decode()
    status = run.wait(timeout=20)
    return status == 0 and error == "", (status, error)


def wrong_words(program, _):
    """Wrong usage has the status 2 and a hint; help and version have 0 and standard output."""
    seen = []
    for words, expected in ((["locate"], 2), ([], 2), (["frobnicate"], 2),
                            (["locate", "x", "--no-such-option"], 2),
                            (["locate", "x", "--format", "xml"], 2), (["locate", "a", "b"], 2),
                            (["--help"], 0), (["locate", "--help"], 0), (["--version"], 0)):
        done = subprocess.run([*program, *words], capture_output=True, text=True, check=False)
        fine = done.returncode == expected
        fine = fine and (done.stdout if expected == 0 else done.stderr) != ""
        fine = fine and (done.stderr if expected == 0 else done.stdout) == ""
        if words[-1:] == ["--help"] and words[0] == "locate":
            fine = fine and "Example: voxloc locate" in done.stdout
        if not fine:
            seen.append((words, done.returncode, done.stdout, done.stderr))
    return not seen, seen


def main():
    """Runs all."""
    program = inputs.program()
    fine = True
    for check in (interrupted, reader_leaves, wrong_words):
        with tempfile.TemporaryDirectory() as folder:
            good, seen = check(program, pathlib.Path(folder))
        if not good:
            fine = False
            print(f"{check.__name__}: {seen}")
    sys.exit(0 if fine else 1)


main()
