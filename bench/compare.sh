#!/usr/bin/env bash
# Runs every benchmark program under build/bench and prints one table:
# benchmark, our time, the yardstick's time, and ours / yardstick.
# Usage: bench/compare.sh [BUILD_DIR] [extra Google Benchmark flags...]
# With --benchmark_repetitions=R the median of the R runs is shown.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=${1:-$root/build}
shift || true
tmp=$(mktemp -d)
images=$(mktemp -d)
trap 'rm -rf "$tmp" "$images"' EXIT
# The photographs of bench_codec, written from python3-skimage when it is there.
if [[ -x "$build/bench/bench_codec" ]] && /usr/bin/python3 -c "import skimage.data" 2> /dev/null; then
  /usr/bin/python3 "$root/bench/codec_images.py" "$images"
  export KELDO_CODEC_IMAGES=$images
fi
# The noisy photographs of bench_denoise2d, from python3-skimage with fixed seeds.
if [[ -x "$build/bench/bench_denoise2d" ]] && /usr/bin/python3 -c "import skimage.data" 2> /dev/null; then
  /usr/bin/python3 "$root/bench/denoise2d_images.py" "$images/denoise"
  export KELDO_DENOISE_IMAGES=$images/denoise
fi
found=0
for exe in "$build"/bench/bench_*; do
  [[ -x "$exe" ]] || continue
  found=1
  "$exe" --benchmark_format=json --benchmark_out="$tmp/$(basename "$exe").json" \
         --benchmark_out_format=json "$@" > /dev/null
done
# PyWavelets on the wavelet cases, when the program and python3-pywt are there.
if [[ -x "$build/bench/bench_wavelet" ]] && /usr/bin/python3 -c "import pywt" 2> /dev/null; then
  /usr/bin/python3 "$root/bench/pywt_yardstick.py" "$tmp/pywt_yardstick.json"
fi
# SciPy's stft and istft on the spectrogram cases, when python3-scipy is there.
if [[ -x "$build/bench/bench_spectrogram" ]] && /usr/bin/python3 -c "import scipy.signal" 2> /dev/null; then
  /usr/bin/python3 "$root/bench/scipy_stft_yardstick.py" "$tmp/scipy_stft_yardstick.json"
fi
# PyWavelets' cwt on the scalogram cases, when python3-pywt is there.
if [[ -x "$build/bench/bench_scalogram" ]] && /usr/bin/python3 -c "import pywt" 2> /dev/null; then
  /usr/bin/python3 "$root/bench/pywt_cwt_yardstick.py" "$tmp/pywt_cwt_yardstick.json"
fi
# The Python module against PyWavelets, when the module and python3-pywt are there.
if [[ -d "$build/python" ]] && PYTHONPATH="$build/python" /usr/bin/python3 -c "import keldo, pywt" 2> /dev/null; then
  PYTHONPATH="$build/python" /usr/bin/python3 "$root/bench/python/module_bench.py" "$tmp/python_module.json"
fi
# OpenJPEG on the codec cases, when the photographs and libopenjp2-tools are there.
if [[ -n "${KELDO_CODEC_IMAGES:-}" ]] && command -v opj_compress > /dev/null && command -v opj_decompress > /dev/null; then
  /usr/bin/python3 "$root/bench/openjpeg_yardstick.py" "$KELDO_CODEC_IMAGES" "$tmp/openjpeg_yardstick.json"
fi
# scikit-image's denoise_wavelet and SciPy's median filter on the denoising cases.
if [[ -n "${KELDO_DENOISE_IMAGES:-}" ]] && /usr/bin/python3 -c "import skimage.restoration, scipy.ndimage" 2> /dev/null; then
  /usr/bin/python3 "$root/bench/denoise2d_yardstick.py" "$KELDO_DENOISE_IMAGES" "$tmp/denoise2d_yardstick.json"
fi
if [[ $found -eq 0 ]]; then
  echo "no benchmark programs under $build/bench: build with the default preset first" >&2
  exit 1
fi
python3 - "$tmp" <<'PY'
import json, os, sys
rows = {}
for name in sorted(os.listdir(sys.argv[1])):
    with open(os.path.join(sys.argv[1], name)) as f:
        try:
            found = json.load(f)["benchmarks"]
        except ValueError:
            continue  # a filter that matched nothing in this program
        for b in found:
            # With repetitions, the median stands for the run.
            median = b.get("run_type") == "aggregate" and b.get("aggregate_name") == "median"
            if b.get("run_type") == "aggregate" and not median:
                continue
            full = b.get("run_name", b["name"]) if median else b["name"]
            if "/ours" in full:
                key, side = full.replace("/ours", "", 1), "ours"
            elif "/yardstick" in full:
                key, side = full.replace("/yardstick", "", 1), "yardstick"
            else:
                key, side = full, "ours"
            scale = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}[b.get("time_unit", "ns")]
            entry = rows.setdefault(key, {})
            if median or (side + "_median") not in entry:
                entry[side] = b["real_time"] * scale
                if "psnr" in b:
                    entry[side + "_psnr"] = b["psnr"]
            if median:
                entry[side + "_median"] = True
# The workshop's whole-way rows take OpenJPEG's row of the same image and rate.
for key, v in rows.items():
    part = key.split("/")
    if part[0] == "BM_Workshop" and len(part) == 4 and "yardstick" not in v:
        yard = rows.get("BM_Codec/%s/AswdrBinary/%s" % (part[1], part[3]), {})
        v.update({k: yard[k] for k in ("yardstick", "yardstick_psnr") if k in yard})
def fmt(t):
    if t is None: return "-"
    for unit, s in (("s", 1), ("ms", 1e-3), ("us", 1e-6)):
        if t >= s: return f"{t / s:.3f} {unit}"
    return f"{t / 1e-9:.1f} ns"
print(f"{'benchmark':48} {'ours':>12} {'yardstick':>12} {'ratio':>8}")
for key, v in rows.items():
    ours, yard = v.get("ours"), v.get("yardstick")
    ratio = f"{ours / yard:.2f}" if ours and yard else "-"
    print(f"{key:48} {fmt(ours):>12} {fmt(yard):>12} {ratio:>8}")
# The coders' quality: the PSNR counters in dB, ours less the yardstick's.
quality = [(key, v) for key, v in rows.items() if "ours_psnr" in v or "yardstick_psnr" in v]
if quality:
    print(f"\n{'PSNR (dB)':48} {'ours':>12} {'yardstick':>12} {'ours-yard':>9}")
    show = lambda p: "-" if p is None else f"{p:.2f}"
    for key, v in quality:
        ours, yard = v.get("ours_psnr"), v.get("yardstick_psnr")
        diff = f"{ours - yard:+.2f}" if ours is not None and yard is not None else "-"
        print(f"{key:48} {show(ours):>12} {show(yard):>12} {diff:>9}")
PY
# The denoisers' table: PSNR, its distance from 33 dB at sigma 20, and times.
python3 "$root/bench/denoise2d_table.py" "$tmp"
