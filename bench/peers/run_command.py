"""Median seconds of a shell command with its output in a file: run_command.py COMMAND FILE."""
import statistics
import subprocess
import sys
import time


def seconds():
    begin = time.monotonic()
    with open(sys.argv[2], "wb") as out:
        subprocess.run(["sh", "-c", sys.argv[1]], stdout=out, check=True)
    return time.monotonic() - begin


print(statistics.median(seconds() for _ in range(60)))
