"""Runs the rows of the benchmark and prints one markdown table.

Started by script/bench, which prepares and builds everything.
"""

import argparse
import sys
import tempfile
from pathlib import Path

import curves
import machine
import report
import rows_files
import rows_process
import rows_requests
from measure import QUICK, Settings
from servers import Workshop

SOURCES = Path(__file__).resolve().parents[2]
ROWS = {
    "P1": rows_requests.one_client,
    "P2": rows_requests.fifty_clients,
    "P3": rows_requests.with_debug_log,
    "P4": rows_requests.churn,
    "P5": rows_files.large_write,
    "P6": rows_files.large_read,
    "P7": rows_files.listings,
    "P8": rows_files.copies,
    "P9": rows_process.start,
    "P10": rows_requests.against_peers,
    "P11": rows_process.idle,
    "P12": rows_process.launches,
}


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build-dir", type=Path, required=True)
    parser.add_argument("--quick", action="store_true", help="fewer repetitions and requests")
    parser.add_argument("--only", default=",".join(ROWS), help="rows to run, such as P1,P7")
    parser.add_argument("--output", type=Path, help="write the table to this file, too")
    parser.add_argument("--plot", type=Path, metavar="FILE.svg",
                        help="instead of the table, measure cost against size and draw it")
    arguments = parser.parse_args()
    arguments.rows = [name.strip().upper() for name in arguments.only.split(",")]
    unknown = [name for name in arguments.rows if name not in ROWS]
    if unknown:
        parser.error(f"no such row: {', '.join(unknown)}")
    return arguments


def run_table(shop, settings, arguments):
    lines = []

    def say(text):
        print(text, flush=True)
        lines.append(text)

    say(report.HEAD)
    figures = []
    for name in arguments.rows:
        print(f"measuring {name} ...", file=sys.stderr, flush=True)
        for figure in ROWS[name](shop, settings):
            figures.append(figure)
            say(report.line(figure))
    say("")
    say(report.closing(figures))
    if arguments.output:
        arguments.output.write_text("\n".join(lines) + "\n")


def main():
    arguments = parse_arguments()
    settings = QUICK if arguments.quick else Settings()
    print(f"{len(machine.CORES)} x {machine.model()}", file=sys.stderr)
    # In the build directory, not in /tmp, which may be kept in memory.
    with tempfile.TemporaryDirectory(prefix="bench-", dir=arguments.build_dir) as scratch:
        shop = Workshop(arguments.build_dir.resolve(), Path(scratch).resolve(), SOURCES)
        if arguments.plot:
            curves.draw(shop, settings, arguments.plot)
        else:
            run_table(shop, settings, arguments)


if __name__ == "__main__":
    main()
