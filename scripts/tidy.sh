#!/bin/sh
# The order of the rooms, and clang-tidy over the sources of all of them; no finding is let through.
set -eu
cd "$(dirname "$0")/.."
sh scripts/rooms.sh "$1"
command -v clang-tidy >/dev/null || { echo "clang-tidy is not installed" >&2; exit 1; }
cmake --preset release -B build/tidy -DQX_UNITE=OFF >/dev/null  # each file by itself
find QX platform pictures scene tools -name '*.cpp' | xargs -P 2 -n 4 clang-tidy -p build/tidy --quiet
