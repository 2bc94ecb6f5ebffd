"""Cost against size: what a request costs as its data, the directory or the number of clients
grows. Measured like the table, in turn, with the log at NOTICE."""

import shutil
import sys
from statistics import median

import machine
from measure import Generator, measure, take
from plot import Panel, write_svg
from servers import running
from test_data import directory_of, write_request

SERVER = machine.SERVER_CORE
WRITE_SIZES = (20, 1 << 10, 1 << 13, 1 << 16, 1 << 19, 1 << 22, 1 << 26)
DIRECTORY_SIZES = (10, 100, 1_000, 10_000, 100_000)
CLIENT_COUNTS = (1, 3, 10, 30, 100, 300, 900)
ROUNDS = 5


def draw(shop, settings, file):
    panels = [write_panel(shop, settings), directory_panel(shop, settings),
              client_panel(shop, settings)]
    write_svg(file, panels)
    for panel in panels:
        print(f"{panel.title}: {panel.x_label}, {panel.y_label} in us")
        for name, points in panel.curves.items():
            print(f"  {name}: " + ", ".join(f"{x:,} {y:,.1f}" for x, y in points))


def curve_points(settings, sizes, contenders_of):
    """{contender: [(size, microseconds)]}; contenders_of(size) gives the functions to call."""
    curves = {}
    for size in sizes:
        print(f"measuring size {size:,} ...", file=sys.stderr, flush=True)
        samples = {}
        measure(settings, contenders_of(size), lambda taken: samples.update(taken) or [], ROUNDS)
        for name, values in take(samples, "us").items():
            curves.setdefault(name, []).append((size, median(values)))
    return curves


def write_panel(shop, settings):
    generator = Generator(shop.programs, machine.OTHER_CORE)
    target = shop.scratch / "written"

    def once(server, request, count):
        taken = generator.run("requests", server, file=request, remove=target,
                              requests=count, warmup=1 + count // 10)
        return {"us": taken["p50_us"]}

    with running(shop.corvane(SERVER), shop.floor(SERVER, "write")) as servers:
        def contenders(size):
            request = write_request(shop, size, target)
            count = max(2, min(1000, (64 << 20) // size))
            return {n: lambda s=s: once(s, request, count) for n, s in servers.items()}

        points = curve_points(settings, WRITE_SIZES, contenders)
    target.unlink()
    return Panel("write", "bytes of data", "time of a request", points)


def directory_panel(shop, settings):
    generator = Generator(shop.programs, machine.OTHER_CORE)

    def once(server, request, count):
        taken = generator.run("requests", server, request, requests=count, warmup=1)
        return {"us": taken["p50_us"]}

    peers = (shop.node(SERVER), shop.asyncio(SERVER))
    with running(shop.corvane(SERVER), shop.floor(SERVER, "list"), *peers) as servers:
        previous = []

        def contenders(size):
            for directory in previous:
                shutil.rmtree(directory)
            previous[:] = [directory_of(shop, size)]
            request = f"listDir\n{previous[0]}/"
            count = max(2, min(1000, 50_000 // size))
            return {n: lambda s=s: once(s, request, count) for n, s in servers.items()}

        points = curve_points(settings, DIRECTORY_SIZES, contenders)
    return Panel("listDir", "entries", "time of a request", points)


def client_panel(shop, settings):
    generator = Generator(shop.programs, SERVER)
    ours = shop.corvane(SERVER)
    with running(ours):
        others = (shop.loop_floor(SERVER, ours.ask(ours.ping)), shop.redis(SERVER))
        with running(*others) as servers:
            def contenders(clients):
                def once(server):
                    taken = generator.run("requests", server, connections=clients, warmup=clients,
                                          requests=settings.requests)
                    return {"us": 1e6 / taken["per_second"]}

                return {n: lambda s=s: once(s) for n, s in ({"ours": ours} | servers).items()}

            points = curve_points(settings, CLIENT_COUNTS, contenders)
    return Panel("currentDir", "clients, all busy", "time per request", points)
