# shellcheck shell=bash
# Shared by the scripts of this project; sourced, not run.
set -euo pipefail

repo=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
# The compiler cache stays with the builds, so that nothing outside them is touched.
export CCACHE_DIR=${CCACHE_DIR:-$repo/build/.ccache}

say() {
    printf '%s: %s\n' "${0##*/}" "$*"
}

die() {
    say "$@" >&2
    exit 1
}

# quietly COMMAND…: runs a command and shows its output, on standard error, only if it fails.
quietly() {
    local output
    output=$("$@" 2>&1) || {
        printf '%s\n' "$output" >&2
        return 1
    }
}

# newest TOOL: the newest installed version, 16 or later, of a tool of clang.
newest() {
    local tool
    tool=$(compgen -c "$1-" | grep -xE "$1-(1[6-9]|[2-9][0-9])" | sort -V | tail -n 1)
    [[ -n $tool ]] || die "there is no $1, version 16 or later; scripts/setup --tools installs it"
    printf '%s' "$tool"
}

# configure PRESET: runs CMake if the build folder isn't ready, or was configured somewhere else and then moved here.
# Later changes of CMake files are the build's own business.
configure() {
    local tree=$repo/build/$1
    local fresh=()
    if [[ -f $tree/CMakeCache.txt ]] && ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$repo" "$tree/CMakeCache.txt"; then
        fresh=(--fresh)
    elif [[ -f $tree/build.ninja && ! $repo/CMakePresets.json -nt $tree/build.ninja ]]; then
        return 0
    fi
    cmake -S "$repo" "${fresh[@]}" --preset "$1"
}

# build PRESET [TARGET…]: configures and builds, one script at a time.
build() {
    if ! mkdir -p "$repo/build" 2>/dev/null || ! touch "$repo/build/.lock" 2>/dev/null; then
        die "this user can't write $repo/build"
    fi
    (
        flock 9 && cd "$repo" && configure "$1" &&
            cmake --build --preset "$1" --parallel "$(nproc)" ${2+--target "${@:2}"}
    ) 9>"$repo/build/.lock" </dev/null
}
