#!/bin/sh
# Runs the commands of a document, block by block, in a folder like that which `make run` leaves.
# usage: Documents.sh DOCUMENT QX EXAMPLES SAMPLES FOLDER
set -eu
document=$1 qx=$2 EXAMPLES=$3 samples=$4 folder=$5
export EXAMPLES
rm -rf "$folder"
mkdir -p "$folder/out" "$folder/build/release/bin"
ln -s "$qx" "$folder/build/release/bin/qx"
PATH=$folder/build/release/bin:$PATH
QX_CACHE_DIR=$folder/cache
export QX_CACHE_DIR
sh "$EXAMPLES/../scripts/example-files.sh" "$samples" "$folder/out"
# Blocks of the language sh, each behind its number.
awk '/^```sh$/ {inside = 1; print "echo \"block " ++n "\""; next} /^```$/ {inside = 0} inside' "$document" >"$folder/blocks"
cd "$folder"
sed -i '/^cd out$/d' blocks
(cd out && sh -eu ../blocks)
