#!/usr/bin/env bash
# Builds the reference manual under docs/ from a fresh checkout: installs the Debian packages
# that are missing, makes the venv build/python-venv and installs qallib into it as
# tools/check.sh does, then runs docs/build.py, which regenerates every page. Arguments go to
# docs/build.py (--check compares instead of writing).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
venv=build/python-venv
if [[ ! -x "${venv}/bin/python" ]]; then
  /usr/bin/python3 -m venv --system-site-packages "${venv}"
fi
QALLIB_BUILD_JOBS="${CMAKE_BUILD_PARALLEL_LEVEL:-$(nproc)}" \
  "${venv}/bin/pip" install --no-build-isolation --no-index --quiet ./python
"${venv}/bin/python" docs/build.py "$@"
