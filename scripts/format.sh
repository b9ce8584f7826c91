#!/usr/bin/env bash
# format.sh: formats every C++ file.  format.sh --check: fails on a difference.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/packages.sh
need_packages "$packages_format"
mode=(-i)
[ "${1:-}" = --check ] && mode=(--dry-run --Werror)
git ls-files -z --cached --others --exclude-standard -- '*.h' '*.cpp' | xargs -0 -n 16 clang-format "${mode[@]}"
