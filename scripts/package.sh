#!/usr/bin/env bash
# Installs what is missing, builds the release programs and makes the Debian package of them:
#
#   scripts/package.sh      prints its path, build/release/package/sign-cgi_VERSION_amd64.deb
#
# One commit gives the same bytes, wherever and whenever it is built with the same Debian packages:
# the time of everything in it is the commit's, or SOURCE_DATE_EPOCH if that is set.
set -euo pipefail
cd "$(dirname "$0")/.."
exec </dev/null
umask 022

[[ $# -eq 0 ]] || {
    echo "usage: scripts/package.sh" >&2
    exit 2
}

# cmake and cpack say much; it matters only when they fail.
log=$(mktemp)
trap 'rm -f "$log"' EXIT
quietly() {
    "$@" >"$log" 2>&1 || {
        cat "$log" >&2
        echo "package: this failed: $*" >&2
        exit 1
    }
}

scripts/install-packages.sh build >&2
if [[ -z ${SOURCE_DATE_EPOCH:-} ]]; then
    SOURCE_DATE_EPOCH=$(git log -1 --format=%ct) || {
        echo "package: git tells no time of a commit; set SOURCE_DATE_EPOCH to one" >&2
        exit 1
    }
fi
export SOURCE_DATE_EPOCH
quietly cmake --preset release
echo "Building build/release" >&2
cmake --build --preset release 2>&1 | awk -f scripts/tenths.awk >&2
rm -rf build/release/package
quietly cpack --config build/release/CPackConfig.cmake
# What the package was made of.
rm -rf build/release/package/_CPack_Packages
printf '%s\n' "$PWD"/build/release/package/*.deb
