#!/usr/bin/env bash
# Installs what is missing, builds the application and opens its window.
set -euo pipefail
cd "$(dirname "$0")/.."

tools/install-deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build --target vellumbra_app
# The configuration file "vellumbra.xml" lives in the working folder: run from the build folder.
cd build
exec ./vellumbra "$@"
