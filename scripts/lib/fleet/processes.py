"""Processes that end with this one, and the folder that they work in."""

import collections
import contextlib
import os
import shutil
import signal
import socket
import subprocess
import tempfile
import time
import urllib.error
import urllib.request

END_LIMIT_S = 10
READY_LIMIT_S = 60

PACKAGES = {
    "prometheus": "prometheus",
    "prometheus-node-exporter": "prometheus-node-exporter",
    "prometheus-alertmanager": "prometheus-alertmanager",
}


class Failure(Exception):
    """What the user is told, in a sentence."""


def demand_programs(folder):
    for name in ("qorctl", "qorsim"):
        if not os.access(os.path.join(folder, name), os.X_OK):
            raise Failure(f"no {name} in {folder}; without --programs it is built")
    for program, package in PACKAGES.items():
        if shutil.which(program) is None:
            raise Failure(f"{program} is not installed; Debian has it in the package {package} "
                          f"(scripts/bootstrap fleet)")


def raise_on_signals():
    """Ctrl-C and the like end the program as an exception does: through every "finally"."""
    def interrupt(number, _frame):
        for other in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            signal.signal(other, signal.SIG_IGN)  # a second one does not stop the cleaning up
        raise SystemExit(128 + number)
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, interrupt)


def free_ports(count):
    """Ports of 127.0.0.1 that nobody listens on, all different."""
    with contextlib.ExitStack() as held:
        sockets = [held.enter_context(socket.socket()) for _ in range(count)]
        for one in sockets:
            one.bind(("127.0.0.1", 0))
        return collections.deque(one.getsockname()[1] for one in sockets)


def fetch(url):
    with urllib.request.urlopen(url, timeout=60) as answer:
        return answer.read().decode()


class Processes:
    """Use with "with": at its end every process has ended and the folder is gone."""

    def __enter__(self):
        self.folder = tempfile.mkdtemp(prefix="qor-fleet.")
        self._running = {}
        return self

    def __exit__(self, *_):
        running = self._running.values()
        for process in running:
            process.terminate()
        deadline = time.monotonic() + END_LIMIT_S
        for process in running:
            try:
                process.wait(max(0, deadline - time.monotonic()))
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
        shutil.rmtree(self.folder)

    def path(self, *names):
        return os.path.join(self.folder, *names)

    def start(self, name, command, environment=None):
        """Out of reach of the terminal's Ctrl-C, so that they end in order; but not of our end."""
        with open(self.path(name + ".log"), "ab") as log:
            process = subprocess.Popen(
                ["setpriv", "--pdeathsig", "TERM", *command], stdin=subprocess.DEVNULL, stdout=log,
                stderr=log, start_new_session=True,
                env=None if environment is None else {**os.environ, **environment})
        self._running[name] = process
        return process

    def log_of(self, name):
        with open(self.path(name + ".log"), encoding="utf-8", errors="replace") as log:
            return "".join(log.readlines()[-5:])

    def demand_running(self):
        for name, process in self._running.items():
            if process.poll() is not None:
                raise Failure(f"{name} ended by itself, status {process.returncode}:\n"
                              f"{self.log_of(name)}")

    def wait_ready(self, name, url):
        deadline = time.monotonic() + READY_LIMIT_S
        while time.monotonic() < deadline:
            self.demand_running()
            try:
                return fetch(url)
            except (urllib.error.URLError, OSError):
                time.sleep(0.1)
        raise Failure(f"{name} does not answer at {url}:\n{self.log_of(name)}")
