#!/usr/bin/env bash
# Measures how close every Fourier kernel comes to a long-double FFT for
# N = 64 .. 65536 and prints the table (kind, N, relative error): the
# largest error over the outputs divided by the largest output magnitude.
# Usage: scripts/fft_precision.sh [BUILD_DIR]
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=${1:-$root/build}
KELDO_PRINT_PRECISION=1 "$build/tests/fourier_tests" --gtest_filter='FFTPrecision.*' | grep -P '^(kind|\w+\t\d+\t)'
