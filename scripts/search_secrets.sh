#!/usr/bin/env bash
# search_secrets.sh DIR FILE: fails when FILE holds any of the secrets that are listed, one a line, in DIR.
set -euo pipefail
secrets=$(mktemp)
trap 'rm -f "$secrets"' EXIT
find "$1" -type f -name 'secrets-*' -exec cat {} + | sort -u | sed '/^.\{0,7\}$/d' >"$secrets"
count=$(wc -l <"$secrets")
if [ "$count" -eq 0 ]; then
    echo "Secrets: none were given out in this run."
    exit 0
fi
# The search itself is tried first: it must find a secret in a text that holds one.
if [ "$(sed 's/^/before /; s/$/ after/' "$secrets" | grep -cFf "$secrets")" -ne "$count" ]; then
    echo "Secrets: the search finds nothing at all; it is broken." >&2
    exit 1
fi
if found=$(grep -noFf "$secrets" "$2"); then
    echo "Secrets: $(wc -l <<<"$found") places in $2 hold a secret, on lines $(cut -d: -f1 <<<"$found" | sort -un | head -n 10 | paste -sd ' ')" >&2
    exit 1
fi
echo "Secrets: none of $count appears in what the tests printed."
