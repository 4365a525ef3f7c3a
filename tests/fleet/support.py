# SPDX-License-Identifier: MIT
"""Exporters on simulated machines, and a Prometheus that scrapes them.

NIMBA_BIN, which the build tells, is where the programs are. Nothing outlives the process that uses
a Workplace, however it ends: the kernel ends the programs, and a process that watches removes the
directory.
"""

from __future__ import annotations

import ctypes
import json
import math
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import urllib.error
import urllib.parse
import urllib.request
from collections.abc import Callable, Iterator
from pathlib import Path
from typing import Any, TypeVar

SOURCE = Path(__file__).resolve().parents[2]
sys.path.append(str(SOURCE / "tests" / "support"))

from simulated import BOUND, live_drivers_work, program

PACKAGING = SOURCE / "packaging" / "prometheus"
MACHINES = Path(__file__).resolve().parent / "machines"

# How many scrapes may be in vain: on a busy machine one can take longer than its short interval.
_VAIN_SCRAPES = 10

# Seconds. Others can make the machine busy after it was seen quiet.
_SHORTEST_INTERVAL = 4

_PR_SET_PDEATHSIG = 1
_libc = ctypes.CDLL(None)

T = TypeVar("T")


def until(
    condition: Callable[[], T], what: str | Callable[[], object], bound: float = BOUND
) -> T:
    """Waits for a value that is true and gives it; `what` says what there was none of."""
    end = time.monotonic() + bound
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise AssertionError(f"not within {bound} s: {what() if callable(what) else what}")
        time.sleep(0.1)


def get(url: str) -> str:
    with urllib.request.urlopen(url, timeout=BOUND) as answer:
        return answer.read().decode()


def end(process: subprocess.Popen[bytes]) -> int:
    """Ends a process, kindly at first, and gives its status."""
    process.terminate()
    try:
        return process.wait(20)
    except subprocess.TimeoutExpired:
        process.kill()
        return process.wait(20)


class Workplace:
    """A temporary directory, and programs with output in it that end with this process."""

    def __init__(self) -> None:
        self.directory = Path(tempfile.mkdtemp(prefix="nimba-fleet."))
        self._processes: list[subprocess.Popen[bytes]] = []
        self._watched = _watch(self.directory)

    def __enter__(self) -> Workplace:
        return self

    def __exit__(self, *_: object) -> None:
        for process in self._processes:
            process.terminate()
        for process in self._processes:
            end(process)
        shutil.rmtree(self.directory)
        os.close(self._watched)

    def start(
        self, command: list[str], output: Path, death: signal.Signals, **env: str
    ) -> subprocess.Popen[bytes]:
        """Starts a program that gets the signal `death` when this process is no more."""
        parent = os.getpid()

        def end_with_parent() -> None:
            _libc.prctl(_PR_SET_PDEATHSIG, death)
            if os.getppid() != parent:
                os._exit(1)

        with output.open("wb") as written:
            process = subprocess.Popen(
                command,
                stdin=subprocess.DEVNULL,
                stdout=written,
                stderr=subprocess.STDOUT,
                env={**os.environ, **env},
                preexec_fn=end_with_parent,
            )
        self._processes.append(process)
        return process


def _watch(directory: Path) -> int:
    """Removes the directory when the descriptor that it gives is closed, as at the process's end.

    Who does so has another parent, so that it stays when the process is killed with its children.
    """
    reading, writing = os.pipe()
    child = os.fork()
    if child != 0:
        os.close(reading)
        os.waitpid(child, 0)
        return writing
    os.setsid()
    if os.fork() != 0:
        os._exit(0)
    try:
        os.dup2(reading, 0)
        os.closerange(1, os.sysconf("SC_OPEN_MAX"))
        os.read(0, 1)
        for _ in range(200):  # programs that are about to end write until then
            shutil.rmtree(directory, ignore_errors=True)
            if not directory.exists():
                break
            time.sleep(0.1)
    finally:
        os._exit(0)


class Exporter:
    """nimba-smi export on a simulated machine, at a loopback address of its own."""

    def __init__(self, place: Workplace, machine: str | Path, address: str, *options: str) -> None:
        self.instance = address
        self._output = place.directory / f"exporter-{address}"
        # The shell tells where the machine is, for what changes it from outside.
        telling = ["sh", "-c", 'echo "bed $UMOCKDEV_DIR"; exec "$@"', "sh"]
        # No test here waits for a deadline.
        patient = ["--deadline", str(BOUND)]
        export = [program("nimba-smi"), "export", "--listen", f"{address}:0", *patient, *options]
        drivers = [] if live_drivers_work() else ["--drivers", "plain"]
        self._process = place.start(
            [program("nimba-sim"), "run", *drivers, "--machine", str(machine), "--"]
            + telling
            + export,
            self._output,
            signal.SIGTERM,
        )

    @property
    def target(self) -> str:
        """ADDRESS:PORT, as soon as it is told."""
        return until(lambda: self._told(r"serving http://(\S+)/metrics"), self._said)

    def metrics(self) -> str:
        return get(f"http://{self.target}/metrics")

    @property
    def bed(self) -> str:
        """The directory of the simulated machine."""
        return until(lambda: self._told(r"bed (\S+)"), self._said)

    def fault(self, *arguments: str) -> None:
        """Switches on a fault of the machine's drivers."""
        subprocess.run(
            [program("nimba-sim"), "fault", *arguments],
            check=True,
            env={**os.environ, "UMOCKDEV_DIR": self.bed},
            timeout=BOUND,
        )

    def end(self) -> int:
        return end(self._process)

    def _told(self, pattern: str) -> str:
        if self._process.poll() is not None:
            raise AssertionError(self._said())
        found = re.search(pattern, self._said())
        return found[1] if found else ""

    def _said(self) -> str:
        return self._output.read_text()


class Prometheus:
    """A Prometheus with the packaged example of a configuration and the packaged rules.

    Only the intervals differ: it scrapes and evaluates every `interval` seconds, which are as few
    as this machine lets them be, and alerts fire as soon as their condition holds. `jobs` has the
    exporters of each job.
    """

    def __init__(self, place: Workplace, jobs: dict[str, list[Exporter]]) -> None:
        self._log = place.directory / "prometheus.log"
        self.interval = shortest_interval([each for some in jobs.values() for each in some])
        self._configure(place.directory, jobs, self.interval)
        self.process = place.start(
            [
                "prometheus",
                f"--config.file={place.directory}/prometheus.yml",
                f"--storage.tsdb.path={place.directory}/data",
                "--web.listen-address=127.0.0.1:0",
            ],
            self._log,
            signal.SIGKILL,
            GOMAXPROCS="1",
        )
        self._address = until(self._ready, self._log.read_text)

    def value(self, query: str) -> float | None:
        """The value of a query that has one series; None for none."""
        found = self.series(query)
        if not found:
            return None
        if len(found) > 1:
            raise AssertionError(f"{query} has {len(found)} series")
        return float(found[0]["value"][1])

    def expect(self, query: str, expected: float | None) -> None:
        """Waits until a query has this value."""
        until(
            lambda: self.value(query) == expected,
            lambda: f"{query} is {self.value(query)}, not {expected}",
            _VAIN_SCRAPES * self.interval,
        )

    def series(self, query: str) -> list[dict[str, Any]]:
        """What a query gives at this moment."""
        return self._api("query", query=query)["result"]

    def series_since(self, query: str, seconds: float, step: float) -> list[dict[str, Any]]:
        """What a query gives over a time until now, as a plot asks for it."""
        now = time.time()
        return self._api("query_range", query=query, start=now - seconds, end=now, step=step)[
            "result"
        ]

    def rules(self) -> list[dict[str, Any]]:
        return [rule for group in self._api("rules")["groups"] for rule in group["rules"]]

    def firing(self, name: str) -> list[dict[str, str]]:
        """The labels of the alerts of this name that fire."""
        alerts = self._api("alerts")["alerts"]
        return [
            alert["labels"]
            for alert in alerts
            if alert["state"] == "firing" and alert["labels"]["alertname"] == name
        ]

    def _configure(
        self, directory: Path, jobs: dict[str, list[Exporter]], interval: int
    ) -> None:
        config = (PACKAGING / "prometheus.yml").read_text()
        for key in ("scrape_interval", "scrape_timeout", "evaluation_interval"):
            config, count = re.subn(rf"{key}: \d+s", f"{key}: {interval}s", config)
            assert count == 1, key
        (directory / "prometheus.yml").write_text(config)
        rules = (PACKAGING / "nimba.rules.yml").read_text()
        (directory / "nimba.rules.yml").write_text(re.sub(r"\bfor: \d+m", "for: 0s", rules))
        for job, exporters in jobs.items():
            targets = directory / "targets" / job / "all.json"
            targets.parent.mkdir(parents=True)
            targets.write_text(json.dumps([{"targets": [each.target for each in exporters]}]))

    def _ready(self) -> str:
        log = self._log.read_text()
        if self.process.poll() is not None:
            raise AssertionError(log)
        address = re.search(r'msg="Listening on" address=(\S+)', log)
        return address[1] if address and "Server is ready" in log else ""

    def _api(self, path: str, **parameters: object) -> Any:
        url = f"http://{self._address}/api/v1/{path}?{urllib.parse.urlencode(parameters)}"
        try:
            return json.loads(get(url))["data"]
        except urllib.error.HTTPError as refused:
            raise AssertionError(f"{url}: {refused.read().decode()}") from None


def slowly_leaking(place: Workplace) -> Path:
    """A machine that loses one texture per second, so that no scrape of it ever takes long."""
    machine = (SOURCE / "tools" / "sim" / "machines" / "leaking.toml").read_text()
    slow, count = re.subn(r"^per_second = \d+$", "per_second = 1", machine, flags=re.MULTILINE)
    assert count == 1
    written = place.directory / "slowly-leaking.toml"
    written.write_text(slow)
    return written


def shortest_interval(exporters: list[Exporter]) -> int:
    """Seconds in which all of them can be scraped at this moment, with room for as much again."""
    for exporter in exporters:
        exporter.metrics()  # starts its workers
    begin = time.monotonic()
    for exporter in exporters:
        exporter.metrics()
    return max(_SHORTEST_INTERVAL, math.ceil(2 * (time.monotonic() - begin)))


def panels(dashboard: dict[str, Any]) -> Iterator[dict[str, Any]]:
    """The panels that have queries."""
    return (panel for panel in dashboard["panels"] if panel["type"] != "row")
