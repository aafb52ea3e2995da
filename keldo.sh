#!/usr/bin/env bash
# Installs what is missing, builds, and starts KELDO on an example form.
# Without a display it runs the tour script headless and writes its pictures under out/.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
cd "$root"
scripts/setup.sh
scripts/build.sh
if [[ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]]; then
  if [[ $# -eq 0 ]]; then set -- "$root/examples/two-graphs.kd1"; fi
  exec build/src/keldo "$@"
fi
mkdir -p out
echo "No display found: running examples/tour.ksc with keldo-run; pictures go to out/."
cd out
"$root/build/src/keldo-run" "$root/examples/tour.ksc"
echo "Done: see $(pwd)/*.png"
