#!/bin/sh
# Puts the pictures that the documents speak of into a folder: example-files.sh SAMPLES FOLDER
set -eu
examples=$(dirname "$0")/../examples
mkdir -p "$2"
cp "$1/grace_hopper.jpg" "$2/photograph.jpg"
cp "$1/Minduka_Present_Blue_Pack.png" "$2/gift.png"
cp "$examples/moving-layer/evening.png" "$examples/moving-layer/glow.png" "$examples/moving-layer/pinwheel.png" \
   "$examples/effects/head.png" "$examples/effects/shoulders.png" "$2"
