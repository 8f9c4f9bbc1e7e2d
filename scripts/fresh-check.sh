#!/usr/bin/env bash
# Checks that the README's test command is all a fresh machine needs: builds a
# minimal Debian 12 tree with debootstrap, puts a clean clone of this
# repository's HEAD into it and runs `bash scripts/test.sh` there in a chroot,
# as root. Prints the command's output and, last, whether it passed.
#
#   bash scripts/fresh-check.sh [TREE]     (default /var/tmp/toka-fresh)
#
# Not part of the suite: it downloads a Debian system and builds everything
# from nothing (about 40 s for the tree, then the setup and the test run).
# The chroot shares this machine's kernel, so 32-bit programs run there as
# they run here: natively, or through an emulator registered here (its
# registration opens the interpreter, so the tree needs no copy of it).
set -euo pipefail
cd "$(dirname "$0")/.."
tree=${1:-/var/tmp/toka-fresh}
mirror=http://deb.debian.org/debian

[ "$(id -u)" -eq 0 ] || { echo "fresh-check: run as root" >&2; exit 2; }
for tool in debootstrap git; do
  command -v "$tool" >/dev/null ||
    DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "$tool" >/dev/null
done

unmount_all() {
  for dir in dev/pts dev sys proc; do
    mountpoint -q "$tree/$dir" && umount -R "$tree/$dir" 2>/dev/null || umount -l "$tree/$dir" 2>/dev/null || true
  done
}
unmount_all
rm -rf "$tree"
mkdir -p "$tree"
trap unmount_all EXIT

echo "fresh-check: debootstrap bookworm into $tree"
debootstrap --variant=minbase bookworm "$tree" "$mirror" >"$tree.debootstrap.log" 2>&1 ||
  { cat "$tree.debootstrap.log" >&2; exit 1; }
# The same Debian sources as a new machine of ours: the release, its updates
# and the security suite.
cat >"$tree/etc/apt/sources.list" <<EOF
deb $mirror bookworm main
deb $mirror bookworm-updates main
deb http://deb.debian.org/debian-security bookworm-security main
EOF
cp /etc/resolv.conf "$tree/etc/resolv.conf" 2>/dev/null || true

git clone -q --no-local "$PWD" "$tree/toka"
mount -t proc proc "$tree/proc"
mount --rbind /sys "$tree/sys"
mount --rbind /dev "$tree/dev"

echo "fresh-check: running 'bash scripts/test.sh' in the fresh tree"
status=0
chroot "$tree" /usr/bin/env -i HOME=/root PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
  /bin/bash -c 'cd /toka && bash scripts/test.sh' || status=$?
if [ "$status" -eq 0 ]; then
  echo "fresh-check: passed"
else
  echo "fresh-check: FAILED (exit status $status)"
fi
exit "$status"
