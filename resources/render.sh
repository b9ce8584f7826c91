#!/usr/bin/env bash
# Makes the PNG files from their SVG sources. They are kept beside them, so that only who changes a picture needs this
# (Debian package: librsvg2-bin).
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")"
for size in 16 22 24 32 48 64 128 256; do
    folder=icons/hicolor/${size}x${size}/apps
    mkdir -p "$folder"
    rsvg-convert --width="$size" --height="$size" --output="$folder/quenby.png" icons/hicolor/scalable/apps/quenby.svg
done
for picture in backStatus backStatusLight; do
    rsvg-convert --output="statusitem/$picture.png" "statusitem/$picture.svg"
done
