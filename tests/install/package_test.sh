#!/bin/bash
# Install and package: cmake --install into a scratch prefix gives the GNU layout; cpack -G DEB gives
# lm-asc_<version>_<arch>.deb with its dependencies, which lintian passes without error; unpacked with
# dpkg -x, every program answers from there and every man page renders without a warning.
# Usage: package_test.sh BUILD_DIR SOURCE_DIR VERSION "PROGRAM..."
set -uo pipefail
build=$(readlink -f "$1") src=$(readlink -f "$2") version=$3
read -ra programs <<<"$4"
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
fails=0
expect() {  # what, command...
  local what=$1
  shift
  "$@" || { echo "FAIL: $what"; ((++fails)); }
}

expected_files() {  # prefix of the binaries and pages, prefix of the documentation
  local p
  for p in "${programs[@]}" lm_batch; do printf '%s\n' "$1/bin/$p" "$1/share/man/man1/$p.1.gz"; done
  printf "$2/share/doc/lm-asc/%s\n" README.md lmu.ini copyright changelog.gz
}

# cmake --install: exactly these files.
cmake --install "$build" --prefix "$tmp/prefix" >/dev/null
expect "installed files" diff <(cd "$tmp/prefix" && find . -type f | LC_ALL=C sort) \
  <(expected_files . . | LC_ALL=C sort)

# The package, named after the project's version.
deb=$tmp/pkg/lm-asc_${version}_$(dpkg --print-architecture).deb
(cd "$build" && cpack -G DEB -B "$tmp/pkg" >"$tmp/cpack.log" 2>&1) || cat "$tmp/cpack.log"
expect "package $deb" test -f "$deb"
expect "package files" diff <(dpkg-deb -c "$deb" | awk '$1 ~ /^-/ { print $NF }' | LC_ALL=C sort) \
  <(expected_files ./usr ./usr | LC_ALL=C sort)
depends=$(dpkg-deb -f "$deb" Depends)
for d in libc6 libstdc++6 parallel; do expect "depends on $d ($depends)" grep -q "\b$d\b" <<<"$depends"; done
if [[ " ${programs[*]} " == *" lm_plot "* ]]; then
  expect "depends on Cairo ($depends)" grep -q 'libcairo2\b' <<<"$depends"
fi
mseed_opt=()
if [[ " ${programs[*]} " == *" lm_mseed "* ]]; then
  expect "depends on libmseed ($depends)" grep -q '\blibmseed[0-9]' <<<"$depends"
  expect "depends on libxml2 ($depends)" grep -q '\blibxml2\b' <<<"$depends"
  expect "the description names lm_mseed" grep -q 'lm_mseed' <(dpkg-deb -f "$deb" Description)
  mseed_opt=(--mseed)
fi

echo "lintian:"
lintian --fail-on error "$deb" 2>&1 | tee "$tmp/lintian.txt"
expect "lintian reports no error" test "${PIPESTATUS[0]}" = 0

# From the unpacked package: versions, usage, a batch through the installed converter, the man pages.
dpkg -x "$deb" "$tmp/root"
bin=$tmp/root/usr/bin
for p in "${programs[@]}" lm_batch; do
  [[ $p == lm_asc ]] && continue
  expect "$p --version" test "$("$bin/$p" --version)" = "$p $version"
  expect "$p --help" grep -q "$p" <("$bin/$p" --help)
done
"$bin/lm_asc" >"$tmp/usage.txt"
expect "lm_asc without arguments: status 2" test $? = 2
expect "lm_asc usage" grep -q 'LM_ASC \[switches\] sourceFile \[output_path\] \[switches\]' "$tmp/usage.txt"
mkdir "$tmp/in" && cp "$src/examples/sample.pkt" "$tmp/in/"
expect "installed lm_batch runs the installed programs" "$bin/lm_batch" -j 1 "${mseed_opt[@]}" "$tmp/in" "$tmp/out" >/dev/null
expect "the sample converted" test -n "$(find "$tmp/out/sample.pkt" -name '*.atr')"
if ((${#mseed_opt[@]})); then
  expect "the sample exported" test -n "$(find "$tmp/out/sample.pkt" -name '*.mseed')"
fi

for page in "$tmp"/root/usr/share/man/man1/*.1.gz; do
  name=$(basename "$page")
  for s in NAME SYNOPSIS DESCRIPTION OPTIONS 'EXIT STATUS' FILES ENVIRONMENT EXAMPLES; do
    expect "$name has $s" grep -q "^\.SH $s\$" <(zcat "$page")
  done
  expect "$name: groff -ww" test -z "$(zcat "$page" | groff -ww -z -man 2>&1)"
  expect "$name: man -l" test -z "$(LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z "$page" 2>&1 >/dev/null)"
  expect "$name renders" grep -q "lm-asc $version" <(MANWIDTH=80 man -l "$page" 2>/dev/null)
done

echo "$fails failure(s)"
exit $((fails > 0))
