#!/bin/sh
# Makes the reference of the interface in FOLDER/html, from the comments of the headers that are installed: reference.sh
# FOLDER. Fails when a comment is at fault.
set -eu
[ $# -eq 1 ] || { echo "usage: $0 FOLDER" >&2; exit 2; }
mkdir -p "$1"
QX_REFERENCE=$(cd "$1" && pwd)
cd "$(dirname "$0")/.."
QX_VERSION=$(sed -n 's/^project(QX VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
included=$(sed -n 's/^#include "\(.*\)"/\1/p' QX/QX.h)
QX_HEADERS=$(echo docs/*.md QX/QX.h QX/QX_Effect.h QX/QX_C.h $included \
    platform/M_Geometry.h platform/M_Matrix.h platform/standalone/Cache.h platform/standalone/Colour.h \
    platform/standalone/Host.h platform/standalone/Host_C.h)
export QX_REFERENCE QX_VERSION QX_HEADERS
doxygen docs/Doxyfile
echo "$QX_REFERENCE/html/index.html"
