#!/usr/bin/env bash
# Installs the Debian packages of scripts/packages.txt that are missing.
# Quick when everything is present: one dpkg query, no network.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
mapfile -t wanted < <(grep -v '^#' "$here/packages.txt" | sed '/^\s*$/d')
missing=()
for p in "${wanted[@]}"; do
  status=$(dpkg-query -W -f='${Status}' "$p" 2>/dev/null || true)
  [[ "$status" == "install ok installed" ]] || missing+=("$p")
done
if ((${#missing[@]})); then
  echo "setup: installing ${missing[*]}"
  sudo=""
  [[ $(id -u) -eq 0 ]] || sudo="sudo"
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
