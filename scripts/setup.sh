#!/usr/bin/env bash
# Installs what building and testing Toka needs on a Debian 12 machine, as root.
# Safe to run again: it installs only what is missing.
set -euo pipefail

packages=(g++-multilib cmake make libgtest-dev:i386 libbenchmark-dev:i386 libpng-dev:i386 binutils)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

SUDO=""
[ "$(id -u)" -ne 0 ] && SUDO="sudo"

if ! dpkg --print-foreign-architectures | grep -qx i386; then
  $SUDO dpkg --add-architecture i386
fi
# A mirror that is mid-sync can fail one index while the others are fine;
# the install below is what decides whether the machine is usable.
$SUDO apt-get update -qq || echo "setup: apt-get update reported errors, trying the install anyway" >&2
DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
