#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# A scene on a Slurm cluster, as a job array: each task takes its share of the frames, and a task that was killed goes on
# where it was when it is submitted again, since whole frames of the job stay.
#   sbatch --array=1-8 slurm.sh SCENE.json OUT.####.EXT [options of qx render]
# QX names the command (default: qx on the path of the nodes). Folders must be shared by the nodes.
#SBATCH --job-name=qx
#SBATCH --requeue
set -eu
: "${SLURM_ARRAY_TASK_ID:?to be submitted with sbatch --array=1-N}"
scene=$1 out=$2
shift 2
exec "${QX:-qx}" render "$scene" -o "$out" --shard "$SLURM_ARRAY_TASK_ID/$SLURM_ARRAY_TASK_COUNT" --resume --progress json \
    -j "${SLURM_CPUS_PER_TASK:-1}" "$@"
