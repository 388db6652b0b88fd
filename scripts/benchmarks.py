"""What the scripts that measure have in common: the benchmarks' programs, and how they are run."""

import contextlib
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
BIN = ROOT / "build" / "bench" / "bin"
PLACEMENTS = {"one core": (0, 0), "split": (0, 1)}


def build(sources=ROOT):
    subprocess.run([sources / "scripts" / "install-deps", "check"], check=True)
    subprocess.run(["cmake", "--preset", "bench", "--log-level=NOTICE"], cwd=sources, check=True)
    subprocess.run(["cmake", "--build", "--preset", "bench"], cwd=sources, check=True)


@contextlib.contextmanager
def sources_of(commit):
    with tempfile.TemporaryDirectory(prefix="qvn-sources-") as folder:
        subprocess.run(["git", "worktree", "add", "--quiet", "--detach", folder, commit], cwd=ROOT, check=True)
        try:
            yield pathlib.Path(folder)
        finally:
            subprocess.run(["git", "worktree", "remove", "--force", folder], cwd=ROOT, check=True)


def is_commit(name):
    command = ["git", "rev-parse", "--verify", "--quiet", name + "^{commit}"]
    return subprocess.run(command, cwd=ROOT, check=False, stdout=subprocess.DEVNULL).returncode == 0


def environment(folder):
    others = {name: value for name, value in os.environ.items() if not name.startswith("QVN_")}
    return dict(others, QVN_HOST_DIR=str(folder))  # everything else at its default, the log level too


@contextlib.contextmanager
def process(folder, *command, **streams):
    """A program in the background, that is gone at the end of the block."""
    started = subprocess.Popen(command, env=environment(folder), **streams)
    try:
        yield started
    finally:
        started.kill()
        started.wait()


def in_folder(run, *arguments, **named):
    folder = pathlib.Path(tempfile.mkdtemp(prefix="qvn-bench-"))
    try:
        return run(folder, *arguments, **named)
    finally:
        shutil.rmtree(folder)


def run_pair(folder, mode, count, placement, *options, programs=BIN):
    """A service and an application; the options go to both."""
    sender, receiver = PLACEMENTS[placement]
    arguments = [mode, str(count), folder / "shared", *options, "--cpu"]
    with process(folder, programs / "bench_service", *arguments, str(sender), stdout=subprocess.PIPE) as service:
        application = subprocess.run([programs / "bench_application", *arguments, str(receiver)],
                                     env=environment(folder), check=True, capture_output=True, timeout=300)
        output, _ = service.communicate(timeout=60)
        if service.returncode != 0:
            sys.exit("bench: the service saw values lost")
    return json.loads(output or "{}") | json.loads(application.stdout)


def in_process(folder, variables, name=".", repetitions=5, programs=BIN):
    """The median of the repetitions of each benchmark that has the name, a regular expression."""
    command = [programs / "bench_inprocess", "--benchmark_format=json", "--benchmark_min_time=0.1",
               f"--benchmark_filter={name}", f"--benchmark_repetitions={repetitions}",
               "--benchmark_report_aggregates_only=true"]
    output = subprocess.run(command, env=dict(environment(folder), **variables), check=True, capture_output=True,
                            timeout=300)
    return [row for row in json.loads(output.stdout)["benchmarks"] if row["aggregate_name"] == "median"]


def instructions(folder, names, programs=BIN):
    """Instructions from onBroadcast until it returns, by benchmark: the same on every machine of a kind."""
    function = "T21CanServiceFdbusClient::onBroadcast(std::shared_ptr<CBaseJob>&)"  # not what it calls in turn
    output = folder / "callgrind"
    counts = {}
    for name in names:
        command = ["valgrind", "--tool=callgrind", "--compress-strings=no", "--compress-pos=no",
                   f"--toggle-collect={function}", f"--callgrind-out-file={output}",
                   programs / "bench_inprocess", f"--benchmark_filter=^{name}$", "--benchmark_min_time=0.05"]
        variables = dict(environment(folder), QVN_LOG_LEVEL="0", LD_BIND_NOW="1")
        subprocess.run(command, env=variables, check=True, capture_output=True, timeout=120)
        text = output.read_text()
        calls = re.findall(rf"^cfn={re.escape(function)}\ncalls=(\d+)", text, re.MULTILINE)
        total = re.search(r"^totals: (\d+)", text, re.MULTILINE)
        counts[name] = int(total.group(1)) / sum(map(int, calls))
    return counts
