#!/usr/bin/env bash
# Installs, when missing, what the arm64 preset needs: Debian's aarch64 cross
# compiler, qemu-user to run the tests, and the arm64 builds of the libraries
# the project links (multiarch, beside the amd64 ones). hidl-gen and python
# stay the host's.
#
# Debian's arm64 libbacktrace (pulled in by libutils) needs 7z.so, which only
# p7zip-full ships; that package is not multi-arch, so its arm64 copy cannot
# be installed beside the amd64 one. Its .deb is unpacked instead into
# build/arm64-sysroot, which the toolchain file passes to the linker
# (-rpath-link) and to qemu (-L).
set -euo pipefail
cd "$(dirname "$0")/.."

packages=(
  g++-aarch64-linux-gnu qemu-user
  android-liblog-dev:arm64 android-libutils-dev:arm64 android-libbase-dev:arm64
  android-libcutils-dev:arm64 libgtest-dev:arm64 libgmock-dev:arm64
)

sudo_cmd=""
[ "$(id -u)" -eq 0 ] || sudo_cmd="sudo"

updated=false
apt_update() {
  $updated || $sudo_cmd apt-get update
  updated=true
}

if ! dpkg --print-foreign-architectures | grep -qx arm64; then
  echo "setup-arm64: adding the arm64 architecture"
  $sudo_cmd dpkg --add-architecture arm64
fi

scripts/setup.sh "${packages[@]}"

sysroot=build/arm64-sysroot
if ! find "$sysroot" -name 7z.so -print -quit 2>/dev/null | grep -q .; then
  echo "setup-arm64: unpacking p7zip-full:arm64 into ${sysroot}"
  apt_update
  download=$(mktemp -d)
  # apt-get download runs as the _apt user when it can; the folder must be writable by it.
  chmod 777 "$download"
  (cd "$download" && apt-get download p7zip-full:arm64)
  mkdir -p "$sysroot"
  dpkg-deb -x "$download"/p7zip-full_*_arm64.deb "$sysroot"
  rm -rf "$download"
fi
