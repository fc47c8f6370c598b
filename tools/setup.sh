# Sourced by ./run and ./test: installs what is missing, says so, and is done in
# a moment when nothing is. Debian 12 and its packages only; root or sudo.

build_packages=(
  ca-certificates git python3 cmake ninja-build ccache pkg-config make
  g++ g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix
  dpkg-dev xz-utils nasm
  libavformat-dev libavcodec-dev libavutil-dev libswresample-dev libpulse-dev libssl-dev
  googletest ffmpeg lame
)
desktop_packages=(
  wine wine64 xvfb x11-utils x11-xserver-utils xdotool imagemagick fonts-dejavu-core fonts-liberation
  pulseaudio pulseaudio-utils
)
test_packages=(
  clang libclang-rt-14-dev libbenchmark-dev icecast2 nginx-light curl debootstrap procps openssl
)

as_root() {
  if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi
}

# The servers among the packages are the tests' to start, not the system's.
without_daemons() {
  local policy=/usr/sbin/policy-rc.d status=0
  [ ! -e "$policy" ] || { "$@"; return; }
  printf '#!/bin/sh\nexit 101\n' | as_root tee "$policy" >/dev/null
  as_root chmod +x "$policy"
  "$@" || status=$?
  as_root rm -f "$policy"
  return $status
}

need() {
  local package missing=()
  for package in "$@"; do
    [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" = installed ] ||
      missing+=("$package")
  done
  [ ${#missing[@]} = 0 ] && return 0
  echo "Installing ${#missing[@]} packages: ${missing[*]}"
  local log
  log=$(mktemp)
  if ! { as_root apt-get update && without_daemons as_root env DEBIAN_FRONTEND=noninteractive \
           apt-get install -y --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
    tail -20 "$log" >&2
    echo "The packages could not be installed." >&2
    return 1
  fi
  rm -f "$log"
}

# build PRESET [TARGET...]: configures where that was not done yet, then builds.
build() {
  local preset=$1
  shift
  [ -f "build/$preset/build.ninja" ] || cmake --preset "$preset" >"build/$preset.log" 2>&1 || {
    tail -30 "build/$preset.log" >&2
    return 1
  }
  cmake --build --preset "$preset" ${@:+--target "$@"}
}
