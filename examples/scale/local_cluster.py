#!/usr/bin/env python3
"""Runs check_all.py on a Dask scheduler and workers on this machine, each a process, and stops them at the end.

local_cluster.py [--workers COUNT] [--kill] FOLDER REPORT.json [OPTIONS OF check_all.py]

With --kill, kills one worker as soon as the first batch is done, to show that the run survives it. Ends with the status
of check_all.py.
"""
import argparse
import contextlib
import pathlib
import subprocess
import sys
import tempfile
import time

TIMEOUT = 120  # in seconds: how long the scheduler may take to start


@contextlib.contextmanager
def start(folder, name, *command):
    """Runs a dask command until the end of the block. Its output goes to a file in the folder."""
    with open(folder / f"{name}.log", "wb") as log, subprocess.Popen(
            [sys.executable, "-m", "distributed.cli." + command[0], *command[1:]], cwd=folder, stdout=log,
            stderr=subprocess.STDOUT) as process:
        try:
            yield process
        finally:
            process.terminate()


def wait_for(file, scheduler, folder):
    end = time.monotonic() + TIMEOUT
    while not file.exists():
        if scheduler.poll() is not None or time.monotonic() > end:
            sys.exit("the scheduler did not start: " + (folder / "scheduler.log").read_text())
        time.sleep(0.1)


def run(options, rest, folder, stack):
    # The scheduler takes a free port and writes its address to the file.
    address = folder / "scheduler.json"
    scheduler = stack.enter_context(start(folder, "scheduler", "dask_scheduler", "--host", "127.0.0.1", "--port", "0",
                                          "--no-dashboard", "--scheduler-file", str(address)))
    wait_for(address, scheduler, folder)
    # Without its nanny, a killed worker is not started again.
    workers = [stack.enter_context(start(folder, f"worker-{number}", "dask_worker", "--scheduler-file", str(address),
                                         "--nthreads", "1", "--no-nanny", "--no-dashboard"))
               for number in range(options.workers)]
    program = pathlib.Path(__file__).with_name("check_all.py")
    command = [sys.executable, str(program), str(address), "--wait-for-workers", str(options.workers), *rest]
    with subprocess.Popen(command, stderr=subprocess.PIPE, text=True) as check:
        for line in check.stderr:
            sys.stderr.write(line)
            if options.kill and " batches" in line:
                options.kill = False
                workers[0].kill()
                print("killed a worker", file=sys.stderr, flush=True)
    return check.returncode


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("--workers", type=int, default=2)
    arguments.add_argument("--kill", action="store_true")
    options, rest = arguments.parse_known_args()
    with tempfile.TemporaryDirectory() as folder, contextlib.ExitStack() as stack:
        sys.exit(run(options, rest, pathlib.Path(folder), stack))


if __name__ == "__main__":
    main()
