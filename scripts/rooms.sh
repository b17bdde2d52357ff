#!/bin/sh
# Holds the rooms of the house to their order: a room includes and calls only what stands above it in the list. Calls are
# seen in the objects of a build, so that a name declared below and defined above is found too.
# usage: rooms.sh BUILD
set -eu
[ $# -eq 1 ] || { echo "usage: $0 BUILD" >&2; exit 2; }
build=$(cd "$1" && pwd)
cd "$(dirname "$0")/.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cat >"$work/rooms" <<'LIST'
lanes
platform
platform/standalone
QX/indep
QX/iterate
QX/pixelops
QX/world
QX/sampling
QX/filters
QX/compositing
QX/drawing
QX/geometry
QX/color
opticalflow/src
QX/suites
QX/library
QX
pictures
scene
host
tools/qx
LIST

# Lines "file included" for includes, "object symbol" with U or T in front for symbols.
git ls-files -co --exclude-standard -- '*.h' '*.cpp' | grep -Ev '^(tests|bench)/' | while read -r file; do
    sed -n 's|^#include "\([^"]*\)".*|\1|p' "$file" | sed "s|^|$file |"
done >"$work/includes"
# An object's name begins with its source's folder, behind the target's own.
find "$build" -name '*.o' -path '*.dir/*' | grep -Ev '/(tests|bench)/' | while read -r object; do
    source=$(echo "$object" | sed "s|^$build/||; s|CMakeFiles/[^/]*\.dir/||; s|^.*/__/||; s|\.o$||")
    [ -f "$source" ] || [ -f "$build/$source" ] || continue  # left from a source that is gone; texts of levels are made
    nm "$object" | awk -v source="$source" '
        $(NF - 1) == "U" { print "U", source, $NF }
        $(NF - 1) ~ /^[TDBR]$/ { print "T", source, $NF }'
done >"$work/symbols"
[ -s "$work/includes" ] && [ -s "$work/symbols" ] || { echo "rooms.sh: nothing to look at in $build" >&2; exit 2; }

awk '
    function room(path) {
        while (path != "" && !(path in place)) if (!sub("/[^/]*$", "", path)) path = ""
        return path
    }
    function check(user, used, what, is_include) {
        from = room(user); to = room(used)
        if (from == "" || to == "") return
        behind = from ~ /^QX/ && to == "platform/standalone"  # linked to, but known by the headers alone
        if (behind && is_include || place[to] > place[from]) { print user " " what " " used; ++faults }
    }
    FILENAME ~ /rooms$/ { place[$1] = FNR; next }
    FILENAME ~ /includes$/ { check($1, $2, "includes", 1); next }
    $1 == "T" { defined[$3] = $2; next }
    { user[++calls] = $2; name[calls] = $3 }
    END {
        for (i = 1; i <= calls; ++i) if (name[i] in defined) check(user[i], defined[name[i]], "calls " name[i] " of", 0)
        if (faults) { print faults " run upward" > "/dev/stderr"; exit 1 }
    }' "$work/rooms" "$work/includes" "$work/symbols"
echo "The rooms keep to their order."
