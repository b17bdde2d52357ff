#!/bin/sh
# Composites a picture with alpha over a photograph, in a few modes, renders the scene of examples/ in motion, and says
# where the results lie.
set -eu
qx=$1 samples=$2 out=$3
photograph=$samples/grace_hopper.jpg
layer=$samples/Minduka_Present_Blue_Pack.png
scene=$(dirname "$0")/../examples/moving-layer/scene.json
mkdir -p "$out/moving-layer"
"$qx" comp "$photograph" "$layer" --at 20,20 --mode over \
                         "$layer" --at 260,300 --mode hard-light --opacity 0.9 \
                         "$layer" --at 20,330 --mode screen --linear 2.2 -o "$out/composite.png"
"$qx" modes "$photograph" "$layer" -o "$out/modes.png"
echo "The composite lies in $out/composite.png, a sheet of all modes in $out/modes.png."

"$qx" render "$scene" -o "$out/moving-layer/frame.##.png" --frames 4-28x8
"$qx" render "$scene" -o "$out/moving-layer.mp4"
echo "Frames of a moving layer lie in $out/moving-layer, its movie is $out/moving-layer.mp4."
