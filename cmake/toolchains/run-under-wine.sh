#!/usr/bin/env bash
# Runs a Windows program of the windows preset under wine: a prefix of its own in the
# build tree (created at the first run, kept; made next to the build's CMakeCache.txt
# found above the working directory), no wine chatter, and the MinGW runtime DLLs and the
# build's own DLLs on the search path.
set -euo pipefail
dir=$PWD
while [[ "$dir" != / && ! -f "$dir/CMakeCache.txt" ]]; do dir=$(dirname "$dir"); done
[[ -f "$dir/CMakeCache.txt" ]] || dir=$PWD
export WINEPREFIX="${WINEPREFIX:-$dir/wineprefix}"
export WINEDEBUG=-all
export WINEDLLOVERRIDES="mscoree,mshtml="  # no Mono or Gecko installer dialogs
runtime=$(dirname "$(x86_64-w64-mingw32-g++-posix -print-file-name=libstdc++-6.dll)")
pthread=$(dirname "$(x86_64-w64-mingw32-g++-posix -print-file-name=libwinpthread-1.dll)")
# Concurrent first runs (ctest -j) must not each start building the prefix.
if [[ ! -f "$WINEPREFIX/system.reg" ]]; then
  mkdir -p "$WINEPREFIX"
  (
    flock 9
    [[ -f "$WINEPREFIX/system.reg" ]] || { wineboot --init >/dev/null 2>&1 && wineserver --wait; }
  ) 9>"$WINEPREFIX.lock"
fi
# A server that outlives each program by a minute spares every test its own start of wine.
wineserver --persistent=60 </dev/null >/dev/null 2>&1 || true
winpath() { printf 'Z:%s' "${1//\//\\}"; }
export WINEPATH="$(winpath "$runtime");$(winpath "$pthread");$(winpath "$dir/src");$(winpath "$dir/bin")${WINEPATH:+;$WINEPATH}"
# wine leaves helper processes (services, devices) running for a while after the program;
# they inherit its standard output, and a caller that reads that through a pipe (CTest,
# the test discovery) would wait for them. So the program writes to files, shown after it.
out=$(mktemp) err=$(mktemp)
trap 'rm -f "$out" "$err"' EXIT
# Now and then wine itself fails to start (its loader, or a server on its way out) and
# exits at once with nothing written; every program run here prints something first (a
# test program its banner or its list of tests), so such a run is started again, at most
# twice, and said on standard error. A program that fails by itself fails the same way
# each time and is reported as it is.
for attempt in 1 2 3; do
  status=0
  wine "$@" >"$out" 2>"$err" </dev/null || status=$?
  if ((status == 0 || attempt == 3)) || [[ -s "$out" || -s "$err" ]]; then break; fi
  echo "run-under-wine: wine exited with status ${status} before the program wrote anything; starting it again" >&2
  sleep 1
  wineserver --persistent=60 </dev/null >/dev/null 2>&1 || true
done
cat "$out"
cat "$err" >&2
exit "$status"
