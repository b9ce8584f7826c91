#!/usr/bin/env bash
# Installs the OAuth server that tst_oidcsignin signs in at, as tests/oauth2/oidc/package-lock.json has it, into
# build/oidc/. Does nothing when it is there already.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/packages.sh

source=tests/oauth2/oidc target=build/oidc
# The copy is made last: it stands for a complete installation.
cmp -s "$source/package-lock.json" "$target/installed-lock.json" && exit 0
if ! command -v node >/dev/null || ! command -v npm >/dev/null; then
    # shellcheck disable=SC2154
    need_packages "$packages_node"
fi
mkdir -p "$target"
rm -f "$target/installed-lock.json"
cp "$source/package.json" "$source/package-lock.json" "$target"
if ! npm ci --prefix "$target" --ignore-scripts --no-audit --no-fund >"$target/npm.log" 2>&1; then
    tail -n 20 "$target/npm.log" >&2
    echo "The OAuth server for tst_oidcsignin could not be installed; npm's own words stand above." >&2
    exit 1
fi
cp "$source/package-lock.json" "$target/installed-lock.json"
