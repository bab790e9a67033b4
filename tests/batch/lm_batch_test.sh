#!/bin/bash
# lm_batch end to end: a folder of generated inputs converted in parallel and compared with single lm_asc
# runs, a failing input, --resume, an interrupted batch, jobs through ssh, usage errors, and the examples.
# Usage: lm_batch_test.sh BUILD_DIR SOURCE_DIR [mseed]
set -uo pipefail
build=$(readlink -f "$1") src=$(readlink -f "$2") mode=${3:-main}
tmp=$(mktemp -d)
trap '[[ -n ${KEEP-} ]] || rm -rf "$tmp"' EXIT
cd "$tmp" || exit 1
fails=0
expect() {  # what, command...
  local what=$1
  shift
  "$@" || { echo "FAIL: $what"; ((++fails)); }
}

# A packet log without its header block (paths, time and command line differ between runs).
log_body() { sed '1,/^   Command Line : /d' "$1" | tail -n +2; }

# The files of two folders are the same: names, and contents up to the log headers.
same_outputs() {
  local f
  diff <(cd "$1" && find . -type f | LC_ALL=C sort) <(cd "$2" && find . -type f | LC_ALL=C sort) || return 1
  while IFS= read -r -d '' f; do
    case $f in
      *.lml) cmp -s <(log_body "$1/$f") <(log_body "$2/$f") ;;
      *.xml) cmp -s <(grep -v '<Created>' "$1/$f") <(grep -v '<Created>' "$2/$f") ;;
      *) cmp -s "$1/$f" "$2/$f" ;;
    esac || { echo "differs: $f"; return 1; }
  done < <(cd "$1" && find . -type f -print0)
}

# Single runs into ref/<path>: the expected outputs of each input.
reference() {  # input root, relative paths...
  local in=$1 rel
  shift
  for rel in "$@"; do
    mkdir -p "ref/$rel"
    "$build/lm_asc" "$in/$rel" "ref/$rel" >/dev/null
    [[ $mode == mseed ]] && "$build/lm_mseed" -q -o "ref/$rel" "$in/$rel"
  done
}

# Sample lines of the reference trace files (past each ten-line header).
sample_lines() { find "$@" -name '*.atr' -exec awk 'FNR > 10' {} + | wc -l; }

mseed_opt=()
if [[ $mode == mseed ]]; then
  [[ -x $build/lm_mseed ]] || { echo "lm_mseed not built"; exit 77; }
  mseed_opt=(--mseed)
fi

# Inputs: two of the same name in different folders, an empty one; skipped: a partial packet, another
# extension, a hidden folder.
mkdir -p in/site in/.hidden
"$build/lm_pktgen" in/a.pkt 2 5 >/dev/null
"$build/lm_pktgen" in/site/a.pkt 1 4 >/dev/null
"$build/lm_pktgen" in/site/B.PKT 1 3 >/dev/null
: >in/empty.pkt
head -c 1000 in/a.pkt >in/partial.pkt
cp in/a.pkt in/notes.txt
cp in/a.pkt in/.hidden/h.pkt
good=(a.pkt site/B.PKT site/a.pkt)
reference in "${good[@]}"
samples=$(sample_lines ref)

"$build/lm_batch" -j 2 "${mseed_opt[@]}" in out >run1.txt
expect "a failing input makes status 1" test $? = 1
expect "summary of the first run" grep -qx \
  "lm_batch: 3 of 4 files converted, 1 failed, 0 not done; $samples samples; [0-9.]* s" run1.txt
expect "the failing input with its status and meaning" grep -qx \
  'lm_batch: failed: empty.pkt: lm_asc status 1 (empty input file, or interrupted)' run1.txt
expect "one folder per packet file" diff <(cd out && find . -mindepth 1 -type d -name '*.*' ! -path './.lm_batch*' |
  LC_ALL=C sort) <(printf './%s\n' a.pkt empty.pkt site/B.PKT site/a.pkt)
for rel in "${good[@]}"; do expect "outputs of $rel" same_outputs "ref/$rel" "out/$rel"; done

"$build/lm_batch" -j 2 in out >/dev/null 2>&1
expect "a second batch into the same folder is refused" test $? = 2

# --resume converts only what failed; the failed attempt's folder is emptied first.
cp in/site/B.PKT in/empty.pkt
touch out/empty.pkt/leftover.atr
reference in empty.pkt
"$build/lm_batch" --resume "${mseed_opt[@]}" in out >run2.txt
expect "resumed batch complete" test $? = 0
expect "resume summary" grep -qx "lm_batch: 4 of 4 files converted, 0 failed, 0 not done; $(sample_lines ref) samples; [0-9.]* s" run2.txt
expect "resume reran only the failed job" test "$(cut -f1 out/.lm_batch/joblog | tail -n +2 | sort | tr '\n' ' ')" = "1 2 2 3 4 "
expect "outputs of the resumed input" same_outputs ref/empty.pkt out/empty.pkt

[[ $mode == mseed ]] && { echo "$fails failure(s)"; exit $((fails > 0)); }

# An interrupted batch: one input hangs in a converter that first leaves a file behind; Ctrl-C (SIGINT to
# the batch's process group) once the others are done, then --resume completes it.
mkdir -p bin slow
cp "$build/lm_batch" bin/
cat >bin/lm_asc <<EOF
#!/bin/bash
if [[ \$2 == */hang.pkt && -e $tmp/hang ]]; then touch "\$3/partial.atr"; sleep 60; fi
exec "$build/lm_asc" "\$@"
EOF
chmod +x bin/lm_asc
cp in/a.pkt slow/1.pkt && cp in/site/a.pkt slow/2.pkt && cp in/site/B.PKT slow/hang.pkt && touch hang
set -m
bin/lm_batch -j 2 slow out2 >run3.txt &
pid=$!
set +m
for _ in $(seq 300); do
  (($(wc -l 2>/dev/null <out2/.lm_batch/joblog || echo 0) >= 3)) && break
  sleep 0.1
done
kill -INT -- "-$pid"
wait "$pid"
expect "an interrupted batch ends with status 130" test $? = 130
expect "the interrupted batch tells what is left" grep -q \
  'lm_batch: 2 of 3 files converted, [01] failed, [01] not done; .*interrupted' <(tr '\n' ' ' <run3.txt)
rm hang
rm -rf ref && reference slow 1.pkt 2.pkt hang.pkt
bin/lm_batch --resume slow out2 >run4.txt
expect "--resume completes the interrupted batch" grep -q "^lm_batch: 3 of 3 files converted" run4.txt
expect "--resume reran only the interrupted job" test "$(tail -n +2 out2/.lm_batch/joblog | cut -f1 | sort | tr '\n' ' ')" = "1 2 3 "
for rel in 1.pkt 2.pkt hang.pkt; do expect "outputs of $rel after the interrupt" same_outputs "ref/$rel" "out2/$rel"; done

# A job ended between making its folder and marking it as the batch's own (a mkdir that sends TERM to its
# job's shell once the folder stands): --resume must still complete the batch.
mkdir -p stop
cat >stop/mkdir <<'EOF'
#!/bin/bash
/usr/bin/mkdir "$@" || exit
[[ ${!#} == */hang.pkt ]] && kill -TERM "$PPID"
exit 0
EOF
chmod +x stop/mkdir
PATH=$PWD/stop:$PATH bin/lm_batch -j 2 slow out_stop >stop1.txt
bin/lm_batch --resume slow out_stop >stop2.txt
expect "a job ended as its folder was made: --resume completes the batch" grep -q "^lm_batch: 3 of 3 files converted" stop2.txt
expect "outputs of hang.pkt after its job ended early" same_outputs ref/hang.pkt out_stop/hang.pkt

# Jobs on another host: ssh replaced by a command that runs them here in a clean login environment, so the
# job must travel whole to the "remote" shell.
cat >bin/ssh <<'EOF'
#!/bin/bash
while [[ $1 == -* ]]; do case $1 in -o | -p | -l) shift 2 ;; *) shift ;; esac; done
shift
[[ $1 == -- ]] && shift
exec env -i PATH="$PATH" HOME="$HOME" SHELL=/bin/bash bash -c "$*"
EOF
chmod +x bin/ssh
printf '2/node1\n' >nodes
PARALLEL_SSH=$tmp/bin/ssh "$build/lm_batch" --sshloginfile nodes slow out3 >run5.txt
expect "a batch on another host" test $? = 0
expect "the jobs ran on that host" test "$(tail -n +2 out3/.lm_batch/joblog | cut -f2 | sort -u)" = node1
for rel in 1.pkt 2.pkt hang.pkt; do expect "outputs of $rel from another host" same_outputs "ref/$rel" "out3/$rel"; done

# A link planted in the output tree (an input's folder, the batch's record) is never written through.
mkdir -p outside out4 && ln -s "$tmp/outside" out4/site
"$build/lm_batch" in out4 >run6.txt 2>&1
expect "a planted folder link fails its inputs" grep -q 'failed: site/B.PKT: cannot make the output folder' run6.txt
expect "nothing written through the planted link" test -z "$(ls -A outside)"
mkdir -p out5 && ln -s "$tmp/outside" out5/.lm_batch
"$build/lm_batch" in out5 >/dev/null 2>&1
expect "a planted record link is refused" test $? = 2
expect "nothing written through the planted record link" test -z "$(ls -A outside)"

# Usage errors end with status 2 before any job.
usage_cases=("" "-j 0 in x" "-j two in x" "--bogus in x" "in" "in in" "missing x" "in x y")
for c in "${usage_cases[@]}"; do
  read -ra args <<<"$c"
  "$build/lm_batch" "${args[@]}" >/dev/null 2>&1
  expect "usage error: lm_batch $c" test $? = 2
done
expect "no output folder made on a usage error" test ! -e x

# The README's lm_batch examples and the Slurm script are at least valid bash.
awk '/^## lm_batch/ { on = 1; next } /^## / { on = 0 } on && /^```sh/ { code = 1; next } /^```/ { code = 0 }
     on && code' "$src/README.md" >readme_examples.sh
expect "README has lm_batch examples" test -s readme_examples.sh
expect "README examples parse" bash -n readme_examples.sh
expect "Slurm example parses" bash -n "$src/examples/lm_batch.slurm"

echo "$fails failure(s)"
exit $((fails > 0))
