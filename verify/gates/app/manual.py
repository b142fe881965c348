#!/usr/bin/env python3
"""Every option of the program's help stands in the manual and is completed by bash."""

import argparse
import re
import shutil
import subprocess
import sys

import inputs

OPTION = re.compile(r"^  (?:(-\w),)?(--[\w-]+)(?: .*?\{([^}]*)\})?", re.M)
FAILURES = []


def check(holds, what):
    if not holds:
        FAILURES.append(what)


def help_of(program, words):
    done = subprocess.run(program + words + ["--help"], capture_output=True, text=True)
    check(done.returncode == 0, f"{words} --help: status {done.returncode}")
    return done.stdout


def subcommands_in(text):
    _, _, rest = text.partition("\nSubcommands:\n")
    return re.findall(r"^  (\w+) ", rest, re.M)


def commands_of(program, words=()):
    """Each command with its help, from the program's own on."""
    text = help_of(program, list(words))
    yield list(words), text
    for name in subcommands_in(text):
        yield from commands_of(program, [*words, name])


def section_of(manual, words):
    """The lines of the manual on a command."""
    if not words:
        return manual.partition(".Ss ")[0]
    _, found, rest = manual.partition(f"\n.Ss voxloc {' '.join(words)}\n")
    check(found, f"the manual has no section on {' '.join(words)}")
    return re.split(r"\n\.S[sh] ", rest)[0]


def check_manual(manual, words, text):
    section = section_of(manual, words)
    for short, long, choices in OPTION.findall(text):
        line = re.search(rf"^\.It (?:Fl (\w) , )?Fl {re.escape(long[1:])}( .*)?$", section, re.M)
        check(line, f"manual: {' '.join(words)} lacks {long}")
        if line is None:
            continue
        check(short == ("-" + line[1] if line[1] else ""), f"manual: short form of {words} {long}")
        for choice in filter(None, choices.split(",")):
            check(re.search(rf"\b{choice}\b", line[2] or ""), f"manual: {long} lacks {choice}")
    if words:
        check("Example: voxloc " + words[0] in text or "| voxloc " + words[0] in text,
              f"{' '.join(words)} --help has no example")


def check_layout(path):
    if shutil.which("groff") is None:
        return
    done = subprocess.run(["groff", "-mandoc", "-Tutf8", "-ww", "-z", path],
                          capture_output=True, text=True)
    check(done.returncode == 0 and not done.stderr, f"groff on the manual: {done.stderr}")


def completed(program, completion, words):
    """What bash offers in the place of the last word."""
    script = ('PATH="$(dirname "$1"):$PATH"; . "$2"; shift 2; COMP_WORDS=(voxloc "$@");'
              'COMP_CWORD=$(($#)); _voxloc; printf "%s\\n" "${COMPREPLY[@]}"')
    done = subprocess.run(["bash", "--norc", "-c", script, "bash", program, completion, *words],
                          capture_output=True, text=True)
    check(not done.stderr, f"completion of {words}: {done.stderr}")
    return set(done.stdout.split())


def check_completion(program, completion, words, text):
    options = {long for _, long, _ in OPTION.findall(text)}
    offered = completed(program, completion, [*words, "--"])
    check(offered == options, f"completion of {words} --: {sorted(offered ^ options)}")
    for short, long, choices in OPTION.findall(text):
        for option in filter(None, [long, short if choices and short == "-f" else ""]):
            if choices:
                check(completed(program, completion, [*words, option, ""])
                      == set(choices.split(",")), f"completion of {words} {option}")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("manual")
    parser.add_argument("completion")
    arguments = inputs.options(parser)
    started = inputs.program()
    with open(arguments.manual, encoding="utf-8") as file:
        manual = file.read()
    check_layout(arguments.manual)
    commands = list(commands_of(started))
    check(len(commands) >= 5, "there are fewer commands than ever")
    # An emulator cannot be called by the name of the program.
    completes = len(started) == 1 and shutil.which("bash")
    for words, text in commands:
        check_manual(manual, words, text)
        if completes:
            check_completion(started[0], arguments.completion, words, text)
    if completes:
        program = started[0]
        names = completed(program, arguments.completion, [""])
        check(names == {words[0] for words, _ in commands if words}, f"completion of '': {names}")
        arrays = completed(program, arguments.completion, ["locate", "--array", ""])
        check({"aster", "gannet"} <= arrays, f"completion of --array: {arrays}")
        check(completed(program, arguments.completion, ["locate", "--array", "as"]) == {"aster"},
              "completion of --array as")
    print("\n".join(FAILURES) or f"{len(commands)} commands are in the manual")
    return 1 if FAILURES else 0


if __name__ == "__main__":
    sys.exit(main())
