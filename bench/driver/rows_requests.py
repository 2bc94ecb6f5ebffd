"""P1 to P4 and P10: short requests. Generator and server share one core, so that what is
measured is work and not the wake-up of an idle core."""

from contextlib import contextmanager

import machine
from measure import Check, Figure, Generator, measure_restarting, take
from servers import require_equal_replies, running
from test_data import directory_of, text_file

CORE = machine.SERVER_CORE


@contextmanager
def against_the_loop(shop):
    """Ours, the loop floor with a reply of the same size, and redis."""
    ours = shop.corvane(CORE)
    with running(ours):
        others = (shop.loop_floor(CORE, ours.ask(ours.ping)), shop.redis(CORE))
        with running(*others) as servers:
            yield {"ours": ours} | servers


def one_client(shop, settings):
    generator = Generator(shop.programs, CORE)
    checks = [Check(1.10, ("floor",)), Check(1.00, ("redis",))]

    def figures(samples):
        return [
            Figure("P1", "currentDir, 1 client, NOTICE: p50", "us", take(samples, "p50_us"),
                   checks),
            Figure("P1", "the same: server CPU of a request", "us", take(samples, "cpu_us"),
                   checks),
        ]

    return measure_restarting(
        settings, lambda: against_the_loop(shop),
        lambda server: generator.with_cpu(server, server.ping, settings.requests), figures)


def fifty_clients(shop, settings):
    generator = Generator(shop.programs, CORE)

    def figures(samples):
        return [Figure("P2", "currentDir, 50 clients, NOTICE", "1/s", take(samples, "per_second"),
                       [Check(0.92, ("floor",), at_least=True)])]

    return measure_restarting(
        settings, lambda: against_the_loop(shop),
        lambda server: generator.run("requests", server, requests=settings.requests,
                                     connections=50, warmup=settings.requests // 10), figures)


def with_debug_log(shop, settings):
    generator = Generator(shop.programs, CORE)
    result = []
    for work, request, rival in (
        ("currentDir", "currentDir", "floor"),
        ("readText of 1 KiB", f"readText\n{text_file(shop, 1024)}", "read floor"),
    ):

        @contextmanager
        def start(request=request, rival=rival):
            """The loop floor answers either request with a reply of the same size."""
            ours = shop.corvane(CORE, "DEBUG")
            with running(ours):
                floors = [shop.loop_floor(CORE, ours.ask(request))]
                if rival == "read floor":
                    floors.append(shop.floor(CORE, "read", name=rival))
                with running(*floors) as servers:
                    yield {"ours": ours} | servers

        def figures(samples, work=work, rival=rival):
            return [Figure("P3", f"{work}, 1 client, DEBUG: p50", "us", take(samples, "p50_us"),
                           [Check(1.90, (rival,), better=1.50)])]

        def run(server, request=request):
            return generator.run("requests", server, request, requests=settings.count(5000),
                                 warmup=500)

        result += measure_restarting(settings, start, run, figures)
    return result


def churn(shop, settings):
    generator = Generator(shop.programs, CORE)
    requests = settings.count(2000)

    def figures(samples):
        return [Figure("P4", "connect, currentDir, close, NOTICE: p50", "us",
                       take(samples, "p50_us"),
                       [Check(1.08, ("floor",)), Check(1.00, ("redis",))])]

    return measure_restarting(
        settings, lambda: against_the_loop(shop),
        lambda server: generator.run("churn", server, requests=requests, warmup=100), figures)


def against_peers(shop, settings):
    """The same work by servers as Node and Python developers would write them."""
    generator = Generator(shop.programs, CORE)
    read_text = f"readText\n{text_file(shop, 1024)}"
    list_dir = f"listDir\n{directory_of(shop, 100)}/"
    cases = [
        ("currentDir, 1 client", "requests", "currentDir", settings.requests, 0.70),
        ("connect, currentDir, close", "churn", "currentDir", settings.count(2000), 0.70),
        ("readText of 1 KiB", "requests", read_text, settings.requests // 2, 0.50),
        ("listDir of 100 entries", "requests", list_dir, settings.count(2000), 0.50),
    ]

    def start():
        return running(shop.corvane(CORE), shop.node(CORE), shop.asyncio(CORE))

    result = []
    for work, mode, request, requests, limit in cases:
        with start() as servers:
            require_equal_replies(servers.values(), request)

        def figures(samples, work=work, limit=limit):
            return [Figure("P10", f"{work}, NOTICE: p50", "us", take(samples, "p50_us"),
                           [Check(limit, ("Node", "asyncio"))])]

        def run(server, mode=mode, request=request, requests=requests):
            return generator.run(mode, server, request, requests=requests, warmup=requests // 10)

        result += measure_restarting(settings, start, run, figures)
    return result
