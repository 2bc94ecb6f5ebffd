"""P9, P11 and P12: the process itself: its start, its memory, its rest, the programs it starts."""

import os
import shutil
import socket
import time
from contextlib import ExitStack

import machine
from measure import Check, Figure, Generator, measure, take
from servers import Redis, Server, find_program, redis_command, running

IDLE_CLIENTS = 10
MANY_REQUESTS = 100_000


def start(shop, settings):
    """From the start of the program to the first complete reply, and the resident size."""
    generator = Generator(shop.programs, None)
    port = machine.free_port()
    program = shop.install_corvane({"PORT": port, "CONSOLE": "true", "log4cpp.priority": "NOTICE"})
    redis_port = machine.free_port()
    commands = {
        Server("ours", port, 0): [str(program)],
        Redis("redis", redis_port, 0): redis_command(redis_port, shop.new_directory("redis")),
    }

    def figures(samples):
        return [Figure("P9", "start to first reply", "us", take(samples, "p50_us"),
                       [Check(1.00, ("redis",))])]

    started = measure(settings, {
        server.name: lambda s=server, c=command: generator.run("startup", s, requests=3, command=c)
        for server, command in commands.items()
    }, figures)
    return started + resident_size(shop, settings)


def resident_size(shop, settings):
    generator = Generator(shop.programs, machine.OTHER_CORE)
    core = machine.SERVER_CORE
    idle, busy = {}, {}
    for _ in range(settings.rounds):
        with running(shop.corvane(core), shop.redis(core)) as servers:
            for name, server in servers.items():
                server.ask(server.ping)
                idle.setdefault(name, []).append(resident_mib(server))
                generator.run("requests", server, requests=MANY_REQUESTS)
                busy.setdefault(name, []).append(resident_mib(server))
    return [
        Figure("P9", "resident size, idle", "MiB", idle, [Check(6)]),
        Figure("P9", "resident size after 100,000 requests", "MiB", busy, [Check(8)]),
    ]


def resident_mib(server):
    return machine.status_kib(server.pid, "VmRSS") / 1024


def idle(shop, settings):
    """All contenders rest at the same time, each with its clients connected."""
    core = machine.SERVER_CORE
    with ExitStack() as stack:
        ours = shop.corvane(core)
        stack.enter_context(running(ours))
        others = (shop.loop_floor(core, ours.ask(ours.ping)), shop.redis(core), shop.node(core),
                  shop.asyncio(core))
        servers = {"ours": ours} | stack.enter_context(running(*others))
        for server in servers.values():
            for _ in range(IDLE_CLIENTS):
                address = ("127.0.0.1", server.port)
                stack.enter_context(socket.create_connection(address))
            server.ask(server.ping)   # the clients before it have been accepted now
        time.sleep(1)
        before = {name: machine.wake_ups(server.pid) for name, server in servers.items()}
        time.sleep(settings.idle_seconds)
        counts = {name: [machine.wake_ups(server.pid) - before[name]]
                  for name, server in servers.items()}
    work = f"wake-ups in {settings.idle_seconds} s, {IDLE_CLIENTS} idle clients"
    return [Figure("P11", work, "count", counts, [Check(0)])]


def launches(shop, settings):
    """Starting a program, with as many descriptors allowed as the system permits."""
    machine.raise_descriptor_limit()
    generator = Generator(shop.programs, machine.OTHER_CORE)
    program = shop.new_directory("launch") / "bench-stamp"
    shutil.copy2(find_program(shop.programs, "bench-stamp"), program)
    fifo = program.parent / "stamp.fifo"
    os.mkfifo(fifo)
    core = machine.SERVER_CORE
    work = f"execute, descriptor limit {machine.descriptor_limit():,}, NOTICE"

    def figures(samples):
        return [
            Figure("P12", f"{work}: request to reply", "us", take(samples, "p50_us"),
                   [Check(1.20, ("fork",))]),
            Figure("P12", "the same: request to the program's first instruction", "us",
                   take(samples, "first_p50_us"), [Check(1.30, ("posix_spawn",))]),
        ]

    fork = shop.floor(core, "fork", name="fork")
    spawn = shop.floor(core, "spawn", name="posix_spawn")
    with running(shop.corvane(core), fork, spawn) as servers:
        return measure(settings, {
            name: lambda s=server: generator.run("launch", s, f"execute\n{program}", fifo=fifo,
                                                 requests=settings.count(200), warmup=5)
            for name, server in servers.items()
        }, figures)
