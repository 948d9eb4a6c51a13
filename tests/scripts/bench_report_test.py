"""How scripts/bench.sh judges its figures, and that docs/performance.md is written of them."""

import json
import re
import subprocess
import sys
import tempfile
import unittest
from contextlib import redirect_stdout
from io import StringIO
from pathlib import Path
from unittest import mock

ROOT = Path(__file__).resolve().parents[2]
BENCH = ROOT / "bench"
sys.path.insert(0, str(BENCH))

import libraries
import page
import report
from bounds import all_bounds
from chart import chart


def committed_figures():
    return json.loads(report.FIGURES.read_text(encoding="utf-8"))


def barely_kept():
    """Figures that keep each bound by a tenth of a per cent."""
    figures = {"clock": 3.0}
    for bound in all_bounds():
        limit = bound.at_most * 0.999 if bound.at_least is None else bound.at_least * 1.001
        if bound.over:
            figures |= {bound.value: 1.0} | dict.fromkeys(bound.over, 1 / limit)
        else:
            figures[bound.value] = limit
    return figures


def beyond(bound, figures):
    """The same but for this bound, which is missed by a per cent."""
    if bound.over:
        return figures | {bound.over[-1]: figures[bound.over[-1]] * 0.99}
    return figures | {bound.value: figures[bound.value] * (1.01 if bound.at_least is None else 0.99)}


def process_ended(figures):
    with tempfile.NamedTemporaryFile("w", suffix=".json") as file:
        json.dump(figures, file)
        file.flush()
        return subprocess.run([sys.executable, "-B", BENCH / "report.py", file.name], check=False,
                              capture_output=True, text=True)


def reported(figures):
    """The status and the output, without a process of its own."""
    with redirect_stdout(StringIO()) as output:
        return report.report(figures), output.getvalue()


class Run(unittest.TestCase):
    def test_that_keeps_every_bound_ends_well(self):
        end = process_ended(barely_kept())
        self.assertEqual((end.returncode, end.stderr), (0, ""))
        self.assertIn(f"\n{len(all_bounds())} bounds: 0 missed, 0 not judged\n", end.stdout)

    def test_fails_by_each_bound_that_is_missed(self):
        for bound in all_bounds():
            with self.subTest(bound=bound.name):
                status, output = reported(beyond(bound, barely_kept()))
                missed = [line for line in output.splitlines() if ", missed" in line]
                self.assertEqual((status, len(missed)), (1, 1))
                self.assertTrue(missed[0].startswith(f"{bound.name} "), missed[0])
        self.assertEqual(process_ended(beyond(all_bounds()[0], barely_kept())).returncode, 1)

    def test_fails_by_a_figure_that_is_no_number(self):
        self.assertEqual(reported(barely_kept() | {"ripemd160/cycles": float("nan")})[0], 1)

    def test_fails_without_a_figure_that_is_bounded(self):
        for bound in all_bounds():
            for name in (bound.value, *bound.over):
                with self.subTest(name=name):
                    figures = barely_kept()
                    del figures[name]
                    self.assertRaisesRegex(ValueError, f"no figure {re.escape(name)};", reported, figures)
        end = process_ended({})
        self.assertEqual(end.returncode, 1)
        self.assertRegex(end.stderr, r"\Abench: signature: no figure sign/ours; .*\n\Z")

    def test_tells_what_it_could_not_judge(self):
        status, output = reported(barely_kept() | {"sign/Bouncy Castle": "no JVM is installed"})
        self.assertEqual(status, 0)
        self.assertRegex(output, "(?m)^signature, Bouncy Castle +not judged: no JVM is installed")
        self.assertIn(" 0 missed, 1 not judged\n", output)

    def test_writes_page_and_chart_of_its_figures(self):
        with tempfile.TemporaryDirectory() as name:
            files = {word: Path(name) / word for word in ("FIGURES", "PAGE", "CHART")}
            files["PAGE"].write_bytes(report.PAGE.read_bytes())
            given = Path(name) / "given"
            given.write_text(json.dumps(barely_kept()), encoding="utf-8")
            with mock.patch.multiple(report, **files), mock.patch("builtins.print"):
                self.assertEqual(report.main(given, "--write"), 0)
            text = files["PAGE"].read_text(encoding="utf-8")
            self.assertIn("| 0.45 | 0.45 |", text)
            self.assertEqual(text, page.written(text, barely_kept()))
            self.assertEqual(json.loads(files["FIGURES"].read_text()), barely_kept())
            self.assertEqual(files["CHART"].read_text().count('class="ours"'), 7)


class Clock(unittest.TestCase):
    def test_is_one_where_two_chains_agree(self):
        for additions, trusted in ((3.0, True), (2.93, True), (3.27, True), (2.88, False),
                                   (3.35, False), (16.0, False)):
            with self.subTest(additions=additions):
                clock = libraries.cycles_a_nanosecond({
                    "clock/additions": {"items_per_second": additions * 1e9},
                    "clock/multiplications": {"items_per_second": 3e9}})
                self.assertEqual(clock == 3.0, trusted)
                self.assertEqual(isinstance(clock, str), not trusted)


class Page(unittest.TestCase):
    def test_is_as_the_bounds_and_the_last_run_have_it(self):
        text = report.PAGE.read_text(encoding="utf-8")
        self.assertEqual(text, page.written(text, committed_figures()))
        self.assertEqual(report.CHART.read_text(encoding="utf-8"), chart(committed_figures()))

    def test_has_a_row_for_each_bound(self):
        text = report.PAGE.read_text(encoding="utf-8")
        names = [bound.name for bound in all_bounds()]
        self.assertEqual(len(set(names)), len(names))
        for bound in all_bounds():
            self.assertEqual(text.count(f"\n| {bound.figure} | {bound.told()} | "), 1, bound.name)

    def test_loses_no_part_unseen(self):
        text = report.PAGE.read_text(encoding="utf-8")
        for mark in ("<!-- bounds:", "<!-- end of works"):
            with self.assertRaisesRegex(ValueError, "no place for"):
                page.written(text.replace(mark, "<!-- "), committed_figures())


if __name__ == "__main__":
    unittest.main()
