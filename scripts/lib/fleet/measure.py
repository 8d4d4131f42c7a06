"""Measures Prometheus with a fleet: the tables of docs/fleet.md."""

import json
import os
import re
import statistics
import time
import urllib.request

from monitoring import Monitoring
from processes import fetch

INTERVAL_S = 60          # as on real servers
FAST_INTERVAL_S = 2      # 120 samples, which make a whole chunk, in four minutes
SETTLE_INTERVALS = 2     # all were asked, and the rules have gone over all series
MEASURED_INTERVALS = 5
CHUNK_SAMPLES = 120
LOOK_EACH_S = 10

COLUMNS = ("Servers", "Series", "of a server", "Memory", "of a series", "Processor",
           "Scrape, mean", "longest", "Rules, mean", "longest", "Load")


def resident_bytes(process):
    with open(f"/proc/{process.pid}/status", encoding="ascii") as file:
        return next(1024 * int(line.split()[1]) for line in file if line.startswith("VmRSS:"))


def processor_seconds(process):
    with open(f"/proc/{process.pid}/stat", encoding="ascii") as file:
        fields = file.read().rpartition(") ")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def own_figure(monitoring, name):
    """Of Prometheus itself; the sum where there are several."""
    text = fetch(monitoring.prometheus + "/metrics")
    return sum(map(float, re.findall(rf"(?m)^{name}(?:{{.*}})? (\S+)$", text)))


class Watch:
    """What is looked at again and again for a while."""

    def __init__(self, monitoring, process, seconds):
        self.memory = []
        self.rules = []
        began, used = time.monotonic(), processor_seconds(process)
        while time.monotonic() < began + seconds:
            time.sleep(LOOK_EACH_S)
            self.memory.append(resident_bytes(process))
            self.rules.append(own_figure(monitoring, "prometheus_rule_group_last_duration_seconds"))
        self.processor = (processor_seconds(process) - used) / (time.monotonic() - began)
        self.load = os.getloadavg()[1]


def row(texts):
    return "| " + " | ".join(texts) + " |"


def heading():
    return row(COLUMNS) + "\n" + row(["---:"] * len(COLUMNS))


def measure(processes, targets):
    """A row of the table; the shipped rules with their own times."""
    monitoring = Monitoring(processes, targets, INTERVAL_S)
    process = monitoring.start()
    time.sleep(INTERVAL_S * SETTLE_INTERVALS)
    watch = Watch(monitoring, process, INTERVAL_S * MEASURED_INTERVALS)
    processes.demand_running()
    up = monitoring.query("count(up == 1)")
    if up != [len(targets)]:
        raise AssertionError(f"{up} of {len(targets)} servers answered")
    series = own_figure(monitoring, "prometheus_tsdb_head_series")
    of_server = monitoring.query('sum(scrape_samples_post_metric_relabeling)')[0] / len(targets)
    memory = max(watch.memory)
    (mean,) = monitoring.query("avg(scrape_duration_seconds)")
    (longest,) = monitoring.query(
        f"max(max_over_time(scrape_duration_seconds[{INTERVAL_S * MEASURED_INTERVALS}s]))")
    print(row((
        f"{len(targets):,}", f"{series:,.0f}", f"{of_server:.0f}", f"{memory / 1e6:,.0f} MB",
        f"{memory / series:,.0f} B", f"{100 * watch.processor:.0f} %", f"{1000 * mean:.0f} ms",
        f"{1000 * longest:.0f} ms", f"{1000 * statistics.mean(watch.rules):,.0f} ms",
        f"{1000 * max(watch.rules):,.0f} ms", f"{watch.load:.1f}")), flush=True)


def measure_sample(processes, targets):
    """What a sample takes of a whole chunk on disk, and the index of a block beside it."""
    monitoring = Monitoring(processes, targets, FAST_INTERVAL_S)
    monitoring.start()
    time.sleep(FAST_INTERVAL_S * (CHUNK_SAMPLES + 10))
    request = urllib.request.Request(
        monitoring.prometheus + "/api/v1/admin/tsdb/snapshot", method="POST")
    with urllib.request.urlopen(request, timeout=600) as answer:
        snapshot = processes.path("prometheus", "snapshots", json.load(answer)["data"]["name"])
    chunks = index = samples = series = 0
    for block in os.listdir(snapshot):
        folder = os.path.join(snapshot, block)
        with open(os.path.join(folder, "meta.json"), encoding="utf-8") as file:
            stats = json.load(file)["stats"]
        samples += stats["numSamples"]
        series += stats["numSeries"]
        index += os.path.getsize(os.path.join(folder, "index"))
        chunks += sum(one.stat().st_size for one in os.scandir(os.path.join(folder, "chunks")))
    print(f"On disk: {chunks / samples:.2f} bytes a sample in chunks, "
          f"{index / series:.0f} bytes a series in the index of a block "
          f"({samples:,} samples of {series:,} series)", flush=True)
