#!/usr/bin/env bash
# Reproduces the reliability probes and prints one line per probe with its figures:
#   units     65,536 packets each from another unit ID: time and peak memory (and the growth from 8k)
#   events    2,000 open events x 16 channels: peak memory
#   wide      one event of 40 channels written at once in full Steim-2 packets: peak memory
#   memory    out of memory under ulimit -v: the exit status (40 or 255, never a crash)
#   full      output on a full 1 MB tmpfs (root only, skipped otherwise): status 22 naming the file
#   links     links planted in the output directory (lm_asc, lm_mseed): refused, the outside unchanged
#   parallel  two runs into one directory at the same time, 300 trials: no trace file with two headers
#   interrupt SIGINT and SIGTERM in a long run: status 1, every trace header counts its samples
# Usage: bench/reliability.sh [trials-for-parallel]
set -uo pipefail
cd "$(dirname "$0")/.."
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j2 --target lm_asc lm_pktgen lm_probegen >/dev/null || exit 1
# lm_mseed exists only where libmseed and libxml2 were found; its probe is skipped without it.
cmake --build build -j2 --target lm_mseed >/dev/null 2>&1
bin=$PWD/build
work=$(mktemp -d)
trap 'cd /; mountpoint -q "$work/full" && umount "$work/full"; mountpoint -q "$work" && umount "$work"; rm -rf "$work"' EXIT
# As root the probes run on a tmpfs, so the figures are the program's: on a disk that has seen many
# deletions, creating 131,072 files costs the kernel's inode allocator far more than the conversion.
if [ "$(id -u)" -eq 0 ] && mount -t tmpfs -o size=3g tmpfs "$work" 2>/dev/null; then
  echo "working on a tmpfs"
else
  echo "working in $work"
fi
cd "$work"

fresh() { rm -rf out && mkdir out; }
# Elapsed seconds and peak resident kilobytes of one conversion.
measure() { /usr/bin/time -f "%e %M" -o t.txt "$bin/lm_asc" "$@" >/dev/null; echo "$? $(cat t.txt)"; }

for n in 8192 16384 32768 65536; do
  "$bin/lm_probegen" units $n u.pkt
  fresh
  read -r st secs kb < <(measure u.pkt out -VN -Q+)
  echo "units $n: status $st, $secs s, peak $((kb / 1024)) MB"
done

"$bin/lm_probegen" events 2000 16 e.pkt
fresh
read -r st secs kb < <(measure e.pkt out -VN -Q+)
echo "events 2000 x 16: status $st, $secs s, peak $((kb / 1024)) MB"

"$bin/lm_probegen" wide 40 w.pkt
fresh
read -r st secs kb < <(measure w.pkt out)
echo "wide 40 channels: status $st, $secs s, peak $((kb * 10 / 1024 / 10)).$((kb * 10 / 1024 % 10)) MB"

"$bin/lm_probegen" units 8192 u8.pkt
for limit in 400000 20000 14000; do
  for input in u8.pkt e.pkt; do
    fresh
    (ulimit -v $limit; "$bin/lm_asc" $input out -VN -Q+ >o.txt 2>&1)
    st=$?
    echo "memory ulimit -v $limit, $input: status $st, last line: $(tr '\r' '\n' <o.txt | grep -v '^ *$' | tail -1)"
  done
done

"$bin/lm_pktgen" big.pkt 6 30 >/dev/null
if [ "$(id -u)" -eq 0 ] && mkdir -p full && mount -t tmpfs -o size=1m tmpfs full 2>/dev/null; then
  out=$("$bin/lm_asc" big.pkt full -VN -Q+ 2>&1); st=$?
  echo "full 1 MB tmpfs: status $st,$(echo "$out" | tail -1 | tr '\r' ' ')"
  umount full
else
  echo "full: skipped (needs root and tmpfs)"
fi

# Links planted in the output directory under the names a run uses, to a file and a folder outside.
"$bin/lm_pktgen" small.pkt 1 2 >/dev/null
for name in small.lml ID0A2B.lml 2009_032; do
  fresh
  rm -rf outside && echo kept >outside_file && mkdir outside
  if [ "$name" = 2009_032 ]; then ln -s "$PWD/outside" "out/$name"; sw=-P1; else ln -s "$PWD/outside_file" "out/$name"; sw=; fi
  "$bin/lm_asc" small.pkt out -VN $sw >o.txt 2>&1; st=$?
  last=$(tr '\r' '\n' <o.txt | grep -v '^ *$' | tail -1)
  echo "link planted at $name: status $st, '$last'; outside file: $(cat outside_file), outside folder: $(ls outside | wc -l) files"
done
# The same for lm_mseed: an SDS level, a flat data file, the StationXML file.
if [ -x "$bin/lm_mseed" ]; then
  for name in 2009 XX.PIER1..HHZ.2009.032.140530.mseed XX.xml; do
    fresh
    rm -rf outside && echo kept >outside_file && mkdir outside
    if [ "$name" = 2009 ]; then ln -s "$PWD/outside" "out/$name"; sw="--layout sds"; else ln -s "$PWD/outside_file" "out/$name"; sw=; fi
    LMU=none "$bin/lm_mseed" -q -o out $sw small.pkt >/dev/null 2>o.txt; st=$?
    echo "lm_mseed link planted at $name: status $st, '$(tail -1 o.txt)'; outside file: $(cat outside_file)," \
         "outside folder: $(ls outside | wc -l) files"
  done
else
  echo "lm_mseed links: skipped (lm_mseed not built)"
fi

trials=${1:-300}
"$bin/lm_pktgen" small.pkt 1 2 >/dev/null
shared=0
for ((i = 0; i < trials; i++)); do
  fresh
  "$bin/lm_asc" small.pkt out -VN -LN >/dev/null &
  "$bin/lm_asc" small.pkt out -VN -LN >/dev/null &
  wait
  for f in out/*.atr; do
    [ "$(grep -c '^\$ChnID' "$f")" -eq 1 ] || shared=$((shared + 1))
  done
done
echo "parallel: $trials trials, $shared trace files with more than one header, $(ls out/*.atr | wc -l) files in the last"

"$bin/lm_pktgen" long.pkt 150 100 >/dev/null
for sig in INT TERM; do
  fresh
  "$bin/lm_asc" long.pkt out -VN >o.txt &
  pid=$!
  # Once a tenth of the events have their files: a fixed delay would outlast the whole run on a fast machine.
  for _ in $(seq 1000); do (($(ls out | wc -l) >= 150)) && break; sleep 0.01; done
  kill -$sig $pid
  wait $pid
  st=$?
  bad=$(for f in out/*.atr; do
          awk 'NR == 3 { split($0, a, "="); n = a[2] + 0 } END { if (NR - 10 != n) print FILENAME }' "$f"
        done | wc -l)
  echo "interrupt SIG$sig: status $st, $(tail -c 30 o.txt | tr '\r\n' '  '), $(ls out/*.atr | wc -l) trace files," \
       "$bad with a wrong count, unit log $(stat -c %s out/ID9A3F.lml) bytes"
done
