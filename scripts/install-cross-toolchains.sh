#!/usr/bin/env bash
# Installs what the clang, aarch64 and windows presets need, from Debian's archive:
# clang 14, the aarch64 and MinGW-w64 cross compilers, qemu's user-mode emulator, wine and
# the GoogleTest sources (built inside each cross build). Does nothing when all of it is
# there already; otherwise runs apt-get update once and installs only what is missing.
# Needs root (or sudo) for the install step.
set -euo pipefail

packages=(
  clang-14
  g++-aarch64-linux-gnu binutils-aarch64-linux-gnu
  qemu-user
  g++-mingw-w64-x86-64 mingw-w64-x86-64-dev
  wine wine64
  googletest
)

missing=()
for package in "${packages[@]}"; do
  status=$(dpkg-query -W -f='${Status}' "${package}" 2>/dev/null || true)
  [[ "${status}" == "install ok installed" ]] || missing+=("${package}")
done
if ((${#missing[@]} == 0)); then
  echo "cross tool chains: all present"
  exit 0
fi

echo "cross tool chains: installing ${missing[*]}"
as_root=()
if [[ $(id -u) -ne 0 ]]; then
  as_root=(sudo)
fi
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
