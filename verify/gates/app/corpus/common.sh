# shellcheck shell=bash disable=SC2034,SC2154  # the tests use what is set here, the trap its status
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

# --- Daemons --------------------------------------------------------------------------------------

# Those that the test started, the first one first; they are ended the other way round.
processes=()
end_processes() {
    local i process
    for ((i = ${#processes[@]} - 1; i >= 0; --i)); do
        kill "${processes[i]}" 2>/dev/null || true
    done
    for process in "${processes[@]}"; do
        for ((i = 0; i < 50; ++i)); do
            kill -0 "$process" 2>/dev/null || break
            sleep 0.1
        done
        kill -9 "$process" 2>/dev/null || true
    done
}

# stop_at_the_end [COMMAND]: whatever ends the test ends its processes, then runs the command.
stop_at_the_end() {
    local last=${1:-true}
    # shellcheck disable=SC2064  # the command's name is known now
    trap "status=\$?; end_processes; $last; exit \$status" EXIT
    trap 'exit 130' INT
    trap 'exit 143' TERM
}

# A port that nobody listens on.
free_port() {
    local port
    while true; do
        port=$((20000 + RANDOM % 12000))
        (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null || break
    done
    echo "$port"
}
