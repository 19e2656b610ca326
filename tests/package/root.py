"""A fresh Debian root, in which the package is installed and its program is started."""

import pathlib
import shutil
import subprocess
import tempfile

ENVIRONMENT = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "LANG": "C.UTF-8", "DEBIAN_FRONTEND": "noninteractive"}
# What changes by itself when anything is installed, and is not the package's.
_ADMINISTRATION = ("/var/lib/dpkg", "/var/lib/apt", "/var/cache", "/var/log", "/etc/ld.so.cache", "/proc", "/sys", "/dev",
                   "/run", "/tmp", "/var/lib/systemd", "/usr/share/icons/hicolor/icon-theme.cache",
                   "/usr/share/applications/mimeinfo.cache")


class Root:
    """Use as a context manager. Made of what this machine's own packages come from."""

    def __enter__(self):
        self.path = pathlib.Path(tempfile.mkdtemp(prefix="lumiwren-root-"))
        self.mounts = []
        subprocess.run(["mmdebstrap", "--quiet", "--variant=apt", "--skip=cleanup/apt/lists", "bookworm", self.path,
                        *self._sources()], check=True)
        for folder in ("proc", "dev"):
            self.mount(f"/{folder}")
        return self

    def __exit__(self, *exception):
        for place in reversed(self.mounts):
            subprocess.run(["umount", "--lazy", place], check=True)
        shutil.rmtree(self.path)

    @staticmethod
    def _sources():
        found = [path for pattern in ("/etc/apt/sources.list", "/etc/apt/sources.list.d/*.list",
                                      "/etc/apt/sources.list.d/*.sources")
                 for path in pathlib.Path("/").glob(pattern[1:]) if path.read_text().strip()]
        assert found, "this machine has no package sources"
        return found

    def mount(self, folder):
        """Makes a folder of this machine visible in the root, at the same place."""
        place = self.path / str(folder).lstrip("/")
        place.mkdir(parents=True, exist_ok=True)
        subprocess.run(["mount", "--bind", folder, place], check=True)
        self.mounts.append(place)

    def unmount(self, folder):
        place = self.path / str(folder).lstrip("/")
        subprocess.run(["umount", "--lazy", place], check=True)
        self.mounts.remove(place)
        place.rmdir()

    def run(self, *argv, check=True):
        """Standard output of a command in the root."""
        done = subprocess.run(["chroot", self.path, *map(str, argv)], env=ENVIRONMENT, capture_output=True, text=True,
                              check=False)
        if check and done.returncode:
            raise RuntimeError(f"{' '.join(map(str, argv))}: {done.stdout}{done.stderr}")
        return done.stdout

    def install(self, package):
        shutil.copy(package, self.path / "package.deb")
        try:
            self.run("apt-get", "install", "-q", "-y", "--no-install-recommends", "/package.deb")
        finally:
            (self.path / "package.deb").unlink()

    def files(self):
        """Every file and folder, but for those of the administration."""
        listed = self.run("find", "/", "-xdev").splitlines()
        return {path for path in listed if not path.startswith(_ADMINISTRATION)}
