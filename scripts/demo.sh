#!/usr/bin/env bash
# Runs the desktop host on a generated sample workspace. Without a display it
# runs under Xvfb, writes a screenshot of the window and prints its path.
set -euo pipefail
build=${1:-build}
work=${DEMO_DIR:-$build/demo-workspace}
if [ ! -d "$work" ] || [ -z "$(ls -A "$work" 2>/dev/null)" ]; then
  "$build/applications/kabrowse/kabrowse" sample "$work" --projects 4 --analyses 12 --wells 4 >/dev/null
fi
host="$build/applications/kahost/kahost"
if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then
  exec "$host" "$work"
fi
shot="$(cd "$build" && pwd)/demo-screenshot.png"
echo "No display: running under Xvfb and taking a screenshot."
QT_QPA_PLATFORM=xcb xvfb-run -a -s "-screen 0 1400x900x24" "$host" "$work" --screenshot "$shot"
