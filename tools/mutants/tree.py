"""The tree, and private copies of it into which faults are put."""

import pathlib
import subprocess
import sys

TREE = pathlib.Path(__file__).resolve().parents[2]
MARKER = ".mutants"  # names a folder as a copy that was made here
SHIPPED = ("functional", "platform")
SOURCES = {".h", ".c", ".cpp", ".inc"}


def tree_files():
    """What git knows or would take, changes that are not committed included."""
    listing = subprocess.run(["git", "-c", f"safe.directory={TREE}", "ls-files", "-z", "--cached",
                              "--others", "--exclude-standard"],
                             cwd=TREE, check=True, capture_output=True, text=True).stdout
    names = sorted(set(listing.split("\0")) - {""})
    return [pathlib.Path(name) for name in names if (TREE / name).is_file()]


def shipped_sources(files):
    """The sources of the libraries and of the eighteen tests."""
    return [file for file in files if file.parts[0] in SHIPPED and file.suffix in SOURCES]


def copy_tree(files, copy):
    """Makes the copy what the tree is; files that are the same keep their age."""
    (copy / MARKER).touch()
    for file in files:
        content = (TREE / file).read_bytes()
        target = copy / file
        if not target.is_file() or target.read_bytes() != content:
            target.parent.mkdir(parents=True, exist_ok=True)
            target.write_bytes(content)
        target.chmod((TREE / file).stat().st_mode)
    wanted = {copy / file for file in files} | {copy / MARKER}
    for top in copy.iterdir():
        if top.name == "build":
            continue
        for path in [top, *top.rglob("*")]:
            if path.is_file() and path not in wanted:
                path.unlink()


def own_folder(folder):
    """The folder, made if need be; nothing of anybody else's may stand there."""
    folder = folder.resolve()
    if folder == TREE or folder in TREE.parents:
        sys.exit(f"{folder} is not apart from the tree")
    folder.mkdir(parents=True, exist_ok=True)
    if any(folder.iterdir()) and not (folder / MARKER).exists():
        sys.exit(f"{folder} holds something else")
    (folder / MARKER).touch()
    return folder
