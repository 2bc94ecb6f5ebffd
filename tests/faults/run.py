#!/usr/bin/env python3
"""Fails the Nth call of every function that the server depends on, N = 1, 2, 3 and so on until a run
passes without a fault, while it serves a script of requests. It has to answer or close the
connection, never hang, never lose or leave half a file, and keep no descriptor and no child."""

import argparse
import sys
import tempfile
from collections import Counter
from concurrent.futures import ThreadPoolExecutor

from faults import ERRORS, faults
from scripted_requests import GROUPS, SUCCESS
from server import Server
from support.server_process import Hang

# More calls than the script of requests makes of any function.
MOST_CALLS = 5000


def check_end(server, fault):
    """What is wrong with the way the server ended while it was serving."""
    status = server.wait_for_end()
    log = server.log()
    if status == 0 and fault.may_end_server and (
            "unexpected exception on processing" in log or "Server exception: select() error" in log):
        return None
    if status == -6 and fault.may_abort_server:
        return None
    return f"ended with status {status}"


def serve_and_check(server, fault):
    """Serves all requests. Returns how they ended, and what is wrong."""
    results = [result for group in GROUPS for result in server.serve(group)]
    problems = [f"{request}: {problem}" for request, outcome, reply in results
                if not fault.may_shorten(request) and
                (problem := request.check(server.work, fault.believed(outcome), reply))]
    bad = [f"{request}: {outcome}" for request, outcome, _ in results if outcome != SUCCESS]
    outcomes = Counter(outcome for _, outcome, _ in results)
    outcomes["texts"] = int(fault.log_text in server.log())
    serving = server.serves()
    if bad and serving and (len(bad) > 1 or fault.must_not_be_noticed or not server.fault_happened):
        problems.append(f"failed requests: {bad}")
    if fault.must_fail_a_request and server.fault_happened and not bad:
        problems.append("no request failed")
    if serving:
        server.check_nothing_kept()
    if serving and not server.ended():
        if status := server.stop():
            problems.append(f"ended with status {status}")
    else:
        outcomes["server aborted" if server.wait_for_end() else "server ended"] += 1
        problems.append(check_end(server, fault))
    return outcomes, [problem for problem in problems if problem]


def run_once(arguments, fault, nth):
    """One run. Returns whether the fault happened, how the requests ended, and what is wrong."""
    with tempfile.TemporaryDirectory(prefix="corvane-faults-") as directory:
        with Server(directory, arguments.server, arguments.library, fault, nth) as server:
            try:
                outcomes, problems = serve_and_check(server, fault)
            except (Hang, OSError) as error:
                outcomes, problems = Counter(), [f"{type(error).__name__}: {error}"]
            return server.fault_happened, outcomes, problems


def run_fault(arguments, fault):
    """All runs of one fault. Returns the outcomes and the problems."""
    outcomes, problems = Counter(), []
    for nth in range(1, MOST_CALLS):
        happened, run_outcomes, run_problems = run_once(arguments, fault, nth)
        problems += [f"{fault}, call {nth}: {problem}" for problem in run_problems]
        if not happened:
            break
        outcomes += run_outcomes
        outcomes["faults"] += 1
    if not outcomes["faults"]:
        problems.append(f"{fault}: there is no such call")
    elif fault.log_text and not outcomes["texts"]:
        problems.append(f"{fault}: the log never says {fault.log_text!r}")
    return fault, outcomes, problems


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--server", required=True, help="the server's executable")
    parser.add_argument("--library", required=True, help="the library that makes calls fail")
    parser.add_argument("--quick", action="store_true", help="one error for each function")
    parser.add_argument("--call", help="this function only")
    parser.add_argument("--no-queue", action="store_true", help="the server was built without an event queue")
    arguments = parser.parse_args()
    chosen = [fault for fault in faults(arguments.quick) if arguments.call in (None, fault.call) and
              not (arguments.no_queue and fault.is_of_the_queue)]
    if not chosen:
        parser.error(f"no faults are known for {arguments.call}; calls with some: {' '.join(ERRORS)}")
    total, broken = Counter(), 0
    with ThreadPoolExecutor(max_workers=2) as pool:
        for fault, outcomes, problems in pool.map(lambda fault: run_fault(arguments, fault), chosen):
            total += outcomes
            broken += len(problems)
            print(f"{str(fault):28} {outcomes['faults']:4} faults", *problems, sep="\n    ", flush=True)
    print("faults survived: {faults}; requests: {SUCCESS} answered SUCCESS, {FAILED} FAILED, "
          "{closed} connections closed; {ended} orderly ends, {aborted} aborts".format(
              **{"faults": 0, "SUCCESS": 0, "FAILED": 0, "closed": 0} | total, ended=total["server ended"],
              aborted=total["server aborted"]))
    return 1 if broken else 0


if __name__ == "__main__":
    sys.exit(main())
