#!/usr/bin/env python3
"""Writes the page of the figures: report.py RESULT-DIR PAGE.

A result is what Google Benchmark writes, NAME.RUN.json. Every run gives one ratio a measure and size;
the page shows the median of the runs and their spread. Charts are written beside the page."""
import collections
import glob
import json
import os
import platform
import re
import statistics
import subprocess
import sys

CPU = "processor time"
WALL = "time on the wall"

Measure = collections.namedtuple("Measure", "title clock floor goal peer_factor")
# In the order of the page. `goal`: ours is at most that many times the floor; `peer_factor`: the
# fastest peer takes at least that many times as long.
MEASURES = {
    "getter ctrl": Measure("controller getter", CPU, "the lines read, the items made", 1.5, 5),
    "getter ld": Measure("logical drive getter", CPU, "the lines read, the items made", 1.5, 5),
    "getter pd": Measure("physical drive getter", CPU, "the lines read, the items made", 1.5, 5),
    "getter smart": Measure("SMART getter", CPU, "the lines read, the items made", 1.5, 5),
    "getter pssd": Measure("PCIe SSD getter", CPU, "the lines read, the items made", 1.5, 5),
    "xml": Measure("XML", CPU, "the texts and tags appended", 1.4, 1),
    "form": Measure("form to digits", CPU, "the bytes by table", 2.0, None),
    "form from items": Measure("items to form to digits", CPU, "the bytes by table", 2.0, None),
    "command": Measure("run of a command", WALL, "posix_spawn and wait", 1.05, None),
    "request": Measure("whole request", WALL, "the tool runs, its lines read", 1.04, None),
    "qorctl svp": Measure("`qorctl svp`", WALL, "the same, `true`", 1.10, None),
    "qorctl raid": Measure("`qorctl raid --format json`", WALL, "the same, `true`", 1.10, None),
    "qorctl status": Measure("`qorctl status`", WALL, "the same, `true`", 1.10, None),
    "qorctl check": Measure("`qorctl check`", WALL, "the same, `true`", 1.10, None),
    "qorctl metrics": Measure("`qorctl metrics`", WALL, "the same, `true`", 1.10, None),
    "start": Measure("start of `qorctl`", WALL, None, None, 1),
    "presence": Measure("presence check", CPU, "the two files read", 5.0, None),
    "trace off": Measure("trace switched off", CPU, "no trace call built in", 1.03, None),
    "memory": Measure("peak of memory", None, "bytes of the items", 1.3, None),
}
DRIFT_GOAL = 1.15
GROWTH_LIMIT = 1.05


def statistic_of(measure):
    """The wall's clock runs on while others have the processor; a quarter of the runs had luck."""
    return "quartile" if measure.clock == WALL else "median"


def time_unit(seconds):
    for unit, factor in (("s", 1), ("ms", 1e-3), ("µs", 1e-6)):
        if seconds >= factor:
            return f"{seconds / factor:.3g} {unit}"
    return f"{seconds * 1e9:.3g} ns"


class Results:
    """cases[measure, size][who] is a list of seconds, one a run; memory has counters."""

    def __init__(self, directory):
        self.cases = collections.defaultdict(lambda: collections.defaultdict(list))
        self.counters = collections.defaultdict(list)
        self.pages = collections.defaultdict(list)
        self.growth = []
        self.loads = []  # of the last minute, when each program began
        for path in sorted(glob.glob(os.path.join(directory, "*.json"))):
            with open(path, encoding="utf-8") as file:
                content = json.load(file)
            if os.path.basename(path) == "growth.json":
                self.growth = content
            else:
                self.loads += content.get("context", {}).get("load_avg", [])[:1]
                self.take(content["benchmarks"])

    def take(self, benchmarks):
        for entry in benchmarks:
            measure, size, who = entry["run_name"].split("/")[:3]
            if measure == "page":
                self.pages[size].append(entry)
            if measure not in MEASURES:
                continue
            if "peak" in entry:
                if entry["run_type"] == "iteration":
                    self.counters[size].append(entry)
                continue
            wanted = statistic_of(MEASURES[measure])
            if entry["run_type"] == "iteration" or entry["aggregate_name"] == wanted:
                self.cases[measure, size][who].append(entry["real_time"] * 1e-6)

    def sizes(self, measure):
        return [size for name, size in self.cases if name == measure]

    def ratios(self, measure, size):
        case = self.cases[measure, size]
        return [ours / floor for ours, floor in zip(case["ours"], case["floor"])]

    def fastest_peer(self, measure, size):
        """Name and factors, one a run; None without a peer."""
        case = self.cases[measure, size]
        peers = [who for who in case if who.startswith("peer:")]
        if not peers:
            return None
        fastest = min(peers, key=lambda who: statistics.median(case[who]))
        pairs = zip(case[fastest], case["ours"])
        return fastest.removeprefix("peer:"), [peer / ours for peer, ours in pairs]


def with_spread(values):
    middle = f"{statistics.median(values):.2f}"
    if len(values) == 1:
        return middle
    return f"{middle} ({min(values):.2f}–{max(values):.2f})"


def verdict(met):
    return "met" if met else "**not met**"


def size_order(size):
    numbers = re.findall(r"\d+", size)
    scale = 1000 if "MB" in size else 1
    return (int(numbers[0]) * scale if numbers else 0, size)


def time_rows(results):
    for measure, facts in MEASURES.items():
        for size in sorted(results.sizes(measure), key=size_order):
            case = results.cases[measure, size]
            met = True
            ratio = peer_text = "–"
            goals = []
            if case["floor"]:
                ratios = results.ratios(measure, size)
                ratio = with_spread(ratios)
                goals.append(f"≤ {facts.goal:g} × floor")
                met = met and statistics.median(ratios) <= facts.goal
            peer = results.fastest_peer(measure, size)
            if peer:
                peer_text = f"{with_spread(peer[1])} {peer[0]}"
                if facts.peer_factor:
                    goals.append(f"peer ≥ {facts.peer_factor} × ours")
                    met = met and statistics.median(peer[1]) >= facts.peer_factor
            floor = time_unit(statistics.median(case["floor"])) if case["floor"] else "–"
            yield (facts.title, size, ratio, peer_text, ", ".join(goals), verdict(met), floor,
                   time_unit(statistics.median(case["ours"])))


def drift_rows(results):
    """The same ratio however large the report is."""
    for measure, facts in MEASURES.items():
        if not {"1MB", "16MB"} <= set(results.sizes(measure)):
            continue
        drifts = [large / small for large, small in zip(results.ratios(measure, "16MB"),
                                                        results.ratios(measure, "1MB"))]
        met = statistics.median(drifts) <= DRIFT_GOAL
        yield (facts.title, with_spread(drifts), "at most 15 % more", verdict(met))


def growth_rows(results):
    for row in results.growth:
        yield (row["title"], row["unit"], f"{row['sizes'][0]:,} to {row['sizes'][-1]:,}",
               f"{row['exponent']:.2f}", f"{row['each']:,.0f}", f"at most {GROWTH_LIMIT}",
               verdict(row["exponent"] <= GROWTH_LIMIT))


def memory_rows(results):
    for size, entries in results.counters.items():
        ratios = [entry["peak"] / entry["items"] for entry in entries]
        left = max(entry["left"] for entry in entries)
        goal = MEASURES["memory"].goal
        met = statistics.median(ratios) <= goal and left < 10_000
        yield (size, with_spread(ratios), f"{entries[0]['items'] / 1e6:.0f} MB",
               f"{left:.0f} B", f"≤ {goal:g} × the items, none left", verdict(met))


def page_rows(results):
    def middle(entries, name):
        return statistics.median(entry[name] for entry in entries)

    for size, entries in results.pages.items():
        yield (size, f"{middle(entries, 'read') / 1e6:.3g} MB", f"{middle(entries, 'written') / 1e6:.3g} MB",
               time_unit(middle(entries, "seconds")), f"{middle(entries, 'peak') / 2**20:.1f} MiB")


def table(header, rows):
    lines = ["| " + " | ".join(header) + " |", "|" + "---|" * len(header)]
    lines += ["| " + " | ".join(row) + " |" for row in rows]
    return "\n".join(lines) + "\n"


def first_line(command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout.split("\n")[0]


def machine(loads):
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        model = re.search(r"model name\s*: (.*)", file.read())
    with open("/proc/meminfo", encoding="utf-8") as file:
        kib = int(file.readline().split()[1])
    return (f"{os.cpu_count()} processors {model[1] if model else platform.machine()}, "
            f"{kib / 2**20:.0f} GiB memory, Linux {platform.release()}, "
            f"{platform.freedesktop_os_release()['PRETTY_NAME']}, {first_line(['g++', '--version'])}, "
            f"preset `release`. Load average when a measure began: {min(loads):.1f} to {max(loads):.1f}")


def chart(results, measures, path):
    """Bars of the ratios to the floor, with a line at the goal."""
    bars = [(f"{MEASURES[measure].title}, {size}", statistics.median(results.ratios(measure, size)),
             MEASURES[measure].goal)
            for measure in measures
            for size in sorted(results.sizes(measure), key=size_order)
            if results.cases[measure, size]["floor"]]
    if not bars:
        return
    unit, left, step = 100, 260, 22
    width = left + int(unit * max(max(ratio, goal) for _, ratio, goal in bars)) + 70
    lines = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" '
             f'height="{len(bars) * step + 10}" font-family="sans-serif" font-size="12">',
             '<rect width="100%" height="100%" fill="#ffffff"/>']
    for index, (label, ratio, goal) in enumerate(bars):
        y = index * step + 5
        colour = "#4a7fb5" if ratio <= goal else "#c8643c"
        lines += [f'<text x="{left - 8}" y="{y + 14}" text-anchor="end">{label}</text>',
                  f'<rect x="{left}" y="{y + 2}" width="{unit * ratio:.0f}" height="16" '
                  f'fill="{colour}"/>',
                  f'<text x="{left + unit * ratio + 5:.0f}" y="{y + 14}">{ratio:.2f}</text>',
                  f'<line x1="{left + unit * goal:.0f}" x2="{left + unit * goal:.0f}" y1="{y}" '
                  f'y2="{y + 20}" stroke="#000000" stroke-width="2"/>']
    with open(path, "w", encoding="utf-8") as file:
        file.write("\n".join(lines + ["</svg>"]) + "\n")


CHARTS = {
    "getters": ("Getters", ["getter ctrl", "getter ld", "getter pd", "getter smart", "getter pssd"]),
    "documents": ("XML and the form", ["xml", "form", "form from items"]),
    "processes": ("Commands and requests", ["command", "request", "qorctl raid", "qorctl check", "qorctl metrics"]),
}


def main(directory, page):
    results = Results(directory)
    chart_dir = os.path.splitext(page)[0]
    os.makedirs(chart_dir, exist_ok=True)
    for name, (_, measures) in CHARTS.items():
        chart(results, measures, os.path.join(chart_dir, name + ".svg"))
    here = os.path.dirname(os.path.abspath(__file__))
    with open(os.path.join(here, "performance.md.in"), encoding="utf-8") as file:
        text = file.read()
    base = os.path.basename(chart_dir)
    charts = "\n".join(f"![{title}, times the floor; the line is the goal]({base}/{name}.svg)\n"
                       for name, (title, _) in CHARTS.items())
    parts = {
        "TIMES": table(("Measure", "Size", "Ours ÷ floor", "Fastest peer ÷ ours", "Goal", "",
                        "Floor", "Ours"), time_rows(results)),
        "DRIFT": table(("Measure", "Ratio at 16 MB ÷ ratio at 1 MB", "Goal", ""),
                       drift_rows(results)),
        "GROWTH": table(("Work", "n", "from, to", "Exponent", "Instructions for one more", "Goal", ""),
                        growth_rows(results)),
        "MEMORY": table(("Report", "Peak ÷ items", "Items", "Left after freeing", "Goal", ""),
                        memory_rows(results)),
        "PAGES": table(("Page of", "Files", "Page", "Time of a processor", "Peak of memory"),
                       page_rows(results)),
        "MACHINE": machine(results.loads),
        "CHARTS": charts,
    }
    for name, part in parts.items():
        text = text.replace(f"@{name}@\n", part.rstrip("\n") + "\n").replace(f"@{name}@", part)
    with open(page, "w", encoding="utf-8") as file:
        file.write(text)


if __name__ == "__main__":
    main(*sys.argv[1:])
