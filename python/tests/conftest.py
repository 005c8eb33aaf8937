"""Shared pieces of the qallib tests: the C++ oracle and the bit-level comparison.

The oracle (python/tests/oracle/qal_oracle.cpp, built by CMake as qal_oracle) runs the
library functions themselves, compiled by the C++ build, and prints the raw bits of every
result. QAL_ORACLE names the executable; by default build/default/tests/qal_oracle. The
comparisons are skipped when it is missing, unless QAL_REQUIRE_ORACLE=1 (tools/check.sh).
"""

import os
import struct
import subprocess
from pathlib import Path

import numpy as np
import pytest

import qallib

ROOT = Path(__file__).resolve().parents[2]
ORACLE = Path(os.environ.get("QAL_ORACLE", ROOT / "build" / "default" / "tests" / "qal_oracle"))


def _bits(value, fmt, code):
    return f"{struct.unpack(code, struct.pack(fmt, value))[0]:0{len(struct.pack(fmt, 0)) * 2}x}"


def token(value):
    """One argument or result as the oracle writes it: raw bits for floats."""
    if value is None:
        return "N"
    if isinstance(value, np.ndarray):
        if value.dtype == np.float64:
            return "D" + ",".join(_bits(v, "<d", "<Q") for v in value.ravel().tolist())
        if value.dtype == np.float32:
            return "F" + ",".join(f"{v:08x}" for v in value.ravel().view(np.uint32).tolist())
        if value.dtype == np.int32:
            return "I" + ",".join(str(v) for v in value.ravel().tolist())
        raise TypeError(value.dtype)
    if isinstance(value, np.float32):
        return "f" + f"{int(np.array(value).view(np.uint32)):08x}"
    if isinstance(value, (bool, np.bool_, int, np.integer)):
        return f"i{int(value)}"
    if isinstance(value, float):
        return "d" + _bits(value, "<d", "<Q")
    raise TypeError(type(value))


def tokens(result):
    """A Python result (value, array or named tuple) as the oracle's output tokens."""
    if result is None:
        return []
    if isinstance(result, tuple):
        return [t for field in result for t in tokens(field)]
    return [token(result)]


def outcome(call):
    """What a qallib call gives, as oracle tokens: i0 and the result, or the status and,
    where the exception carries them, its outputs."""
    try:
        return ["i0"] + tokens(call())
    except qallib.QalError as error:
        return [f"i{error.status}"] + tokens(error.outputs)


class Oracle:
    def __init__(self, path):
        self._process = subprocess.Popen([str(path)], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)

    def __call__(self, name, *args):
        self._process.stdin.write(" ".join([name] + [token(a) for a in args]) + "\n")
        self._process.stdin.flush()
        line = self._process.stdout.readline()
        if not line:
            raise RuntimeError(f"qal_oracle stopped at {name}")
        return line.split()

    def close(self):
        self._process.stdin.close()
        self._process.wait()


@pytest.fixture(scope="session")
def oracle():
    if not ORACLE.exists():
        if os.environ.get("QAL_REQUIRE_ORACLE") == "1":
            pytest.fail(f"{ORACLE} is missing: build it with cmake --build build/default --target qal_oracle")
        pytest.skip(f"{ORACLE} is not built (cmake --build build/default --target qal_oracle)")
    runner = Oracle(ORACLE)
    yield runner
    runner.close()


def same_as_oracle(oracle, call, name, *args):
    """The Python call matches the C++ routine: the same status and, where the Python side
    gives outputs (a result, or an exception's .outputs), the same bits."""
    got = outcome(call)
    expected = oracle(name, *args)
    if len(got) == 1:  # an exception without outputs: the status alone
        expected = expected[:1]
    assert got == expected, f"{name}{args!r}"


@pytest.fixture(scope="session")
def sample_curve():
    data = np.loadtxt(ROOT / "examples" / "data" / "sample_curve.csv", delimiter=",", skiprows=1)
    return np.ascontiguousarray(data[:, 0]), np.ascontiguousarray(data[:, 1])
