#!/usr/bin/env bash
# Builds the fuzz preset and runs one target for a number of seconds.
# Usage: fuzz/run.sh TARGET SECONDS [LIBFUZZER FLAGS...]   (TARGET: script_parser, simple_images, ...)
# Flags given after SECONDS override the defaults, e.g. -timeout=1.
# With KELDO_FUZZ_EMPTY=1 the run starts from an empty corpus of its own and no seeds.
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
if [[ "${KELDO_FUZZ_EMPTY:-0}" == 1 ]]; then
  corpus=$(mktemp -d "${TMPDIR:-/tmp}/keldo-fuzz-$target.XXXXXX")
  args=("$corpus")
else
  args=("fuzz/corpus-$target")
  [[ -d "$seeds" ]] && args+=("$seeds")
fi
exec "build-fuzz/fuzz/fuzz_$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
  -artifact_prefix=fuzz/artifacts/ "${@:3}" "${args[@]}"
