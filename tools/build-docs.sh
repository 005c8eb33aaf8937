#!/usr/bin/env bash
# Builds the reference manual under docs/ from a fresh checkout: installs the Debian packages
# that are missing, installs qallib and its qal tool into build/python-venv, then runs
# docs/build.py, which regenerates every page and figure. Arguments go to docs/build.py
# (--check compares instead of writing).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
scripts/install-python-package.sh
build/python-venv/bin/python docs/build.py "$@"
