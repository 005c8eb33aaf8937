#!/usr/bin/env bash
# Installs the Debian packages that building and testing QalLib need: the C++ toolchain,
# GoogleTest and Google Benchmark for the library, and Debian's Python 3 with NumPy,
# pybind11, pytest, venv, Dask and matplotlib for the Python package and its command-line
# tool. With --test also what only the test command needs: clang 14 with its libFuzzer
# runtime for the fuzz targets, and valgrind. Idempotent: when every package is already
# installed it only asks dpkg and returns, without touching the network.
# Runs as root, or through sudo otherwise.
set -euo pipefail

packages=(
  cmake g++ make pkg-config libgtest-dev libbenchmark-dev
  python3 python3-dev python3-venv python3-pip python3-setuptools python3-wheel
  python3-numpy pybind11-dev python3-pybind11 python3-pytest
  python3-dask python3-matplotlib
)
if [[ "${1:-}" == "--test" ]]; then
  packages+=(clang-14 libclang-rt-14-dev valgrind)
fi

missing=()
for package in "${packages[@]}"; do
  status="$(dpkg-query -W -f='${Status}' "${package}" 2>/dev/null || true)"
  [[ "${status}" == "install ok installed" ]] || missing+=("${package}")
done
if ((${#missing[@]} == 0)); then
  exit 0
fi

echo "install-deps: installing ${missing[*]}"
as_root=()
if ((EUID != 0)); then
  if ! command -v sudo >/dev/null; then
    echo "install-deps: these packages are missing and neither root nor sudo is available: ${missing[*]}" >&2
    exit 1
  fi
  as_root=(sudo)
fi
export DEBIAN_FRONTEND=noninteractive
# Other package operations on the machine may hold the dpkg lock for a while.
apt_options=(-o DPkg::Lock::Timeout=600)
"${as_root[@]}" apt-get "${apt_options[@]}" update -q
"${as_root[@]}" apt-get "${apt_options[@]}" install -y -q --no-install-recommends "${missing[@]}"
