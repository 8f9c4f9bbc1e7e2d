#!/usr/bin/env bash
# Installs what building and testing Toka needs on a Debian 12 machine, as root,
# and makes the machine run 32-bit programs, through qemu's emulator where the
# kernel refuses them. Safe to run again: quiet when everything is there, it
# installs only what is missing and says what.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/machine.sh

# Native (64-bit) and 32-bit toolchains, test and benchmark libraries. The
# reference host draws through OpenGL in an offscreen EGL context (Mesa's
# software rasteriser, so no graphics card is needed), shows its frames in a
# window through GLFW and writes its pictures with a header-only encoder
# (libstb-dev); GL, EGL and GLFW come in both architectures because the
# 32-bit host and plugins draw too. The window tests run under Xvfb, with
# xdotool as the user. toka-validate writes its JSON report with
# nlohmann-json, a header-only library that serves both architectures.
packages=(g++-multilib cmake make binutils pkg-config libstb-dev nlohmann-json3-dev
  libgtest-dev libbenchmark-dev libgtest-dev:i386 libbenchmark-dev:i386
  libegl-dev libgl-dev libegl-mesa0 libgl1-mesa-dri libglfw3-dev
  libegl-dev:i386 libgl-dev:i386 libegl-mesa0:i386 libgl1-mesa-dri:i386 libglfw3-dev:i386
  xvfb xauth xdotool)
# toka-host's flightgear world starts FlightGear (about 3 GB), under a virtual
# display and a session bus of its own (dbus-run-session), without which it
# aborts.
packages+=(flightgear dbus)
# The fuzzer (scripts/fuzz.sh) builds with clang and its libFuzzer, for the
# machine's own architecture only: it runs on x86-64 machines.
[ "$(dpkg --print-architecture)" = amd64 ] && packages+=(clang libclang-rt-dev)

SUDO=""
[ "$(id -u)" -ne 0 ] && SUDO="sudo"

installed() { dpkg-query -W -f='${Status}' "$1" 2>/dev/null | grep -q 'install ok installed'; }

updated=no
apt_update() {
  [ "$updated" = yes ] && return 0
  updated=yes
  if ! dpkg --print-foreign-architectures | grep -qx i386; then
    $SUDO dpkg --add-architecture i386
  fi
  # A mirror that is mid-sync can fail one index while the others are fine;
  # the install decides whether the machine is usable.
  $SUDO apt-get update -qq >/dev/null 2>&1 ||
    echo "setup: apt-get update reported errors (a mirror mid-sync?); going on with the indexes it has"
}

apt_install() {
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends "$@" >/dev/null
}

# The versions of a package (NAME:ARCH) that the indexes offer, one a line.
versions_offered() {
  apt-cache madison "$1" | awk -F'|' '{ gsub(/ /, "", $2); print $2 }' | sort -u
}

# A package of both architectures ("Multi-Arch: same") must have one version
# in both. When the i386 index of a mirror lags the amd64 one, the newest
# versions differ and apt gives up ("held broken packages"). This prints, for
# every such package the i386 packages need, NAME:amd64=V NAME:i386=V with V
# the newest version both indexes offer.
aligned_versions() {
  local foreign=() p dep name common
  for p in "$@"; do [[ $p == *:i386 ]] && foreign+=("$p"); done
  [ ${#foreign[@]} -eq 0 ] && return 0
  apt-cache depends --recurse --no-recommends --no-suggests --no-conflicts \
    --no-breaks --no-replaces --no-enhances "${foreign[@]}" 2>/dev/null |
    grep -E '^[a-z0-9][^ <>]*:i386$' | sort -u |
    while read -r dep; do
      name=${dep%:i386}
      apt-cache show "$dep" 2>/dev/null | grep -qx 'Multi-Arch: same' || continue
      installed "$name:amd64" || [[ " $* " == *" $name "* ]] || continue
      common=$(comm -12 <(versions_offered "$name:amd64") <(versions_offered "$name:i386") |
               sort -V | tail -n 1)
      [ -n "$common" ] || continue
      [ "$(dpkg-query -W -f='${Version}' "$name:amd64" 2>/dev/null)" = "$common" ] &&
        [ "$(apt-cache policy "$dep" | awk '/Candidate:/ { print $2 }')" = "$common" ] && continue
      echo "$name:amd64=$common $name:i386=$common"
    done
}

install_packages() {
  apt_update
  echo "setup: installing $*"
  local errors pins
  errors=$(mktemp)
  if apt_install "$@" 2>"$errors"; then
    rm -f "$errors"
    return 0
  fi
  pins=$(aligned_versions "$@" | tr '\n' ' ')
  if [ -z "$pins" ]; then
    cat "$errors" >&2
    rm -f "$errors"
    return 1
  fi
  rm -f "$errors"
  echo "setup: the mirror's i386 and amd64 indexes differ; installing both architectures at one version: $pins"
  # shellcheck disable=SC2086
  apt_install --allow-downgrades "$@" $pins
}

missing=()
for p in "${packages[@]}"; do
  installed "$p" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] || install_packages "${missing[@]}"

# 32-bit programs: natively if the kernel runs them, else through qemu.
if ! runs_32bit_programs; then
  echo "setup: this kernel does not run 32-bit programs; running them through qemu's user-mode emulator"
  installed qemu-user-static || install_packages qemu-user-static
  register_32bit_emulator || true
  if ! runs_32bit_programs; then
    echo "setup: 32-bit programs still do not run: gcc -m32 or $TOKA_QEMU_I386 registered in" \
         "$TOKA_BINFMT_DIR as $TOKA_BINFMT_NAME failed" >&2
    exit 1
  fi
fi
