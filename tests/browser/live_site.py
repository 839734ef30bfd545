"""A site with all its processes, in real time: modems on ptys, a node, and the pages.

    with Site(binaries, libraries) as site:
        site.raise_alarm("disk")
        site.address                    # of the pages
"""

import http.client
import json
import os
import shutil
import socket
import subprocess
import tempfile
import time
import urllib.request
from pathlib import Path

ALERTMANAGER = Path(__file__).parents[2] / "examples/monitoring/alertmanager.yml"

SITE = """
[alertmanager]
group = "{{labels.group}}"
[[port]]
name = "north"
device = "{links}/ttyS0"
[port.pager]
dial = "ATDT0,"
[port.sms1]
dial = "ATDT0,5550101"

[[port]]
name = "south"
device = "{links}/ttyS1"
[port.pager]
dial = "ATDT0,"
[port.sms1]
dial = "ATDT0,5550101"

[[hours]]
name = "always"
all = true

[[hours]]
name = "office"
mon-fri = "8-18"
sat = "9-12,14-16"

[[pager]]
description = "duty phone"
type = "sms1"
number = "5550111"
retries = 5
delay = 45
hours = "always"

[[pager]]
description = "technician"
type = "numeric"
number = "5550100@2002"
retries = 2
delay = 30
hours = "office"

[[pager]]
description = "engaged"
type = "signal"
number = "5550199@1"
retries = 1
delay = 10

[[route]]
groups = "OPS/*"
pagers = ["duty phone", "technician"]

[[route]]
groups = "DUTY/*"
pagers = ["duty phone"]

[[route]]
groups = "BUSY/*"
pagers = ["engaged"]
"""

# As fast as it goes.
EXCHANGE = """
[[line]]
port = "COM 1"
unknown_number = "BUSY"
digit_ms = 1
comma_ms = 1
training_ms = 10

[[line]]
port = "COM 2"
unknown_number = "BUSY"
digit_ms = 1
comma_ms = 1
training_ms = 10

[[centre]]
name = "tap"
protocol = "tap"
numbers = ["5550101"]

[[centre]]
name = "plain"
protocol = "plain"
numbers = ["5550100"]
"""


def until(what, seconds=60):
    """Waits until it is true, and returns what it is."""
    end = time.monotonic() + seconds
    while True:
        found = what()
        if found:
            return found
        if time.monotonic() > end:
            raise AssertionError(f"not within {seconds} s: {what}")
        time.sleep(0.1)


def free_port():
    with socket.socket() as taken:
        taken.bind(("127.0.0.1", 0))
        return taken.getsockname()[1]


def is_there(url):
    try:
        return urllib.request.urlopen(url, timeout=5).status == 200
    except OSError:
        return False


class Site:
    def __init__(self, binaries, libraries, database=""):
        self.binaries, self.library = binaries, f"{libraries}/libPagerFwd.so"
        self.folder = tempfile.mkdtemp(prefix="pagerfwd-browser-")
        self.database = database or f"{self.folder}/site.db"
        self.processes = []
        self.address = f"http://127.0.0.1:{free_port()}"

    def __enter__(self):
        self.write("exchange.toml", EXCHANGE)
        self.write("site.toml", SITE.format(links=f"{self.folder}/lines"))
        self.run("init")
        self.run("import", "site.toml")
        self.tokens = {may: self.token(may, may) for may in ("manage", "look")}
        self.start("pagersim", "serve", "--quiet", "--links", "lines")
        until(lambda: os.path.exists(f"{self.folder}/lines/ttyS1"))
        self.node = self.start("pagerfwd", "--library", self.library, "run")
        self.start("pagerfwd", "web", "--listen", self.address.removeprefix("http://"))
        until(self.answers)
        return self

    def __exit__(self, *_):
        for process in reversed(self.processes):
            self.end(process)
        shutil.rmtree(self.folder)

    def write(self, name, text):
        with open(f"{self.folder}/{name}", "w", encoding="utf-8") as file:
            file.write(text)

    def environment(self):
        return {
            **os.environ,
            "PAGERFWD_DATABASE": self.database,
            "PAGERFWD_STATE": self.folder,
            "PAGERFWD_LOCKS": self.folder,
            "TZ": "Europe/Berlin",
        }

    def start(self, program, *arguments):
        name = os.path.basename(program)
        with open(f"{self.folder}/{name}-{len(self.processes)}.log", "wb") as log:
            process = subprocess.Popen(
                [f"{self.binaries}/{program}" if "/" not in program else program, *arguments],
                cwd=self.folder, env=self.environment(), stdout=log, stderr=log,
            )
        self.processes.append(process)
        return process

    @staticmethod
    def end(process):
        process.terminate()
        try:
            process.wait(20)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()

    def run(self, *arguments, given=None):
        done = subprocess.run(
            [f"{self.binaries}/pagerfwd", *arguments], input=given, text=True, check=False,
            cwd=self.folder, env=self.environment(), capture_output=True,
        )
        if done.returncode != 0:
            raise AssertionError(f"{arguments}: {done.stderr}")
        return done.stdout

    def token(self, name, may):
        return self.run("token", "add", name, "--may", may).split()[-1]

    def answers(self):
        return is_there(f"{self.address}/sign-in")

    def raise_alarm(self, name, group="OPS/web1"):
        """Its number."""
        return int(self.run("alarm", "raise", "--group", group, "--server", "web1",
                            f"{name} is full"))

    def start_alertmanager(self):
        """Its own program, set up as the guide says. Where it takes alerts."""
        self.write("alertmanager.token", self.token("alertmanager", "raise"))
        config = ALERTMANAGER.read_text(encoding="utf-8")
        for as_it_stands, here in {
            "127.0.0.1:8420": self.address.removeprefix("http://"),
            "/etc/alertmanager/pagerfwd.token": f"{self.folder}/alertmanager.token",
            # It would take minutes.
            "  receiver: pagers\n": "  receiver: pagers\n  group_wait: 0s\n  group_interval: 1s\n",
        }.items():
            assert as_it_stands in config, as_it_stands
            config = config.replace(as_it_stands, here)
        self.write("alertmanager.yml", config)
        address = f"127.0.0.1:{free_port()}"
        self.start("/usr/bin/prometheus-alertmanager", "--config.file=alertmanager.yml",
                   "--cluster.listen-address=", "--storage.path=alertmanager",
                   f"--web.listen-address={address}")
        until(lambda: is_there(f"http://{address}/-/ready"))
        return f"http://{address}/api/v2/alerts"

    @staticmethod
    def send_alert(alertmanager, name, group, ends=None):
        """As Prometheus does: it fires, or has ended."""
        alert = {
            "labels": {"alertname": name, "severity": "critical", "group": group},
            "annotations": {"summary": f"{name} is full"},
            "startsAt": "2026-01-01T00:00:00Z",
            **({"endsAt": ends} if ends else {}),
        }
        request = urllib.request.Request(alertmanager, data=json.dumps([alert]).encode(),
                                         headers={"Content-Type": "application/json"})
        urllib.request.urlopen(request, timeout=20).close()

    def alarms(self):
        return json.loads(self.run("alarm", "list", "--json"))

    def status(self):
        return json.loads(self.run("status", "--json"))

    def post(self, path, body, cookie=""):
        """What another page could make a browser send: the status of the answer."""
        connection = http.client.HTTPConnection(self.address.removeprefix("http://"), timeout=20)
        connection.request(
            "POST", path, body,
            {"Content-Type": "application/x-www-form-urlencoded", "Cookie": cookie},
        )
        status = connection.getresponse().status
        connection.close()
        return status

    def take_database_away(self):
        os.rename(f"{self.folder}/site.db", f"{self.folder}/site.away")

    def bring_database_back(self):
        os.rename(f"{self.folder}/site.away", f"{self.folder}/site.db")
