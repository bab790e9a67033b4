#!/usr/bin/env bash
# lm_batch on the benchmark corpus split into 8 files at event boundaries: wall time with -j 1 and -j 2,
# against one lm_asc run on the whole corpus, alternating over the rounds; medians.
# Usage: bench/batch.sh [runs] [events] [seconds-per-event]   (defaults 5, 28, 3600: 30.24 M samples)
set -euo pipefail
runs=${1:-5}
events=${2:-28}
seconds=${3:-3600}
cd "$(dirname "$0")/.."
bash tools/bootstrap.sh >/dev/null
cmake -S . -B build-bench -DCMAKE_BUILD_TYPE=Release -DLM_TESTS=OFF >/dev/null
cmake --build build-bench -j2 --target lm_asc bench_corpus >/dev/null
bin=$(pwd)/build-bench

base=${BENCH_DIR:-$([ -d /dev/shm ] && [ -w /dev/shm ] && echo /dev/shm || echo /tmp)}
work=$(mktemp -d "$base/lm_batch_bench.XXXXXX")
trap 'rm -rf "$work"' EXIT
cd "$work"
samples=$("$bin/bench/bench_corpus" corpus.pkt corpus.mseed "$events" "$seconds")
rm corpus.mseed

# Event headers start the events; cut before every (events/8)-th one so that no event is split.
mapfile -t starts < <(LC_ALL=C grep -obUa EH corpus.pkt | cut -d: -f1 | awk '$1 % 1024 == 0')
size=$(stat -c %s corpus.pkt)
mkdir in
for i in $(seq 0 7); do
  from=$((i == 0 ? 0 : starts[i * ${#starts[@]} / 8]))
  to=$((i == 7 ? size : starts[(i + 1) * ${#starts[@]} / 8]))
  dd if=corpus.pkt of="in/part$i.pkt" bs=1M iflag=skip_bytes,count_bytes skip="$from" count=$((to - from)) status=none
done

declare -A secs
timed() {  # name, command...
  local name=$1 t0 t1
  shift
  rm -rf out && mkdir out
  t0=$(date +%s.%N)
  "$@" >log.txt
  t1=$(date +%s.%N)
  secs[$name]+="$(awk -v a="$t0" -v b="$t1" 'BEGIN { printf "%.3f", b - a }') "
}
for r in $(seq 0 "$runs"); do
  [ "$r" = 0 ] && echo "warm-up round" >&2 || echo "round $r of $runs" >&2
  timed single "$bin/lm_asc" -VN corpus.pkt out
  timed j1 "$bin/lm_batch" -j 1 in out/b
  grep -q "8 of 8 files converted, 0 failed, 0 not done; $samples samples" log.txt || { cat log.txt; exit 1; }
  timed j2 "$bin/lm_batch" -j 2 in out/b
  grep -q "8 of 8 files converted, 0 failed, 0 not done; $samples samples" log.txt || { cat log.txt; exit 1; }
  if [ "$r" = 0 ]; then secs=(); fi
done

median() { tr ' ' '\n' | grep -v '^$' | sort -g | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }
echo "$(nproc) cores, $(lscpu | awk -F: '/Model name/ { gsub(/^ +/, "", $2); print $2; exit }'), work files on" \
  "$(df -T . | awk 'NR == 2 { print $2 }'); $samples samples in 8 files of $(du -b in/part0.pkt | cut -f1) to" \
  "$(du -b in/* | sort -n | tail -1 | cut -f1) bytes; medians of $runs rounds after a warm-up"
echo
echo "| | seconds (median) | all rounds |"
echo "|---|---|---|"
for n in single j1 j2; do
  case $n in
    single) label='one `lm_asc -VN` run on the whole corpus' ;;
    j1) label='`lm_batch -j 1` on the 8 files' ;;
    j2) label='`lm_batch -j 2` on the 8 files' ;;
  esac
  echo "| $label | $(echo "${secs[$n]}" | median) | ${secs[$n]% } |"
done
