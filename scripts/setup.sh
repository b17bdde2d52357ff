#!/bin/sh
# Installs the Debian packages of a list that are missing. Needs root or sudo only when some are.
# usage: setup.sh [LIST], which is packages.txt unless it is told
set -eu
cd "$(dirname "$0")/.."
wanted=$(grep -v '^#' "${1:-packages.txt}")
missing=""
for package in $wanted; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing="$missing $package"
done
[ -z "$missing" ] && exit 0
echo "installing:$missing"
as_root=""
[ "$(id -u)" -eq 0 ] || as_root="sudo"
$as_root apt-get update -q
DEBIAN_FRONTEND=noninteractive $as_root apt-get install -y -q --no-install-recommends $missing
