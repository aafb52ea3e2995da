#!/usr/bin/env bash
# Configures and builds the default preset (release with debug info) into build/.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"
if [[ ! -f build/CMakeCache.txt ]]; then
  cmake --preset default
fi
cmake --build --preset default -j "$(nproc)"
