# What this machine can run, for the other scripts (sourced, not run).
#
# A machine of our kind may or may not run 32-bit x86 programs: some kernels
# have the 32-bit emulation switched off ("Exec format error"). There
# setup.sh has the kernel hand 32-bit programs to qemu's user-mode emulator
# through binfmt_misc, which then runs them transparently, child processes
# included.

TOKA_BINFMT_DIR=/proc/sys/fs/binfmt_misc
TOKA_BINFMT_NAME=qemu-i386
TOKA_QEMU_I386=/usr/bin/qemu-i386-static

# binfmt_misc is a file system of its own: a fresh machine or a chroot may
# not have it mounted even where the kernel has a registration.
mount_binfmt_misc() {
  [ -e "$TOKA_BINFMT_DIR/register" ] && return 0
  mount -t binfmt_misc binfmt_misc "$TOKA_BINFMT_DIR" 2>/dev/null
}

# Succeeds when a 32-bit program built here runs (natively or emulated).
runs_32bit_programs() {
  local dir status=0
  dir=$(mktemp -d)
  printf 'int main(void) { return sizeof(void*) == 4 ? 0 : 1; }\n' >"$dir/probe.c"
  if gcc -m32 "$dir/probe.c" -o "$dir/probe" 2>"$dir/errors"; then
    "$dir/probe" 2>/dev/null || status=1
  else
    status=2
  fi
  rm -rf "$dir"
  return "$status"
}

# Succeeds when 32-bit programs go through the emulator. A registration, once
# there, takes every 32-bit program, whether or not the kernel could run it.
runs_32bit_emulated() {
  mount_binfmt_misc || true
  grep -qsx enabled "$TOKA_BINFMT_DIR/$TOKA_BINFMT_NAME"
}

# Registers the emulator for 32-bit x86 ELF files (executables and shared
# objects alike). The flag F opens the interpreter now, so that it also works
# inside a chroot that does not have it.
register_32bit_emulator() {
  mount_binfmt_misc || {
    echo "setup: cannot mount binfmt_misc on $TOKA_BINFMT_DIR" >&2
    return 1
  }
  if [ -e "$TOKA_BINFMT_DIR/$TOKA_BINFMT_NAME" ]; then
    echo 1 >"$TOKA_BINFMT_DIR/$TOKA_BINFMT_NAME"
    return 0
  fi
  local magic='\x7fELF\x01\x01\x01\x00\x00\x00\x00\x00\x00\x00\x00\x00\x02\x00\x03\x00'
  local mask='\xff\xff\xff\xff\xff\xfe\xfe\x00\xff\xff\xff\xff\xff\xff\xff\xff\xfe\xff\xff\xff'
  echo ":$TOKA_BINFMT_NAME:M::$magic:$mask:$TOKA_QEMU_I386:F" >"$TOKA_BINFMT_DIR/register"
}

# Runs a command with an X server for the window tests: a virtual one of
# Xvfb, unless the machine has a display.
with_display() {
  if [ -z "${DISPLAY:-}" ] && command -v xvfb-run >/dev/null; then
    xvfb-run -a -s "-screen 0 1280x1024x24" "$@"
  else
    "$@"
  fi
}
