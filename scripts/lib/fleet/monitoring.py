"""Prometheus with the shipped rules and Alertmanager, on loopback."""

import json
import os
import re
import urllib.parse

from processes import fetch, free_ports

HERE = os.path.dirname(os.path.abspath(__file__))
TOP = os.path.dirname(os.path.dirname(os.path.dirname(HERE)))
DOCS = os.path.join(TOP, "docs")
RULES = os.path.join(TOP, "data", "prometheus", "qor.rules.yml")
# Debian's package comes without a page; who has built one sees that.
OWN_PAGE = os.path.join(HERE, "page")
BUILT_PAGE = "/usr/share/prometheus/alertmanager/ui"


def shipped_rules(pending=None):
    """The rules as they are, with the pages of this tree; with `pending` every "for:" below a day
    is that long; one of a day is in the words of its alert, too."""
    with open(RULES, encoding="utf-8") as file:
        text = file.read().replace("file:///usr/share/doc/qor/docs", "file://" + DOCS)
    return text if pending is None else re.sub(r"(?m)^( +for:) \d+[mh]$", rf"\1 {pending}", text)


def target(address, server, path="/metrics"):
    return {"targets": [address], "labels": {"instance": server, "__metrics_path__": path}}


class Monitoring:
    """`seconds` from scrape to scrape and from evaluation to evaluation."""

    def __init__(self, processes, targets, seconds, pending=None):
        self._processes = processes
        self._alertmanager_port, self._prometheus_port = free_ports(2)
        self._write("targets.json", json.dumps(targets))
        self._write("qor.rules.yml", shipped_rules(pending))
        self._write("prometheus.yml", f"""
global: {{scrape_interval: {seconds}s, evaluation_interval: {seconds}s}}
rule_files: ['{processes.path("qor.rules.yml")}']
alerting:
  alertmanagers: [static_configs: [targets: ['127.0.0.1:{self._alertmanager_port}']]]
scrape_configs:
  - job_name: qor
    file_sd_configs: [files: ['{processes.path("targets.json")}']]
""")
        self._write("alertmanager.yml", """
route: {receiver: nobody, group_by: [instance], group_wait: 1s, group_interval: 5s}
receivers: [name: nobody]
""")

    @property
    def prometheus(self):
        return f"http://127.0.0.1:{self._prometheus_port}"

    @property
    def alertmanager(self):
        return f"http://127.0.0.1:{self._alertmanager_port}"

    def start(self):
        """Returns the process of Prometheus."""
        path = self._processes.path
        page = BUILT_PAGE if os.path.exists(BUILT_PAGE + "/index.html") else OWN_PAGE
        self._processes.start("alertmanager", [
            "prometheus-alertmanager", "--config.file", path("alertmanager.yml"),
            "--storage.path", path("alertmanager"), "--cluster.listen-address=",
            f"--web.listen-address=127.0.0.1:{self._alertmanager_port}", "--web.ui-path", page])
        process = self._processes.start("prometheus", [
            "prometheus", "--config.file", path("prometheus.yml"),
            "--storage.tsdb.path", path("prometheus"), "--web.enable-admin-api",
            f"--web.listen-address=127.0.0.1:{self._prometheus_port}"])
        self._processes.wait_ready("alertmanager", self.alertmanager + "/-/ready")
        self._processes.wait_ready("prometheus", self.prometheus + "/-/ready")
        return process

    def query(self, expression):
        """The values of an instant query."""
        url = f"{self.prometheus}/api/v1/query?" + urllib.parse.urlencode({"query": expression})
        return [float(one["value"][1]) for one in json.loads(fetch(url))["data"]["result"]]

    def alerts(self):
        return json.loads(fetch(self.alertmanager + "/api/v2/alerts"))

    def _write(self, name, text):
        with open(self._processes.path(name), "w", encoding="utf-8") as file:
            file.write(text)
