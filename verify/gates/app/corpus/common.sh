# Shared by the tests here; sourced. Arguments: the program, what makes recordings, the tree, a
# folder of the test's own, which stays behind when the test fails.
set -euo pipefail
voxloc=$1
makeRecordings=$2
tree=$3
work=$4

fail() {
    echo "failed: $*" >&2
    exit 1
}

skip() {
    echo "skipped: $*"
    exit 77
}

rm -rf "$work"
mkdir -p "$work/in"
cd "$work"
