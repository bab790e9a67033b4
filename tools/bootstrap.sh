#!/usr/bin/env bash
# Installs the Debian packages the build and the tests need (and any named as arguments), when missing.
set -euo pipefail
pkgs=(cmake g++ make libgtest-dev libmseed-dev pkg-config libcairo2-dev fonts-dejavu-core clang libclang-rt-14-dev
      parallel dpkg-dev file lintian man-db groff-base libxml2-dev libxml2-utils
      "$@")  # callers may name more
missing=()
for p in "${pkgs[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  SUDO=""
  [ "$(id -u)" -ne 0 ] && SUDO="sudo"
  $SUDO apt-get update
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y "${missing[@]}"
fi
