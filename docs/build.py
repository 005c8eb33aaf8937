"""Builds the reference manual under docs/: the one command.

    build/python-venv/bin/python docs/build.py            # regenerate the pages in docs/
    build/python-venv/bin/python docs/build.py --check    # fail when a committed page is stale

Runs the modules of docs/tools/ in order, each exposing build(out_dir, repo) -> written files:
reference.py (pages from docs/src/ and the public headers), tables.py (the tables computed by
running the library), then examples.py and figures.py when present. Needs qallib installed
(tools/build-docs.sh does all of it). With --check everything is regenerated into a scratch
copy of docs/ and each file written, Markdown and PNG, is compared byte for byte with the
committed one: the figures are drawn without a time stamp or a version in their metadata, so
the same library, tool and matplotlib draw the same bytes.
"""

from __future__ import annotations

import argparse
import importlib.util
import pathlib
import shutil
import sys
import tempfile

REPO = pathlib.Path(__file__).resolve().parent.parent
DOCS = REPO / "docs"
MODULES = ["reference", "tables", "examples", "figures"]
REQUIRED = {"reference", "tables"}


def _load(name: str):
    path = DOCS / "tools" / f"{name}.py"
    if not path.exists():
        if name in REQUIRED:
            raise SystemExit(f"docs/build.py: docs/tools/{name}.py is missing")
        return None
    sys.path.insert(0, str(path.parent))
    found = importlib.util.spec_from_file_location(f"qal_docs_{name}", path)
    module = importlib.util.module_from_spec(found)
    found.loader.exec_module(module)
    return module


def run(out_dir: pathlib.Path) -> list[pathlib.Path]:
    written: list[pathlib.Path] = []
    for name in MODULES:
        module = _load(name)
        if module is None:
            continue
        try:
            produced = module.build(out_dir, REPO)
        except Exception as error:
            raise RuntimeError(f"docs/tools/{name}.py: {type(error).__name__}: {error}") from error
        for path in produced:
            if path not in written:
                written.append(path)
    return written


def check() -> int:
    failures: list[str] = []
    with tempfile.TemporaryDirectory(prefix="qal-docs-") as scratch:
        out_dir = pathlib.Path(scratch) / "docs"
        shutil.copytree(DOCS, out_dir, ignore=shutil.ignore_patterns("__pycache__"))
        try:
            written = run(out_dir)
        except Exception as error:  # a module that cannot produce its files fails the check
            print(f"docs/build.py --check: {error}", file=sys.stderr)
            return 1
        for path in written:
            relative = path.relative_to(out_dir)
            committed = DOCS / relative
            if not committed.exists():
                failures.append(f"docs/{relative}: not committed")
            elif committed.read_bytes() != path.read_bytes():
                failures.append(f"docs/{relative}: differs from a fresh build")
    for failure in failures:
        print(f"docs/build.py --check: {failure}", file=sys.stderr)
    if failures:
        print("run build/python-venv/bin/python docs/build.py and commit the result", file=sys.stderr)
        return 1
    print(f"docs/build.py --check: {len(written)} files up to date")
    return 0


def main() -> int:
    parser = argparse.ArgumentParser(description="Build the reference manual under docs/.")
    parser.add_argument("--check", action="store_true",
                        help="regenerate into a scratch folder and fail when a committed page or figure differs")
    args = parser.parse_args()
    if args.check:
        return check()
    written = run(DOCS)
    for path in written:
        print(path.relative_to(REPO))
    return 0


if __name__ == "__main__":
    sys.exit(main())
