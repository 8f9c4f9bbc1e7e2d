#!/usr/bin/env bash
# Installs what building and testing Toka needs on a Debian 12 machine, as root.
# Safe to run again: it installs only what is missing.
set -euo pipefail

packages=(g++-multilib cmake make libgtest-dev:i386 libbenchmark-dev:i386 binutils)

installed() { dpkg-query -W -f='${Status}' "$1" 2>/dev/null | grep -q 'install ok installed'; }

missing=()
for p in "${packages[@]}"; do
  installed "$p" || missing+=("$p")
done

# The reference host writes screenshots with libpng: the 32-bit development
# package, or, where the mirror cannot resolve it (its 32-bit index lagging
# behind the 64-bit one), the 32-bit runtime library with the headers of the
# native development package, which are the same for both.
png_ready() {
  installed libpng-dev:i386 || { installed libpng16-16:i386 && [ -e /usr/include/png.h ]; }
}
png_ready || missing+=(png)

[ ${#missing[@]} -eq 0 ] && exit 0

SUDO=""
[ "$(id -u)" -ne 0 ] && SUDO="sudo"

if ! dpkg --print-foreign-architectures | grep -qx i386; then
  $SUDO dpkg --add-architecture i386
fi
# A mirror that is mid-sync can fail one index while the others are fine;
# the install below is what decides whether the machine is usable.
$SUDO apt-get update -qq || echo "setup: apt-get update reported errors, trying the install anyway" >&2
apt_install() { DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends "$@"; }

tools=()
for p in "${missing[@]}"; do [ "$p" != png ] && tools+=("$p"); done
[ ${#tools[@]} -eq 0 ] || apt_install "${tools[@]}"

if ! png_ready; then
  apt_install libpng-dev:i386 || apt_install libpng16-16:i386 libpng-dev
fi
