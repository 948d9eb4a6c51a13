"""Takes every figure that is promised or told, in one run, and writes them as JSON.

    measure.py PROGRAMS PLAIN BASELINES FILE

PROGRAMS is a release build with SIGN_BENCH and SIGN_TESTS, PLAIN one with SIGN_PLAIN_ARITHMETIC as
well, and BASELINES what baseline.py has built; scripts/bench.sh calls it.
"""

import json
import sys
from pathlib import Path

import baseline
import libraries
import processes

ROOT = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "tests" / "servers"))


def server_figures(programs):
    from throughput import throughput_of  # what it imports are servers that must be installed
    figures = {}
    for name in ("Lighttpd", "Nginx"):
        signing, answering, ratio = throughput_of(programs, name)
        figures |= {f"servers/{name} signing": signing, f"servers/{name} answering": answering,
                    f"servers/{name} ratio": ratio}
    return figures


def main(programs, plain_programs, baselines, file):
    figures = {}
    for what, take in (
            ("processes", lambda: processes.figures(programs, baseline.program(baselines))),
            ("arithmetic", lambda: libraries.arithmetic_figures(programs, plain_programs)),
            ("arithmetic of Bouncy Castle", libraries.bouncy_castle_figures),
            ("digests", lambda: libraries.hash_figures(programs)),
            ("servers", lambda: server_figures(programs))):
        print(f"Measuring {what}", flush=True)
        figures |= take()
    rounded = {name: figure if isinstance(figure, str) else float(f"{figure:.4g}")
               for name, figure in figures.items()}
    file.write_text(json.dumps(rounded, indent=1) + "\n", encoding="utf-8")


if __name__ == "__main__":
    main(*(Path(word).resolve() for word in sys.argv[1:]))
