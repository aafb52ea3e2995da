#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test through CTest
# (GUI tests run under a virtual display). Exits with the tests' status.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
cd "$root"
scripts/setup.sh
scripts/build.sh
cd build
exec xvfb-run -a -s "-screen 0 1280x1024x24" ctest --output-on-failure -j "$(nproc)" "$@"
