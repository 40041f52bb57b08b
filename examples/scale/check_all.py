#!/usr/bin/env python3
"""Checks the documents of a folder on the workers of a Dask cluster, and gathers one report.

check_all.py SCHEDULER FOLDER REPORT.json [--vanxml PROGRAM] [--batch COUNT] [--wait-for-workers COUNT]

SCHEDULER is the address of a Dask scheduler, such as tcp://127.0.0.1:8786, or its scheduler file. Each task runs
"vanxml check" on one batch of documents. If a worker dies, Dask runs its batches again on another worker. All workers
must see FOLDER, and have PROGRAM, under the same name.

Ends with 0 if all documents are valid, 1 if one has errors, and 2 if one could not be checked.
"""
import argparse
import collections
import json
import os
import subprocess
import sys

import distributed

DOCUMENTS = (".kxa", ".kxb", ".kxc", ".kxd", ".kxe", ".kxf")


def list_documents(folder):
    """Returns the documents below the folder, sorted, so that each run makes the same batches."""
    found = []
    for parent, folders, files in os.walk(os.path.abspath(folder)):
        folders.sort()
        found.extend(os.path.join(parent, name) for name in sorted(files) if name.endswith(DOCUMENTS))
    return found


def check_batch(vanxml, names):
    """Runs on a worker. Returns the messages of one batch; a task has one core, so it uses one job."""
    command = [vanxml, "check", "--format", "json", "--jobs", "1", "--files-from", "-"]
    run = subprocess.run(command, input=b"\0".join(map(os.fsencode, names)), capture_output=True, check=False)
    messages = [json.loads(line) for line in run.stdout.splitlines()]
    # Status 2 is expected only for documents that could not be checked. A negative status is a signal.
    if run.returncode not in (0, 1) and not any(each["type"] == "failure" for each in messages):
        raise RuntimeError(f"vanxml ended with {run.returncode}: {run.stderr.decode(errors='replace').strip()}")
    return messages


def check_all(client, vanxml, names, size):
    """Returns the messages of all documents, sorted by file and place."""
    batches = [names[i:i + size] for i in range(0, len(names), size)]
    # pure=False: the files may have changed since Dask saw the same names last.
    tasks = client.map(check_batch, [vanxml] * len(batches), batches, pure=False)
    messages = []
    for done, (task, result) in enumerate(distributed.as_completed(tasks, with_results=True), 1):
        messages.extend(result)
        task.release()
        print(f"{done} of {len(batches)} batches", file=sys.stderr, flush=True)
    return sorted(messages, key=lambda each: (each.get("file", ""), each.get("line", 0), each.get("column", 0)))


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("scheduler")
    arguments.add_argument("folder")
    arguments.add_argument("report")
    arguments.add_argument("--vanxml", default="vanxml")
    arguments.add_argument("--batch", type=int, default=1000)
    arguments.add_argument("--wait-for-workers", type=int, default=1)
    options = arguments.parse_args()

    names = list_documents(options.folder)
    is_file = os.path.exists(options.scheduler)
    with distributed.Client(**{"scheduler_file" if is_file else "address": options.scheduler}) as client:
        client.wait_for_workers(options.wait_for_workers)
        messages = check_all(client, options.vanxml, names, options.batch)
    report = {
        "documents": len(names),
        "codes": collections.Counter(each.get("code", each["type"]) for each in messages),
        "messages": messages,
    }
    with open(options.report, "w", encoding="utf-8") as file:
        json.dump(report, file, ensure_ascii=False, indent=1)
    failures = sum(each["type"] == "failure" for each in messages)
    errors = sum(each.get("severity") in ("error", "fatal") for each in messages)
    print(f"{len(names)} documents, {errors} errors, {failures} not checked")
    sys.exit(2 if failures else 1 if errors else 0)


if __name__ == "__main__":
    main()
