#!/usr/bin/env bash
# Installs what is missing, builds everything and runs the whole test suite headless.
# GL tests use a surfaceless EGL context; application tests start their own Xvfb.
set -euo pipefail
cd "$(dirname "$0")/.."

tools/install-deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build
cd build
env -u DISPLAY LIBGL_ALWAYS_SOFTWARE=1 ctest --output-on-failure -j 2 --timeout 600
