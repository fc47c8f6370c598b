"""A Wine prefix of the test's own, copied from a template that is made once.

KESTREL_WINE_ROOT names the root of another system whose Wine is used instead of
this machine's: the way to run x86 programs. /tmp and the source tree must be the
same inside and outside (tools/win32-chroot.sh sees to that).
"""

import fcntl
import os
import shutil
import signal
import subprocess

import processes

ROOT = os.environ.get("KESTREL_WINE_ROOT", "")
CACHE = os.path.join(os.environ.get("XDG_CACHE_HOME") or os.path.expanduser("~/.cache"), "kestrel")
SERVERS = "/usr/lib/wine/wineserver", "/usr/bin/wineserver"


def command(*words):
    """The command as it is started on this machine."""
    return ["chroot", ROOT, *words] if ROOT else list(words)


class Prefix:
    """Environment of all Wine programs of a test, with its wineserver running."""

    def __init__(self, folder, environment, density=96):
        self.folder = folder
        self.environment = {**os.environ, **environment, "WINEPREFIX": folder,
                            "WINEDLLOVERRIDES": "mscoree,mshtml=",
                            "WINEDEBUG": os.environ.get("WINEDEBUG", "-all")}
        self._copy(self._template())
        if density != 96:
            self._set_density(density)
        self.server = self._start_server()

    def start(self, program, *arguments, **options):
        return processes.start(command("wine", program, *arguments), env=self.environment, **options)

    def close(self):
        # Asked properly it ends all programs; without it its drivers would spin on.
        subprocess.run(command(self._server_program(), "-k"), env=self.environment, timeout=30,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
        processes.end(self.server)
        self.signal(signal.SIGKILL)

    def processes(self):
        """Linux ids of all its programs, its server among them."""
        mark = b"WINEPREFIX=" + os.fsencode(self.folder)
        for pid in filter(str.isdigit, os.listdir("/proc")):
            try:
                with open(f"/proc/{pid}/environ", "rb") as file:
                    ours = mark in file.read().split(b"\0")
            except OSError:
                continue
            if ours and int(pid) != os.getpid():
                yield int(pid)

    def signal(self, number):
        """To all its programs, none of which can catch it."""
        for pid in self.processes():
            try:
                os.kill(pid, number)
            except OSError:
                pass  # it has just ended

    # --- making it

    def _template(self):
        """The finished prefix as the programs in ROOT see its path."""
        version = processes.run(command("wine", "--version"), env=self.environment,
                                stdout=subprocess.PIPE, text=True).stdout
        folder = os.path.join(CACHE, "prefix-" + "".join(c if c.isalnum() else "-" for c in version.strip()))
        os.makedirs(ROOT + folder, exist_ok=True)
        with open(f"{ROOT}{folder}.lock", "w") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            if not os.path.exists(f"{ROOT}{folder}/.made"):
                self._make(folder)
                open(f"{ROOT}{folder}/.made", "w").close()
        return folder

    def _make(self, folder):
        environment = {**self.environment, "WINEPREFIX": folder}
        desktop = r"HKCU\Software\Wine\Explorer"
        for words in (("wineboot", "-i"),
                      # The desktop that has a taskbar, and so a tray.
                      ("reg", "add", desktop, "/v", "Desktop", "/d", "Default", "/f"),
                      ("reg", "add", desktop + r"\Desktops", "/v", "Default", "/d", "1024x768", "/f")):
            processes.run(command("wine", *words), 180, env=environment, stdout=subprocess.DEVNULL,
                          stderr=subprocess.DEVNULL)
        # Its server writes the registry when it ends.
        processes.run(command(self._server_program(), "-w"), env=environment)

    def _copy(self, template):
        """The prefix's own registry and user files; Windows' own files are shared."""
        os.makedirs(self.folder)
        for name in os.listdir(ROOT + template):
            if name.endswith(".reg") or name == ".update-timestamp":
                shutil.copy2(os.path.join(ROOT + template, name), self.folder)
        drive = os.path.join(self.folder, "drive_c")
        shutil.copytree(f"{ROOT}{template}/drive_c", drive, symlinks=True,
                        ignore=lambda _, names: [n for n in names if n == "windows"])
        os.symlink(f"{template}/drive_c/windows", os.path.join(drive, "windows"))
        devices = os.path.join(self.folder, "dosdevices")
        os.makedirs(devices)
        os.symlink("../drive_c", os.path.join(devices, "c:"))
        os.symlink("/", os.path.join(devices, "z:"))

    def _set_density(self, density):
        with open(os.path.join(self.folder, "user.reg"), "a") as registry:
            registry.write(f'\n[Control Panel\\\\Desktop]\n"LogPixels"=dword:{density:08x}\n')

    def _server_program(self):
        return next(s for s in SERVERS if os.path.exists(ROOT + s))

    def _start_server(self):
        return processes.start(command(self._server_program(), "-f", "-p"), env=self.environment,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    # --- paths

    def windows_path(self, path):
        """Of a file outside the prefix, or in its drive C."""
        drive = os.path.join(self.folder, "drive_c") + "/"
        rest = "C:/" + path[len(drive):] if path.startswith(drive) else "Z:" + path
        return rest.replace("/", "\\")

    @property
    def appdata(self):
        users = os.path.join(self.folder, "drive_c/users")
        own = [u for u in os.listdir(users) if u != "Public"]
        return os.path.join(users, own[0], "AppData/Roaming")
