#!/usr/bin/env bash
# Generates a sample workspace and shows it with the command-line tool.
set -euo pipefail
build=${1:-build}
work=${DEMO_DIR:-$build/demo-workspace}
rm -rf "$work"
"$build/applications/kabrowse/kabrowse" sample "$work" --projects 3 --analyses 6 --wells 3
first=$(ls -d "$work"/*/ | head -n 1)
echo "== dump of $first"
"$build/applications/kabrowse/kabrowse" dump "$first"
echo "== tree of $first"
"$build/applications/kabrowse/kabrowse" tree "$first"
