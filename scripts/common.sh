# What ./run, ./test and the legs share. Sourced, not run.
# shellcheck shell=bash
set -euo pipefail

ROOT=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." && pwd)
cd "$ROOT"
LOGS=build/logs
# The exit status of what cannot run on this machine; its output tells why, in a line "skip: WHY".
export CANNOT_RUN=77
CMAKE_BUILD_PARALLEL_LEVEL=${CMAKE_BUILD_PARALLEL_LEVEL:-$(nproc)}
export CMAKE_BUILD_PARALLEL_LEVEL
# Whether the owner of this folder goes on with what root began; of this script, and not of those that it starts.
export -n HANDED_OVER=${SI_HANDED_OVER:-}
unset SI_HANDED_OVER

say() { printf '%s\n' "$*"; }

die() {
    printf '%s: %s\n' "$(basename "$0")" "$*" >&2
    exit 1
}

# need COMMAND PACKAGE: ends with the package's name where there is no such command.
need() { command -v "$1" >/dev/null || die "the program $1 is missing: apt-get install $2"; }

as_root() {
    if ((EUID == 0)); then "$@"; else sudo "$@"; fi
}

# Whoever started us through sudo owns what we build, or the next start without sudo would fail.
# Does not return when there is somebody to hand over to.
hand_over_to_owner() {
    local owner
    owner=$(stat -c %u .)
    if ((EUID == 0 && owner != 0)) && [[ ${SUDO_UID:-} == "$owner" ]]; then
        [[ ! -d build ]] || chown -R "$SUDO_UID:$SUDO_GID" build
        exec sudo -H -u "#$SUDO_UID" -- env "CI=${CI:-}" SI_HANDED_OVER=true "$(readlink -f "$0")" "$@"
    fi
    mkdir -p "$LOGS" 2>/dev/null || true
    [[ -w build && -w $LOGS ]] ||
        die "cannot write to $ROOT/build: it belongs to $(stat -c %U build 2>/dev/null || stat -c %U .)." \
            "Remove it, or start this as that user."
}

# A machine of its own checks each commit there, and looks whether something was left out.
in_ci() { [[ ${CI:-} == true ]]; }

# Whether what takes long is done whole, and not as a sample.
deep() { [[ ${SI_DEEP:-} == true ]]; }

# Whether somebody waits for a first answer, and what takes longest is left to --all.
short() { [[ ${SI_SHORT:-} == true ]]; }

# Whether a leg has passed already in this run of ./test.
has_passed() { [[ " ${SI_PASSED_LEGS:-} " == *" $1 "* ]]; }

# build PRESET [TARGET...]: configures and builds. On a terminal ninja's own line of progress is
# shown; else nothing, and all of the compiler's output when it fails.
build() {
    local preset=$1 targets=() log=$LOGS/build-$1.log
    shift
    (($# == 0)) || targets=(--target "$@")
    if ! cmake --preset "$preset" >"$log" 2>&1; then
        cat "$log" >&2
        die "configuring the preset \"$preset\" failed"
    fi
    if [[ -t 1 ]]; then
        NINJA_STATUS="Building ($preset) %f/%t " cmake --build --preset "$preset" "${targets[@]}"
    elif ! cmake --build --preset "$preset" "${targets[@]}" >>"$log" 2>&1; then
        cat "$log" >&2
        die "building the preset \"$preset\" failed"
    fi
}
