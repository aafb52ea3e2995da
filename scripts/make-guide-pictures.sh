#!/bin/sh
# Makes the pictures of the user guide from the example scripts.
#
#   scripts/make-guide-pictures.sh [BUILD_DIR]     (default: build)
#
# Every examples/*.ksc runs through BUILD_DIR/src/keldo-run in a temporary
# folder of its own, which is also its program folder (KELDO_HOME), where it
# writes its files; the examples folder and the sources are left as they
# were. Each picture an example takes goes to docs/images/ when a page of
# docs/ or the README shows it, or when docs/images/ already holds a picture
# of that name. The pictures of the guide that no example takes are listed
# at the end; they are made by hand or by the screenshot test (frame-1d.png,
# under BUILD_DIR/screenshots/).
set -eu

root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-build}
case $build in
  /*) ;;
  *) build=$root/$build ;;
esac
runner=$build/src/keldo-run
if [ ! -x "$runner" ]; then
  echo "no $runner: build it first (cmake --build $build --target keldo-run)" >&2
  exit 1
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT INT TERM

# Shown by a page of the guide, or already one of its pictures.
guide_picture() {
  [ -e "$root/docs/images/$1" ] || grep -rqF "images/$1" "$root/docs" "$root/README.md"
}

failed=0
for script in "$root"/examples/*.ksc; do
  name=$(basename "$script" .ksc)
  mkdir "$work/$name"
  # The program's folder is the example's own (KELDO_HOME=.), so that the
  # folders it writes under it (Compress/Data, SndBuff) are there too.
  if ! (cd "$work/$name" && KELDO_HOME=. "$runner" "$script" >"$work/$name.out" 2>&1); then
    echo "$name: keldo-run failed:" >&2
    cat "$work/$name.out" >&2
    failed=1
    continue
  fi
  for picture in "$work/$name"/*.png; do
    [ -e "$picture" ] || continue
    file=$(basename "$picture")
    if guide_picture "$file"; then
      cp "$picture" "$root/docs/images/$file"
      echo "docs/images/$file  <- examples/$name.ksc"
    fi
  done
done

# The guide's pictures that no example took this time.
for shown in $(grep -rhoE 'images/[A-Za-z0-9_.-]+\.png' "$root/docs" "$root/README.md" | sed 's#images/##' | sort -u); do
  found=no
  for dir in "$work"/*/; do
    [ -e "$dir$shown" ] && found=yes
  done
  [ $found = yes ] || echo "not made by an example: docs/images/$shown"
done

exit $failed
