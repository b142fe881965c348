# Shared by the scripts here; sourced, never run. Leaves the shell in the top folder of the tree,
# also when the script was called through a symbolic link from elsewhere.
set -euo pipefail
script=$(readlink -f "$0")
caller=$PWD # relative paths that the caller gives are meant from here
# A hook of git runs with these set, for a repository that need not be this one.
unset GIT_DIR GIT_WORK_TREE GIT_INDEX_FILE GIT_PREFIX
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."

# Where the builds are: one folder a preset. Another one can be chosen.
builds=$(cd "$caller" && realpath -m "${VOXLOC_BUILD_DIR:-$OLDPWD/build}")
export VOXLOC_BUILD_DIR=$builds

# --- What a script says about itself --------------------------------------------------------------

# The comment at the top of the script.
usage() {
    sed -n '2,/^[^#]/s/^#\( \|$\)//p' "$script"
}

refuse() {
    echo "${script##*/}: $*; see scripts/${script##*/} --help" >&2
    exit 2
}

# help_or_go_on "$@": prints the usage and ends the script when that is asked for.
help_or_go_on() {
    case "${1-}" in
        --help | -h)
            usage
            exit 0
            ;;
    esac
}

# takes_no_arguments "$@"
takes_no_arguments() {
    help_or_go_on "$@"
    [ $# -eq 0 ] || refuse "unknown argument '$1'"
}

# --- Progress -------------------------------------------------------------------------------------

is_terminal() {
    [ -t 2 ] && [ -z "${NO_COLOR-}" ] && [ "${TERM-dumb}" != dumb ]
}

# Reads what a command prints and shows how far it is: on a terminal in one line that changes, else
# in a line every 15 seconds.
report_progress() {
    local title=$1 line place="" said=$SECONDS began=$SECONDS width=${COLUMNS:-80}
    is_terminal || echo "$title" >&2
    while true; do
        if IFS= read -r -t 5 line; then
            # [12/340] of ninja and lint, 12/340 Test #12 of ctest
            [[ ! $line =~ ^\ *\[?([0-9]+/[0-9]+)[]\ ] ]] || place=" ${BASH_REMATCH[1]}"
        elif [ $? -le 128 ]; then
            break
        fi
        if is_terminal; then
            line="$title$place ($((SECONDS - began)) s)"
            printf '\r\033[K%s' "${line:0:$((width - 1))}" >&2
        elif [ $((SECONDS - said)) -ge 15 ]; then
            echo "$title$place ($((SECONDS - began)) s)" >&2
            said=$SECONDS
        fi
    done
    ! is_terminal || printf '\r\033[K' >&2
}

# follow LOG TITLE COMMAND...: runs a command, keeps what it prints in the log, shows how far it is.
follow() {
    local log=$1 title=$2
    shift 2
    mkdir -p "$(dirname "$log")"
    "$@" </dev/null 2>&1 | tee "$log" | report_progress "$title"
}

# quietly TITLE COMMAND...: the same; what the command printed is shown only when it fails.
quietly() {
    local title=$1 log status=0
    shift
    log=$(mktemp)
    follow "$log" "$title" "$@" || status=$?
    if [ "$status" -ne 0 ]; then
        # From the first step that failed on, where there are steps.
        sed -n '/^FAILED: /,$p' "$log" | grep . >&2 || cat "$log" >&2
        echo "failed (status $status): $*" >&2
    fi
    rm -f "$log"
    return "$status"
}

# --- One at a time --------------------------------------------------------------------------------

# Two scripts in one build folder would break each other's builds: the second waits. A script that
# another one calls works under its caller's lock.
lock_builds() {
    [ "${VOXLOC_LOCKED-}" != "$builds" ] || return 0
    mkdir -p "$builds"
    exec {lock}>"$builds/.lock"
    if ! flock -n "$lock"; then
        echo "another script is at work in $builds: waiting for it (VOXLOC_BUILD_DIR=folder gives" \
            "a build folder of one's own)" >&2
        flock "$lock"
    fi
    export VOXLOC_LOCKED=$builds
}

unlock_builds() {
    [ -z "${lock-}" ] || exec {lock}>&-
    unset VOXLOC_LOCKED
}

# --- Packages -------------------------------------------------------------------------------------

is_installed() {
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

# Installs those of the named Debian packages that are missing, as root or with sudo. Elsewhere it
# is the caller's matter that the tools are there.
require_packages() {
    local package missing=() root=()
    command -v dpkg-query >/dev/null || return 0
    for package in $(printf '%s\n' "$@" | sort -u); do
        is_installed "$package" || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null; then
            echo "packages are missing, and there is neither root nor sudo here. An administrator" \
                "installs them with" >&2
            echo "    apt-get install --no-install-recommends ${missing[*]}" >&2
            exit 1
        fi
        root=(sudo)
    fi
    quietly "updating the list of packages" "${root[@]}" apt-get update
    quietly "installing ${missing[*]}" "${root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y --no-install-recommends "${missing[@]}"
}

# What a preset's libraries and program need.
packages_of_program() {
    echo g++ cmake ninja-build
    case "$1" in
        clang | fuzz) echo clang libclang-rt-14-dev ;;
        armhf*) echo g++-arm-linux-gnueabihf qemu-user-static ;;
        aarch64) echo g++-aarch64-linux-gnu qemu-user-static ;;
    esac
}

# What the program voxloc needs.
packages_of_app() {
    echo libcli11-dev nlohmann-json3-dev libsndfile1-dev libsoxr-dev libasound2-dev \
        libcpp-httplib-dev pkg-config
}

# Whether a preset has the program voxloc.
has_app() {
    case "$1" in
        release | clang | fuzz | asan | tsan | armhf-app | bench*) return 0 ;;
        *) return 1 ;;
    esac
}

# What all of a preset needs.
packages_of_preset() {
    ! has_app "$1" || packages_of_app
    packages_of_program "$1"
    case "$1" in
        armhf-static) ;;
        armhf-app) echo googletest python3 ;;
        bench*) echo libbenchmark-dev libfftw3-dev libkissfft-dev pkg-config jq ;;
        *) echo googletest pkg-config ;;
    esac
    case "$1" in
        release) echo valgrind python3 qemu-user-static parallel slurm-wlm munge ;;
        libraries) echo valgrind python3 qemu-user-static ;;
        clang) echo python3 qemu-user-static ;;
        asan | tsan) echo python3 ;;
        armhf) echo python3 ;;
    esac
}

# What checks of pages need: a browser, and what drives it. Nothing is run that a package brings.
prepare_browser_checks() {
    local folder=verify/gates/app
    require_packages chromium
    command -v npm >/dev/null || require_packages nodejs npm
    [ "$folder/package-lock.json" -nt "$folder/node_modules/.package-lock.json" ] || return 0
    quietly "installing what drives the browser" \
        npm --prefix "$folder" ci --ignore-scripts --no-audit --no-fund
}

# --- Builds ---------------------------------------------------------------------------------------

# build_preset PRESET [cmake --build arguments]: installs what is missing, configures and builds.
build_preset() {
    local preset=$1
    shift
    # shellcheck disable=SC2046  # a list of package names
    require_packages $(packages_of_preset "$preset")
    lock_builds
    local reference=release
    [[ $preset != libraries* ]] || reference=libraries # what is there or made anyway
    local settings=(-D "VOXLOC_REFERENCE=$builds/$reference" -D VOXLOC_APP=OFF)
    ! has_app "$preset" || settings+=(-D VOXLOC_APP=ON)
    if [ "$preset" = armhf-app ]; then
        local sysroot=$builds/armhf-sysroot
        local libraries=$sysroot/usr/lib/arm-linux-gnueabihf others=$sysroot/lib/arm-linux-gnueabihf
        quietly "$preset: collecting packages" tools/arm/appSysroot "$sysroot"
        settings+=(-D "CMAKE_EXE_LINKER_FLAGS=-L$libraries -Wl,-rpath-link,$libraries:$others"
            -D "VOXLOC_EMULATED_LIBRARIES=$libraries:$others")
        local -x PKG_CONFIG_LIBDIR=$libraries/pkgconfig PKG_CONFIG_SYSROOT_DIR=$sysroot
    fi
    quietly "$preset: configuring" cmake --preset "$preset" -B "$builds/$preset" "${settings[@]}"
    quietly "$preset: building" cmake --build "$builds/$preset" "$@"
}

# build_program PRESET: the test program alone, without what verification needs. A folder that is
# configured already stays as it is.
build_program() {
    local preset=$1
    # shellcheck disable=SC2046  # a list of package names
    require_packages $(packages_of_program "$preset")
    lock_builds
    if [ ! -f "$builds/$preset/build.ninja" ]; then
        quietly "$preset: configuring" cmake --preset "$preset" -B "$builds/$preset" \
            -D VOXLOC_VERIFY=OFF -D VOXLOC_STRICT=OFF
    fi
    quietly "$preset: building" cmake --build "$builds/$preset" --target voxloc_unittest
}

# build_app: the program voxloc alone; its path is in $app then. A folder that is configured already
# keeps its other settings.
build_app() {
    # shellcheck disable=SC2046  # a list of package names
    require_packages $(packages_of_program release) $(packages_of_app)
    lock_builds
    local settings=(-D VOXLOC_APP=ON)
    [ -f "$builds/release/build.ninja" ] || settings+=(-D VOXLOC_VERIFY=OFF -D VOXLOC_STRICT=OFF)
    quietly "voxloc: configuring" cmake --preset release -B "$builds/release" "${settings[@]}"
    quietly "voxloc: building" cmake --build "$builds/release" --target voxloc_app_main
    app=$builds/release/apps/voxloc/voxloc
}

# Files of the tree that match the patterns, each ended by a zero byte.
tree_files() {
    git -c safe.directory="$PWD" ls-files -z --cached --others --exclude-standard -- "$@" |
        while IFS= read -r -d '' file; do
            [ ! -f "$file" ] || printf '%s\0' "$file"
        done
}

# Whether ctest has a preset of that name.
is_test_preset() {
    sed -n 's/.*{"name": "\([^"]*\)", "inherits": "base", "configurePreset".*/\1/p' \
        CMakePresets.json | grep -qxF -e "$1"
}
