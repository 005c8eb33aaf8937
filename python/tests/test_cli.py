"""The qal command as installed: golden outputs, the one-line errors and their exit
statuses, and that a failed run leaves no output file behind."""

import re
import shlex
import subprocess
import sys
from pathlib import Path

import numpy as np
import pytest

from qallib.cli import parse_number

GOLDEN = Path(__file__).resolve().parent / "cli_golden"
ROOT = GOLDEN.parents[2]
_SCRIPT = Path(sys.executable).parent / "qal"
QAL = [str(_SCRIPT)] if _SCRIPT.exists() else [sys.executable, "-m", "qallib"]


def qal(*args, stdin=None, cwd=GOLDEN):
    return subprocess.run(QAL + list(args), input=stdin, capture_output=True, cwd=cwd, check=False)


RUNS = [
    # arguments, file fed to standard input, expected output
    (["extrema", "--window", "3", "peak.csv"], None, "extrema.out"),  # header, comments
    (["extrema", "--window", "3", "--x", "time", "--y", "signal", "-t", ",", "peak.csv"], None, "extrema.out"),
    (["extrema", "--window", "3", "quoted.csv"], None, "extrema.out"),  # every cell in double quotes
    (["crossings", "-"], "peak.txt", "crossings.out"),  # standard input, blank-separated, no header
    (["crossings", "--x", "1", "--y", "2", "-t", "space"], "peak.txt", "crossings.out"),
    (["smooth", "--float", "--width", "5", "peak.csv"], None, "smooth_float.out"),
    (["derive", "--method", "line-fit", "--span", "4", "peak.csv"], None, "derive.out"),
    (["resample", "--points", "9", "--method", "segment", "peak.csv"], None, "resample.out"),
    (["fit", "--float", "peak.csv"], None, "fit_float.out"),
    (["integrate", "--from", "1", "--to", "5.25", "peak.csv"], None, "integrate.out"),
    (["analyze", "--width", "5", "--window", "3", "peak.csv"], None, "analyze.out"),
]


@pytest.mark.parametrize("args, stdin, expected", RUNS, ids=[" ".join(run[0]) for run in RUNS])
def test_golden_output(args, stdin, expected):
    result = qal(*args, stdin=(GOLDEN / stdin).read_bytes() if stdin else None)
    assert (result.returncode, result.stderr) == (0, b"")
    assert result.stdout.decode() == (GOLDEN / expected).read_text()


FAILURES = [
    # arguments, exit status, the line on standard error
    (["extrema", "bad_cell.csv"], 2, "qal: bad_cell.csv:4:2: 'abc' is not a number"),
    (["extrema", "ragged.csv"], 2, "qal: ragged.csv:3:3: ragged row: 3 cells, expected 2"),
    (["extrema", "two_points.csv"], 2, "qal: two_points.csv: too few points: 2, extrema needs at least 3"),
    (["derive", "descending.txt"], 2,
     "qal: descending.txt:4:1: x descends (2.5 after 3); derive needs x strictly ascending"),
    (["smooth", "--width", "4", "peak.csv"], 2, "qal: --width 4: must be odd, from 3 to 299"),
    (["smooth", "--width", "5", "--degree", "6", "peak.csv"], 2,
     "qal: --degree 6: must be 2, 4 or 6 and below --width 5"),
    (["extrema", "--float", "peak.csv"], 2,
     "qal: extrema: --float: the library has no single-precision routine for this command"),
    (["fit", "-"], 2, "qal: <stdin>: no data"),
    (["fit", "decimal_comma.csv"], 2, "qal: decimal_comma.csv:2:2: '1,5' is not a number (the decimal point is '.')"),
    (["fit", "--y", "temp", "peak.csv"], 2, "qal: peak.csv:2: --y temp: no such column in the header (time, signal)"),
    (["resample", "missing.csv"], 2, "qal: missing.csv: No such file or directory"),
    (["extrema", "--window", "x", "peak.csv"], 2,
     "qal: extrema: argument --window: invalid int value: 'x' (see qal extrema --help)"),
    (["crossings", "nan_first.csv"], 2, "qal: nan_first.csv:2:2: 'nan' in y: crossings needs finite samples"),
    (["integrate", "/dev/stdin"], 2,  # LONG_CURVE
     "qal: /dev/stdin: too many points for the spline: 10001, at most 10000 (integrate)"),
    (["crossings", "--level", "1000", "peak.csv"], 1,
     "qal: crossings: QAL_ERR_NOT_FOUND: the curve does not reach the level 1000.0"),
]


LONG_CURVE = "".join(f"{i},{i % 7}\n" for i in range(10_001)).encode()


@pytest.mark.parametrize("args, status, line", FAILURES, ids=[f"{f[0][0]}-{f[0][-1]}-{f[1]}" for f in FAILURES])
def test_failure_leaves_no_output(tmp_path, args, status, line):
    kept = tmp_path / "kept.csv"
    kept.write_text("an earlier result\n")
    stdin = LONG_CURVE if "/dev/stdin" in args else b"# nothing\n"
    result = qal(*args, "-o", str(kept), "--plot", str(tmp_path / "plot.png"), stdin=stdin)
    assert (result.returncode, result.stderr.decode(), result.stdout) == (status, line + "\n", b"")
    assert [p.name for p in tmp_path.iterdir()] == ["kept.csv"]
    assert kept.read_text() == "an earlier result\n"


def test_outputs_are_whole_and_repeatable(tmp_path):
    for run in ("a", "b"):
        result = qal("analyze", str(GOLDEN / "peak.csv"), "-o", f"{run}.txt", "--plot", f"{run}.png", cwd=tmp_path)
        assert (result.returncode, result.stdout, result.stderr) == (0, b"", b"")
    assert sorted(p.name for p in tmp_path.iterdir()) == ["a.png", "a.txt", "b.png", "b.txt"]
    png = (tmp_path / "a.png").read_bytes()
    assert png.startswith(b"\x89PNG") and len(png) < 100_000 and png == (tmp_path / "b.png").read_bytes()
    assert (tmp_path / "a.txt").read_text().startswith(str(GOLDEN / "peak.csv") + ": 24 samples")


@pytest.mark.parametrize("redirect, line", [
    ("> /dev/full", "qal: <stdout>: No space left on device\n"),
    (">&-", "qal: <stdout>: Bad file descriptor\n"),
    ("| head -c 1 > /dev/null", ""),  # the reader stops early: no word, no traceback
])
def test_failed_standard_output_is_one_line(redirect, line):
    command = shlex.join(QAL + ["smooth", "--width", "3", str(GOLDEN / "peak.csv")]) + " " + redirect
    result = subprocess.run(command, shell=True, capture_output=True, check=False)
    assert result.stderr.decode() == line
    assert result.returncode == (2 if line else 0)


def test_output_through_a_symbolic_link(tmp_path):
    (tmp_path / "real.csv").write_text("an earlier result\n")
    (tmp_path / "link.csv").symlink_to("real.csv")
    result = qal("fit", str(GOLDEN / "peak.csv"), "-o", "link.csv", cwd=tmp_path)
    assert (result.returncode, result.stderr) == (0, b"")
    assert (tmp_path / "link.csv").is_symlink() and (tmp_path / "real.csv").read_text().startswith("intercept,")
    assert sorted(p.name for p in tmp_path.iterdir()) == ["link.csv", "real.csv"]


ONE_PLUS_ULP = 1.0 + 2.0**-23


@pytest.mark.parametrize("text, dtype, expected", [
    ("0.1", np.float32, np.float32(0.1)),
    (".5e1", np.float64, 5.0),
    ("-Infinity", np.float64, -np.inf),
    # The double of this decimal is the midpoint of two float32 values: rounding it again
    # would give 1.0, the decimal itself lies above.
    ("1.0000000596046447753906251", np.float32, np.float32(ONE_PLUS_ULP)),
    ("1.000000059604644775390625", np.float32, np.float32(1.0)),  # the midpoint: to even
    ("1_000", np.float64, None),
    ("\u0661", np.float64, None),  # an Arabic-Indic one
    ("0x10", np.float64, None),
    ("1,5", np.float64, None),
])
def test_numbers_as_a_csv_user_writes_them(text, dtype, expected):
    value = parse_number(text, dtype)
    assert value is None if expected is None else (type(value), value) == (type(expected), expected)


@pytest.mark.parametrize("document", ["README.md", "docs/cli.md"])
def test_documents_show_what_the_tool_prints(document):
    shown = re.findall(r"<!-- (qal [^>]*?) -->\s*```text\n(.*?)```", (ROOT / document).read_text(), re.S)
    assert shown
    for command, text in shown:
        assert qal(*command.split()[1:], cwd=ROOT).stdout.decode() == text, command
