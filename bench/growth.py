#!/usr/bin/env python3
"""How the cost of work grows with its size: growth.py BUILD RESULT [KIND...]

Counts with callgrind what pieces of work of doubled sizes take, and fits the exponent e of
"a + b * n ** e" to the instructions: 1 is linear. RESULT gets a JSON list, of which report.py makes the
table and the verdicts. Instructions do not depend on how busy the machine is.
"""
import json
import os
import re
import subprocess
import sys
import tempfile

REPORT_KIB = [2 ** k for k in range(4, 15)]
# What is counted, of what, and in which sizes; those of bench_growth first.
PIECES = {
    "ctrl": ("controller getter", "KiB of report", REPORT_KIB),
    "ld": ("logical drive getter", "KiB of report", REPORT_KIB),
    "pd": ("physical drive getter", "KiB of report", REPORT_KIB),
    "smart": ("SMART getter", "KiB of report", REPORT_KIB),
    "pssd": ("PCIe SSD getter", "KiB of report", REPORT_KIB),
    "xml": ("XML", "items", [2 ** k for k in range(8, 20)]),
    "form": ("items to form to digits", "controllers", [2 ** k for k in range(0, 7)] + [127]),
    "devices": ("presence check", "devices", [2 ** k for k in range(4, 17)]),
    "entries": ("presence check", "entries", [2 ** k for k in range(3, 12)]),
}
QORCTL = {
    "controllers": ("`qorctl raid --format json`", "controllers", [1, 2, 4, 8, 16, 32, 64]),
    "drives": ("`qorctl raid --format json`", "drives", [8, 16, 32, 64, 128, 256, 512]),
    "metrics": ("`qorctl metrics`", "drives", [8, 16, 32, 64, 128, 256, 512]),
    "state": ("`qorctl check --state`, second run", "drives", [8, 16, 32, 64, 128, 256, 512]),
    "page": ("`qorctl page`", "files", [1, 2, 4, 8, 16, 32, 64, 128, 256]),
}
CRITICAL = 2  # what `check` may say of a generated server


def callgrind(command, *options, inside=()):
    """Instructions of all processes that were counted; `inside` is what valgrind is run by."""
    with tempfile.TemporaryDirectory() as folder:
        end = subprocess.run(
            [*inside, "valgrind", "--tool=callgrind", f"--callgrind-out-file={folder}/%p",
             f"--log-file={folder}/log.%p", *options, *command],
            check=False, stdout=subprocess.DEVNULL, env=os.environ | {"QOR_TRACE": "none"})
        if end.returncode not in (0, 1, CRITICAL):
            sys.exit(f"growth.py: status {end.returncode} of {' '.join(command)}")
        total = 0
        for name in os.listdir(folder):
            with open(os.path.join(folder, name), encoding="utf-8", errors="replace") as file:
                summary = re.search(r"^summary: (\d+)", file.read(), re.MULTILINE)
            total += int(summary[1]) if summary else 0
    if total == 0:
        sys.exit(f"growth.py: nothing was counted of {' '.join(command)}")
    return total


class Servers:
    """Simulated servers, and qorctl on them. The RAID tool and its shells are not counted."""

    def __init__(self, build, folder):
        self.bin = os.path.abspath(f"{build}/bin")
        self.folder = folder

    def host(self, controllers, drives):
        path = f"{self.folder}/{controllers}-{drives}.host"
        if not os.path.exists(path):
            subprocess.run([f"{self.bin}/qorsim", "new", "--controllers", str(controllers), "--drives",
                            str(drives), "--seed", "1", "--output", path], check=True)
        return path

    def on(self, host, *command):
        return [f"{self.bin}/qorsim", "run", "--host", host, "--", *command]

    def qorctl(self, host, *arguments):
        return callgrind([f"{self.bin}/qorctl", *arguments], "--trace-children=yes",
                         "--trace-children-skip=*/sh,*/krzcli", "--toggle-collect=main",
                         inside=self.on(host))

    def count(self, kind, size):
        if kind == "controllers":
            return self.qorctl(self.host(size, 2 * size), "raid", "--format", "json")
        if kind == "drives":
            return self.qorctl(self.host(1, size), "raid", "--format", "json")
        if kind == "metrics":
            return self.qorctl(self.host(1, size), "metrics")
        if kind == "state":
            return self.with_state(size)
        return self.page(size)

    def with_state(self, drives):
        host = self.host(1, drives)
        check = ["check", "--state", f"{self.folder}/state-{drives}"]
        subprocess.run(self.on(host, f"{self.bin}/qorctl", *check), check=False,
                       stdout=subprocess.DEVNULL)
        return self.qorctl(host, *check)

    def page(self, files):
        report = f"{self.folder}/server.json"
        if not os.path.exists(report):
            subprocess.run(self.on(self.host(1, 24), f"{self.bin}/qorctl", "storage", "--format",
                                   "json", "--output", report), check=True)
        return callgrind([f"{self.bin}/qorctl", "page", "--output", f"{self.folder}/page.html",
                          *[report] * files])


def fit(sizes, costs):
    """The exponent whose a + b * n ** e lies nearest to the costs, each by its part."""
    def residual(exponent):
        powers = [size ** exponent for size in sizes]
        weights = [1 / cost ** 2 for cost in costs]
        total = sum(weights)
        mean_p = sum(w * p for w, p in zip(weights, powers)) / total
        mean_c = sum(w * c for w, c in zip(weights, costs)) / total
        slope = (sum(w * (p - mean_p) * (c - mean_c) for w, p, c in zip(weights, powers, costs))
                 / sum(w * (p - mean_p) ** 2 for w, p in zip(weights, powers)))
        base = mean_c - slope * mean_p
        return sum(w * (c - base - slope * p) ** 2 for w, p, c in zip(weights, powers, costs))
    return min((step / 200 for step in range(80, 501)), key=residual)


def main(build, result, *kinds):
    rows = []
    with tempfile.TemporaryDirectory() as folder:
        servers = Servers(build, folder)
        for kind, (title, unit, sizes) in (PIECES | QORCTL).items():
            if kinds and kind not in kinds:
                continue
            if kind in PIECES:
                costs = [callgrind([f"{build}/bin/bench_growth", kind, str(size)],
                                   "--toggle-collect=Measured") for size in sizes]
            else:
                costs = [servers.count(kind, size) for size in sizes]
            rows.append({"title": title, "unit": unit, "sizes": sizes, "instructions": costs,
                         "exponent": fit(sizes, costs),
                         "each": (costs[-1] - costs[-2]) / (sizes[-1] - sizes[-2])})
            print(f"{title}, {unit}: {rows[-1]['exponent']:.3f}", flush=True)
    with open(result, "w", encoding="utf-8") as file:
        json.dump(rows, file, indent=1)


if len(sys.argv) < 3:
    sys.exit(__doc__)
main(*sys.argv[1:])
