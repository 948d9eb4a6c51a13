#!/usr/bin/env bash
# Builds the programs and runs their tests on the systems that they are to work on, each made anew in
# a folder below build/portability. Needs root, the network, and some 3 GB for each:
#
#   scripts/check-portability.sh [CASE...]     these, all of them unless told otherwise
#
# CASE is debian12-gcc, debian12-clang, debian13-gcc or debian13-clang: scripts/test.sh in such a system,
# as a newcomer runs it; or debian12-arm64: built by a cross compiler, and those tests of it that are C++,
# under the emulator of qemu-user.
set -euo pipefail
cd "$(dirname "$0")/.."
exec </dev/null

declare -A suites=([debian12]=bookworm [debian13]=trixie)
place=$PWD/build/portability
root=
emulator=/proc/sys/fs/binfmt_misc/sign-aarch64
mkdir -p "$place"

clean_up() {
    [[ ! -e $emulator ]] || echo -1 >"$emulator"
    [[ -z $root ]] || rm -rf --one-file-system "$root"
}
trap clean_up EXIT
trap 'exit 130' INT TERM

# Runs a command in the system. No time zone is mounted into it: a package has to replace that file.
inside() {
    systemd-nspawn --quiet --register=no --keep-unit --pipe --timezone=off --directory="$root" --chdir=/sign \
        --setenv=DEBIAN_FRONTEND=noninteractive "$@"
}

make_system() {
    root=$place/$1
    rm -rf --one-file-system "$root"
    mmdebstrap --quiet --variant=apt "${suites[${1%-*}]}" "$root"
    mkdir "$root/sign"
    git ls-files -z | tar --create --null --files-from=- | tar --extract --directory="$root/sign"
}

run_test_script() {
    local compilers=()
    if [[ $1 == *-clang ]]; then
        inside scripts/install-packages.sh build clang
        compilers=(--setenv=CC=clang --setenv=CXX=clang++)
    fi
    inside "${compilers[@]}" scripts/test.sh
}

# Tests that the emulator cannot pass. It prints a message when a program aborts, opens descriptors where
# the program has none, enforces no memory limits, and reports other thread states. The last one has a
# time limit that the emulator is too slow for.
not_emulated='AbortsInSilence|^ProgramAbort|IsAbsentWithoutStandardInput|StandardStreamThatIsClosed'
not_emulated+='|^MappedFileTest.*ThatTheSystemDoesNotMap|^RecursiveMutex.LetsAnotherThreadWait|WritesAMillionEntries'

run_on_arm64() {
    inside dpkg --add-architecture arm64
    inside scripts/install-packages.sh build
    inside apt-get -qq update
    inside apt-get -qqy --no-install-recommends install g++-aarch64-linux-gnu qemu-user-static python3 \
        libgtest-dev:arm64 libssl-dev:arm64 libstdc++6:arm64 >/dev/null
    # The kernel starts the emulator wherever such a program is executed.
    [[ -e ${emulator%/*}/register ]] || mount -t binfmt_misc binfmt_misc "${emulator%/*}"
    sed "s/^:[^:]*:/:${emulator##*/}:/; s|/usr/[^:]*|$root&|" "$root/usr/lib/binfmt.d/qemu-aarch64.conf" \
        >"${emulator%/*}/register"
    inside cmake -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DSIGN_TESTS=ON -DSIGN_QUICK_TESTS=ON \
        -DCMAKE_COMPILE_WARNING_AS_ERROR=ON -DCMAKE_SYSTEM_NAME=Linux -DCMAKE_SYSTEM_PROCESSOR=aarch64 \
        -DCMAKE_CXX_COMPILER=aarch64-linux-gnu-g++ >/dev/null
    inside cmake --build build | awk -f scripts/tenths.awk
    # The labels of the tests in C++ are their folders; the others have none.
    inside ctest --test-dir build --parallel "$(nproc)" --output-on-failure -L . -E "$not_emulated" |
        awk -f scripts/tenths.awk
}

scripts/install-packages.sh units
cases=("$@")
[[ $# -gt 0 ]] || cases=(debian12-gcc debian12-clang debian13-gcc debian13-clang debian12-arm64)
for name in "${cases[@]}"; do
    SECONDS=0
    case $name in
        debian1[23]-gcc | debian1[23]-clang) run=run_test_script ;;
        debian12-arm64) run=run_on_arm64 ;;
        *)
            sed -n '2,9s/^# \?//p' "$0" >&2
            exit 2
            ;;
    esac
    echo "== $name"
    make_system "$name"
    $run "$name"
    echo "portability: $name passes, $((SECONDS / 60)) min $((SECONDS % 60)) s"
    clean_up
done
