#!/usr/bin/env bash
# Installs the Debian packages that are missing, by what they are for:
#
#   scripts/install-packages.sh PURPOSE...
#
# PURPOSE is build, serve, test, suite, clang, lint, coverage, bench, package or units; Debian 12 has all
# of them, Debian 13 those of the first five. Says nothing when all of them are there. A server that is
# installed is neither started nor enabled.
set -euo pipefail

declare -A packages=(
    [build]="git g++ cmake ninja-build nlohmann-json3-dev libcli11-dev"
    [serve]="lighttpd curl"
    # The quick tests; and what the whole suite takes beside them.
    [test]="libgtest-dev libssl-dev openssl python3 python3-jsonschema python3-yaml openapi-specification
            util-linux mount"
    [suite]="valgrind strace curl mandoc groff-base pkg-config zsh fish apache2-bin lighttpd lighttpd-mod-openssl nginx
             fcgiwrap haproxy chromium chromium-driver python3-selenium nodejs"
    [clang]="clang libclang-rt-dev"
    # The layout of the sources is of this version of the formatter, which Debian 12 has.
    [lint]="clang-format-14 clang-tidy cppcheck shellcheck"
    [coverage]="clang llvm"
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
find_missing() {
    local purpose package status
    missing=()
    for purpose in "$@"; do
        [[ -n ${packages[$purpose]:-} ]] || fail "no packages are listed for '$purpose'"
        for package in ${packages[$purpose]}; do
            status=$(dpkg-query -W -f='${db:Status-Abbrev}' "$package" 2>/dev/null) || status=
            [[ $status == ?i* || " ${missing[*]} " == *" $package "* ]] || missing+=("$package")
        done
    done
}

find_missing "$@"
[[ ${#missing[@]} -gt 0 ]] || exit 0

if [[ $(id -u) -ne 0 ]]; then
    command -v sudo >/dev/null ||
        fail "${#missing[@]} packages are missing; as root, run: $(realpath "$0") $*"
    exec sudo "$(realpath "$0")" "$@"
fi

# Of several that run at once, one installs, and the others find it done.
exec {lock}>/run/sign-install-packages.lock
flock "$lock"
find_missing "$@"
[[ ${#missing[@]} -gt 0 ]] || exit 0

log=$(mktemp)
policy=/usr/sbin/policy-rc.d
own_policy=
clean_up() {
    rm -f "$log"
    [[ -z $own_policy ]] || rm -f "$policy"
}
trap clean_up EXIT
trap 'exit 130' INT TERM

apt() {
    DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=600 -y --no-install-recommends "$@" \
        </dev/null >"$log" 2>&1
}

# Runs a step that writes to the log, which matters only when it fails.
step() {
    "$@" || {
        cat "$log" >&2
        fail "$1 failed; could not install ${missing[*]}"
    }
}

echo "Fetching the lists of packages"
step apt update
step apt --print-uris install "${missing[@]}"
total=$(grep -oE '[0-9]+ newly installed' "$log" | head -n 1) || total=
size=$(sed -nE 's|^Need to get ([^/]*/)?([0-9.,]+ [kM]?B) of archives.*|, \2|p' "$log")
echo "Installing ${#missing[@]} packages with what they need (${total:-none newly installed}$size)"

# A server that comes as a package would start at once, on a port open to the network, and again when
# the machine does. The policy file says no to the first; the second is taken back for those units
# that were not there before.
new_units=()
for unit in lighttpd.service nginx.service fcgiwrap.service fcgiwrap.socket apache2.service \
    apache-htcacheclean.service haproxy.service; do
    [[ -e /lib/systemd/system/$unit ]] || new_units+=("$unit")
done
if [[ ! -e $policy ]]; then
    own_policy=yes
    printf '#!/bin/sh\nexit 101\n' >"$policy"
    chmod 755 "$policy"
fi

disable() {
    local unit name
    for unit in "${new_units[@]}"; do
        [[ -e /lib/systemd/system/$unit ]] || continue
        # As from a package's own script, since it answers to no one else: no upgrade enables it again.
        DPKG_MAINTSCRIPT_PACKAGE=${unit%.*} deb-systemd-helper disable "$unit" || return
        # Where another init runs.
        name=${unit%.*}
        [[ ! -e /etc/init.d/$name ]] || update-rc.d "$name" disable || return
        # Where the administrator's own policy file let it start.
        [[ ! -d /run/systemd/system ]] || systemctl stop "$unit" || return
    done >>"$log" 2>&1
}

# Also when the installation stops half-way.
trap 'disable || true; clean_up' EXIT
step apt install "${missing[@]}"
step disable
trap clean_up EXIT
echo "Installed"
