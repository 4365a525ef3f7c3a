# SPDX-License-Identifier: MIT
"""ended_anywhere.py SIGNAL_AT_CALL EVERY WHAT: ends the tools by signals at their system calls.

WHAT is "smi", to be run on a simulated machine: whatever ends nimba-smi, it leaves no process, and the
file that it writes as it was or as it becomes. By signals that can be caught, it also leaves the
terminal as it was and no other file. Of EVERY calls two are tried with them, in turns, and one with
SIGKILL. Or WHAT is "sim", with a /dev/shm of its own: at one of EVERY calls SIGKILL ends nimba-sim, which
leaves no process and no mount, and no directory behind the next run. Prints one line about each command.
"""

import fcntl
import itertools
import os
import pathlib
import pty
import re
import resource
import select
import shutil
import signal
import subprocess
import sys
import tempfile
import termios
import time

PATIENCE = 30  # seconds
# All that end a process which does nothing about them, without those of its own faults.
CATCHABLE = [
    signal.SIGINT, signal.SIGQUIT, signal.SIGUSR1, signal.SIGPIPE, signal.SIGALRM, signal.SIGTERM,
    signal.SIGRTMIN, signal.SIGHUP, signal.SIGUSR2, signal.SIGXCPU, signal.SIGXFSZ, signal.SIGVTALRM,
    signal.SIGPROF, signal.SIGIO, signal.SIGPWR, signal.SIGSTKFLT, signal.SIGRTMAX,
]
# Calls of a command without an end that are tried.
ENDLESS = 900
MARK = "NIMBA_TEST_ENDED_ANYWHERE"
# What SIGKILL may leave beside a file.
TEMPORARY = re.compile(r"\.nimba-smi\.\w{6}")


class Fault(Exception):
    """What a tool left behind."""


def processes_with(mark):
    """The processes that have the mark in their environment."""
    found = []
    for entry in pathlib.Path("/proc").iterdir():
        if entry.name.isdecimal():
            try:
                if f"{MARK}={mark}".encode() in (entry / "environ").read_bytes().split(b"\0"):
                    found.append((entry / "cmdline").read_bytes())
            except OSError:
                pass  # it has ended
    return [line for line in found if line]


def wait_until_none(what, left):
    """Waits until nothing is left."""
    end = time.monotonic() + PATIENCE
    while left():
        if time.monotonic() > end:
            raise Fault(f"{what} left: {left()}")
        time.sleep(0.01)


class Terminal:
    """A terminal with a command in it."""

    def __init__(self):
        self.control, self.tty = pty.openpty()
        termios.tcsetwinsize(self.tty, (30, 100))
        self.before = termios.tcgetattr(self.tty)
        self.output = b""

    def run(self, command, environment):
        """Runs the command to its end and returns its status."""
        process = subprocess.Popen(
            command, stdin=self.tty, stdout=self.tty, stderr=self.tty, env=environment,
            start_new_session=True,
            preexec_fn=lambda: fcntl.ioctl(0, termios.TIOCSCTTY, 0))
        end = time.monotonic() + PATIENCE
        while process.poll() is None:
            self.take(0.01)
            if time.monotonic() > end:
                process.kill()
                raise Fault("it does not end")
        while self.take(0):
            pass
        return process.returncode

    def take(self, seconds):
        """Takes what was written, waiting so long for it."""
        if not select.select([self.control], [], [], seconds)[0]:
            return False
        self.output += os.read(self.control, 65536)
        return True

    def close(self):
        """Closes it."""
        os.close(self.control)
        os.close(self.tty)

    def check(self):
        """Its settings are those before, the screen is left and the cursor is there."""
        if termios.tcgetattr(self.tty) != self.before:
            raise Fault("the terminal's settings are others")
        if self.output.count(b"\x1b[?1049h") != self.output.count(b"\x1b[?1049l"):
            raise Fault("the terminal's screen is not left")
        if self.output.rfind(b"\x1b[?25l") > self.output.rfind(b"\x1b[?25h"):
            raise Fault("the terminal's cursor is hidden")


class Command:
    """A command line, and the file that it replaces, which is beside no other."""

    # Of how many calls that would be tried one is.
    sparseness = 1

    def __init__(self, name, words, file=None, before=b"before\n"):
        self.name = name
        self.words = words
        self.file = file
        self.before = before
        self.after = None

    def prepare(self):
        """Puts the file as it was before."""
        if self.file is not None:
            shutil.rmtree(self.file.parent, ignore_errors=True)
            self.file.parent.mkdir(parents=True)
            self.file.write_bytes(self.before)

    def is_whole(self, text):
        """Whether it is what the file becomes."""
        return text == self.after

    def check(self, may_leave_temporary):
        """The file is what it was, or what it becomes."""
        if self.file is None:
            return
        others = {entry.name for entry in self.file.parent.iterdir()} - {self.file.name}
        if others and not (may_leave_temporary and all(map(TEMPORARY.fullmatch, others))):
            raise Fault(f"files {others}")
        text = self.file.read_bytes()
        if text != self.before and not self.is_whole(text):
            raise Fault(f"half a file: {text!r}")


class Export(Command):
    """The exporter: the values differ from run to run."""

    def is_whole(self, text):
        def series(exposition):
            return [line.rpartition(b" ")[0] for line in exposition.splitlines(keepends=True)]
        return series(text) == series(self.after) and text.endswith(b"\n")


class Capture(Command):
    """An archive, which no reader takes when its end is missing. It is long at the same calls."""

    sparseness = 4

    def is_whole(self, text):
        return subprocess.run(["nimba-smi", "report", "--capture", self.file, "-"], check=False,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL).returncode == 0


class Stepper:
    """Runs commands, with a signal at one of their calls."""

    def __init__(self, signal_at_call, directory):
        self.signal_at_call = signal_at_call
        self.report = directory / "report"
        self.scratch = directory / "scratch"
        self.runs = 0

    def run(self, words, number, which):
        """Returns the terminal in which it was done, and the status. No process is left."""
        self.runs += 1
        mark = f"{os.getpid()}.{self.runs}"
        terminal = Terminal()
        status = terminal.run([self.signal_at_call, str(int(which)), str(number), self.report, *words],
                              {**os.environ, "TERM": "xterm", MARK: mark})
        wait_until_none("processes", lambda: processes_with(mark))
        return terminal, status

    def calls(self):
        """How many calls the last command made."""
        return int(self.report.read_text())


def try_signal(stepper, command, number, which):
    """Ends the command by the signal at its call of that number."""
    command.prepare()
    terminal, status = stepper.run(command.words, number, which)
    caught = which != signal.SIGKILL
    try:
        if status not in (0, 128 + which):
            raise Fault(f"status {status}: {terminal.output!r}")
        # Nothing can be given back by who is killed: who draws leaves the terminal as it is then.
        if caught or command.file is not None:
            terminal.check()
        command.check(not caught)
        left = list(stepper.scratch.iterdir())
        if caught and left:
            raise Fault(f"files {left}")
    except Fault as fault:
        raise Fault(f"{command.name}, {which.name} at call {number}: {fault}") from None
    finally:
        terminal.close()
    for entry in stepper.scratch.iterdir():
        shutil.rmtree(entry)


def try_command(stepper, command, every, turns):
    """Ends the command at its calls, by the signals that can be caught in turns, and by SIGKILL."""
    calls = ENDLESS
    if command.file is not None:
        command.prepare()
        terminal, status = stepper.run(command.words, 0, signal.SIGTERM)
        terminal.close()
        if status != 0:
            raise Fault(f"{command.name}: status {status}: {terminal.output!r}")
        command.after = command.file.read_bytes()
        calls = stepper.calls()
    every *= command.sparseness
    caught = range(1, calls + 1, max(1, every // 2))
    killed = range(1 + every // 2, calls + 1, every)
    for number in caught:
        try_signal(stepper, command, number, next(turns))
    for number in killed:
        try_signal(stepper, command, number, signal.SIGKILL)
    print(f"{command.name}: caught signals at {len(caught)} of {calls} calls, SIGKILL at {len(killed)}",
          flush=True)


def smi_commands(directory):
    """The commands of nimba-smi that write files or draw."""
    home = directory / "home"
    os.environ["HOME"] = str(home)
    preferences = home / ".local/share/wmt_gfx_util.ini"
    state, picture, metrics, archive = (
        directory / name / "file" for name in ("state", "picture", "metrics", "archive"))
    return [
        Command("prefer set", ["nimba-smi", "prefer", "set", "/opt/maze", "--gpu", "0"], preferences,
                b"; wmt_gfx_util.ini\n\n"),
        Command("dvfs save", ["nimba-smi", "dvfs", "save", state, "-i", "1"], state),
        Command("pagetable --svg", ["nimba-smi", "pagetable", "--svg", picture], picture),
        Export("export --textfile", ["nimba-smi", "export", "--textfile", metrics], metrics),
        Capture("capture", ["nimba-smi", "capture", archive], archive),
        Command("top", ["nimba-smi", "top"]),
    ]


def end_smi(stepper, directory, every):
    """Ends nimba-smi by what it can catch, and by what it cannot."""
    # Nobody needs their memory.
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    stepper.scratch.mkdir()
    os.environ["TMPDIR"] = str(stepper.scratch)
    turns = itertools.cycle(CATCHABLE)
    for command in smi_commands(directory):
        try_command(stepper, command, every, turns)


def directories():
    """What runs of nimba-sim made."""
    return list(pathlib.Path("/dev/shm").iterdir())


def mounts():
    """What is mounted there."""
    lines = pathlib.Path("/proc/self/mounts").read_text().splitlines()
    return {line for line in lines if " /dev/shm/" in line}


def end_sim(stepper, every):
    """Ends nimba-sim by SIGKILL while it starts, runs and stops."""
    others = mounts()
    words = ["nimba-sim", "run", "--drivers", "live", "--", "nimba-smi", "list"]
    terminal, status = stepper.run(words, 0, signal.SIGKILL)
    terminal.close()
    if status != 0 or directories() or mounts() - others:
        raise Fault(f"nimba-sim: status {status}: {terminal.output!r}")
    calls = stepper.calls()
    tried = 0
    swept = 0
    for number in range(1, calls + 1, every):
        terminal, status = stepper.run(words, number, signal.SIGKILL)
        terminal.close()
        tried += 1
        wait_until_none(f"nimba-sim, killed at call {number}: mounts", lambda: mounts() - others)
        if directories():
            swept += 1
            subprocess.run(["nimba-sim", "run", "--", "true"], check=True)
            wait_until_none(f"nimba-sim, killed at call {number}: directories", directories)
    # At two calls it has a directory without anything in it.
    pathlib.Path("/dev/shm/nimba-sim.abcdef").mkdir()
    subprocess.run(["nimba-sim", "run", "--", "true"], check=True)
    wait_until_none("empty directories", directories)
    print(f"nimba-sim: SIGKILL at {tried} of {calls} calls, "
          f"{swept} directories removed by the next run")


def main():
    """Does what the command line says."""
    signal_at_call, every, what = sys.argv[1], int(sys.argv[2]), sys.argv[3]
    with tempfile.TemporaryDirectory() as name:
        directory = pathlib.Path(name)
        stepper = Stepper(signal_at_call, directory)
        try:
            if what == "smi":
                end_smi(stepper, directory, every)
            else:
                end_sim(stepper, every)
        except Fault as fault:
            print(fault)
            return 1
    return 0


sys.exit(main())
