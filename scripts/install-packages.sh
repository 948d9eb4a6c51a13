#!/usr/bin/env bash
# Installs the Debian 12 packages that are missing, by what they are for:
#
#   scripts/install-packages.sh PURPOSE...   build, serve, test, clang, lint, coverage, bench, package, units
#
# Says nothing when all of them are there.
set -euo pipefail

declare -A packages=(
    [build]="git g++ cmake ninja-build nlohmann-json3-dev libcli11-dev"
    [serve]="lighttpd curl"
    [test]="libgtest-dev libssl-dev openssl valgrind strace python3 curl mandoc
            apache2-bin lighttpd nginx fcgiwrap
            chromium chromium-driver python3-selenium nodejs
            python3-jsonschema openapi-specification util-linux mount"
    [clang]="clang-14 libclang-rt-14-dev"
    [lint]="clang-format-14 clang-tidy-14 cppcheck shellcheck"
    [coverage]="clang-14 llvm-14"
    [bench]="libbenchmark-dev pkg-config libssl-dev openssl valgrind strace python3 lighttpd nginx fcgiwrap wrk
            librhash-dev libgcrypt20-dev libbotan-2-dev nettle-dev libcrypto++-dev"
    [package]="lintian mmdebstrap mandoc util-linux"
    [units]="mmdebstrap systemd-container util-linux"
)

fail() {
    echo "install-packages: $*" >&2
    exit 1
}

missing=()
for purpose in "$@"; do
    [[ -n ${packages[$purpose]:-} ]] || fail "no packages are listed for '$purpose'"
    for package in ${packages[$purpose]}; do
        status=$(dpkg-query -W -f='${db:Status-Abbrev}' "$package" 2>/dev/null) || status=
        [[ $status == ?i* || " ${missing[*]} " == *" $package "* ]] || missing+=("$package")
    done
done
[[ ${#missing[@]} -gt 0 ]] || exit 0

as_root=()
if [[ $(id -u) -ne 0 ]]; then
    command -v sudo >/dev/null || fail "as root, run: apt-get install ${missing[*]}"
    as_root=(sudo)
fi

log=$(mktemp)
trap 'rm -f "$log"' EXIT
echo "Installing ${missing[*]}"
# A server that comes as a package would start at once, on a port open to the network. The policy
# file says no to that while packages are installed.
"${as_root[@]}" bash -s -- "${missing[@]}" >"$log" 2>&1 <<'INSTALL' || {
set -euo pipefail
policy=/usr/sbin/policy-rc.d
if [[ ! -e $policy ]]; then
    trap 'rm -f "$policy"' EXIT
    printf '#!/bin/sh\nexit 101\n' >"$policy"
    chmod 755 "$policy"
fi
apt-get update
DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "$@" </dev/null
INSTALL
    cat "$log" >&2
    fail "apt-get could not install ${missing[*]}"
}
