"""Figures of whole processes: times, instructions, memory and system calls of a request."""

import json
import os
import random
import re
import resource
import statistics
import subprocess
import tempfile
import time
from pathlib import Path

import instruction_counts

ROUNDS = 600
MEMORY = 2 << 20
LARGE_FILE = 256 << 20


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
    for _ in range(ROUNDS):
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


def process_figures(requests, baseline):
    """Microseconds; those beyond the empty process, by which our programs are compared; and the
    ratio to it, of which the start of any process is the most, on some machines more than others."""
    commands = {"empty": ([str(requests.programs / "bench" / "empty_process")], os.devnull, {})}
    for name, body in requests.bodies.items():
        path = requests.folder / name
        path.write_bytes(body)
        for prefix, program in (("", requests.programs / "sign.cgi"), ("baseline ", baseline)):
            commands[prefix + name] = ([str(program)], path, requests.environment(body))
    times = {name: seconds * 1e6 for name, seconds in
             process_times(commands | openssl_commands(requests.folder)).items()}
    figures = {f"process/{name}": figure for name, figure in times.items()}
    for name in requests.bodies:
        figures[f"beyond/{name}"] = times[name] - times["empty"]
        figures[f"beyond/baseline {name}"] = times[f"baseline {name}"] - times["empty"]
        figures[f"empty/{name}"] = times[name] / times["empty"]
    return figures


def instruction_figures(programs):
    counted = programs / "counted_request"
    counts = instruction_counts.count(counted)
    return {f"instructions/{name}": number / 1e6 for name, number in counts.items()} | {
        "instructions/base64 character": instruction_counts.base64_character(counted)}


def resource_figures(requests):
    large = requests.folder / "large"
    with open(large, "wb") as file:
        file.truncate(LARGE_FILE)
    bodies = [*requests.bodies.values(), requests.request("generateSignature", file=str(large))]
    limit = {"preexec_fn": lambda: resource.setrlimit(resource.RLIMIT_DATA, (MEMORY, MEMORY))}
    kept = [requests.run(body, **limit).stdout.startswith(b"Status: ") for body in bodies]
    trace = requests.folder / "strace"
    requests.run(requests.bodies["signing"], "/usr/bin/strace", "-o", trace)
    calls = re.findall(r"^\w+\(", trace.read_text(), re.MULTILINE)
    return {"requests/in 2 MiB": sum(kept), "requests/system calls": len(calls)}


def figures(programs, baseline):
    with tempfile.TemporaryDirectory() as name:
        requests = Requests(programs, Path(name))
        return (process_figures(requests, baseline) | instruction_figures(programs)
                | resource_figures(requests))
