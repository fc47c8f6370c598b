#!/usr/bin/env bash
# run-wine.sh PROGRAM [ARGUMENT...]: runs a Windows program in a Wine prefix made
# for the tests, on the present display or a virtual one.
#   KESTREL_WINEPREFIX  the prefix (made at its first use), else in the cache folder
#   KESTREL_WINE_ROOT   root of a system whose Wine runs x86 programs, else this one
set -euo pipefail

there=()
kind=x64
if [ -n "${KESTREL_WINE_ROOT:-}" ]; then
  there=(chroot "$KESTREL_WINE_ROOT" env --chdir="$PWD")
  kind=x86
fi
export WINEPREFIX=${KESTREL_WINEPREFIX:-${XDG_CACHE_HOME:-$HOME/.cache}/kestrel/wine-tests-$kind}
export WINEDLLOVERRIDES='mscoree,mshtml=' WINEDEBUG=${WINEDEBUG:--all}

# The virtual desktop brings the taskbar with its tray.
make_prefix() {
  "${there[@]}" wine wineboot -i
  local key='HKCU\Software\Wine\Explorer'
  "${there[@]}" wine reg add "$key" /v Desktop /d Default /f
  "${there[@]}" wine reg add "$key\\Desktops" /v Default /d 1024x768 /f
  touch "${KESTREL_WINE_ROOT:-}$WINEPREFIX/.made"
}

display=
stop_display() { [ -z "$display" ] || kill "$display" 2>/dev/null || true; }
trap stop_display EXIT
if [ -z "${DISPLAY:-}" ]; then
  number=$(mktemp)
  Xvfb -displayfd 3 -screen 0 1024x768x24 -nolisten tcp 3>"$number" 2>/dev/null &
  display=$!
  for _ in $(seq 100); do
    [ -s "$number" ] && break
    sleep 0.05
  done
  DISPLAY=:$(cat "$number")
  export DISPLAY
  rm -f "$number"
fi

root=${KESTREL_WINE_ROOT:-}
mkdir -p "$root$WINEPREFIX"
exec 9>"$root$WINEPREFIX/.lock"
flock 9 # one program at a time: they share the desktop
[ -e "$root$WINEPREFIX/.made" ] || make_prefix >/dev/null 2>&1 9>&-

# A run that was killed leaves its program on the desktop.
if [ -e "$root$WINEPREFIX/.running" ]; then
  "${there[@]}" wineserver -k || true
fi
touch "$root$WINEPREFIX/.running"

# Through a pipe: Wine's console is slow on anything else.
status=0
"${there[@]}" wine "$@" 2>&1 9>&- | cat || status=$?
rm "$root$WINEPREFIX/.running"
exit "$status"
