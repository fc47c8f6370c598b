#!/bin/sh
# Renders svg/ into icons/ and pictures/. The results are committed, so a build
# needs none of the tools; run this after changing a drawing.
# Debian packages: librsvg2-bin icoutils optipng
set -eu

cd "$(dirname "$0")"
for tool in rsvg-convert icotool optipng; do
  command -v "$tool" >/dev/null || {
    echo "render.sh: $tool is missing (packages: librsvg2-bin icoutils optipng)" >&2
    exit 1
  }
done
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p icons pictures

# The drawing made for an icon size: fewer and stronger shapes the smaller it is.
drawing() {
  case $1 in
    16 | 20) echo kestrel-16 ;;
    24) echo kestrel-24 ;;
    32 | 40 | 48) echo kestrel-32 ;;
    *) echo kestrel ;;
  esac
}

# icon NAME [STYLESHEET]: 32-bit bitmaps, and PNG for 256 only: older shells
# cannot read PNG in the small sizes.
icon() {
  name=$1
  style=${2:-}
  bitmaps=
  for size in 16 20 24 32 40 48 64 256; do
    file=$work/$name-$size.png
    rsvg-convert -w "$size" -h "$size" ${style:+-s "$style"} \
      "svg/$(drawing "$size").svg" -o "$file"
    [ "$size" = 256 ] || bitmaps="$bitmaps $file"
  done
  optipng -quiet -o5 -nb -nc -np -strip all "$work/$name-256.png"
  # shellcheck disable=SC2086  # a list of files, none with a space
  icotool -c -b 32 -o "icons/$name.ico" $bitmaps --raw="$work/$name-256.png"
}

# picture NAME WIDTH HEIGHT: NAME.png, NAME-150.png and NAME-200.png, never
# with a palette, whose alpha some loaders drop.
picture() {
  for percent in 100 150 200; do
    file=pictures/$1.png
    [ "$percent" = 100 ] || file=pictures/$1-$percent.png
    rsvg-convert -w $(($2 * percent / 100)) -h $(($3 * percent / 100)) "svg/$1.svg" -o "$work/out.png"
    optipng -quiet -o5 -nb -nc -np -strip all "$work/out.png"
    mv "$work/out.png" "$file"
  done
}

icon kestrel-normal
icon kestrel-work svg/work.css
for name in play stop record-off record-on volume pin close menu; do
  picture "$name" 20 20
done
picture splash 420 240

set -- icons/* pictures/*
echo "$# files, $(cat "$@" | wc -c) bytes"
