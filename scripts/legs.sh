# The legs of ./test: each proves the product in one way. Sourced, not run.
# shellcheck shell=bash disable=SC2034,SC2153

# In the order in which they run: what every reader meets first, then what tells most in a minute.
LEGS=(fresh gcc clang format shell tidy words hardening reproducible coverage tv inside asan i686 valgrind arm32 tv-arm32
    fuzz kills walks mutants)

declare -A LEG_TITLE=(
    [fresh]="the README's commands on a Debian 12 with nothing but apt and git"
    [gcc]="everything, as it ships, with g++"
    [clang]="the provider, with clang"
    [format]="every source is formatted by .clang-format"
    [shell]="shellcheck has nothing to say to any script"
    [tidy]="every room and the tests satisfy .clang-tidy"
    [words]="the sources speak of the product alone"
    [hardening]="the library's exports and hardening"
    [reproducible]="the same library, byte for byte, built in two folders"
    [coverage]="the provider's lines, branches and conditions"
    [tv]="a TV build against a small stand-in for the TV's SDK"
    [inside]="the project builds as a part of another one"
    [asan]="everything, with address, undefined-behaviour and leak sanitizers"
    [i686]="the provider for 32-bit x86, with the sanitizers"
    [valgrind]="the provider under valgrind"
    [arm32]="the provider for 32-bit ARM, under qemu"
    [tv-arm32]="the TV build for 32-bit ARM"
    [fuzz]="the fuzzers find nothing"
    [kills]="the settings store survives 10,000 kills"
    [walks]="the provider answers as its model on 20 random walks"
    [mutants]="every fault that can be made is told from the provider"
)

# What --all leaves to --deep: a whole leg ("none"), or all but a sample, in words.
declare -A LEG_SAMPLE=(
    [fresh]="as root; --deep also as a user with sudo"
    [tidy]="what has changed since the last deep run; --deep every file"
    [inside]="the provider; --deep everything"
    [fuzz]="5 s a target; --deep 60 s"
    [kills]=none
    [walks]=none
    [mutants]=none
)

# What a leg needs beyond the packages of ./run.
declare -A LEG_PACKAGES=(
    [fresh]="mmdebstrap"
    [gcc]="$TEST_PACKAGES"
    [clang]="clang-19 googletest"
    [format]="clang-format-19"
    [shell]="shellcheck"
    [tidy]="clang-19 clang-tidy-19 libbenchmark-dev $TEST_PACKAGES"
    [hardening]="binutils"
    [coverage]="clang-19 googletest libclang-rt-19-dev llvm-19"
    [tv]="binutils"
    [inside]="$TEST_PACKAGES"
    [asan]="$TEST_PACKAGES"
    [i686]="g++-i686-linux-gnu googletest libjsoncpp-dev:i386"
    [valgrind]="googletest valgrind"
    [arm32]="g++-arm-linux-gnueabihf googletest libjsoncpp-dev:armhf qemu-user-static"
    [tv-arm32]="binutils g++-arm-linux-gnueabihf libjsoncpp-dev:armhf"
    [fuzz]="clang-19 libclang-rt-19-dev"
    [kills]="$TEST_PACKAGES"
    [walks]="$TEST_PACKAGES"
    [mutants]="$TEST_PACKAGES"
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

leg_gcc() { build_and_test gcc; }
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
    local valgrind program half jobs=() job status=0
    build valgrind
    IFS=';' read -ra valgrind < <(sed -n 's/^CMAKE_CROSSCOMPILING_EMULATOR:[^=]*=//p' build/valgrind/CMakeCache.txt)
    for program in provider-tests provider-fresh-tests; do
        for half in 0 1; do
            GTEST_TOTAL_SHARDS=2 GTEST_SHARD_INDEX=$half SI_MODEL_STEPS=2000 "${valgrind[@]}" \
                build/valgrind/bin/$program --gtest_output="xml:$LOGS/$LEG.$program.$half.xml" &
            jobs+=($!)
        done
    done
    for job in "${jobs[@]}"; do wait "$job" || status=1; done
    return $status
}

build_and_test() {
    local folder=/dev/shm
    build "$1"
    # What only lasts for a test needs no disk, whose every write would be waited for.
    [[ -d $folder && -w $folder ]] || folder=/tmp
    TMPDIR=${TMPDIR:-$folder} ctest --preset "$1" --output-junit "$ROOT/$LOGS/$LEG.$1.xml"
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
    mapfile -t scripts < <(grep -rlE --exclude-dir=build --exclude-dir=.git '^#!.*\b(bash|sh)$|^# shellcheck shell=' .)
    shellcheck "${scripts[@]}"
}

leg_tidy() { scripts/tidy; }

leg_words() { scripts/check-words; }

# --- Checks of the library -----------------------------------------------------------------------

leg_hardening() {
    build release si-ready
    scripts/check-library build/release
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

leg_inside() {
    local targets=(si-ready)
    ! deep || targets=(all)
    cmake -S tests/inside -B build/inside -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_COMPILE_WARNING_AS_ERROR=ON
    cmake --build build/inside --target "${targets[@]}"
    ! deep || ctest --test-dir build/inside -R '^house|^provider' --output-junit "$ROOT/$LOGS/$LEG.xml"
}

# --- What takes long -----------------------------------------------------------------------------

leg_fuzz() {
    local seconds=5 fuzzer found=build/fuzz/found
    ! deep || seconds=60
    build fuzz
    mkdir -p $found
    for fuzzer in build/fuzz/bin/*-fuzz; do
        # It writes what it finds interesting into the first folder; the others are where it starts.
        "$fuzzer" -max_total_time=$seconds -print_final_stats=1 -artifact_prefix=$found/ $found fuzz/corpus
    done
}

leg_kills() {
    build gcc store-tests
    VTV_KILLS=10000 build/gcc/bin/store-tests --gtest_filter='StoreKill*' --gtest_output="xml:$LOGS/$LEG.kills.xml"
}

leg_walks() {
    local seed
    build gcc
    for ((seed = 1; seed <= 20; ++seed)); do
        SI_MODEL_SEED=$seed build/gcc/bin/provider-tests --gtest_filter='Model.*' --gtest_output="xml:$LOGS/$LEG.$seed.xml"
    done
}

leg_mutants() {
    build gcc
    explorer/mutants.py --build build/gcc --all
}
