#!/usr/bin/env bash
# Runs every benchmark of a build folder, one after the other.
set -euo pipefail
build=${1:-build}
export QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen}
status=0
for b in "$build"/bench/bench_*; do
  [ -x "$b" ] || continue
  "$b" || status=1
done
exit $status
