#!/usr/bin/env bash
# Times lm_plot on one event of 3 channels x 360,000 samples, and checks that a 10-million-sample trace
# is drawn within a fixed memory bound (peak resident size, compared with a 1,000-sample trace).
# Usage: bench/plot.sh [bound-in-MB]
set -euo pipefail
cd "$(dirname "$0")/.."
bound_mb=${1:-64}
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j2 --target lm_plot >/dev/null
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# trace FILE CHANNEL SAMPLES: a trace file as lm_asc writes it, a noisy decaying sine.
trace() {
  awk -v chn="$2" -v n="$3" 'BEGIN {
    printf "$ChnID=9A3F:0001:01:%02d\r\n$Station=BENCH\r\n$Samples=%-10d\r\n$Rate=100.0000\r\n", chn, n
    printf "$Time=2009:032:14:05:30.250\r\n$TimeQual=0 \r\n$BitWeight=1.589 uV\r\n$Gain= 1.000\r\n"
    printf "$SensorVPU= 1.250 ???             \r\n$LLA=34.052 -118.244   71.0\r\n"
    srand(chn)
    for (i = 0; i < n; i++) printf "%d\r\n", 30000 * sin(i / (7.0 + chn)) * exp(-i / n) + 500 * rand()
  }' > "$1"
}

# peak FILE...: "<seconds> <peak KB>" of one lm_plot run.
peak() {
  /usr/bin/time -f "%e %M" -o "$work/time" ./build/lm_plot -o "$work" "$@" >/dev/null
  cat "$work/time"
}

for c in 1 2 3; do trace "$work/ev_1_$c.atr" "$c" 360000; done
read -r secs kb < <(peak "$work"/ev_1_?.atr)
echo "3 x 360,000 samples: $secs s, peak $((kb / 1024)) MB"

trace "$work/small_1_1.atr" 1 1000
read -r _ small_kb < <(peak "$work/small_1_1.atr")
trace "$work/big_1_1.atr" 1 10000000
read -r secs kb < <(peak "$work/big_1_1.atr")
echo "1 x 10,000,000 samples ($(du -h "$work/big_1_1.atr" | cut -f1)): $secs s, peak $((kb / 1024)) MB" \
  "(1,000 samples: peak $((small_kb / 1024)) MB)"
if [ "$kb" -gt $((bound_mb * 1024)) ]; then
  echo "peak above the bound of $bound_mb MB" >&2
  exit 1
fi
