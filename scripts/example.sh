#!/bin/sh
# Composites a picture with alpha over a photograph, in a few modes, renders the scene of examples/ in motion, and says
# where the results lie.
set -eu
qx=$1 samples=$2 out=$3
sh "$(dirname "$0")/example-files.sh" "$samples" "$out"
photograph=$out/photograph.jpg
layer=$out/gift.png
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

retime=$out/retime
mkdir -p "$retime"
QX_CACHE_DIR=$retime/cache
export QX_CACHE_DIR
"$qx" render "$(dirname "$0")/../examples/retime/scene.json" -o "$retime/every-fourth.##.png" --frames 1-33x4
between() { "$qx" retime "$retime/every-fourth.##.png" --in 1-33 --gaps --in-fps 24 --fps 24 "$@"; }
between -o "$retime/flow.mp4"
between --frames 19 -o "$retime/flow.##.png"
between --frames 19 --method blend -o "$retime/blend.##.png"
"$qx" render "$(dirname "$0")/../examples/retime/scene.json" -o "$retime/own.##.png" --frames 19
"$qx" flow "$retime/every-fourth.17.png" "$retime/every-fourth.21.png" -o "$retime/field.flo" \
      --picture "$retime/field.png"
echo "Every fourth frame of a scene lies in $retime, made whole again in flow.mp4; its frame 19 as it is rendered, as it is
made between two others, and as their mix: own.19.png, flow.19.png, blend.19.png; what moves where there, in field.png."

effects=$(dirname "$0")/../examples/effects
"$qx" render "$effects/scene.json" -o "$out/shadow-and-glow.mp4"
"$qx" blur "$photograph" --kind disc --radius 14 --map "$effects/depth.png" --gain 1.5 --threshold 0.7 --linear 2.2 \
      -o "$out/focus.png"
"$qx" convolve "$photograph" --filter edges -o "$out/edges.png"
"$qx" convolve "$photograph" --filter sharpen -o "$out/sharp.png"
"$qx" matte "$effects/shoulders.png" --feather 10 "$effects/head.png" --op max --feather 30 --passes 3 \
      "$effects/stripes.png" --op subtract --opacity 0.6 --feather 8 --apply "$photograph" -o "$out/masked.png"
"$qx" convert "$layer" --premultiply --matte 1,1,1 -o "$out/on-white.png"
"$qx" guess-alpha "$out/on-white.png" -o "$out/repaired.png"
"$qx" convert "$photograph" --from srgb --to display-p3 --depth 16 -o "$out/photograph-p3.png"
"$qx" convert "$effects/ramp.png" --depth 8 -q -o "$out/ramp-bands.png"
"$qx" convert "$effects/ramp.png" --depth 8 --dither -q -o "$out/ramp-dithered.png"
echo "A shadow and a glow move in $out/shadow-and-glow.mp4; a portrait out of focus by a map, its edges, sharper, and
masked lie in $out/focus.png, edges.png, sharp.png, masked.png; a logo off its white matte in repaired.png; the
photograph in Display P3 in photograph-p3.png; a dark 16-bit ramp at 8 bits in ramp-bands.png and ramp-dithered.png."
