#!/usr/bin/env bash
# Folder-level include graph of src/: one "from to" edge per folder that includes another, then
# tsort's order from the top down. tsort fails on a cycle, and so does this script.
# Usage: tools/include_layers.sh
set -euo pipefail
cd "$(dirname "$0")/../src"
edges=$(grep -rHo '#include "[a-z_]*/' --include='*.cpp' --include='*.hpp' . |
        sed -E 's#^\./([a-z_]+)/[^:]*:\#include "([a-z_]+)/#\1 \2#' | awk '$1 != $2' | sort -u)
echo "$edges"
echo "-- top to bottom:"
if ! order=$(echo "$edges" | tsort 2>&1) || grep -q loop <<<"$order"; then
  echo "$order"
  echo "include cycle between folders" >&2
  exit 1
fi
echo "$order" | tr '\n' ' '; echo
