#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the benchmarks need.
# Idempotent: asks apt only for what is missing, so a warm machine skips the network.
set -euo pipefail

packages=(
  build-essential cmake ninja-build ccache pkg-config git
  qtbase5-dev
  libimgui-dev
  python3-glad
  libbullet-dev libbullet-extras-dev
  libqhull-dev
  libtinyxml2-dev
  libstb-dev
  libsfml-dev
  libcgal-dev libgmp-dev libmpfr-dev
  libegl-dev libgl-dev libegl-mesa0 libgl1-mesa-dri
  googletest libgtest-dev libgmock-dev libbenchmark-dev
  libopenmesh-dev
  glslang-tools
  clang-14 libclang-rt-14-dev
  xvfb xauth xdotool imagemagick
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
