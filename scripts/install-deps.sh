#!/usr/bin/env bash
# Installs the Debian 12 packages the build, the tests and the demo need,
# only those that are missing; uses sudo when not root.
set -euo pipefail
packages=(cmake make g++ qtbase5-dev qtbase5-dev-tools libqt5sql5-sqlite libsqlite3-dev libqt5svg5
          qttranslations5-l10n xvfb xauth)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0
echo "Installing: ${missing[*]}"
sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
