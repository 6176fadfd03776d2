#!/usr/bin/env bash
# Installs what is missing, builds everything and runs the whole test suite headless.
# GL tests use a surfaceless EGL context; application tests start their own Xvfb.
set -euo pipefail
cd "$(dirname "$0")/.."

tools/install-deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build
(cd build && env -u DISPLAY LIBGL_ALWAYS_SOFTWARE=1 ctest --output-on-failure -j 2 --timeout 600)

# The fuzz targets in a clang build of their own: a smoke run of a few seconds each.
cmake -S . -B build-fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_C_COMPILER=clang-14 -DCMAKE_CXX_COMPILER=clang++-14 \
  -DVEL_FUZZ=ON -DBUILD_TESTING=OFF -DVEL_BUILD_BENCHMARKS=OFF
cmake --build build-fuzz
(cd build-fuzz && ctest --output-on-failure -j 2 -L fuzz --timeout 120)
