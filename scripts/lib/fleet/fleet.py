"""What scripts/fleet does: fleet.py stay|once|measure PROGRAMS SERVERS..."""

import os
import sys
import time

from measure import heading, measure, measure_sample
from monitoring import Monitoring, target
from processes import Failure, Processes, demand_programs, free_ports, raise_on_signals
from servers import Simulator

HERE = os.path.dirname(os.path.abspath(__file__))
REAL_EXPORTERS = 30      # each takes memory and a process; the others have one stand-in together
SCRAPE_EACH_S = 2
PENDING = "5s"           # in place of the minutes of the shipped rules
NAMED_LIMIT_S = 120
SAMPLE_SERVERS = 100     # whose samples are weighed on disk
AWAITED = "QorPhysicalDriveFailed"


def start_exporters(processes, simulator, servers):
    """A simulated server and a real node_exporter each."""
    targets = []
    for server, port in zip(servers, free_ports(len(servers))):
        folder = processes.path("textfiles", server.name)
        os.makedirs(folder)
        processes.start(server.name, simulator.collecting_command(server, folder + "/qor.prom"))
        processes.start(server.name + "-exporter", [
            "prometheus-node-exporter", f"--web.listen-address=127.0.0.1:{port}",
            "--web.disable-exporter-metrics", "--collector.disable-defaults",
            "--collector.textfile", f"--collector.textfile.directory={folder}"])
        targets.append(target(f"127.0.0.1:{port}", server.name))
    return targets


def start_stand_in(processes, simulator, servers):
    """One program that serves the texts of all; what it serves was collected once."""
    if not servers:
        return []
    folder = processes.path("texts")
    os.makedirs(folder)
    for name, text in simulator.all_metrics(servers).items():
        with open(os.path.join(folder, name + ".prom"), "w", encoding="utf-8") as file:
            file.write(text)
    port = free_ports(1).pop()
    processes.start("stand-in", [sys.executable, os.path.join(HERE, "serve_texts.py"), folder,
                                 str(port)])
    processes.wait_ready("stand-in", f"http://127.0.0.1:{port}/{servers[0].name}/metrics")
    return [target(f"127.0.0.1:{port}", one.name, f"/{one.name}/metrics") for one in servers]


def say(text=""):
    print(text, flush=True)


def describe(monitoring, servers):
    say()
    for server in servers:
        if server.illness is not None:
            say(f"  {server.name}  {server.illness}")
    healthy = sum(server.illness is None for server in servers)
    if healthy > 0:
        say(f"  {healthy} healthy, of 24 drives each")
    say()
    say(f"Alertmanager  {monitoring.alertmanager}")
    say(f"Prometheus    {monitoring.prometheus}")
    say()


def wait_named(processes, monitoring, server):
    """The alert that names the failed drive of the server."""
    deadline = time.monotonic() + NAMED_LIMIT_S
    while time.monotonic() < deadline:
        processes.demand_running()
        for alert in monitoring.alerts():
            labels = alert["labels"]
            if (labels["alertname"], labels["instance"]) == (AWAITED, server.name):
                return alert
        time.sleep(0.5)
    raise Failure(f"Alertmanager has named no failed drive within {NAMED_LIMIT_S} s")


def demonstrate(processes, simulator, count, stay):
    began = time.monotonic()
    say("Making the simulated servers ...")
    servers = simulator.fleet(count)
    targets = start_exporters(processes, simulator, servers[:REAL_EXPORTERS])
    targets += start_stand_in(processes, simulator, servers[REAL_EXPORTERS:])
    monitoring = Monitoring(processes, targets, SCRAPE_EACH_S, PENDING)
    monitoring.start()
    describe(monitoring, servers)
    alert = wait_named(processes, monitoring, servers[0])
    say(f"After {time.monotonic() - began:.0f} s Alertmanager says:")
    say(f"  {alert['labels']['severity'].upper()}  {alert['annotations']['summary']}")
    say(f"  what to do: {alert['annotations']['runbook_url']}")
    if stay:
        say("\nCtrl-C ends it and cleans up.")
        while True:
            time.sleep(1)
            processes.demand_running()


def in_fleet(programs, act):
    """Calls `act` with processes and a simulator of its own."""
    with Processes() as processes:
        act(processes, Simulator(programs, processes.folder))


def measure_with(programs, count, measure_one):
    def act(processes, simulator):
        measure_one(processes, start_stand_in(processes, simulator, simulator.generated(count)))
    in_fleet(programs, act)


def main(mode, programs, *numbers):
    raise_on_signals()
    try:
        demand_programs(programs)
        if mode == "measure":
            say(heading())
            for number in numbers:
                measure_with(programs, int(number), measure)
            measure_with(programs, SAMPLE_SERVERS, measure_sample)
        else:
            in_fleet(programs, lambda processes, simulator: demonstrate(
                processes, simulator, int(numbers[0]), mode == "stay"))
    except Failure as failure:
        print(f"scripts/fleet: {failure}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
