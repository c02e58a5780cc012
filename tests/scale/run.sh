#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# The scripts for whole archives, each with 500 volumes: a worker is killed half-way, and the second run makes what is
# missing and nothing else.
#   run.sh QUARRY VOLUME EXAMPLES WORK_DIR xargs|parallel|ssh|slurm
# Status 77 where a program, or root, is missing.
set -euo pipefail
quarry=$(realpath "$1") volume=$(realpath "$2") scale=$(realpath "$3") work=$4 way=$5
here=$(realpath "$(dirname "$0")")
volumes=500
declare -A needs=([xargs]=xargs [parallel]=parallel [ssh]=sshd [slurm]=slurmctld)
PATH=$PATH:/usr/sbin
command -v "${needs[$way]}" >/dev/null || exit 77
case $way in ssh | slurm) [ "$(id -u)" -eq 0 ] || exit 77 ;; esac

rm -rf "$work"
mkdir -p "$work/archive"
cd "$work"
work=$PWD
for i in $(seq "$volumes"); do
    ln "$volume" "archive/$i.seed" 2>/dev/null || cp "$volume" "archive/$i.seed"
done
rm archive/7.seed
echo "no volume" >archive/7.seed
mv archive/9.seed ./-9.seed # looks like an option; another name leads out of the directory
find archive ./-9.seed -name '*.seed' | sed "s|^\./||; /\/8.seed/s|^|../${work##*/}/|" | sort >list
# Counts its runs, and takes a while.
cat >counted <<COUNTED
#!/usr/bin/env bash
echo "\$1" >>$work/runs
sleep 0.01
exec $quarry info --tsv "\$1"
COUNTED
chmod +x counted
export QUARRY_COMMAND=$work/counted

finish() { :; }
trap 'finish' EXIT
case $way in
xargs) run() { "$scale/with-xargs" "$work/out" list 2; } ;;
parallel) run() { "$scale/with-parallel" "$work/out" list -j 2; } ;;
ssh)
    ssh-keygen -q -t ed25519 -N '' -f key
    ssh-keygen -q -t ed25519 -N '' -f host_key
    mkdir -p /run/sshd
    "$(command -v sshd)" -f /dev/null -p 16822 -h "$work/host_key" -o PidFile="$work/sshd.pid" \
        -o AuthorizedKeysFile="$work/key.pub" -o StrictModes=no -o PermitRootLogin=yes -o MaxStartups=100
    finish() { kill "$(cat "$work/sshd.pid")"; }
    echo "2/ssh -p 16822 -i $work/key -o StrictHostKeyChecking=no -o UserKnownHostsFile=/dev/null -o LogLevel=ERROR 127.0.0.1" \
        >hosts
    run() { "$scale/with-parallel" "$work/out" list --sshloginfile hosts; }
    ;;
slurm)
    "$here/cluster.sh" start "$work/cluster" >cluster.log 2>&1 || { cat cluster.log >&2; exit 77; }
    finish() { "$here/cluster.sh" stop "$work/cluster"; }
    export SLURM_CONF=$work/cluster/slurm.conf
    run() { sbatch --quiet --wait --array=0-9 "$scale/slurm-array" "$scale" "$work/out" list; }
    ;;
esac

done_now() { find out -name '*.out' 2>/dev/null | wc -l; }
run >first.log 2>&1 &
while [ "$(done_now)" -lt $((volumes / 2)) ]; do
    kill -0 $! 2>/dev/null || { cat first.log >&2; echo "$way: ended after $(done_now) volumes" >&2; exit 1; }
    sleep 0.05
done
case $way in # the whole of it, or one of its workers
slurm) scancel --quiet --signal=KILL --full --user=root ;;
*) pkill -KILL -f "make-outputs $work/out" || true
   pkill -KILL -P $! || true
   kill -KILL $! || true ;;
esac
wait || true
[ "$(done_now)" -lt $((volumes - 1)) ] || { echo "$way: killed too late to show anything" >&2; exit 1; }

if run >second.log 2>&1; then
    echo "$way: status 0, but a volume is missing" >&2
    exit 1
fi
expected=$((volumes - 1))
[ "$(done_now)" -eq "$expected" ] || { echo "$way: $(done_now) of $expected" >&2; exit 1; }
"$quarry" info --tsv "$volume" | cut -f 2- >expected
find out -name '*.out' -exec cut -f 2- {} + >found
for _ in $(seq "$expected"); do cat expected; done | cmp - found
[ "$(find out -name '*.failed' -exec cat {} +)" = "archive/7.seed: status 2" ] || { echo "$way: failed ones" >&2; exit 1; }
# Those that the killed workers had begun, and the one that fails each time.
twice=$(sort runs | uniq -d | wc -l)
[ "$twice" -le 11 ] || { echo "$way: $twice volumes were made twice" >&2; exit 1; }
echo "$way: $(wc -l <runs) runs for $volumes volumes"
