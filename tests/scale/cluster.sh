#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# A Slurm cluster of this machine alone, for tests: cluster.sh start|stop DIRECTORY. Needs root.
set -euo pipefail
directory=$(realpath "$2")
munge_socket=$directory/munge.socket

start() {
    mkdir -p "$directory"/{state,spool,munge}
    head -c 1024 /dev/urandom >"$directory/munge/key"
    chown -R root: "$directory" && chmod 700 "$directory/munge" && chmod 600 "$directory/munge/key"
    munged --force --key-file "$directory/munge/key" --socket "$munge_socket" --pid-file "$directory/munge/pid" \
        --log-file "$directory/munge/log" --seed-file "$directory/munge/seed" --num-threads 2
    local host
    host=$(hostname -s)
    cat >"$directory/slurm.conf" <<CONF
ClusterName=quarry
SlurmctldHost=$host(127.0.0.1)
SlurmUser=root
AuthType=auth/munge
AuthInfo=socket=$munge_socket
CredType=cred/munge
SlurmctldPort=16817
SlurmdPort=16818
StateSaveLocation=$directory/state
SlurmdSpoolDir=$directory/spool
SlurmctldPidFile=$directory/slurmctld.pid
SlurmdPidFile=$directory/slurmd.pid
SlurmctldLogFile=$directory/slurmctld.log
SlurmdLogFile=$directory/slurmd.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
SwitchType=switch/none
MpiDefault=none
ReturnToService=2
MaxArraySize=100000
MaxJobCount=100000
NodeName=$host NodeAddr=127.0.0.1 CPUs=$(nproc) State=UNKNOWN
PartitionName=all Nodes=$host Default=YES MaxTime=INFINITE State=UP
CONF
    export SLURM_CONF=$directory/slurm.conf
    slurmctld
    slurmd
    for _ in $(seq 60); do
        sinfo -h -o %T 2>/dev/null | grep -q idle && return
        sleep 0.5
    done
    tail -5 "$directory"/slurm*.log >&2
    return 1
}

stop() {
    local file pid
    for file in "$directory"/slurmd.pid "$directory"/slurmctld.pid "$directory"/munge/pid; do
        pid=$(cat "$file" 2>/dev/null) && kill "$pid" || continue
        timeout 5 tail -f --pid "$pid" /dev/null || kill -KILL "$pid" || true
    done
}
"$1"
