# Shared by the scripts here; sourced, never run. Leaves the shell in the top folder of the tree.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# Runs a command and shows what it printed only when it fails.
quietly() {
    local log status=0
    log=$(mktemp)
    "$@" >"$log" 2>&1 </dev/null || status=$?
    if [ "$status" -ne 0 ]; then
        cat "$log" >&2
        echo "failed (status $status): $*" >&2
    fi
    rm -f "$log"
    return "$status"
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        echo "cannot install packages: neither root nor sudo here; wanted: $*" >&2
        return 1
    fi
}

is_installed() {
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

# Installs those of the named Debian packages that are missing.
require_packages() {
    local package missing=()
    for package in "$@"; do
        is_installed "$package" || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    echo "installing ${missing[*]}" >&2
    quietly as_root apt-get update
    quietly as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y --no-install-recommends "${missing[@]}"
}

# What a preset needs beside the compiler and build tools that all need.
packages_of_preset() {
    echo g++ cmake ninja-build googletest
    case "$1" in
        release) echo valgrind ;;
        clang) echo clang ;;
        armhf*) echo g++-arm-linux-gnueabihf qemu-user-static python3 ;;
        aarch64) echo g++-aarch64-linux-gnu qemu-user-static ;;
        bench*) echo libbenchmark-dev libfftw3-dev libkissfft-dev pkg-config jq ;;
    esac
}

# build_preset PRESET [cmake --build arguments]: installs what is missing, configures and builds.
build_preset() {
    local preset=$1
    shift
    # shellcheck disable=SC2046  # a list of package names
    require_packages $(packages_of_preset "$preset")
    quietly cmake --preset "$preset"
    quietly cmake --build --preset "$preset" "$@"
}
