#!/bin/sh
# Shares of a scene by GNU parallel and, as its array would call it, by the script for Slurm, one task killed midway and begun
# again: the same values as a plain run. usage: Farm.sh QX SOURCES FOLDER
set -eu
qx=$1 sources=$2 folder=$3
rm -rf "$folder"
mkdir -p "$folder/plain" "$folder/shared" "$folder/array"
QX=$qx
export QX
scene=$sources/examples/moving-layer/scene.json
"$qx" render "$scene" -q -o "$folder/plain/f.##.png"
"$sources/scripts/farm/parallel.sh" 3 "$scene" "$folder/shared/f.##.png"
task() { SLURM_ARRAY_TASK_ID=$1 SLURM_ARRAY_TASK_COUNT=2 sh "$sources/scripts/farm/slurm.sh" "$scene" "$folder/array/f.##.png"; }
task 1 2>/dev/null &
while [ ! -e "$folder/array/f.03.png" ]; do sleep 0.01; done
kill -9 "$(pgrep -P $!)" 2>/dev/null || kill -9 $!
wait $! || true
task 2 2>/dev/null
task 1 2>"$folder/again"
grep -q '"state":"there"' "$folder/again"
for way in plain shared array; do (cd "$folder/$way" && ls -A >../$way.names && "$qx" hash f.*.png >../$way.hashes); done
cmp "$folder/plain.hashes" "$folder/shared.hashes"
cmp "$folder/plain.hashes" "$folder/array.hashes"
cmp "$folder/plain.names" "$folder/array.names"
