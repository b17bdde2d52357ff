#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# A scene in N shares by GNU parallel, on this machine or on those of a file of hosts; a share that fails is tried again,
# and keeps the frames that are there.
#   parallel.sh N SCENE.json OUT.####.EXT [options of GNU parallel, such as --sshloginfile HOSTS --wd .]
# QX names the command. With hosts, folders must be shared.
set -eu
shares=$1 scene=$2 out=$3
shift 3
exec parallel --retries 3 --halt now,fail=1 "$@" \
    "${QX:-qx}" render "$scene" -o "$out" --shard "{}/$shares" --resume ::: $(seq "$shares")
