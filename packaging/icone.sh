#!/usr/bin/env bash
# Draws the program's icon at the usual sizes of the icon theme from its one drawing. Run it after changing
# resources/Media/brezzario.svg and commit the pictures (needs rsvg-convert, package librsvg2-bin).
set -euo pipefail
cd "$(dirname "$0")"
for lato in 16 22 24 32 48 64 128 256 512; do
    mkdir -p "icons/${lato}x${lato}"
    rsvg-convert -w "$lato" -h "$lato" ../resources/Media/brezzario.svg -o "icons/${lato}x${lato}/com.velarmo.Brezzario.png"
done
