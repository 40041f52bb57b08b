#!/usr/bin/env python3
"""Tests the commands of docs/scale.md on 600 generated documents.

test.py VANXML

Ends with 77, which CTest counts as skipped, without GNU parallel and the Python package "distributed".
"""
import importlib.util
import json
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

SCALE = pathlib.Path(__file__).parent
COUNT = 600  # one document has an error: number 500


def read_files(lines):
    return [pathlib.Path(json.loads(line)["file"]).name for line in lines]


class ScaleTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.work = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.work.cleanup)
        cls.folder = pathlib.Path(cls.work.name) / "documents"
        subprocess.run([sys.executable, SCALE / "generate.py", cls.folder, str(COUNT)], check=True)

    def run_piped(self, command):
        """Runs a command of the page, with `check` as its last part."""
        shell = f"find '{self.folder}' -name '*.kxd' -print0 | {command} '{VANXML}' check --jobs 1 --format json"
        return subprocess.run(["sh", "-c", shell], capture_output=True, text=True, check=False)

    def test_xargs_runs_check_on_all_documents(self):
        run = self.run_piped("xargs -0 -n 100 -P 2")
        self.assertEqual(read_files(run.stdout.splitlines()), ["0000500.kxd"], run.stderr)
        self.assertEqual(run.returncode, 123)  # the status of xargs if a command ends with 1 to 125

    def test_parallel_runs_check_on_all_documents(self):
        run = self.run_piped("parallel -0 -n 100 -j 2")
        self.assertEqual(read_files(run.stdout.splitlines()), ["0000500.kxd"], run.stderr)
        self.assertEqual(run.returncode, 1)  # the number of commands that failed

    def run_cluster(self, *options):
        report = pathlib.Path(self.work.name) / "report.json"
        run = subprocess.run(
            [sys.executable, SCALE / "local_cluster.py", *options, self.folder, report, "--vanxml", VANXML, "--batch",
             "20"], capture_output=True, text=True, check=False)
        self.assertEqual(run.returncode, 1, run.stderr)
        return json.loads(report.read_text(encoding="utf-8")), run

    def test_cluster_survives_a_killed_worker(self):
        report, run = self.run_cluster("--kill")
        self.assertEqual(report["documents"], COUNT)
        self.assertEqual(report["codes"], {"unexpected-element": 1})
        self.assertEqual([pathlib.Path(each["file"]).name for each in report["messages"]], ["0000500.kxd"])
        progress = run.stderr.splitlines()
        self.assertLess(progress.index("killed a worker"), progress.index(f"{COUNT // 20} of {COUNT // 20} batches"))
        self.assertEqual(run.stdout, f"{COUNT} documents, 1 errors, 0 not checked\n")


if __name__ == "__main__":
    VANXML = str(pathlib.Path(sys.argv.pop()).resolve())
    if not shutil.which("parallel") or not importlib.util.find_spec("distributed"):
        print("skipped: needs the packages parallel and python3-distributed")
        sys.exit(77)
    unittest.main()
