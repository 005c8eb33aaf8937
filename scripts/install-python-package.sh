#!/usr/bin/env bash
# Builds the Python package qallib (the library's sources compiled into its module, with the
# library's floating-point flags) and installs it, with its command-line tool qal, into the
# venv build/python-venv. The venv is made on Debian's /usr/bin/python3 with its system
# packages (NumPy, matplotlib) when it is missing. Nothing is downloaded: pip runs without
# an index and without build isolation. QALLIB_BUILD_JOBS compile jobs (default: the number
# of processors); a rebuild compiles only what changed.
set -euo pipefail
cd "$(dirname "$0")/.."
venv=build/python-venv
if [[ ! -x "${venv}/bin/python" ]]; then
  /usr/bin/python3 -m venv --system-site-packages "${venv}"
fi
QALLIB_BUILD_JOBS="${QALLIB_BUILD_JOBS:-$(nproc)}" \
  "${venv}/bin/pip" install --no-build-isolation --no-index --quiet ./python
