#!/usr/bin/env bash
# Renders the application icon's PNG sizes from its SVG (needs rsvg-convert, librsvg2-bin).
# The SVG is the tray icon's built-in drawing (src/ui/keyboard_icon.cpp); a test checks
# that the two are the same.
set -euo pipefail
cd "$(dirname "$0")"
for size in 16 22 24 32 48 64 128 256; do
  mkdir -p "${size}x${size}"
  rsvg-convert -w "$size" -h "$size" org.orvantis.Orvantis.svg -o "${size}x${size}/org.orvantis.Orvantis.png"
done
