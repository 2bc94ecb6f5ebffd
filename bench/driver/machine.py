"""What the driver asks of the operating system: cores, processes, memory, ports."""

import os
import resource
import socket
from pathlib import Path

CORES = sorted(os.sched_getaffinity(0))
# The first core usually serves the interrupts, so what is measured runs on the last one.
SERVER_CORE = CORES[-1]
OTHER_CORE = CORES[0]
MANY_DESCRIPTORS = 1_000_000


def pin(core):
    """A function for Popen that ties the new process to a core; None leaves it free."""
    return None if core is None else lambda: os.sched_setaffinity(0, {core})


def raise_descriptor_limit():
    """Raises the limit of open descriptors as far as permitted, at most to a million."""
    highest = resource.getrlimit(resource.RLIMIT_NOFILE)[1]
    allowed = int(Path("/proc/sys/fs/nr_open").read_text())
    for wanted in (min(MANY_DESCRIPTORS, allowed), highest):
        try:
            resource.setrlimit(resource.RLIMIT_NOFILE, (wanted, max(wanted, highest)))
            return
        except (ValueError, OSError):
            continue


def descriptor_limit():
    return resource.getrlimit(resource.RLIMIT_NOFILE)[0]


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def process_of(executable):
    """The process that runs this very file. A server that has detached is found by it."""
    for entry in Path("/proc").iterdir():
        if entry.name.isdigit():
            try:
                if os.readlink(entry / "exe") == str(executable):
                    return int(entry.name)
            except OSError:
                continue
    raise RuntimeError(f"no process runs {executable}")


def alive(pid):
    try:
        state = Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()[0]
        return state not in "ZX"
    except OSError:
        return False


def cpu_nanos(pid):
    """Processor time of all threads so far."""
    tasks = Path(f"/proc/{pid}/task").iterdir()
    return sum(int((task / "schedstat").read_text().split()[0]) for task in tasks)


def status_kib(pid, key):
    """A memory figure of /proc/PID/status in KiB: VmRSS is resident now, VmHWM at its peak."""
    for line in Path(f"/proc/{pid}/status").read_text().splitlines():
        if line.startswith(key + ":"):
            return int(line.split()[1])
    raise KeyError(key)


def wake_ups(pid):
    """How often any thread of the process has waited so far: each wait ends with a wake-up."""
    total = 0
    for task in Path(f"/proc/{pid}/task").iterdir():
        for line in (task / "status").read_text().splitlines():
            if line.startswith("voluntary_ctxt_switches:"):
                total += int(line.split()[1])
    return total


def model():
    for line in Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            return line.split(":", 1)[1].strip()
    return "unknown processor"
