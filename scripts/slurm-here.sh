#!/usr/bin/env bash
# Runs a command in a Slurm cluster of this one machine, which is gone afterwards: for trying out job arrays.
# usage: scripts/slurm-here.sh WORKERS COMMAND...
#
# The cluster lives in a temporary folder and listens on this machine only. The command's environment has
# SLURM_CONF, so that sbatch, squeue and the others find it. Needs root, as Debian's packages do.
set -euo pipefail

(($# >= 2)) || { echo "usage: scripts/slurm-here.sh WORKERS COMMAND..." >&2; exit 2; }
workers=$1
shift
"$(dirname "$0")/setup.sh" scale

place=$(mktemp -d /tmp/slurm-here-XXXXXX)
chmod 755 "$place"
mkdir -p "$place"/{state,spool,log}
host=$(hostname -s)
daemons=()
stop() {
    ((!${#daemons[@]})) || kill "${daemons[@]}" 2> /dev/null || true
    wait 2> /dev/null || true
    rm -rf "$place"
}
trap stop EXIT

# Who is who is told by munge, with a key of our own.
dd if=/dev/urandom of="$place/munge.key" bs=128 count=1 status=none
chmod 600 "$place/munge.key"
munged --foreground --force --key-file="$place/munge.key" --socket="$place/munge.socket" \
    --pid-file="$place/munged.pid" --seed-file="$place/munge.seed" 2> "$place/log/munged" &
daemons+=($!)
while [[ ! -S $place/munge.socket ]]; do sleep 0.1; done

# Processors are promised as many as there are workers, whether the machine has them or not.
export SLURM_CONF="$place/slurm.conf"
cat > "$SLURM_CONF" << EOF
ClusterName=here
SlurmctldHost=$host(127.0.0.1)
SlurmctldPort=16817
SlurmdPort=16818
AuthType=auth/munge
AuthInfo=socket=$place/munge.socket
CryptoType=crypto/munge
SlurmUser=root
SlurmdUser=root
StateSaveLocation=$place/state
SlurmdSpoolDir=$place/spool
SlurmctldPidFile=$place/slurmctld.pid
SlurmdPidFile=$place/slurmd.pid
SlurmctldLogFile=$place/log/slurmctld
SlurmdLogFile=$place/log/slurmd
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
SchedulerParameters=sched_interval=1
SlurmdParameters=config_overrides
ReturnToService=2
MpiDefault=none
NodeName=$host NodeAddr=127.0.0.1 CPUs=$workers State=UNKNOWN
PartitionName=here Nodes=$host Default=YES MaxTime=INFINITE State=UP
EOF
slurmctld -D -f "$SLURM_CONF" 2> /dev/null &
daemons+=($!)
slurmd -D -f "$SLURM_CONF" -N "$host" 2> /dev/null &
daemons+=($!)
for _ in $(seq 300); do
    [[ $(sinfo --noheader --format=%t 2> /dev/null || true) != idle ]] || { ready=yes; break; }
    sleep 0.1
done
if [[ -z ${ready:-} ]]; then
    tail --lines=20 "$place"/log/* >&2
    echo "slurm-here.sh: the cluster does not start" >&2
    exit 1
fi
"$@"
