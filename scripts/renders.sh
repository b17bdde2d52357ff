#!/bin/sh
# Compares the renders of two builds of the library and of the command: renders.sh BUILD OTHER_BUILD SAMPLES
# A build is a folder with bin/qx, lib/ and CMakeCache.txt, which tells where its sources lie. This state's qx_renders is
# compiled against the headers and the library of the other one. Says which renders differ, or that all agree.
set -eu
[ $# -eq 3 ] || { echo "usage: $0 BUILD OTHER_BUILD SAMPLES" >&2; exit 2; }
renders=$(cd "$(dirname "$0")/../bench/renders" && pwd)
example=$(cd "$renders/../../examples/moving-layer" && pwd)
samples=$(cd "$3" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# comp NAME ARGUMENTS...: makes the file NAME with the command of the build at hand.
comp() {
    out=$1
    shift
    "$qx" comp "$@" -q -o "$out"
}

pictures() {
    comp photo.tif photo.jpg photo.jpg --mode copy --depth 16
    comp logo.exr logo.png logo.png --mode copy --depth 32
    comp half.exr logo.png logo.png --mode copy --depth 32 --half
    comp mask.png photo.tif logo.png --mode alpha-multiply --at 30,30
    comp over.png photo.jpg logo.png --at 20,20
    comp over.jpg photo.jpg logo.png --at 20,20
    comp over.tif photo.tif logo.png --at -9,300
    comp over.exr photo.tif logo.exr --at 100,40 --mode screen
    comp float.tif logo.exr photo.jpg --mode overlay
    comp half-over.exr photo.jpg half.exr --mode add --half --at 7,9
    comp jpeg-of-float.jpg logo.exr photo.tif --mode soft-light
    comp linear8.png photo.jpg logo.png --mode linear-light --linear 2.2 --opacity 0.7
    comp linear16.png photo.tif logo.png --mode hue --linear 1.8 --at 40,50
    comp masked.png photo.jpg photo.tif --mode multiply --mask mask.png --depth 8
    comp masked-luma.tif photo.tif photo.jpg --mode divide --mask logo.png --mask-kind luma --mask-at 50,60
    comp masked-inverse.exr photo.jpg photo.tif --mode linear-burn --mask mask.png --mask-kind inverse --depth 32
    comp dissolve.png photo.jpg logo.png --mode dissolve --opacity 0.5 --seed 9 --field odd
    comp rgb-only.png mask.png photo.jpg --mode hard-light --rgb-only
    comp placed.png photo.jpg logo.png --anchor 64,64 --scale 1.5 --rotate 30 --at 200,150 --quality bicubic
    comp small.tif photo.tif photo.jpg --scale 0.31,0.4 --rotate -12 --translate 60.25,70.5 --quality bilinear
    comp draft.png photo.jpg logo.png --scale 3 --rotate 77 --at 200,150 --quality draft --mode exclusion
    comp matrix.exr photo.tif logo.exr --matrix 1.2,0.3,0.001,-0.2,0.9,0,60,80,1 --linear 2.2
    comp layers.png photo.jpg logo.png --mode add --at 9,9 photo.jpg --mode darken --opacity 0.3 logo.png --at 300,400
    "$qx" modes photo.jpg logo.png -q -o modes.png
    "$qx" render scene.json -q -o frame.##.png
    "$qx" render scene.json -q --frames 12-30x6 --depth 16 -o deep.##.tif
}

# effect NAME SUBCOMMAND ARGUMENTS...: the same with another subcommand.
effect() {
    out=$1
    shift
    "$qx" "$@" -q -o "$out"
}

effects() {
    printf '1 2 1\n2 -400 2\n1 2 9\n' >kernel.txt
    effect gaussian.tif blur photo.jpg --radius 9.5
    effect gaussian16.tif blur photo.tif --radius 4,20 --edge clear
    effect box.exr blur logo.exr --kind box --passes 3 --radius 7.3 --grow
    effect box.tif blur photo.jpg --kind box --radius 12
    effect mean.tif blur photo.jpg --kind mean --radius 20 --map photo.tif
    effect disc.tif blur logo.png --kind disc --radius 6 --gain 2 --aspect 1.5 --rotate 20
    effect sharp.tif convolve photo.jpg --filter sharpen
    effect kernel.exr convolve photo.tif --kernel kernel.txt --no-clamp --depth 32
    effect bell.tif convolve photo.tif --filter gaussian:8 --row
    effect cut.tif matte logo.png --feather 12 photo.jpg --kind luma --op intersect --passes 1 --apply photo.jpg
    effect matte.tif matte photo.jpg --kind hue logo.png --at 30,40 --invert --opacity 0.7 --op difference --depth 16
    effect warm.tif adjust photo.jpg --hue 40 --saturation 1.2 --chroma 0.8
    effect between.tif blend photo.jpg photo.tif --ratio 0.3
    effect dithered.tif convert photo.tif --depth 8 --dither
    effect mixed.tif convert logo.png --premultiply --matte 0.2,0.4,0.6
    effect repaired.tif guess-alpha mixed.tif >/dev/null
    rm kernel.txt
}

colours() {
    effect wide.tif convert photo.jpg --to rec2020 --depth 16
    effect p3.tif convert photo.tif --from rec709 --to display-p3 --intent absolute --depth 8
    effect light.exr convert logo.png --to linear --depth 32
    comp space.tif photo.jpg logo.png --profile display-p3 --mode screen --at 9,9 --space rec709 --linear profile
    comp space16.tif photo.tif wide.tif --opacity 0.5 --space background --linearize --to srgb
    comp space.exr photo.jpg light.exr --mode overlay --space linear-display-p3 --depth 32
}

# made NAME BUILD PROGRAM: the checksums of all that this build makes, into NAME.sums.
made() {
    qx=$2/bin/qx
    mkdir "$work/$1"
    "$3" >"$work/$1.sums"
    cd "$work/$1"
    cp "$samples/grace_hopper.jpg" photo.jpg
    cp "$samples/Minduka_Present_Blue_Pack.png" logo.png
    cp "$example"/*.png .
    sed '/"name":/d; /"comment":/d; /"plugin":/d' "$example/scene.json" >scene.json # older states know none
    ls >"$work/inputs"
    pictures
    [ -n "$lacking" ] || effects
    [ -n "$colourless" ] || colours
    for file in $(ls ./*.png | sed 's|./||' | grep -v -w -F -f "$work/inputs"); do # states pack PNG in their own ways
        comp "$file.tif" "$file" "$file" --opacity 0
        rm "$file"
    done
    sha256sum ./* | awk '{print $2, $1}' | grep -v -w -F -f "$work/inputs" >>"$work/$1.sums"
    sort -o "$work/$1.sums" "$work/$1.sums"
}

build=$(cd "$1" && pwd)
other=$(cd "$2" && pwd)
source=$(sed -n 's/^CMAKE_HOME_DIRECTORY:INTERNAL=//p' "$other/CMakeCache.txt")
"${CXX:-c++}" -std=c++20 -O1 -ffp-contract=off -I"$source" "$renders"/*.cpp -o "$work/qx_renders" \
    -L"$other/lib" -lQX -lQXHost -Wl,-rpath,"$other/lib"
lacking=$(for each in "$build" "$other"; do "$each/bin/qx" blur --help >/dev/null 2>&1 || echo "$each"; done) # of effects
colourless=$(for each in "$build" "$other"; do "$each/bin/qx" profile srgb >/dev/null 2>&1 || echo "$each"; done)
made this "$build" "$build/bin/qx_renders"
made other "$other" "$work/qx_renders"
# A render that only one of the two has differs too.
differing=$(join -a 1 -a 2 -e none -o 0,1.2,2.2 "$work/this.sums" "$work/other.sums" | awk '$2 != $3 {print $1}')
if [ -n "$differing" ]; then
    echo "$differing"
    echo "$(echo "$differing" | wc -l) of $(wc -l <"$work/this.sums") renders differ"
    exit 1
fi
echo "$(wc -l <"$work/this.sums") renders agree"
