#!/usr/bin/env bash
# Times a whole conversion of a generated input (default about 50 MB) and prints the throughput.
# Usage: bench/convert.sh [events-per-unit] [packets-per-channel]
set -euo pipefail
cd "$(dirname "$0")/.."
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j2 --target lm_asc lm_pktgen >/dev/null
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
./build/lm_pktgen "$work/in.pkt" "${1:-50}" "${2:-100}" >/dev/null
mkdir "$work/out"
bytes=$(stat -c %s "$work/in.pkt")
start=$(date +%s.%N)
./build/lm_asc "$work/in.pkt" "$work/out" -VN -Q+ >/dev/null
end=$(date +%s.%N)
awk -v b="$bytes" -v s="$start" -v e="$end" \
  'BEGIN { t = e - s; printf "input %.1f MB, %.3f s, %.1f MB/s\n", b / 1e6, t, b / 1e6 / t }'
echo "output $(du -sh "$work/out" | cut -f1) in $(ls "$work/out" | wc -l) files"
