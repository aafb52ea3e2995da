#!/usr/bin/env bash
# Builds the fuzz preset and runs one target for a number of seconds.
# Usage: fuzz/run.sh TARGET SECONDS    (TARGET: script_parser, simple_images, ...)
# The corpus lives in fuzz/corpus-TARGET/, crashes go to fuzz/artifacts/.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
target=${1:?target name}
seconds=${2:?seconds}
cd "$root"
[[ -f build-fuzz/CMakeCache.txt ]] || cmake --preset fuzz > /dev/null
cmake --build --preset fuzz --target "fuzz_$target"
mkdir -p "fuzz/corpus-$target" fuzz/artifacts
seeds="fuzz/seeds/$target"
args=("fuzz/corpus-$target")
[[ -d "$seeds" ]] && args+=("$seeds")
exec "build-fuzz/fuzz/fuzz_$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
  -artifact_prefix=fuzz/artifacts/ "${args[@]}"
