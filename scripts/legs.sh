# The legs of ./test: each proves the product in one way. Sourced, not run.
# shellcheck shell=bash disable=SC2034,SC2153

# In the order in which they run: what every reader meets first, then what tells most in a minute.
LEGS=(fresh gcc window clang format shell tidy words hardening abi reproducible coverage bench tv inside asan i686 valgrind arm32 tv-arm32
    arm32-explorer fuzz soak deb kills walks mutants)

declare -A LEG_TITLE=(
    [fresh]="the README's commands on a Debian 12 with nothing but apt and git"
    [gcc]="everything, as it ships, with g++"
    [window]="the page on the screen: keys, pictures, a window on a display of its own"
    [clang]="the provider, with clang"
    [format]="every source is formatted by .clang-format"
    [shell]="shellcheck has nothing to say to any script"
    [tidy]="every room and the tests satisfy .clang-tidy"
    [words]="the sources speak of the product alone"
    [hardening]="the library's exports and hardening"
    [abi]="the contract and the provider's exports are what others were compiled against"
    [reproducible]="the same library, byte for byte, built in two folders"
    [coverage]="the provider's lines, branches and conditions"
    [bench]="what everything costs; the provider takes no more instructions than before"
    [tv]="a TV build against a small stand-in for the TV's SDK"
    [inside]="the project builds as a part of another one"
    [asan]="everything, with address, undefined-behaviour and leak sanitizers"
    [i686]="the provider for 32-bit x86, with the sanitizers"
    [valgrind]="the provider under valgrind"
    [arm32]="the provider for 32-bit ARM, under qemu"
    [tv-arm32]="the TV build for 32-bit ARM"
    [arm32-explorer]="the explorer for 32-bit ARM: its tables are those of x86-64, and diff tells its providers apart"
    [fuzz]="the fuzzers find nothing"
    [soak]="the provider loaded again and again, and a virtual TV in use, do not grow"
    [deb]="Debian's packages: built, installed on a pristine machine, used, purged without a trace"
    [kills]="10,000 kills of a writer, 1,000 of each verb that changes much, 500 power cycles"
    [walks]="the provider answers as its model, and reasons hold on the TV, on 20 random walks"
    [mutants]="every fault that can be made is told from the provider, and others by the tests"
)

# What --all leaves to --deep: a whole leg ("none"), or all but a sample, in words.
declare -A LEG_SAMPLE=(
    [fresh]="as root; --deep also as a user with sudo"
    [gcc]="what fresh has not run; --deep everything"
    [tidy]="what has changed since the last deep run; --deep every file"
    [bench]="the provider; --deep everything"
    [inside]="the provider; --deep everything"
    [clang]=none # coverage and the fuzzers compile the provider with it, and test that
    [valgrind]="faults and watches in two of six situations; --deep all"
    [window]="as it ships; --deep also with the sanitizers"
    [arm32-explorer]="what is visible is compared; --deep everything"
    [fuzz]="the provider, 5 s a target; --deep everything, 60 s"
    [soak]="a minute of each; --deep 1,000,000 loadings and an hour"
    [deb]=none # builds all once more, and makes a machine: longer than what --all has left
    [kills]=none
    [walks]=none
    [mutants]=none
)

# What a leg needs beyond the packages of ./run.
declare -A LEG_PACKAGES=(
    [fresh]="mmdebstrap"
    [gcc]="$TEST_PACKAGES"
    [window]="${WINDOW_PACKAGES[*]} $TEST_PACKAGES xclip xdotool xvfb"
    [clang]="clang-19 googletest python3"
    [format]="clang-format-19"
    [shell]="shellcheck"
    [tidy]="${WINDOW_PACKAGES[*]} clang-19 clang-tidy-19 libbenchmark-dev libglib2.0-dev valgrind xclip xdotool xvfb $TEST_PACKAGES"
    [hardening]="binutils"
    [abi]="abigail-tools python3"
    [coverage]="clang-19 googletest libclang-rt-19-dev llvm-19"
    [bench]="valgrind"
    [tv]="binutils"
    [inside]="$TEST_PACKAGES"
    [asan]="$TEST_PACKAGES"
    [i686]="g++-i686-linux-gnu googletest libjsoncpp-dev:i386"
    [valgrind]="googletest valgrind"
    [arm32]="g++-arm-linux-gnueabihf googletest libjsoncpp-dev:armhf qemu-user-static"
    [tv-arm32]="binutils g++-arm-linux-gnueabihf libjsoncpp-dev:armhf"
    [arm32-explorer]="g++-arm-linux-gnueabihf libjsoncpp-dev:armhf qemu-user-static $TEST_PACKAGES"
    [fuzz]="clang-19 jq libclang-rt-19-dev llvm-19"
    [soak]="$TEST_PACKAGES"
    [deb]="$DEB_PACKAGES mmdebstrap"
    [kills]="$TEST_PACKAGES"
    [walks]="$TEST_PACKAGES"
    [mutants]="$TEST_PACKAGES"
)

# What it needs beyond these to run whole, in --deep.
declare -A LEG_DEEP_PACKAGES=(
    [bench]="${WINDOW_PACKAGES[*]} dbus-daemon dconf-cli dconf-gsettings-backend g++-arm-linux-gnueabihf libbenchmark-dev libglib2.0-bin libglib2.0-dev libjsoncpp-dev:armhf xdotool xvfb"
)

# Without these, continuous integration has proven nothing.
NEVER_SKIPPED=(fresh gcc asan)

is_leg() { [[ -n ${1:-} && -n ${LEG_TITLE[$1]:-} ]]; }

is_deep_only() { [[ ${LEG_SAMPLE[$1]:-} == none ]]; }

# A line of the leg's output that ./test repeats in its summary.
remark() { say "remark: $*"; }

# --- Suites, each in a build of its own ----------------------------------------------------------

leg_fresh() {
    scripts/fresh
    ! deep || scripts/fresh --as-user
}

# What ./run has built is not built once more for whoever waits; what has passed on a fresh machine is not run once more.
leg_gcc() {
    if short; then
        build_and_test tested short
    elif has_passed fresh && ! deep; then
        build_and_test gcc rest
    else
        build_and_test gcc
    fi
}
# The sanitizers take longer over the toolkit than --all has left.
leg_window() {
    build_and_test window-tests
    ! deep || build_and_test window-asan
}
leg_clang() { build_and_test clang; }
leg_asan() { build_and_test asan; }
leg_i686() { build_and_test i686; }
leg_arm32() { build_and_test arm32; }

leg_coverage() {
    rm -rf build/coverage/profiles
    build_and_test coverage
    scripts/coverage build/coverage
}

# A process for each test would spend its time on starting: each program runs whole, in two halves.
leg_valgrind() {
    local valgrind program half jobs=() job status=0 filter='-On/*/AnotherAssistant:On/*/NotSetUp:On/*/Ready:On/*/SignedOut'
    ! deep || filter='*'
    build valgrind
    IFS=';' read -ra valgrind < <(sed -n 's/^CMAKE_CROSSCOMPILING_EMULATOR:[^=]*=//p' build/valgrind/CMakeCache.txt)
    for program in provider-tests provider-fresh-tests; do
        for half in 0 1; do
            GTEST_FILTER=$filter GTEST_TOTAL_SHARDS=2 GTEST_SHARD_INDEX=$half SI_MODEL_STEPS=2000 "${valgrind[@]}" \
                build/valgrind/bin/$program --gtest_output="xml:$LOGS/$LEG.$program.$half.xml" &
            jobs+=($!)
        done
    done
    for job in "${jobs[@]}"; do wait "$job" || status=1; done
    return $status
}

# build_and_test PRESET [TESTS]: TESTS is the preset of the tests, where that is another one.
build_and_test() {
    local preset=$1 tests=${2:-$1} folder=/dev/shm
    build "$preset"
    # What only lasts for a test needs no disk, whose every write would be waited for.
    [[ -d $folder && -w $folder ]] || folder=/tmp
    TMPDIR=${TMPDIR:-$folder} ctest --preset "$tests" --output-junit "$ROOT/$LOGS/$LEG.$preset.xml"
}

# --- Checks of the sources -----------------------------------------------------------------------

leg_format() {
    local unformatted
    unformatted=$(find_sources | xargs clang-format-19 --dry-run 2>&1 | sed -n 's/^\([^:]*\):.*clang-format-violations.*/\1/p' | sort -u)
    [[ -z $unformatted ]] || die "run clang-format-19 -i on:"$'\n'"$unformatted"
}

find_sources() {
    find . \( -path ./build -o -path ./.git \) -prune -o -regex '.*\.\(h\|cpp\|c\)' -print
}

leg_shell() {
    local scripts
    mapfile -t scripts < <(grep -rlE --exclude-dir=build --exclude-dir=.git --exclude='*.md' '^#!.*\b(bash|sh)$|^# shellcheck shell=' .)
    shellcheck "${scripts[@]}"
}

leg_tidy() { scripts/tidy; }

leg_words() { scripts/check-words; }

# --- Checks of the library -----------------------------------------------------------------------

leg_hardening() {
    build release si-ready
    scripts/check-library build/release
}

leg_abi() {
    tests/scripts/abi_test.py
    scripts/abi
}

leg_reproducible() {
    local copies=build/reproducible folder
    rm -rf "$copies"
    for folder in "$copies/a" "$copies/another/folder"; do
        mkdir -p "$folder"
        tar --create --exclude=./build --exclude=./.git . | tar --extract --directory "$folder"
        cmake -S "$folder" -B "$folder/build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
            -DCMAKE_COMPILE_WARNING_AS_ERROR=ON -DSI_BUILD_VIRTUAL_TV=OFF -DSI_BUILD_TESTS=OFF
        cmake --build "$folder/build"
    done
    cmp "$copies"/{a,another/folder}/build/lib/libsi-ready.so
}

# Beside the commit before; what is not committed yet, beside the last one.
leg_bench() {
    local before=HEAD^ extent=(--sample)
    build bench
    git diff --quiet HEAD -- abi cmake platform si-ready || before=HEAD
    if deep; then
        extent=()
        build arm32 si-ready
        cmake --preset release -B build/bench-whole -DSI_BUILD_BENCHMARKS=ON -DSI_BUILD_WINDOW=ON
        cmake --build build/bench-whole --target explorer-bench store-bench vtv vtv-app vtv-window
    fi
    scripts/bench "${extent[@]}" --against $before
}

leg_tv() { build_for_tv build/tv; }
leg_tv_arm32() { build_for_tv build/tv-arm32 --toolchain "$ROOT/cmake/arm-linux-gnueabihf.cmake"; }

build_for_tv() {
    local build=$1 sdk
    shift
    cmake -S tests/tv-sdk -B "$build/sdk" -G Ninja "$@"
    cmake --build "$build/sdk"
    sdk=$(printf '%s;' "$ROOT/$build"/sdk/lib*.so)

    # A library of the SDK that is forgotten must be named when linking, not when the TV starts.
    if link_for_tv "$build" "${sdk%%;*}" "$@" >"$build/incomplete.log" 2>&1 ||
        ! grep -q 'undefined reference' "$build/incomplete.log"; then
        cat "$build/incomplete.log"
        die "linking with only ${sdk%%;*} should have named what is missing"
    fi
    link_for_tv "$build" "${sdk%;}" "$@"
    scripts/check-library "$build"
    grep -q tv-sdk-operation "$build/lib/libsi-ready.so" || die "the SDK's own headers were not used"
}

link_for_tv() {
    local build=$1 libraries=$2
    shift 2
    cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_COMPILE_WARNING_AS_ERROR=ON "$@" \
        -DSI_TV_SDK_INCLUDE_DIR="$ROOT/tests/tv-sdk/include" -DSI_TV_SDK_LIBRARIES="$libraries"
    cmake --build "$build"
}

# The binary that ships is the one that is proven.
leg_arm32_explorer() {
    local build=build/arm32-explorer status=0 only=(--only visible)
    local explore=(qemu-arm-static -L / "$build/bin/vtv-explore")
    ! deep || only=()
    build gcc vtv-explore si-ready
    build arm32-explorer
    build/gcc/bin/vtv-explore table --json --quiet >"$build/x86-64.json"
    "${explore[@]}" table --json --quiet >"$build/arm.json"
    cmp "$build"/{x86-64,arm}.json
    "${explore[@]}" diff --quiet --most-seconds 7200 "${only[@]}" "$build"/lib/libsi-ready.so "$build"/lib/libsi-ready.so
    "${explore[@]}" diff --quiet "${only[@]}" "$build"/lib/lib{si-ready,broken-both-entries}.so || status=$?
    ((status == 1)) || die "diff ended with $status, although the second provider shows both entries"
}

leg_inside() {
    local targets=(si-ready)
    ! deep || targets=(all)
    cmake -S tests/inside -B build/inside -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_COMPILE_WARNING_AS_ERROR=ON
    cmake --build build/inside --target "${targets[@]}"
    ! deep || ctest --test-dir build/inside -R '^house|^provider' --output-junit "$ROOT/$LOGS/$LEG.xml"
}

# --- What takes long -----------------------------------------------------------------------------

leg_fuzz() {
    if deep; then
        scripts/fuzz --seconds 60
        scripts/fuzz --coverage
    else
        scripts/fuzz --seconds 5 provider replace
    fi
}

leg_soak() {
    local loadings=40000 seconds=60 job status=0
    ! deep || loadings=1000000 seconds=3600
    build gcc
    SI_LOADINGS=$loadings build/gcc/bin/provider-load-tests --gtest_output="xml:$LOGS/$LEG.load.xml" &
    job=$!
    tests/soak/soak.py --build build/gcc --seconds $seconds || status=1
    wait $job || status=1
    return $status
}

leg_deb() { scripts/deb; }

leg_kills() {
    build gcc
    VTV_KILLS=10000 build/gcc/bin/store-tests --gtest_filter='StoreKill*' --gtest_output="xml:$LOGS/$LEG.kills.xml"
    VTV_POWER_CYCLES=500 build/gcc/bin/virtual-tv-tests --gtest_filter='*PowerCycle*' --gtest_output="xml:$LOGS/$LEG.cycles.xml"
    tests/torture/torture.py --build build/gcc --moments 1000 --jobs 2 load restore import power-cycle
}

leg_walks() {
    local seed
    build gcc
    for ((seed = 1; seed <= 20; ++seed)); do
        SI_MODEL_SEED=$seed build/gcc/bin/provider-tests --gtest_filter='Model.*' --gtest_output="xml:$LOGS/$LEG.$seed.xml"
        SI_MODEL_SEED=$seed build/gcc/bin/explain-tests --gtest_filter='*InEveryState*:*EachReason*' --gtest_output="xml:$LOGS/$LEG.explain.$seed.xml"
    done
}

leg_mutants() {
    build gcc
    tests/explorer/mutants.py --build build/gcc --faults
    tests/explorer/mutants.py --build build/gcc --faults --narrow
    tests/explorer/mutants.py --build build/gcc --all --results build/mutants # which goes on where it was interrupted
    tests/broken-on-purpose
}
