#!/usr/bin/env bash
# win32-chroot.sh: prints the root folder of a small i386 system whose Wine runs
# x86 programs, made at its first use (about a minute) and kept in the cache
# folder. This tree, /tmp, /proc and /dev are the same inside and outside. Where
# the machine does not allow it, it says why and fails.
#   --release   takes the mounts away; the system stays in the cache
set -euo pipefail
cd "$(dirname "$0")/.."

tree=$PWD
cache=${XDG_CACHE_HOME:-$HOME/.cache}/kestrel
# Mounts stand outside the cache folder, so that deleting that deletes no more.
root=/run/kestrel-win32

no() {
  echo "x86 programs cannot run here: $*" >&2
  exit 1
}

release() {
  local mounts
  mounts=$(awk -v root="$root" '$5 == root || index($5, root "/") == 1 {print $5}' /proc/self/mountinfo | tac)
  for mount in $mounts; do umount "$mount" 2>/dev/null || umount -l "$mount"; done
  [ ! -d "$root" ] || rmdir "$root"
}

# Where this machine gets this release from: address and name of the suite.
mirror() {
  . /etc/os-release
  apt-get indextargets --format '$(REPO_URI) $(CODENAME) $(COMPONENT)' 'Created-By: Packages' |
    awk -v suite="${VERSION_CODENAME:-}" '$2 == suite && $3 == "main" {print $1, $2; exit}'
}

make_system() {
  local address suite proxy
  read -r address suite < <(mirror) || true
  [ -n "${suite:-}" ] || no "apt names no source of this Debian release"
  eval "$(apt-config shell proxy Acquire::http::Proxy)"
  [ -z "${proxy:-}" ] || export http_proxy=$proxy
  echo "Making the i386 system for x86 programs in $system" >&2
  rm -rf --one-file-system "$system.new"
  mkdir -p "$system.new"
  if ! debootstrap --arch=i386 --variant=minbase \
    --include=wine,wine32,libpulse0,fonts-dejavu-core,fonts-liberation \
    "$suite" "$system.new" "$address" >"$cache/win32-chroot.log" 2>&1; then
    tail -5 "$cache/win32-chroot.log" >&2
    no "debootstrap failed (all of its output: $cache/win32-chroot.log)"
  fi
  rm -f "$system.new"/var/cache/apt/archives/*.deb
  mv "$system.new" "$system"
}

# What is mounted there may be a folder that was deleted and made anew since.
same() {
  [ "$1" -ef "$2" ] && return
  if mountpoint -q "$2"; then umount -l "$2"; fi
  return 1
}

bind() {
  mkdir -p "$root$1"
  same "$1" "$root$1" || mount --rbind --make-rslave "$1" "$root$1" 2>/dev/null ||
    no "$1 cannot be bound into another root"
}

if [ "${1:-}" = --release ]; then
  release
  exit
fi

[ "$(id -u)" = 0 ] || no "only root may change to another root"
[ "$(dpkg --print-architecture)" = amd64 ] || no "this is no amd64 machine"
command -v debootstrap >/dev/null || no "debootstrap is not installed"
mkdir -p "$cache"
exec 9>"$cache/win32-chroot.lock"
flock 9
system=$cache/win32-$(. /etc/os-release && echo "${VERSION_CODENAME:-debian}")
[ -d "$system" ] || make_system 9>&-

mkdir -p "$root"
same "$system" "$root" || mount --bind --make-private "$system" "$root" 2>/dev/null ||
  no "mounting is not allowed"
for shared in /proc /dev /tmp "$tree"; do bind "$shared"; done
# A minimal system does not know its own name for this machine.
[ -s "$root/etc/hosts" ] || printf '127.0.0.1 localhost\n::1 localhost\n' >"$root/etc/hosts"
chroot "$root" /bin/true 2>/dev/null || no "this kernel does not run i386 programs"
echo "$root"
