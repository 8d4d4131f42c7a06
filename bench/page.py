#!/usr/bin/env python3
"""Measures qorctl page of many files: page.py QORCTL RESULT REPORT...

The files are links to the reports, in turn. RESULT gets a list as Google Benchmark writes it, with the
processor's seconds, the peak of resident memory and the sizes of files and page in bytes."""
import json
import os
import re
import resource
import subprocess
import sys
import tempfile
import time

SIZES = (100, 1_000, 10_000)


def links(folder, reports, count):
    for index in range(count):
        name = f"web{index:05}.json"
        os.symlink(os.path.abspath(reports[index % len(reports)]), os.path.join(folder, name))
        yield name


def high_water(process):
    """The most that was resident so far; None once the process has ended."""
    with open(f"/proc/{process.pid}/status", encoding="utf-8") as file:
        kib = re.search(r"VmHWM:\s*(\d+)", file.read())
    return int(kib[1]) * 1024 if kib else None


def usage_of(command, folder):
    """Status, seconds of the processor, and the peak. What the kernel keeps of a process that has
    ended counts the one that started it, too; so the peak is asked for each millisecond."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    peak = 0
    with subprocess.Popen(command, cwd=folder) as process:
        while process.poll() is None:
            peak = max(peak, high_water(process) or 0)
            time.sleep(0.001)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    seconds = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
    return process.returncode, seconds, peak


def measure(qorctl, reports, count):
    with tempfile.TemporaryDirectory(dir="/var/tmp") as folder:
        names = list(links(folder, reports, count))
        status, seconds, peak = usage_of([qorctl, "page", "--output", "page.html", *names], folder)
        if status != 0:
            sys.exit(f"qorctl page ended with {status}")
        return {"run_name": f"page/{count} servers/ours", "run_type": "iteration",
                "seconds": seconds, "peak": peak,
                "read": sum(os.stat(os.path.join(folder, name)).st_size for name in names),
                "written": os.stat(os.path.join(folder, "page.html")).st_size}


def main(qorctl, result, *reports):
    entries = [measure(os.path.abspath(qorctl), reports, count) for count in SIZES]
    with open(result, "w", encoding="utf-8") as file:
        json.dump({"benchmarks": entries}, file, indent=2)


if __name__ == "__main__":
    main(*sys.argv[1:])
