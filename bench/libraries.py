"""Figures of our arithmetic and digests beside those of other libraries."""

import json
import os
import subprocess
from pathlib import Path

# libcrypto without carry-less multiplication, and hashes without instructions of their own.
PLAIN = {"OPENSSL_ia32cap": "~0x200000000:~0x0"}
PLAIN_HASHES = {"OPENSSL_ia32cap": "0:0", "NETTLE_FAT_OVERRIDE": "none"}
BOUNCY_CASTLE = Path("/usr/share/java/bcprov.jar")
CLOCKS = (0.97, 1.1)  # additions in a cycle of the other clock: one, as far as can be measured


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


def arithmetic_figures(programs, plain_programs):
    """Microseconds, as the libraries are installed and with plain code on both sides."""
    installed = benchmark(programs / "bench" / "arithmetic_bench", {}, 15, "^(sign|verify)/")
    plain = benchmark(plain_programs / "bench" / "arithmetic_bench", PLAIN, 15)
    return {name: case["cpu_time"] / 1000 for name, case in installed.items()} | {
        f"{name} plain": case["cpu_time"] / 1000 for name, case in plain.items()}


def bouncy_castle_figures():
    source = Path(__file__).with_name("BouncyCastle.java")
    names = ("sign/Bouncy Castle", "verify/Bouncy Castle")
    if not BOUNCY_CASTLE.exists():
        return dict.fromkeys(names, "libbcprov-java is not installed")
    try:
        output = subprocess.run(["java", "-cp", BOUNCY_CASTLE, source], check=True,
                                stdout=subprocess.PIPE, text=True).stdout
    except FileNotFoundError:
        return dict.fromkeys(names, "no JVM is installed")
    return {f"{work}/Bouncy Castle": float(microseconds) for work, microseconds in
            (line.split() for line in output.splitlines())}


def cycles_a_nanosecond(cases):
    """By multiplications, or a text that tells why they are no clock."""
    rates = [cases[f"clock/{name}"]["items_per_second"] / 1e9
             for name in ("additions", "multiplications")]
    additions = rates[0] / rates[1]
    if not CLOCKS[0] <= additions <= CLOCKS[1]:
        return f"{additions:.2f} additions a cycle: there is no clock to trust"
    return rates[1]


def hash_figures(programs):
    """Nanoseconds a byte, which ratios are taken of, and cycles a byte where there is a clock."""
    cases = benchmark(programs / "bench" / "hash_bench", PLAIN_HASHES, 9)
    clock = cycles_a_nanosecond(cases)
    figures = {name: 1e9 / case["bytes_per_second"] for name, case in cases.items()
               if "bytes_per_second" in case}
    cycles = clock if isinstance(clock, str) else figures["ripemd160/ours"] * clock
    return figures | {"clock": clock, "ripemd160/cycles": cycles}
