"""Takes every figure that is promised, as a ratio of medians of one run, and judges it.

    report.py FOLDER    of a release build with SIGN_BENCH and SIGN_TESTS; scripts/bench.sh calls it

Exits 0 only if every figure keeps its bound.
"""

import json
import os
import random
import re
import resource
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "tests" / "servers"))

PLAIN = {"OPENSSL_ia32cap": "~0x200000000:~0x0"}  # libcrypto without carry-less multiplication
PLAIN_HASHES = {"OPENSSL_ia32cap": "0", "NETTLE_FAT_OVERRIDE": "none"}
PROCESS_ROUNDS = 300
MEMORY = 2 << 20
SYSTEM_CALLS = 40
LARGE_FILE = 256 << 20

missed = 0


def say(what, figure, bound=None, unit=""):
    """Prints a line; a figure above its bound is missed, and a bound below 0 is a least figure."""
    global missed
    verdict = ""
    if bound is not None:
        kept = figure <= bound if bound >= 0 else figure >= -bound
        missed += not kept
        verdict = f"{'at most' if bound >= 0 else 'at least'} {abs(bound):g}  {'' if kept else 'MISSED'}"
    print(f"{what:58} {figure:9.3g}{unit}  {verdict}".rstrip(), flush=True)


class Requests:
    """The requests of all comparisons, about one project made for them."""

    def __init__(self, programs, folder):
        self.programs, self.folder = programs, folder
        self.project = folder / "bench.project"
        subprocess.run([programs / "projectctl", "create", self.project], check=True)
        sign = self.request("generateSignature", data="x" * 64)
        signature = json.loads(self.answer(sign).partition(b"\r\n\r\n")[2])["signature"]
        self.bodies = {
            "signing": sign,
            "verifying": self.request("verifySignature", data="x" * 64, signature=signature),
            "refusing": b'{"mode":"sign"}',
        }

    def request(self, mode, **signature):
        return json.dumps({"mode": mode, "project": str(self.project),
                           "signature": signature}).encode()

    def environment(self, body):
        return {"CONTENT_TYPE": "application/json", "CONTENT_LENGTH": str(len(body))}

    def run(self, body, *before, program="sign.cgi", **options):
        return subprocess.run([*before, self.programs / program], input=body, check=False,
                              env=self.environment(body), capture_output=True, **options)

    def answer(self, body):
        return self.run(body).stdout


def process_times(commands):
    """The median of the time of each command, started by turns in an order that changes, for each
    finds the caches as the one before has left them. Input and output are files."""
    times = {name: [] for name in commands}
    turns = list(commands.items())
    for _ in range(PROCESS_ROUNDS):
        random.shuffle(turns)
        for name, (words, stdin, environment) in turns:
            with open(stdin, "rb") as source, open(os.devnull, "wb") as sink:
                actions = [(os.POSIX_SPAWN_DUP2, source.fileno(), 0),
                           (os.POSIX_SPAWN_DUP2, sink.fileno(), 1),
                           (os.POSIX_SPAWN_DUP2, sink.fileno(), 2)]
                start = time.perf_counter()
                child = os.posix_spawn(words[0], words, environment, file_actions=actions)
                os.waitpid(child, 0)
                times[name].append(time.perf_counter() - start)
    return {name: statistics.median(values) for name, values in times.items()}


def openssl_commands(folder):
    """The same work by the openssl program, over a file of 64 bytes."""
    def openssl(*words):
        subprocess.run(["/usr/bin/openssl", *words], check=True, cwd=folder, capture_output=True)

    (folder / "data").write_bytes(b"x" * 64)
    openssl("ecparam", "-name", "sect163r2", "-genkey", "-noout", "-out", "key.pem")
    openssl("ec", "-in", "key.pem", "-pubout", "-out", "public.pem")
    legacy = ["-provider", "legacy", "-provider", "default"]
    digest = ["/usr/bin/openssl", "dgst", *legacy, "-ripemd160"]
    openssl("dgst", *legacy, "-ripemd160", "-sign", "key.pem", "-out", "signature", "data")
    nothing = folder / "nothing"
    nothing.touch()
    data, signature = str(folder / "data"), str(folder / "signature")
    return {
        "openssl signing": ([*digest, "-sign", str(folder / "key.pem"), data], nothing, {}),
        "openssl verifying": ([*digest, "-verify", str(folder / "public.pem"), "-signature",
                               signature, data], nothing, {}),
    }


def judge_processes(requests):
    commands = {"empty": ([str(requests.programs / "bench" / "empty_process")], os.devnull, {})}
    for name, body in requests.bodies.items():
        path = requests.folder / name
        path.write_bytes(body)
        commands[name] = ([str(requests.programs / "sign.cgi")], path, requests.environment(body))
    commands |= openssl_commands(requests.folder)
    times = process_times(commands)
    for name, seconds in times.items():
        say(f"process, {name}", seconds * 1e6, unit=" us")
    for name, bound in (("signing", 2.0), ("verifying", 2.6), ("refusing", 1.15)):
        say(f"process, {name} / empty", times[name] / times["empty"], bound)
    for name in ("signing", "verifying"):
        say(f"process, {name} / openssl", times[name] / times[f"openssl {name}"], 0.2)


def benchmark(program, environment, repetitions, filter_=".*"):
    """The medians of a program of Google Benchmark, whose cases take turns."""
    output = subprocess.run(
        [program, "--benchmark_format=json", f"--benchmark_repetitions={repetitions}",
         "--benchmark_enable_random_interleaving=true", "--benchmark_report_aggregates_only=true",
         "--benchmark_min_time=0.05", f"--benchmark_filter={filter_}"],
        env=os.environ | environment, check=True, stdout=subprocess.PIPE,
        stderr=subprocess.DEVNULL).stdout
    return {case["run_name"]: case for case in json.loads(output)["benchmarks"]
            if case["aggregate_name"] == "median"}


def judge_arithmetic(programs):
    times = {name: case["cpu_time"] for name, case in
             benchmark(programs / "bench" / "arithmetic_bench", PLAIN, 15).items()}
    carry_less = {name: case["cpu_time"] for name, case in
                  benchmark(programs / "bench" / "arithmetic_bench", {}, 15).items()}
    for name, nanoseconds in times.items():
        say(f"{name}, plain code", nanoseconds / 1000, unit=" us")
    for name, bound in (("sign", 0.9), ("verify", 0.8), ("divide", 1 / 3), ("multiply", 1.0)):
        say(f"{name}, ours / libcrypto's plain code",
            times[f"{name}/ours"] / times[f"{name}/libcrypto"], bound)
    for name in ("sign", "verify"):
        say(f"{name}, ours / libcrypto's carry-less code",
            carry_less[f"{name}/ours"] / carry_less[f"{name}/libcrypto"])
    say("inverses and Montgomery set-up / sign",
        times["inverses/ours"] / times["sign/ours"], 0.1)


def judge_hashes(programs):
    cases = benchmark(programs / "bench" / "hash_bench", PLAIN_HASHES, 9)
    cycles_a_second = cases["cycles/chain"]["items_per_second"]
    cycles = {name: cycles_a_second / case["bytes_per_second"] for name, case in cases.items()
              if "bytes_per_second" in case}
    for name, figure in cycles.items():
        say(f"{name}, cycles a byte", figure, 6.5 if name == "ripemd160/ours" else None)
    for name, bound in (("ripemd160", 1.0), ("md5", 1.1), ("sha256", 1.1)):
        best = min(figure for case, figure in cycles.items()
                   if case.startswith(name) and not case.endswith("/ours"))
        say(f"{name}, ours / the best plain code", cycles[f"{name}/ours"] / best, bound)


def judge_resources(requests):
    large = requests.folder / "large"
    with open(large, "wb") as file:
        file.truncate(LARGE_FILE)
    limit = {"preexec_fn": lambda: resource.setrlimit(resource.RLIMIT_DATA, (MEMORY, MEMORY))}
    for name, body in (requests.bodies | {
            "signing 256 MiB": requests.request("generateSignature", file=str(large))}).items():
        kept = requests.run(body, **limit).stdout.startswith(b"Status: ")
        say(f"{name} in 2 MiB of memory of its own (1: yes)", kept, -1)
    counts = requests.folder / "strace"
    requests.run(requests.bodies["signing"], "/usr/bin/strace", "-c", "-o", counts)
    total = re.search(r"^100\.00 .*?(\d+) +(\d+ +)?total$", counts.read_text(), re.MULTILINE)
    say("system calls of signing", int(total.group(1)), SYSTEM_CALLS)


def judge_servers(programs):
    from throughput import throughput_of  # what it imports are servers that must be installed
    for name in ("Lighttpd", "Nginx"):
        signing, alone, ratio = throughput_of(programs, name)
        say(f"{name}, requests a second, signing", signing)
        say(f"{name}, requests a second, a program that only answers", alone)
        say(f"{name}, ratio", ratio, -0.6)


def main(programs):
    with tempfile.TemporaryDirectory() as name:
        requests = Requests(programs, Path(name))
        judge_processes(requests)
        judge_resources(requests)
    judge_arithmetic(programs)
    judge_hashes(programs)
    judge_servers(programs)
    print(f"\n{missed} missed" if missed else "\nall kept")
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main(Path(sys.argv[1]).resolve()))
