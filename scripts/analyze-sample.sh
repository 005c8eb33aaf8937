#!/usr/bin/env bash
# The main job, from a fresh Debian machine: installs the packages that are missing,
# builds QalLib's Python package with its command-line tool qal into build/python-venv,
# and analyses the sample curve: the report on standard output, the plot (curve, smoothed
# curve, band, extrema, half-maximum crossings, slope) in build/sample_curve.png.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
echo "Building the Python package and qal into build/python-venv (a few minutes the first time)..."
scripts/install-python-package.sh
echo
build/python-venv/bin/qal analyze examples/data/sample_curve.csv --plot build/sample_curve.png
echo
echo "Plot: build/sample_curve.png. Run qal on your own curves: build/python-venv/bin/qal --help"
