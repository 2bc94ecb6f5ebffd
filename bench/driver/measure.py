"""Measuring in turn: rounds of A B C, C B A, ..., medians, ratios within a round, verdicts."""

import json
import math
import subprocess
from dataclasses import dataclass, field
from statistics import median

import machine
from servers import find_program

# What is nearer to its limit than this, or not certain to lie on one side of it, is measured again,
# so that two runs agree on the verdict.
CLOSE_CALL = 0.04
MOST_REPEATS = 4
# Where a process happens to lie in memory makes it 1 or 2 % faster or slower for all its life, so
# short work is measured with several processes. It takes little time: it can be repeated more often.
STARTS = 3
MOST_REPEATS_OF_SHORT_WORK = 12


@dataclass
class Settings:
    """How thorough a run is."""

    rounds: int = 7
    requests: int = 20_000
    idle_seconds: int = 60

    def count(self, full):
        """`full` requests in a thorough run, in proportion fewer in a quick one."""
        return max(1, full * self.requests // 20_000)


QUICK = Settings(rounds=5, requests=4_000, idle_seconds=10)


@dataclass
class Check:
    """One target: ours against the fastest of `rivals`, or ours itself when there is none. `better`
    is a second limit to strive for, which decides nothing."""

    limit: float
    rivals: tuple = ()
    at_least: bool = False
    better: float | None = None

    def ratios(self, values):
        """One of each round, in ascending order."""
        ours = values["ours"]
        if not self.rivals:
            return sorted(ours)
        best = max if self.at_least else min
        rivals = [best(pair) for pair in zip(*(values[rival] for rival in self.rivals))]
        return sorted(own / rival for own, rival in zip(ours, rivals))

    def ratio(self, values):
        return median(self.ratios(values))

    def met(self, values):
        ratio = self.ratio(values)
        return ratio >= self.limit if self.at_least else ratio <= self.limit

    def is_doubtful(self, values):
        """Whether another run might come to another verdict."""
        if self.limit == 0:
            return False
        low, high = confidence_interval(self.ratios(values))
        return low <= self.limit <= high or abs(self.ratio(values) / self.limit - 1) < CLOSE_CALL


def confidence_interval(ordered):
    """The median of ever more rounds would lie in it with 95 % certainty. It is bounded by two of
    the values in order, and holds however the values are distributed."""
    count = len(ordered)
    reach = math.sqrt(count)
    low = math.floor(count / 2 - reach) - 1
    high = math.ceil(count / 2 + reach)
    return ordered[max(0, low)], ordered[min(count - 1, high)]


@dataclass
class Figure:
    """One line of the table: the same measure of every contender, a value for each round."""

    row: str
    work: str
    unit: str
    values: dict
    checks: list = field(default_factory=list)


def take(samples, metric):
    """From {contender: [{metric: value}]} the lists of one metric."""
    return {name: [sample[metric] for sample in taken] for name, taken in samples.items()}


def measure(settings, contenders, figures_of, rounds=None):
    """Calls the contenders' functions in turn, the order turned round each time.

    Each returns {metric: value}. A first round is thrown away. `figures_of` makes the figures of
    {contender: [{metric: value}]}; when a verdict is doubtful the rounds are repeated.
    """
    rounds = rounds or settings.rounds
    names = list(contenders)
    samples = {name: [] for name in names}
    for name in names:
        contenders[name]()
    for _ in range(MOST_REPEATS):
        for _ in range(rounds):
            for name in names:
                samples[name].append(contenders[name]())
            names.reverse()
        figures = figures_of(samples)
        if not are_doubtful(figures):
            break
    return figures


def measure_restarting(settings, start, run, figures_of):
    """As measure(), for short work: the contenders are started anew several times.

    `start()` is a context with {contender: server}; `run(server)` returns {metric: value}.
    """
    samples = {}
    names = []
    rounds = -(-settings.rounds // STARTS)
    for _ in range(MOST_REPEATS_OF_SHORT_WORK):
        for _ in range(STARTS):
            with start() as servers:
                names = names or list(servers)
                for name in names:
                    run(servers[name])
                for _ in range(rounds):
                    for name in names:
                        samples.setdefault(name, []).append(run(servers[name]))
                    names.reverse()
        figures = figures_of(samples)
        if not are_doubtful(figures):
            break
    return figures


def are_doubtful(figures):
    return any(check.is_doubtful(figure.values) for figure in figures for check in figure.checks)


class Generator:
    """The load generator, tied to a core."""

    def __init__(self, programs, core):
        self.program = find_program(programs, "bench-load")
        self.core = core

    def run(self, mode, server, text=None, *, command=(), **options):
        """Drives the server and returns the generator's measurements."""
        arguments = [self.program, mode, "--port", str(server.port), "--expect", server.expect,
                     "--terminator", str(server.terminator)]
        if "file" not in options:
            arguments += ["--text", text or server.ping]
        for name, value in options.items():
            arguments += [f"--{name}", str(value)]
        if command:
            arguments += ["--", *command]
        done = subprocess.run(arguments, stdout=subprocess.PIPE, text=True,
                              preexec_fn=machine.pin(self.core), check=False)
        if done.returncode != 0:
            raise RuntimeError(f"load generator failed against {server.name}")
        return json.loads(done.stdout)

    def with_cpu(self, server, text, requests):
        """As run("requests"), with the server's processor time of one request."""
        warmup = requests // 10
        before = machine.cpu_nanos(server.pid)
        result = self.run("requests", server, text, requests=requests, warmup=warmup)
        used = machine.cpu_nanos(server.pid) - before
        return result | {"cpu_us": used / (requests + warmup) / 1000}
