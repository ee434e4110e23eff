# shellcheck shell=bash
# What the scripts share: where things are, what must be installed, how a tree is configured and built.
# Each script sources this file first:  . "$(dirname -- "${BASH_SOURCE[0]}")/lib.sh"
set -euo pipefail

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd)
builds=${KORVAN_BUILD_DIR:-$root/build} # set KORVAN_BUILD_DIR when the source tree is read-only
[[ $builds == /* ]] || builds=$PWD/$builds

# What every build needs, as Debian names it: PACKAGE=COMMAND is here if COMMAND can be run, a PACKAGE alone (a
# library) if dpkg has it.
# shellcheck disable=SC2034 # the scripts that source this use it
build_tools=("cmake=cmake" "ninja-build=ninja" "g++=c++")
# What the whole test suite needs besides: for the tests, the tool in full, the examples.
# shellcheck disable=SC2034
test_needs=(libgtest-dev libasio-dev libcli11-dev nlohmann-json3-dev libpcap-dev python3=python3)
cmake_floor=3.25

say() { printf '%s\n' "$*" >&2; }

fail() {
    say "$@"
    exit 1
}

# need PACKAGE[=COMMAND]...: installs what is missing. With nothing missing it prints nothing, asks nothing of
# the network and needs no rights.
need() {
    local entry missing=()
    needed="${*%%=*}"
    for entry in "$@"; do
        is_here "$entry" || missing+=("${entry%%=*}")
    done
    ((${#missing[@]} == 0)) || install_packages "${missing[@]}"
    cmake_is_new_enough ||
        fail "CMake $cmake_floor or later is needed; $(command -v cmake) is older. Debian 12 brings it."
}

is_here() {
    if [[ $1 == *=* ]]; then
        command -v "${1#*=}" >/dev/null
    elif command -v dpkg-query >/dev/null; then
        [[ $(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null) == installed ]]
    fi # elsewhere a library cannot be looked up: CMake says what it does not find
}

install_packages() {
    command -v apt-get >/dev/null ||
        fail "Missing here (Debian's names): $*. Install them with your system's packages, then run this again."
    local as_root=()
    if ((EUID != 0)); then
        command -v sudo >/dev/null ||
            fail "Missing here: $*. Let an administrator run: apt-get install --no-install-recommends $*"
        as_root=(sudo)
    fi
    local apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq -o DPkg::Lock::Timeout=300)
    say "Installing: $*"
    "${apt[@]}" update >/dev/null || say "apt-get update failed; going on with the package lists that are here."
    "${apt[@]}" install -y --no-install-recommends "$@" >/dev/null || fail "apt-get could not install: $*"
}

cmake_is_new_enough() {
    local have
    have=$(cmake --version | sed -n 's/^cmake version //p')
    [[ $(printf '%s\n' "$cmake_floor" "$have" | sort -V | head -n 1) == "$cmake_floor" ]]
}

# configure TREE PRESET [CMAKE ARGUMENT]...: TREE is a directory below $builds.
configure() {
    local tree=$builds/$1 preset=$2
    shift 2
    mkdir -p -- "$tree" 2>/dev/null || true
    [[ -w $tree ]] ||
        fail "Cannot write to $tree. Set KORVAN_BUILD_DIR to a directory for the build."
    (cd -- "$root" && cmake --preset "$preset" -B "$tree" --log-level=WARNING \
        -DCMAKE_CXX_COMPILER_LAUNCHER="$(command -v ccache || true)" "$@" >"$tree/configure.log" 2>&1) ||
        fail "$(cat -- "$tree/configure.log")" "CMake could not configure. Needed here: $needed"
}

# build TREE [TARGET]...
build() {
    local tree=$builds/$1
    shift
    cmake --build "$tree" --parallel "$(nproc)" ${1:+--target "$@"}
}

# run_tests TREE [CTEST ARGUMENT]...
run_tests() {
    local tree=$builds/$1
    shift
    ctest --test-dir "$tree" --parallel "$(nproc)" --output-on-failure --no-tests=error "$@"
}
