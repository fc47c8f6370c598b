#!/bin/bash
# Cross-builds FFmpeg's static libraries for the audio engine, once, and prints
# where they are:  build-ffmpeg.sh win64|win32
#
# The source is Debian's own package, in the version whose -dev packages serve the
# native build. Sources and results lie in the user's cache, named by version,
# configuration and architecture; the machine's apt configuration stays as it is.
set -euo pipefail

# Debian packages that this needs (besides apt): for whoever prepares a machine.
PACKAGES="dpkg-dev gcc-mingw-w64 make nasm patch xz-utils"
if [ "${1:-}" = --packages ]; then
  echo "$PACKAGES"
  exit
fi

case "${1:-}" in
  win64) arch=x86_64 ;;
  win32) arch=i686 ;;
  *) echo "usage: $0 win64|win32|--packages" >&2; exit 2 ;;
esac
cross=$arch-w64-mingw32

# LGPL (nothing that would need --enable-gpl), and only what the engine uses.
configuration=(
  --enable-cross-compile --target-os=mingw32 --arch="$arch"
  --cross-prefix="$cross-" --cc="$cross-gcc-posix" --pkg-config=false
  --disable-everything --disable-autodetect --disable-programs --disable-doc --disable-debug
  --disable-network --disable-avdevice --disable-avfilter
  --disable-swscale --disable-postproc --enable-w32threads --enable-swresample
  --enable-decoder=mp3float,aac,aac_latm,vorbis,opus,flac
  --enable-parser=mpegaudio,aac,aac_latm,flac
  --enable-demuxer=ogg,flac,mpegts,mov
  # Not -fdata-sections: its zeroed tables would lie in the file.
  --extra-cflags=-ffunction-sections
)

cache=${XDG_CACHE_HOME:-$HOME/.cache}/kestrel
key=$(printf '%s\n' "${configuration[@]}" "$("$cross-gcc-posix" -dumpfullversion)" | sha256sum | cut -c1-12)
version=$(apt-cache policy libavcodec-dev 2>/dev/null | sed -n 's/^ *Candidate: //p')

# Without package lists any version that was built before will do.
if [ -z "$version" ] || [ "$version" = "(none)" ]; then
  version=
  for made in "$cache"/ffmpeg-*-"$key-$arch"; do
    [ -f "$made/complete" ] && prefix=$made
  done
else
  prefix=$cache/ffmpeg-${version#*:}-$key-$arch
fi
if [ -n "${prefix:-}" ] && [ -f "$prefix/complete" ]; then
  echo "$prefix"
  exit
fi

mkdir -p "$cache"
exec 9>"$cache/build-ffmpeg.lock"
flock 9
if [ -n "${prefix:-}" ] && [ -f "$prefix/complete" ]; then  # another call made it meanwhile
  echo "$prefix"
  exit
fi

work=$(mktemp -d "$cache/work.XXXXXX")
log=$cache/build-ffmpeg-$arch.log
trap 'status=$?; rm -rf "$work"; [ $status = 0 ] || echo "build-ffmpeg: failed, see $log" >&2' EXIT
: >"$log"

# The machine's own package sources, as source package lines in files of our own.
derive_sources() {
  local parts=$work/apt/parts file
  mkdir -p "$parts" "$work/apt/lists/partial"
  for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [ -f "$file" ] || continue
    sed -n 's/^ *deb  *\(\[[^]]*\] *\)\{0,1\}/deb-src \1/p' "$file" >"$parts/$(basename "$file" .list).list"
  done
  for file in /etc/apt/sources.list.d/*.sources; do
    [ -f "$file" ] || continue
    sed -e 's/^Types:.*/Types: deb-src/' -e '/^Architectures:/d' "$file" >"$parts/$(basename "$file")"
  done
}

own_apt=(-o "Dir::Etc::sourcelist=/dev/null" -o "Dir::Etc::sourceparts=$work/apt/parts"
         -o "Dir::State::lists=$work/apt/lists" -o "Dir::Cache::pkgcache=" -o "Dir::Cache::srcpkgcache="
         -o "APT::Sandbox::User=root" -o "APT::Get::List-Cleanup=0")

# Sums as the signed package index states them; true when the file matches.
matches_index() {
  local sum
  sum=$(awk -v name="$1" '/^Checksums-Sha256:/ { on = 1; next } /^[^ ]/ { on = 0 }
                          on && $3 == name { print $1; exit }' "$work/index")
  [ -n "$sum" ] && echo "$sum  $1" | sha256sum --check --status
}

fetch_source() {
  derive_sources
  apt-get "${own_apt[@]}" update >>"$log" 2>&1 || true  # a source without source packages may fail
  local wanted=ffmpeg${version:+=$version}
  apt-cache "${own_apt[@]}" showsrc --only-source ffmpeg 2>>"$log" |
    awk -v v="$version" 'BEGIN { RS = ""; ORS = "\n\n" } v == "" || index($0, "\nVersion: " v "\n")' >"$work/index"
  cd "$work"
  # Mirrors sometimes lack the detached signature of the upstream tarball; all
  # that matters is in the signed index and checked below.
  apt-get "${own_apt[@]}" source --download-only "$wanted" >>"$log" 2>&1 || true
  local file
  for file in ffmpeg_*.orig.tar.xz ffmpeg_*.debian.tar.xz; do
    if ! matches_index "$file"; then
      echo "build-ffmpeg: no good copy of the source package $wanted ($file)" >&2
      return 1
    fi
  done
}

unpack_source() {
  mkdir "$work/source"
  cd "$work/source"
  tar --strip-components=1 -xf ../ffmpeg_*.orig.tar.xz
  tar -xf ../ffmpeg_*.debian.tar.xz
  local name
  while read -r name _; do
    case "$name" in '' | '#'*) continue ;; esac
    patch -p1 --silent <"debian/patches/$name" >>"$log"
  done < <(cat debian/patches/series 2>/dev/null)
}

echo "build-ffmpeg: building FFmpeg's libraries for $1, this takes about a minute" >&2
fetch_source
if [ -z "$version" ]; then
  version=$(sed -n 's/^Version: //p' "$work/index" | head -1)
  prefix=$cache/ffmpeg-${version#*:}-$key-$arch
fi
unpack_source
{
  ./configure --prefix="$work/out" "${configuration[@]}"
  make -j"$(nproc)"
  make install
} >>"$log" 2>&1
rm -rf "$work/out/lib/pkgconfig" "$work/out/share"
cp LICENSE.md COPYING.LGPLv2.1 "$work/out/"
rm -rf "$prefix"
touch "$work/out/complete"
mv "$work/out" "$prefix"
echo "$prefix"
