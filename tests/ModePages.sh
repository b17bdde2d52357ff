#!/bin/sh
# The pages of modes are those that the command's own list makes: ModePages.sh QX SOURCES FOLDER
set -eu
qx=$1 sources=$2 folder=$3
rm -rf "$folder"
python3 "$sources/scripts/mode-pages.py" "$qx" "$folder"
for page in "$folder"/*.md; do cmp "$page" "$sources/docs/modes/$(basename "$page")"; done
for swatch in "$folder"/*.png; do "$qx" diff "$swatch" "$sources/docs/modes/$(basename "$swatch")"; done
[ "$(ls "$folder" | wc -l)" -eq "$(ls "$sources/docs/modes" | wc -l)" ]
