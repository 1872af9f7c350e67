"""A device in a folder that programs enter by chroot, and what a run there costs."""

import collections
import contextlib
import json
import os
import pathlib
import re
import shlex
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import threading

WIFI = "/usr/kelp/etc/wifi/"
LEGACY = WIFI + "legacy/"
HOST_FOLDERS = ("bin", "lib", "lib64", "usr/bin", "usr/lib", "usr/lib64", "usr/libexec")
RESET = "rm -rf /usr/kelp /etc/hostapd && cp -a /bench/image/. /"

Contestant = collections.namedtuple("Contestant", "name command status", defaults=(0,))


def enter_namespace():
    """Starts this program again in a mount namespace of its own, as its root: what it mounts ends with it."""
    for number in (signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, lambda *_: sys.exit(1))  # clears up on the way
    if os.environ.pop("KELP_BENCH_INSIDE", None):
        return
    os.environ["KELP_BENCH_INSIDE"] = "1"
    as_root = ["--user", "--map-root-user"] if os.geteuid() else []
    os.execvp("unshare", ["unshare", *as_root, "--mount", sys.executable, *sys.argv])


def _mount(*arguments):
    subprocess.run(["mount", *map(str, arguments)], check=True)


def is_in_memory(folder):
    """Whether the files of the folder are on no disk."""
    kind = subprocess.run(["stat", "-f", "-c", "%T", folder], stdout=subprocess.PIPE, check=True).stdout
    return kind.strip() in (b"tmpfs", b"ramfs")


class Device:
    """Every run begins with the image again, with the same in place for every contestant: the host's programs and
    libraries, /proc, a null device, and a daemon that takes the log."""

    def __init__(self, folder, image, programs):
        self.folder = pathlib.Path(folder)
        self.image = self.folder / "bench/image"
        shutil.copytree(image, self.image, symlinks=True)
        for path in ("dev", "etc", "proc", "tmp", "var/lock"):
            (self.folder / path).mkdir(parents=True)
        for name in HOST_FOLDERS:
            host, here = pathlib.Path("/", name), self.folder / name
            if host.is_symlink():
                here.symlink_to(host.readlink())
            elif host.is_dir():
                here.mkdir(parents=True)
                _mount("--bind", "-o", "ro", host, here)
        shutil.copy("/etc/ld.so.cache", self.folder / "etc")
        (self.folder / "dev/null").touch()
        _mount("--bind", "/dev/null", self.folder / "dev/null")
        kernel = self.folder / "proc/sys/kernel"
        _mount("--rbind", "/proc", self.folder / "proc")
        _mount("-t", "tmpfs", "tmpfs", kernel)
        shutil.copytree(self.image / "proc/sys/kernel", kernel, dirs_exist_ok=True)
        shutil.rmtree(self.image / "proc")
        for program in programs:
            shutil.copy(program, self.folder / "bench")
        reset = self.folder / "bench/reset"
        reset.write_text(f"#!/bin/sh\n{RESET}\n")
        reset.chmod(0o755)
        self._take_log()

    def _take_log(self):
        daemon = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        here = os.getcwd()
        os.chdir(self.folder / "dev")  # the way to a socket must be short
        daemon.bind("log")
        os.chdir(here)

        def take():
            while True:
                daemon.recv(65536)

        threading.Thread(target=take, daemon=True).start()

    def run(self, command, status=0):
        """Runs the command in the device as it is; fails, with what it printed, unless it ends with the status."""
        done = subprocess.run(["/usr/sbin/chroot", self.folder, *command], env={"PATH": "/usr/bin:/bin"}, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
        if done.returncode != status:
            raise RuntimeError(f"{shlex.join(map(str, command))[:200]}: status {done.returncode}\n"
                               + done.stdout.decode(errors="replace"))

    def _run_behind(self, wrapper, contestant):
        self.run(["/bench/reset"])
        self.run([*wrapper, *contestant.command], contestant.status)

    def _read(self, path):
        return (self.folder / path.lstrip("/")).read_text(errors="replace")

    def files(self):
        """The bytes of all files that a migration may change."""
        found = {}
        for top in ("usr/kelp", "etc/hostapd"):
            for path in sorted((self.folder / top).rglob("*")):
                if path.is_file():
                    found["/" + str(path.relative_to(self.folder))] = path.read_bytes()
        return found

    def change(self, contestant):
        """The files before and after a run."""
        self.run(["/bench/reset"])
        before = self.files()
        self.run(contestant.command, contestant.status)
        return before, self.files()

    def times(self, contestants, runs):
        """Milliseconds of each: the median by the clock, the mean of CPU time, with the kernel's for it."""
        self.run(["hyperfine", "-N", "--style", "none", "--warmup", "1", "--runs", str(runs), "--prepare", "/bench/reset",
                  "--export-json", "/tmp/times.json", *(shlex.join(one.command) for one in contestants)])
        results = json.loads(self._read("/tmp/times.json"))["results"]
        return [{"wall_ms": 1e3 * one["median"], "cpu_ms": 1e3 * (one["user"] + one["system"])} for one in results]

    def instructions(self, contestant):
        """Of all its processes in user mode, loader included, as callgrind counts them."""
        for old in (self.folder / "tmp").glob("callgrind.*"):
            old.unlink()
        self._run_behind(["valgrind", "--tool=callgrind", "--quiet", "--vgdb=no", "--trace-children=yes",
                          "--callgrind-out-file=/tmp/callgrind.%p"], contestant)
        totals = [re.findall(r"^totals: (\d+)", profile.read_text(errors="replace"), re.M)
                  for profile in (self.folder / "tmp").glob("callgrind.*")]
        return sum(int(total) for found in totals for total in found)

    def system_calls(self, contestant):
        """How many of each, of all its processes, loader included."""
        self._run_behind(["strace", "-f", "-c", "-o", "/tmp/strace"], contestant)
        calls = collections.Counter()
        for line in self._read("/tmp/strace").splitlines():
            fields = line.split()
            if len(fields) >= 5 and fields[3].isdigit() and fields[-1] != "total":
                calls[fields[-1]] += int(fields[3])
        return dict(calls)

    def opens(self, contestant):
        """How often each file was opened for reading, in the order of the first time; and the libraries."""
        self._run_behind(["strace", "-e", "trace=openat", "-o", "/tmp/strace"], contestant)
        opened = re.findall(r'^openat\(AT_FDCWD, "([^"]+)", (O_RDONLY[A-Z_|]*)[^)]*\) += \d', self._read("/tmp/strace"), re.M)
        paths = collections.Counter(path for path, flags in opened if "O_DIRECTORY" not in flags)
        libraries = [path for path in paths if ".so" in path and path != "/etc/ld.so.cache"]
        return {path: count for path, count in paths.items() if ".so" not in path}, libraries

    def peak_kib(self, contestant):
        """The most memory that its largest process had at once."""
        self._run_behind(["/bench/bench-usage", "/tmp/peak"], contestant)
        return int(self._read("/tmp/peak").split()[-1])


@contextlib.contextmanager
def device(image, programs, parent=None):
    """A device with its files in memory, or in a folder in `parent` where one is given."""
    folder = tempfile.mkdtemp(prefix="kelp-bench-", dir=parent)
    try:
        if parent is None:
            _mount("-t", "tmpfs", "tmpfs", folder)
        yield Device(folder, image, programs)
    finally:
        with open("/proc/self/mounts", encoding="utf-8", errors="replace") as mounts:
            inside = [line.split()[1] for line in mounts if line.split()[1].startswith(folder)]
        subprocess.run(["umount", "--lazy", *reversed(inside)], check=True)
        shutil.rmtree(folder)
