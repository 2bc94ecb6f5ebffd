"""P5 to P8: large requests, large replies, directories and copies. Server and generator have a
core each."""

import math
import os
import shutil
import subprocess
import time

import machine
from measure import Check, Figure, Generator, measure, take
from servers import require_equal_replies, running
from test_data import directory_of, text_file, tree_of, write_request

CORE = machine.SERVER_CORE
MIB = 1 << 20
LARGE = 64 * MIB
COPY_BYTES = 256 * MIB
TREE_FILES = 10_000
LISTINGS = {100: 1000, 10_000: 15, 100_000: 2}   # entries: requests of a measurement


def large_figures(row, work, limit, memory_limit):
    """The time against the floor and the peak memory against the size of the data."""

    def figures(samples):
        timed = {name: taken for name, taken in samples.items()}
        memory = take({n: t for n, t in samples.items() if "peak_mib" in t[0]}, "peak_mib")
        memory["data"] = [LARGE / MIB] * len(memory["ours"])
        return [
            Figure(row, f"{work}, NOTICE: time", "us", take(timed, "p50_us"),
                   [Check(limit, ("floor",))]),
            Figure(row, "the same: peak memory", "MiB", memory, [Check(memory_limit, ("data",))]),
        ]

    return figures


def with_peak(result, server):
    return result | {"peak_mib": machine.status_kib(server.pid, "VmHWM") / 1024}


def large_write(shop, settings):
    generator = Generator(shop.programs, machine.OTHER_CORE)
    target = shop.scratch / "written"
    request = write_request(shop, LARGE, target)

    def once(server):
        target.unlink(missing_ok=True)
        os.sync()
        return with_peak(generator.run("requests", server, file=request, remove=target,
                                       requests=3, warmup=1), server)

    with running(shop.corvane(CORE), shop.floor(CORE, "write")) as servers:
        figures = measure(settings, {n: lambda s=s: once(s) for n, s in servers.items()},
                          large_figures("P5", "write of 64 MiB", 1.30, 2.0))
    target.unlink()
    return figures


def large_read(shop, settings):
    generator = Generator(shop.programs, machine.OTHER_CORE)
    path = text_file(shop, LARGE)
    request = f"readText\n{path}"

    def once(server):
        return with_peak(generator.run("requests", server, request, requests=3, warmup=1), server)

    with running(shop.corvane(CORE), shop.floor(CORE, "read")) as servers:
        require_equal_replies(servers.values(), request)
        contenders = {n: lambda s=s: once(s) for n, s in servers.items()}
        contenders["cat"] = lambda: timed("cat", str(path))
        figures = measure(settings, contenders,
                          large_figures("P6", "readText of 64 MiB", 1.30, 2.5))
    path.unlink()
    return figures


def listings(shop, settings):
    result = []
    generator = Generator(shop.programs, machine.OTHER_CORE)
    with running(shop.corvane(CORE), shop.floor(CORE, "list")) as servers:
        for entries, requests in LISTINGS.items():
            directory = directory_of(shop, entries)
            request = f"listDir\n{directory}/"
            require_equal_replies(servers.values(), request)

            def figures(samples, entries=entries):
                return [Figure("P7", f"listDir of {entries:,} entries, NOTICE: p50", "us",
                               take(samples, "p50_us"), [Check(1.15, ("floor",))])]

            contenders = {
                name: lambda s=server, r=request, n=requests:
                    generator.run("requests", s, r, requests=n, warmup=max(1, n // 10))
                for name, server in servers.items()
            }
            contenders["ls"] = lambda d=directory: timed("ls", "-a", str(d))
            result += measure(settings, contenders, figures)
            shutil.rmtree(directory)
    return result + [growth(result[-2], result[-1])]


def growth(smaller, larger):
    """How the time grows from 10,000 to 100,000 entries. Nothing but the sort may grow faster
    than the number of entries, and the floor's growth shows what the machine's caches add."""
    values = {
        name: [big / small for small, big in zip(smaller.values[name], larger.values[name])]
        for name in ("ours", "floor")
    }
    sort = 10 * math.log(100_000) / math.log(10_000)
    return Figure("P7", f"growth from 10,000 to 100,000 entries (sorting alone: {sort:.1f} x)", "x",
                  values, [Check(1.15, ("floor",))])


def timed(*command):
    """A system tool, from its start to its end."""
    begin = time.monotonic_ns()
    subprocess.run(command, stdout=subprocess.DEVNULL, check=True)
    return {"p50_us": (time.monotonic_ns() - begin) / 1000}


def copies(shop, settings):
    file = shop.scratch / "large"
    with open(file, "wb") as large:
        for _ in range(COPY_BYTES // MIB):
            large.write(text_block())
    result = copy_row(shop, settings, "copy of a 256 MiB file", file, None)
    file.unlink()
    tree = tree_of(shop, TREE_FILES)
    result += copy_row(shop, settings, "copy of a tree of 10,000 small files", tree, "-r")
    shutil.rmtree(tree)
    return result


def text_block():
    return (b"0123456789abcde\n" * (MIB // 16))[:MIB]


def copy_row(shop, settings, work, source, recursive):
    """Each copy goes to a new target, and what the one before left unwritten is gone first."""
    generator = Generator(shop.programs, machine.OTHER_CORE)
    target = shop.scratch / "copied"

    def fresh(copy):
        if recursive:
            target.mkdir()
        os.sync()
        sample = copy()
        if recursive:
            shutil.rmtree(target)
        else:
            target.unlink()
        return sample

    def cp():
        if recursive:
            return timed("cp", "-r", f"{source}/.", str(target))
        return timed("cp", "--reflink=never", str(source), str(target))

    def figures(samples):
        return [Figure("P8", f"{work}, NOTICE", "us", take(samples, "p50_us"),
                       [Check(1.05, ("cp",))])]

    with running(shop.corvane(CORE)) as servers:
        ours = servers["ours"]
        request = f"copy\n{source}\n{target}\ntrue\n\n"
        return measure(settings, {
            "ours": lambda: fresh(lambda: generator.run("requests", ours, request)),
            "cp": lambda: fresh(cp),
        }, figures)
