"""The simulated servers: their profiles, and the metrics that qorctl gives on them."""

import json
import os
import subprocess
from concurrent.futures import ThreadPoolExecutor

from processes import Failure

DRIVES = 24
TIMEOUT_S = 2        # of a collection: a tool that hangs costs no more
COLLECT_EACH_S = 10


def patched(operations, base="small"):
    return {"extends": base, "patch": [{"op": "replace", "path": path, "value": value}
                                       for path, value in operations]}


# What is wrong, the profile or the name of a shipped one, and the fault of its tool. All have a drive
# model, names and serial numbers of their own; the first one is waited for.
SICK = (
    ("a failed drive", "failed-drive", None),
    ("a rebuild", "rebuilding", None),
    ("a RAID tool that hangs", "sas", "hang"),
    ("no RAID tool, but drives", "no-tool-storcli", None),
    ("a RAID tool that speaks nonsense", "sata", "mutate=7"),
    ("a worn PCIe SSD",
     patched([("/tool/version", "7.0"), ("/pcieSsds/0/lifeUsed", 96)], "tool-6.8"), None),
    ("a bad battery", patched([("/controllers/0/battery/status", "Replace")]), None),
)


class Server:
    def __init__(self, number, illness, host, fault):
        self.number = number
        self.name = f"srv{number:04}"
        self.illness = illness
        self.host = host
        self.fault = fault


class Simulator:
    def __init__(self, programs, folder):
        self._qorsim = os.path.join(programs, "qorsim")
        self._qorctl = os.path.join(programs, "qorctl")
        self._folder = folder
        self._seed = 0
        os.makedirs(os.path.join(folder, "hosts"))

    def run_command(self, server, command):
        faults = [] if server.fault is None else ["--fault", server.fault]
        return [self._qorsim, "run", "--host", server.host, *faults, "--", *command]

    def metrics(self, server):
        command = self.run_command(server, [self._qorctl, "metrics", "--timeout", str(TIMEOUT_S)])
        return self._run(command)

    def collecting_command(self, server, output):
        """Each some seconds, as the timer of systemd does each minute."""
        loop = (f"while :; do '{self._qorctl}' metrics --timeout {TIMEOUT_S} --output '{output}'; "
                f"sleep {COLLECT_EACH_S}; done")
        return self.run_command(server, ["sh", "-c", loop])

    def fleet(self, count):
        """A few sick ones, the rest healthy, without two that are the same."""
        sick = [self._sick(number, *one) for number, one in enumerate(SICK[:count], 1)]
        return sick + [self._healthy(number) for number in range(len(sick) + 1, count + 1)]

    def generated(self, count):
        """As "qorsim new" makes them: a few have drives that failed."""
        return [Server(number, None, self._new_host(number), None)
                for number in range(1, count + 1)]

    def all_metrics(self, servers):
        pool = ThreadPoolExecutor(os.cpu_count())
        try:
            return dict(zip((one.name for one in servers), pool.map(self.metrics, servers)))
        finally:
            pool.shutdown(cancel_futures=True)  # Ctrl-C waits for no thousands

    def _sick(self, number, illness, profile, fault):
        if isinstance(profile, str):
            return Server(number, illness, profile, fault)
        host = os.path.join(self._folder, "hosts", f"sick{number}.json")
        with open(host, "w", encoding="utf-8") as file:
            json.dump(profile, file)
        return Server(number, illness, host, fault)

    def _healthy(self, number):
        while True:
            self._seed += 1
            server = Server(number, None, self._new_host(self._seed), None)
            if '\nqor_health{status="OK"} 1\n' in self.metrics(server):
                return server

    def _new_host(self, seed):
        host = os.path.join(self._folder, "hosts", f"seed{seed}.json")
        self._run([self._qorsim, "new", "--controllers", "1", "--drives", str(DRIVES),
                   "--seed", str(seed), "--output", host])
        return host

    @staticmethod
    def _run(command):
        done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, encoding="utf-8", check=False,
                              start_new_session=True)
        if done.returncode != 0:
            raise Failure(f"{' '.join(command)} ended with {done.returncode}:\n{done.stderr}")
        return done.stdout
