#!/usr/bin/env bash
# Builds the libFuzzer targets (clang, AddressSanitizer, UBSan) and runs each for the given seconds
# (default 60). Seeds come from the sample generator; corpora grow in build-fuzz/corpus, and any
# finding is left in build-fuzz/findings and fails the script.
# Usage: tools/fuzz.sh [seconds-per-target]
set -euo pipefail
cd "$(dirname "$0")/.."
secs=${1:-60}
CC=clang CXX=clang++ cmake -S . -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo -DLM_FUZZ=ON -DLM_TESTS=OFF >/dev/null
cmake --build build-fuzz -j2 >/dev/null
b=build-fuzz
targets=(convert steim dumps ini)
# The export's target is built only where libmseed and libxml2 are.
[ -x $b/fuzz_mseed ] && targets+=(mseed)
seeds=$b/seeds
rm -rf "$seeds"
mkdir -p "$seeds"/{convert,steim,dumps,ini,mseed} "$b/findings"
for t in "${targets[@]}"; do mkdir -p "$b/corpus/$t"; done

# Whole inputs, each followed by the two bytes that choose the switches.
$b/lm_pktgen "$seeds/sample.pkt" 1 2 >/dev/null
$b/lm_probegen events 3 4 "$seeds/events.pkt"
$b/lm_probegen units 5 "$seeds/units.pkt"
i=0
for f in sample events units; do
  for sw in '\x00\x00' '\x01\x07' '\x25\x0c' '\x5a\x03' '\x13\x0e'; do
    { cat "$seeds/$f.pkt"; printf "$sw"; } >"$seeds/convert/$f$((i++))"
  done
done
# Single packets of the sample for the decoders and the dumps.
split -b 1024 -a 3 "$seeds/sample.pkt" "$seeds/steim/p"
cp "$seeds"/steim/p* "$seeds/dumps/"
printf '[0A2B]\r\nStation=PIER1 ; north pier\r\nLatitude=34.0522\r\nLongitude=-118.2437\r\nAltitude=71\r\n'\
'Ch1SnsMake=Kinemetrics\r\nCh1SnsModel=Episensor\r\nCh1SnsVPU=1.25\r\nCh2Axis=N\r\n[0A2C]\r\nStation=X\r\n' \
  >"$seeds/ini/sample.ini"
# The export: whole inputs followed by an INI (shorter than a packet) or none, and the byte that chooses
# the options.
{ cat "$seeds/ini/sample.ini"
  printf 'NetSEED=XY\r\nCh2NZNP=1,2\r\nCh2Zero=0,0\r\nCh2Pole=-981,1009\r\nCh2Pole=-981,-1009\r\nCh2Norm=1\r\n'
  printf 'Ch3SnsFreq=1\r\nCh3SnsDamp=0.7\r\nCh3Azm=90\r\nCh3Dip=0\r\n'; } >"$seeds/export.ini"
i=0
for f in sample events units; do
  for sw in '\x00' '\x25' '\x3e'; do
    { cat "$seeds/$f.pkt"; printf "$sw"; } >"$seeds/mseed/$f$((i++))"
    { cat "$seeds/$f.pkt" "$seeds/export.ini"; printf "$sw"; } >"$seeds/mseed/$f$((i++))"
  done
done
# Inputs that once failed a target.
for f in fuzz/seeds/*-*; do
  t=${f##*/}
  cp "$f" "$seeds/${t%%-*}/"
done

status=0
for t in "${targets[@]}"; do
  case $t in
    convert | mseed) max_len=65536 ;;
    ini) max_len=4096 ;;
    steim) max_len=1028 ;;
    *) max_len=1024 ;;
  esac
  log=$b/fuzz_$t.log
  if ./$b/fuzz_$t -max_total_time="$secs" -max_len=$max_len -timeout=30 -print_final_stats=1 \
       -artifact_prefix="$b/findings/$t-" "$b/corpus/$t" "$seeds/$t" >"$log" 2>&1; then
    echo "fuzz_$t: $(grep -o 'stat::number_of_executed_units: *[0-9]*' "$log" | grep -o '[0-9]*$') runs in ${secs} s, no finding"
  else
    echo "fuzz_$t: FINDING, see $log and $b/findings/"
    status=1
  fi
done
exit $status
