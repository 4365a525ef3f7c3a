# SPDX-License-Identifier: MIT
"""ended_anywhere.py SIGNAL_AT_CALL EVERY WHAT: ends the tools by signals at their system calls.

EVERY is the distance between the calls at which it is done: 1 is all of them. WHAT is "smi", to be run
on a simulated machine: nimba-smi leaves the terminal as it was, no half-written file and no process.
Or it is "sim", with a /dev/shm of its own: nimba-sim leaves no process and no mount, and no directory
behind the next run. Prints one line about each command.
"""

import fcntl
import os
import pathlib
import pty
import select
import signal
import subprocess
import sys
import tempfile
import termios
import time

PATIENCE = 30  # seconds
CATCHABLE = [signal.SIGINT, signal.SIGTERM, signal.SIGHUP]
# Calls of a command without an end that are tried.
ENDLESS = 900
MARK = "NIMBA_TEST_ENDED_ANYWHERE"


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

    def __init__(self, name, words, file=None, before=None):
        self.name = name
        self.words = words
        self.file = file
        self.before = before
        self.after = None

    def prepare(self):
        """Puts the file as it was before."""
        if self.file is not None:
            self.file.parent.mkdir(parents=True, exist_ok=True)
            self.file.write_bytes(self.before)

    def check(self):
        """The file is what it was, or what it becomes."""
        if self.file is None:
            return
        files = [entry.name for entry in self.file.parent.iterdir()]
        if files != [self.file.name]:
            raise Fault(f"files {files}")
        text = self.file.read_bytes()
        if text not in (self.before, self.after):
            raise Fault(f"half a file: {text!r}")


class Stepper:
    """Runs commands, with a signal at one of their calls."""

    def __init__(self, signal_at_call, directory):
        self.signal_at_call = signal_at_call
        self.report = directory / "report"
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
    try:
        if status not in (0, 128 + which):
            raise Fault(f"status {status}: {terminal.output!r}")
        if which != signal.SIGKILL:
            terminal.check()
            command.check()
    except Fault as fault:
        raise Fault(f"{command.name}, {which.name} at call {number}: {fault}") from None
    finally:
        terminal.close()
    if which == signal.SIGKILL and command.file is not None:
        for entry in command.file.parent.iterdir():
            entry.unlink()


def try_command(stepper, command, every, signals):
    """Ends the command at its calls, by each signal in turn."""
    calls = ENDLESS
    if command.file is not None:
        command.prepare()
        terminal, status = stepper.run(command.words, 0, signal.SIGTERM)
        terminal.close()
        if status != 0:
            raise Fault(f"{command.name}: status {status}: {terminal.output!r}")
        command.after = command.file.read_bytes()
        calls = stepper.calls()
    for which in signals:
        tried = 0
        # Each signal begins at another call, so that together they try more of them.
        for number in range(1 + signals.index(which) * every // len(signals), calls + 1, every):
            try_signal(stepper, command, number, which)
            tried += 1
        print(f"{command.name}: {which.name} at {tried} of {calls} calls", flush=True)


def smi_commands(directory):
    """The commands of nimba-smi that write files or draw."""
    home = directory / "home"
    os.environ["HOME"] = str(home)
    preferences = home / ".local/share/wmt_gfx_util.ini"
    return [
        Command("prefer set", ["nimba-smi", "prefer", "set", "/opt/maze", "--gpu", "0"], preferences,
                b"; wmt_gfx_util.ini\n\n"),
        Command("dvfs save", ["nimba-smi", "dvfs", "save", directory / "state/file", "-i", "1"],
                directory / "state/file", b"before\n"),
        Command("pagetable --svg", ["nimba-smi", "pagetable", "--svg", directory / "picture/file"],
                directory / "picture/file", b"before\n"),
        Command("top", ["nimba-smi", "top"]),
    ]


def end_smi(stepper, directory, every):
    """Ends nimba-smi by what it can catch, and by what it cannot."""
    for command in smi_commands(directory):
        try_command(stepper, command, every, [*CATCHABLE, signal.SIGKILL])


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
