#!/usr/bin/env bash
# Turns the drawings in this folder into the pictures the program embeds
# (ui/resources/images, ui/resources/icons, ui/resources/launcher.ico) and
# merges the page font. The outputs are committed, so a build never needs
# these tools; run this again after changing a drawing.
# Needs Debian's librsvg2-bin, imagemagick, woff2 and fonttools, and
# `npm ci` at the repository root (for the Cairo font files).
set -euo pipefail
art=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$art/../.." && pwd)
out="$root/ui/resources"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$out/images" "$out/icons"

# Strip metadata and timestamps so the same drawing gives the same bytes.
png() { /usr/bin/convert "$1" -strip -define png:exclude-chunks=date,time "$2"; }

rsvg-convert -w 1600 -h 1000 "$art/scene.svg" -o "$work/scene.png"
/usr/bin/convert "$work/scene.png" -strip -interlace JPEG -quality 84 -sampling-factor 4:2:0 "$out/images/scene.jpg"
rsvg-convert -w 192 -h 192 "$art/logo.svg" -o "$work/logo.png"
png "$work/logo.png" "$out/images/logo.png"

# Each event icon is one glyph (the middle of icons/NN-name.svg) set into
# both badges: lit while the event runs, unlit while it is still to come.
for glyph in "$art"/icons/*.svg; do
  id=$(basename "$glyph" | sed -E 's/^0*([0-9]+)-.*/\1/')
  sed '1d;$d' "$glyph" > "$work/glyph"
  for state in active incoming; do
    sed -e "/<!--GLYPH-->/r $work/glyph" -e '/<!--GLYPH-->/d' "$art/icon_frame_$state.svg" > "$work/icon.svg"
    rsvg-convert "$work/icon.svg" -o "$work/icon.png"
    png "$work/icon.png" "$out/icons/${id}_$state.png"
  done
done

# The program icon: the crest at the sizes Windows asks for.
for size in 16 32 48 256; do
  rsvg-convert -w $size -h $size "$art/logo.svg" -o "$work/logo-$size.png"
done
/usr/bin/convert "$work"/logo-{16,32,48,256}.png "$out/launcher.ico"

# One font file for both scripts: Cairo's Latin and Arabic subsets merged.
fonts="$root/node_modules/@fontsource/cairo/files"
for subset in latin arabic; do
  cp "$fonts/cairo-$subset-400-normal.woff2" "$work/"
  woff2_decompress "$work/cairo-$subset-400-normal.woff2"
done
(cd "$work" && pyftmerge --output-file=Cairo.ttf cairo-latin-400-normal.ttf cairo-arabic-400-normal.ttf)
cp "$work/Cairo.ttf" "$out/Cairo.ttf"
