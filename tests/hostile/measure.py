"""Runs the tool on a document and measures it."""

import os
import resource
import subprocess
import tempfile

STACK = 8 * 1024 * 1024


class Result:
    """The end of a run: exit status (negative for a signal), error output, CPU seconds, and peak memory in MB."""

    def __init__(self, status, errors, seconds, megabytes):
        self.status = status
        self.errors = errors
        self.seconds = seconds
        self.megabytes = megabytes


def limit_child():
    resource.setrlimit(resource.RLIMIT_STACK, (STACK, STACK))
    # An endless run must not outlive a failed test.
    resource.setrlimit(resource.RLIMIT_CPU, (600, resource.getrlimit(resource.RLIMIT_CPU)[1]))


def run(command, output=subprocess.DEVNULL):
    """Runs a command on a stack of 8 MiB."""
    with tempfile.TemporaryFile() as errors:
        # The kernel counts the memory of this process for the child until the child executes the command. So keep
        # this process small: write a large document piece by piece.
        process = subprocess.Popen(
            command, stdin=subprocess.DEVNULL, stdout=output, stderr=errors, preexec_fn=limit_child)
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = -os.WTERMSIG(status) if os.WIFSIGNALED(status) else os.WEXITSTATUS(status)
        errors.seek(0)
        text = errors.read(1000000).decode("utf-8", "replace")
    return Result(process.returncode, text, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024)


