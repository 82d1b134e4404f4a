#!/usr/bin/env bash
# Installs the Debian packages the build and tests need, skipping those already present.
set -euo pipefail

PACKAGES=(
  build-essential cmake ninja-build pkg-config
  libgtest-dev libgmock-dev libbenchmark-dev
  libpng-dev zlib1g-dev libboost-dev
  libopenexr-dev
  libsndfile1-dev libsamplerate0-dev
  nlohmann-json3-dev libcli11-dev libtbb-dev
  clang libclang-rt-dev  # the fuzz run of `make test`: clang and its libFuzzer runtime
)

missing=()
for pkg in "${PACKAGES[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$pkg")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  echo "deps: all packages present"
  exit 0
fi

echo "deps: installing ${missing[*]}"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
