"""qal: the library's curve routines on CSV files, from the command line.

    qal COMMAND [OPTIONS] [FILE]        FILE is a CSV path, or - (the default) for standard input

Each command reads one curve (two columns of a CSV file), runs the library on it and prints
CSV (analyze prints a short report). Exit status 0 when done, 1 when the library answered
with a status (its name on standard error), 2 for bad input or usage (one line on standard
error naming the file, line and column). Run `qal COMMAND --help` for the details.
"""

import argparse
import errno
import math
import os
import re
import signal
import stat
import sys
import tempfile
import textwrap
from fractions import Fraction

import numpy as np

import qallib

from . import __version__
from ._constants import DerivMethod, ExtremumKind, FilterKind, InterpolOption
from ._errors import QalError

STDIN = "-"


class BadInput(Exception):
    """Bad input or usage: one line on standard error, exit status 2."""


class NoResult(Exception):
    """A library status, or a search that found nothing: exit status 1."""

    def __init__(self, status, text):
        super().__init__(f"{status}: {text}")


# ---- Numbers ------------------------------------------------------------------------------

# What a CSV user writes: decimal numbers with an optional exponent, and nan, inf, infinity
# in any case. float() also takes underscores, surrounding blanks and digits of other
# scripts, which in a data file are more likely a mistake than a number.
_NUMBER = re.compile(r"[+-]?(?:(?:\d+\.?\d*|\.\d+)(?:[eE][+-]?\d+)?|inf|infinity|nan)\Z", re.ASCII | re.IGNORECASE)


def _float32(text, value):
    """The float32 nearest to the decimal `text` (ties to even), from its double `value`.

    Rounding the double to float32 rounds twice; that differs from the direct rounding only
    when the double lands exactly halfway between two float32 values, and then the exact
    decimal decides.
    """
    near = np.float32(value)
    if not np.isfinite(near) or float(near) == value:
        return near
    other = np.nextafter(near, np.float32(math.copysign(math.inf, value - float(near))))
    if not np.isfinite(other) or (float(near) + float(other)) / 2 != value:
        return near  # not a midpoint (the mean of two float32 values is exact in double)
    exact = Fraction(text)
    distance = abs(Fraction(float(near)) - exact) - abs(Fraction(float(other)) - exact)
    if distance > 0 or (distance == 0 and int(np.array(near).view(np.uint32)) & 1):
        return other
    return near


def parse_number(text, dtype):
    """The number in a cell, or None when the cell holds none."""
    if not _NUMBER.match(text):
        return None
    value = float(text)
    return _float32(text, value) if dtype == np.float32 else value


def fmt(value):
    """Shortest text that reads back to the same value: repr for a double, and numpy's
    shortest unique form for a float32."""
    if isinstance(value, np.float32):
        return str(value)
    if isinstance(value, (int, np.integer)):
        return str(int(value))
    return repr(float(value))


def short(value):
    """A number for the human report: six significant digits."""
    return f"{float(value):.6g}"


# ---- Reading a curve ----------------------------------------------------------------------

class Curve:
    """Two columns of a CSV file, with where every value came from."""

    def __init__(self, name, x_name, y_name, x, y, texts, lines, columns):
        self.name, self.x_name, self.y_name = name, x_name, y_name
        self.x, self.y = x, y
        (self.x_text, self.y_text), self.lines, (self.x_column, self.y_column) = texts, lines, columns

    def __len__(self):
        return len(self.x)


def _unquote(cell):
    """A cell without one pair of surrounding double quotes, as spreadsheets write text."""
    return cell[1:-1].strip() if len(cell) >= 2 and cell[0] == cell[-1] == '"' else cell


def _splitter(delimiter):
    if delimiter is None:
        return lambda line: [_unquote(cell) for cell in line.split()]
    return lambda line: [_unquote(cell.strip()) for cell in line.split(delimiter)]


def _detect_delimiter(line):
    for candidate in ("\t", ";", ","):
        if candidate in line:
            return candidate
    return None  # runs of blanks


def _delimiter_option(text):
    named = {"tab": "\t", "\\t": "\t", " ": None, "space": None, "whitespace": None, "comma": ",", "semicolon": ";"}
    if text.lower() in named:
        return named[text.lower()]
    if len(text) != 1 or text in "#\"0123456789.+-eE" or text.isspace() and text != "\t":
        raise argparse.ArgumentTypeError(f"invalid delimiter: {text!r} (one character, or tab, space)")
    return text


def _read_text(path):
    try:
        if path == STDIN:
            data = sys.stdin.buffer.read()
        else:
            with open(path, "rb") as handle:
                data = handle.read()
    except OSError as error:
        raise BadInput(f"{path}: {error.strerror or error}") from None
    name = "<stdin>" if path == STDIN else path
    try:
        return name, data.decode("utf-8-sig")
    except UnicodeDecodeError as error:
        line = data.count(b"\n", 0, error.start) + 1
        raise BadInput(f"{name}:{line}: not UTF-8 text") from None


def _column(choice, option, cells, is_header, name, line):
    """The 0-based column that --x/--y names, by 1-based index or by header name."""
    if choice.isdigit():
        index = int(choice)
        if not 1 <= index <= len(cells):
            raise BadInput(f"{name}:{line}: {option} {choice}: no such column ({len(cells)} cells)")
        return index - 1
    if not is_header:
        raise BadInput(f"{name}:{line}: {option} {choice}: no header line (the first line holds numbers only), "
                       f"so no column has a name")
    if choice not in cells:
        raise BadInput(f"{name}:{line}: {option} {choice}: no such column in the header ({', '.join(cells)})")
    return cells.index(choice)


def read_curve(path, x_choice, y_choice, delimiter, dtype):
    """The curve in columns x_choice, y_choice of the CSV file (see the module help for the rules)."""
    name, text = _read_text(path)
    split = None
    columns = cells_expected = None
    x_name, y_name = "x", "y"
    xs, ys, x_text, y_text, lines = [], [], [], [], []
    for number, raw in enumerate(text.splitlines(), start=1):
        line = raw.split("#", 1)[0]
        if not line.strip():
            continue
        if split is None:
            split = _splitter(_detect_delimiter(line) if delimiter is False else delimiter)
        cells = split(line)
        if columns is None:
            # A header when a chosen cell is no number; a column asked for by name makes every
            # cell count, as the name may be any of them.
            named = not (x_choice.isdigit() and y_choice.isdigit())
            probe = cells if named else [cells[int(s) - 1] for s in (x_choice, y_choice) if 1 <= int(s) <= len(cells)]
            is_header = any(parse_number(cell, np.float64) is None for cell in probe)
            columns = (_column(x_choice, "--x", cells, is_header, name, number),
                       _column(y_choice, "--y", cells, is_header, name, number))
            cells_expected = len(cells)
            if is_header:
                x_name, y_name = (cells[c] or label for c, label in zip(columns, ("x", "y")))
                continue
        if len(cells) != cells_expected:
            # The column of the first cell too many, or of the first one missing.
            column = min(len(cells), cells_expected) + 1
            raise BadInput(f"{name}:{number}:{column}: ragged row: {len(cells)} cells, expected {cells_expected}")
        values = []
        for column in columns:
            value = parse_number(cells[column], dtype)
            if value is None:
                hint = " (the decimal point is '.')" if re.fullmatch(r"[+-]?\d+,\d+", cells[column]) else ""
                raise BadInput(f"{name}:{number}:{column + 1}: {cells[column]!r} is not a number{hint}")
            values.append(value)
        xs.append(values[0])
        ys.append(values[1])
        x_text.append(cells[columns[0]])
        y_text.append(cells[columns[1]])
        lines.append(number)
    if not xs:
        raise BadInput(f"{name}: no data")
    return Curve(name, x_name, y_name, np.array(xs, dtype=dtype), np.array(ys, dtype=dtype), (x_text, y_text),
                 lines, (columns[0] + 1, columns[1] + 1))


def need_points(curve, command, least):
    if len(curve) < least:
        raise BadInput(f"{curve.name}: too few points: {len(curve)}, {command} needs at least {least}")


def need_finite_y(curve, command):
    """The searches compare samples with levels and means, which a NaN or an infinity
    would spoil (a NaN first sample even ends the search for the maximum)."""
    bad = np.flatnonzero(~np.isfinite(curve.y))
    if len(bad):
        i = int(bad[0])
        raise BadInput(f"{curve.name}:{curve.lines[i]}:{curve.y_column}: {curve.y_text[i]!r} in y: "
                       f"{command} needs finite samples")


def need_spline_size(curve, command):
    if len(curve) > SPLINE_MAX:
        raise BadInput(f"{curve.name}: too many points for the spline: {len(curve)}, at most {SPLINE_MAX} "
                       f"({command})")


def float_level(curve, level):
    """The level as the library takes it, a float32; one beyond the float range would be
    an infinity there."""
    narrowed = np.float32(level)
    if math.isfinite(level) and not np.isfinite(narrowed):
        raise BadInput(f"{curve.name}: the level {short(level)} is beyond the float range "
                       f"(the library takes levels as float, at most {short(np.finfo(np.float32).max)})")
    return narrowed


def need_ascending(curve, command):
    """x strictly ascending, as the searches, splines and resampling read it."""
    x = curve.x
    for i in range(len(x)):
        where = f"{curve.name}:{curve.lines[i]}:{curve.x_column}"
        if math.isnan(x[i]):
            raise BadInput(f"{where}: x is NaN; {command} needs x strictly ascending")
        if i and x[i] <= x[i - 1]:
            verb = "repeats" if x[i] == x[i - 1] else "descends"
            raise BadInput(f"{where}: x {verb} ({curve.x_text[i]} after {curve.x_text[i - 1]}); "
                           f"{command} needs x strictly ascending")


# ---- Writing ------------------------------------------------------------------------------

def csv_text(header, rows):
    return "\n".join([",".join(header)] + [",".join(fmt(v) if not isinstance(v, str) else v for v in row)
                                           for row in rows]) + "\n"


class Quiet(Exception):
    """Standard output closed by its reader (qal ... | head): stop without a word."""


def _temporary_beside(target):
    folder = os.path.dirname(target)
    handle, temporary = tempfile.mkstemp(prefix=".qal-", suffix=".tmp", dir=folder)
    mask = os.umask(0)
    os.umask(mask)
    os.fchmod(handle, 0o666 & ~mask)  # as a file opened for writing would be, not mkstemp's 0600
    return os.fdopen(handle, "wb"), temporary


def _resolved(target):
    """The file behind the symbolic links of target. /dev/stdout on a pipe leads to a name
    that is no path (pipe:[...]): then the target itself, which opens all the same."""
    real = os.path.realpath(target)
    return target if not os.path.lexists(real) and os.path.exists(target) else real


def _replaceable(target):
    """A target that a renamed file may replace: a regular file, or nothing yet. A device
    (/dev/stdout), a FIFO or a socket must be written into, not replaced."""
    try:
        return stat.S_ISREG(os.stat(target).st_mode)
    except FileNotFoundError:
        return True


def write_outputs(args, text, figure):
    """The plot and the text, each first into a temporary file in its target's folder and
    renamed over the target only when both are complete: an error leaves nothing behind,
    and an existing target as it was. A symbolic link is written through, the temporary
    file beside the file it names; a target that is no regular file is written directly,
    after the temporary files, so that a failure there still replaces nothing."""
    targets = []
    if args.plot is not None:
        targets.append((args.plot, lambda handle: save_figure(figure, handle, args.plot)))
    if args.output is not None:
        targets.append((args.output, lambda handle: handle.write(text.encode())))
    staged = []
    target = None
    try:
        direct = []
        for target, write in targets:
            real = _resolved(target)
            if not _replaceable(real):
                direct.append((target, real, write))
                continue
            handle, temporary = _temporary_beside(real)
            staged.append((temporary, real))
            with handle:
                write(handle)
        for target, real, write in direct:
            with open(real, "wb") as handle:
                write(handle)
        for temporary, real in staged:
            target = real
            os.replace(temporary, real)
        staged = []
    except OSError as error:
        raise BadInput(f"{target}: {error.strerror or error}") from None
    finally:
        for temporary, _ in staged:
            try:
                os.unlink(temporary)
            except OSError:
                pass
    if args.output is None:
        write_stdout(text)


def write_stdout(text):
    """The text on standard output, unbuffered, so that a failure shows here and not as a
    traceback when Python flushes at exit."""
    data = text.encode()
    try:
        if sys.stdout is None:  # started with standard output closed (>&-)
            raise OSError(errno.EBADF, os.strerror(errno.EBADF))
        sys.stdout.flush()
        try:
            descriptor = sys.stdout.fileno()
        except (AttributeError, OSError, ValueError):  # a stream in memory, as a test may set
            sys.stdout.write(text)
            return
        view = memoryview(data)
        while view:
            view = view[os.write(descriptor, view):]
    except BrokenPipeError:
        raise Quiet() from None
    except OSError as error:
        raise BadInput(f"<stdout>: {error.strerror or error}") from None


# ---- Plots --------------------------------------------------------------------------------

def new_figure(curve, rows=1):
    import matplotlib
    matplotlib.use("Agg")
    matplotlib.rcParams["svg.hashsalt"] = "qal"  # ids in an SVG from the figure, not from chance
    from matplotlib import pyplot

    if rows == 1:
        figure, axes = pyplot.subplots(figsize=(8, 4.5), dpi=100)
        axes = [axes]
    else:
        figure, axes = pyplot.subplots(2, 1, figsize=(8, 4.5), dpi=100, sharex=True,
                                       gridspec_kw={"height_ratios": [3, 1]})
    for ax in axes:
        ax.grid(True, color="0.9", linewidth=0.6)
    axes[0].set_ylabel(curve.y_name)
    axes[-1].set_xlabel(curve.x_name)
    axes[0].set_title(os.path.basename(curve.name), fontsize=10)
    return figure, axes


def draw_curve(ax, curve, **style):
    options = {"color": "0.5", "linewidth": 0.9, "label": "data"}
    options.update(style)
    ax.plot(curve.x, curve.y, **options)


def save_figure(figure, handle, target):
    for ax in figure.axes:
        if ax.get_legend() is None and ax.get_legend_handles_labels()[0]:
            ax.legend(loc="best", fontsize=8, framealpha=0.85)
    figure.tight_layout()
    # No software entry or date, so that the bytes of the file depend on the figure alone.
    kind = plot_format(target)
    figure.savefig(handle, format=kind, dpi=100, metadata=PLOT_METADATA[kind])


# What the plot's suffix may be, and the entries that would make equal plots differ.
PLOT_METADATA = {"png": {"Software": None}, "svg": {"Creator": None, "Date": None},
                 "pdf": {"Creator": None, "Producer": None, "CreationDate": None}}


def plot_format(target):
    """The format named by the suffix; a device or FIFO without one (/dev/stdout) takes PNG."""
    suffix = os.path.splitext(target)[1][1:].lower()
    if not suffix and not _replaceable(_resolved(target)):
        return "png"
    return suffix


LABELS_MAX = 8  # vertex labels per kind; beyond, only the most prominent extrema get one


def mark_extrema(ax, hits, annotate=False):
    """Peaks and valleys at their samples, crosses at the vertices (small, under the
    triangles, so that both show where they nearly coincide) and, with annotate, the vertex
    x beside the most prominent ones, stacked where they would overlap and kept inside the
    axes."""
    thinned = False
    labels = []
    for kind, colour, marker, label in ((ExtremumKind.MAX, "tab:red", "^", "peak"),
                                        (ExtremumKind.MIN, "tab:blue", "v", "valley")):
        chosen = hits.kind == kind
        if not chosen.any():
            continue
        ax.plot(hits.x[chosen], hits.y[chosen], linestyle="none", marker=marker, color=colour, markersize=7,
                markeredgecolor="white", markeredgewidth=0.6, label=label, zorder=6)
        vx, vy = hits.vertex_x[chosen], hits.vertex_y[chosen]
        if annotate:
            # The most prominent first: the highest peaks, the lowest valleys.
            order = np.argsort(-vy if kind == ExtremumKind.MAX else vy, kind="stable")
            labels.append((kind, colour, [(float(vx[i]), float(vy[i])) for i in order]))
    # Each label takes the lowest of three rows (stacked away from the curve) that no label
    # within a tenth of the plot's width holds; one that finds none, or comes after the
    # LABELS_MAX most prominent, is left out. The y range then grows by what the rows need,
    # so that no label leaves the axes.
    width = ax.dataLim.width or 1.0
    reach = {ExtremumKind.MAX: 0, ExtremumKind.MIN: 0}
    for kind, colour, points in labels:
        placed = []  # (x, row)
        for vx, vy in points:
            taken = {row for px, row in placed if abs(vx - px) / width < 0.1}
            free = [row for row in range(3) if row not in taken]
            if not free or len(placed) == LABELS_MAX:
                thinned = True
                continue
            offset = 7 + 9 * free[0] if kind == ExtremumKind.MAX else -14 - 9 * free[0]
            ax.annotate(short(vx), (vx, vy), textcoords="offset points", xytext=(0, offset), ha="center",
                        fontsize=7, color=colour, annotation_clip=False)
            reach[kind] = max(reach[kind], abs(offset) + 8)
            placed.append((vx, free[0]))
    if hits.vertex_x.size:
        text = "vertex" if not annotate else (
            "vertex (label: its x, at the most prominent)" if thinned else "vertex (label: its x)")
        ax.plot(hits.vertex_x, hits.vertex_y, linestyle="none", marker="x", color="black", markersize=4,
                markeredgewidth=1.0, label=text, zorder=5)
    if not labels:
        return
    figure = ax.figure
    height = ax.get_position().height * figure.get_figheight() * 72 * 0.85  # points, after the layout
    low, high = ax.dataLim.y0, ax.dataLim.y1
    span = (high - low) or 1.0
    above = min(reach[ExtremumKind.MAX] / height, 0.4)
    below = min(reach[ExtremumKind.MIN] / height, 0.4)
    scale = span / (1.0 - above - below)
    ax.set_ylim(low - below * scale - 0.03 * span, high + above * scale + 0.03 * span)


# ---- Commands -----------------------------------------------------------------------------

def _extrema_rows(hits, which):
    rows = []
    for i in range(len(hits.index)):
        kind = "max" if hits.kind[i] == ExtremumKind.MAX else "min"
        if which in ("both", kind):
            rows.append((kind, int(hits.index[i]), float(hits.x[i]), float(hits.y[i]), float(hits.vertex_x[i]),
                         float(hits.vertex_y[i])))
    return rows


def run_extrema(args, curve):
    need_points(curve, "extrema", 3)
    need_ascending(curve, "extrema")
    need_finite_y(curve, "extrema")
    hits = qallib.find_extrema(curve.x, curve.y, args.window, args.min_height)
    rows = _extrema_rows(hits, args.kind)
    if not rows:
        raise NoResult("QAL_ERR_NOT_FOUND", "no extremum found")
    figure = None
    if args.plot:
        figure, (ax,) = new_figure(curve)
        draw_curve(ax, curve)
        chosen = np.array([args.kind in ("both", "max" if k == ExtremumKind.MAX else "min") for k in hits.kind])
        mark_extrema(ax, type(hits)(*(field[chosen] for field in hits)), annotate=True)
    return csv_text(["kind", "index", "x", "y", "vertex_x", "vertex_y"], rows), figure


def _level(args, curve):
    if args.level is not None:
        return args.level, f"level {fmt(args.level)}"
    peak = qallib.calc_abs_maximum(curve.x, curve.y)
    return peak.y * args.percent / 100.0, f"{fmt(args.percent)} % of the maximum {fmt(peak.y)}"


def _crossings(x, y, level):
    """Every crossing of the level, and the first from each end (those found)."""
    hits = qallib.find_level_crossings(x, y, level)
    ends = [(which, qallib.find_x_at_y_threshold(x, y, level, 1, direction, 2, none_if_not_found=True))
            for which, direction in (("first_from_start", 1), ("first_from_end", 2))]
    return hits, [(which, point) for which, point in ends if point is not None]


def run_crossings(args, curve):
    need_points(curve, "crossings", 3)
    need_ascending(curve, "crossings")
    need_finite_y(curve, "crossings")
    level, described = _level(args, curve)
    float_level(curve, level)
    hits, ends = _crossings(curve.x, curve.y, level)
    if not len(hits.index) and not ends:
        raise NoResult("QAL_ERR_NOT_FOUND", f"the curve does not reach the {described}")
    rows = [("crossing", int(i), float(cx), float(cy)) for i, cx, cy in zip(hits.index, hits.cross_x, hits.cross_y)]
    rows += [(which, "", point.x, point.y) for which, point in ends]
    figure = None
    if args.plot:
        figure, (ax,) = new_figure(curve)
        draw_curve(ax, curve)
        ax.axhline(float(np.float32(level)), color="tab:orange", linestyle="--", linewidth=0.9,
                   label=f"level {short(np.float32(level))}")
        if len(hits.index):
            ax.plot(hits.cross_x, hits.cross_y, linestyle="none", marker="o", markersize=4, color="tab:orange",
                    label="crossing")
        for (which, point), marker in zip(ends, ("$\\rightarrow$", "$\\leftarrow$")):
            ax.plot([point.x], [point.y], linestyle="none", marker=marker, markersize=11, color="black",
                    label=which.replace("_", " ") + f" ({short(point.x)})")
    return csv_text(["which", "index", "x", "level"], rows), figure


def run_smooth(args, curve):
    need_points(curve, "smooth", 2)
    smooth = qallib.filter_array(curve.y, SMOOTHERS[args.method], args.width, args.degree)
    figure = None
    if args.plot:
        figure, (ax,) = new_figure(curve)
        draw_curve(ax, curve)
        ax.plot(curve.x, smooth, color="tab:blue", linewidth=1.3, label=f"{args.method}, width {args.width}")
    return csv_text([curve.x_name, curve.y_name], zip(_values(curve.x), _values(smooth))), figure


def _values(array):
    return list(array) if array.dtype == np.float32 else array.tolist()


def run_derive(args, curve):
    least = 4 if args.method == "line-fit" and args.order == 2 else 2
    need_points(curve, "derive" + (" --method line-fit --order 2" if least == 4 else ""), least)
    need_ascending(curve, "derive")
    if args.method == "spline":
        need_spline_size(curve, "derive --method spline")
    deriv = qallib.deriv_array(curve.x, curve.y, DERIVATIVES[args.method], args.order, args.span)
    name = f"d{curve.y_name}/d{curve.x_name}" if args.order == 1 else f"d2{curve.y_name}/d{curve.x_name}2"
    figure = None
    if args.plot:
        figure, (top, bottom) = new_figure(curve, rows=2)
        draw_curve(top, curve, color="tab:blue")
        method = args.method + (f", span {args.span}" if args.method == "line-fit" else "")
        bottom.plot(curve.x, deriv, color="tab:green", linewidth=1.0,
                    label=("first" if args.order == 1 else "second") + f" derivative ({method})")
        bottom.axhline(0.0, color="0.4", linewidth=0.6)
        bottom.set_ylabel(name)
    return csv_text([curve.x_name, name], zip(_values(curve.x), _values(deriv))), figure


def _grid(args, curve):
    first, last = float(curve.x[0]), float(curve.x[-1])
    if args.step is not None:
        count = int(math.floor((last - first) / args.step * (1 + 1e-12))) + 1
        if count > MAX_GRID:
            raise BadInput(f"--step {fmt(args.step)}: {count} points, more than {MAX_GRID}")
        grid = first + args.step * np.arange(count, dtype=np.float64)
    else:
        grid = first + (last - first) * (np.arange(args.points, dtype=np.float64) / (args.points - 1))
        grid[-1] = last
    return grid.astype(curve.x.dtype)


def run_resample(args, curve):
    need_points(curve, "resample", 2)
    need_ascending(curve, "resample")
    if args.method == "spline":
        need_spline_size(curve, "resample --method spline")
    option = RESAMPLERS[args.method]
    grid = _grid(args, curve)
    # The library resamples strictly inside the data and refuses the end abscissae
    # themselves, so there the end samples stand.
    first, last = curve.x[0], curve.x[-1]
    inside = (grid > first) & (grid < last)
    result = np.where(grid == first, curve.y[0], curve.y[-1]).astype(curve.y.dtype)
    if inside.any():
        if curve.x.dtype == np.float32:
            result[inside] = qallib.interpol_float_arrays(curve.x, curve.y, grid[inside], option)
        else:
            table = qallib.splines(curve.x, curve.y) if option == InterpolOption.SPLINE else None
            result[inside] = [qallib.interpol(v, curve.x, curve.y, table, option) for v in grid[inside].tolist()]
    figure = None
    if args.plot:
        figure, (ax,) = new_figure(curve)
        ax.plot(curve.x, curve.y, linestyle="none", marker="o", markersize=3, color="0.6", label="samples",
                zorder=2)
        ax.plot(grid, result, color="tab:blue", linewidth=1.0, marker="." if len(grid) <= 200 else None,
                markersize=4, label=f"{args.method}, {len(grid)} points", zorder=3)
    return csv_text([curve.x_name, curve.y_name], zip(_values(grid), _values(result))), figure


def run_fit(args, curve):
    need_points(curve, "fit", 2)
    line = (qallib.lin_fit if args.method == "lin-fit" else qallib.linear_regression)(curve.x, curve.y)
    figure = None
    if args.plot:
        figure, (ax,) = new_figure(curve)
        ax.plot(curve.x, curve.y, linestyle="none", marker="o", markersize=3, color="0.4", label="samples")
        ends = np.array([np.nanmin(curve.x), np.nanmax(curve.x)], dtype=np.float64)
        ax.plot(ends, float(line.intercept) + float(line.slope) * ends, color="tab:red", linewidth=1.2,
                label=f"y = {short(line.intercept)} + {short(line.slope)} x")
    return csv_text(["intercept", "slope"], [(line.intercept, line.slope)]), figure


def integrate(curve, lower, upper, tolerance, max_stage):
    """Stages of the trapezoidal rule over the natural spline through the samples until two
    successive estimates agree to `tolerance` (relative), from stage 6 on; the estimate,
    the stages run and the last change."""
    table = qallib.splines(curve.x, curve.y)
    spline = qallib.cubic_spline_interpolation
    x, y = curve.x, curve.y

    def function(value):
        return spline(x, y, table, value)

    previous = None
    for stage in range(1, max_stage + 1):
        estimate = qallib.trapez(function, lower, upper, stage)
        change = math.inf if previous is None else abs(estimate - previous)
        if stage >= 6 and (change <= tolerance * abs(estimate) or estimate == previous):
            return estimate, stage, change, True
        previous = estimate
    return estimate, max_stage, change, False


def run_integrate(args, curve):
    need_points(curve, "integrate", 2)
    need_ascending(curve, "integrate")
    need_spline_size(curve, "integrate")
    first, last = float(curve.x[0]), float(curve.x[-1])
    lower = first if args.lower is None else args.lower
    upper = last if args.upper is None else args.upper
    for option, value in (("--from", lower), ("--to", upper)):
        if not first <= value <= last:
            raise BadInput(f"{option} {fmt(value)}: outside the data ({fmt(first)} to {fmt(last)})")
    estimate, stages, change, settled = integrate(curve, lower, upper, args.tolerance, args.max_stage)
    if not settled:
        print(f"qal: integrate: warning: not settled after {stages} stages (last change {fmt(change)})",
              file=sys.stderr)
    figure = None
    if args.plot:
        figure, (ax,) = new_figure(curve)
        draw_curve(ax, curve, color="tab:blue")
        inside = (curve.x >= lower) & (curve.x <= upper)
        ax.fill_between(curve.x, curve.y, where=inside, color="tab:blue", alpha=0.2,
                        label=f"integral {short(estimate)}")
    return csv_text(["from", "to", "integral", "stages", "change"], [(lower, upper, estimate, stages, change)]), figure


def run_analyze(args, curve):
    need_points(curve, "analyze", 3)
    need_ascending(curve, "analyze")
    need_finite_y(curve, "analyze")
    x, y = curve.x, curve.y
    smooth = qallib.filter_array(y, FilterKind.SAVITZKY_GOLAY, args.width, args.degree)
    raw_max, raw_min = qallib.calc_abs_maximum(x, y), qallib.calc_abs_minimum(x, y)
    top, bottom = qallib.calc_abs_maximum(x, smooth), qallib.calc_abs_minimum(x, smooth)
    hits = qallib.find_extrema(x, smooth, args.window, args.min_height)
    level = top.y * args.percent / 100.0
    float_level(curve, level)
    # The spline takes at most SPLINE_MAX samples; beyond, least-squares lines give the slope,
    # read at the extremum's sample as they give it at the samples only.
    by_spline = len(x) <= SPLINE_MAX
    if by_spline:
        table = qallib.splines(x, smooth)
        slope = qallib.deriv_array(x, smooth, DerivMethod.SPLINE, 1)
        slope_note = "of the spline through the smoothed curve, at the vertex"
    else:
        slope = qallib.deriv_array(x, smooth, DerivMethod.LINE_FIT, 1, LONG_SLOPE_SPAN)
        slope_note = (f"least-squares line over {LONG_SLOPE_SPAN} samples of the smoothed curve, at the sample; "
                      f"the spline takes at most {SPLINE_MAX} samples")
    crossings, ends = _crossings(x, smooth, level)
    band = qallib.calc_boundaries(smooth.astype(np.float32), 2, args.band, 2, args.band)
    outside = qallib.check_in_out_arrays(y.astype(np.float32), band.upper, band.lower)

    report = [f"{curve.name}: {len(x)} samples, {curve.x_name} from {short(x[0])} to {short(x[-1])}",
              f"  data:     highest {short(raw_max.y)} at {short(raw_max.x)}, lowest {short(raw_min.y)} "
              f"at {short(raw_min.x)}",
              f"  smoothed: highest {short(top.y)} at {short(top.x)}, lowest {short(bottom.y)} at {short(bottom.x)}"
              f"  (Savitzky-Golay, width {args.width}, degree {args.degree})",
              "",
              f"Extrema of the smoothed curve (window {args.window}, height at least {short(args.min_height)} %):"]
    if len(hits.index):
        report.append(f"  {'kind':<6}{'sample':>7}{'x':>12}{'y':>12}{'vertex x':>12}{'vertex y':>12}"
                      f"{'slope':>12}")
        for i in range(len(hits.index)):
            kind = "peak" if hits.kind[i] == ExtremumKind.MAX else "valley"
            at = (qallib.first_derivative(x, smooth, table, float(hits.vertex_x[i])) if by_spline
                  else slope[int(hits.index[i])])
            report.append(f"  {kind:<6}{int(hits.index[i]):>7}{short(hits.x[i]):>12}{short(hits.y[i]):>12}"
                          f"{short(hits.vertex_x[i]):>12}{short(hits.vertex_y[i]):>12}{short(at):>12}")
        report.append(f"  (slope: {slope_note})")
    else:
        report.append("  none")
    report += ["", f"{short(args.percent)} % of the smoothed maximum (level {short(np.float32(level))}):"]
    found = dict(ends)
    for which, end in (("first_from_start", "start"), ("first_from_end", "end")):
        report.append(f"  first reached from the {end} at {short(found[which].x)}" if which in found
                      else f"  not reached from the {end}")
    if len(found) == 2:
        report.append(f"  width between them {short(found['first_from_end'].x - found['first_from_start'].x)}"
                      f"  ({len(crossings.index)} crossings in all)")
    report += ["", f"Band of +-{short(args.band)} % around the smoothed curve: {outside} of {len(x)} samples "
                   f"outside it"]
    text = "\n".join(report) + "\n"

    figure = None
    if args.plot:
        figure, (ax, lower_ax) = new_figure(curve, rows=2)
        # The band as a fill between two thin edges, so that it reads under the line and the data.
        ax.fill_between(x, band.lower, band.upper, color="tab:cyan", alpha=0.3, linewidth=0,
                        label=f"±{short(args.band)} % band", zorder=1)
        for edge in (band.lower, band.upper):
            ax.plot(x, edge, color="tab:cyan", linewidth=0.6, zorder=2)
        # The samples as light points under the smoothed line: both stay visible.
        draw_curve(ax, curve, linestyle="none", marker=".", markersize=2, color="0.55", zorder=2)
        ax.plot(x, smooth, color="tab:blue", linewidth=1.2, label="smoothed", zorder=3)
        y32 = y.astype(np.float32)
        out = (y32 > band.upper) | (band.lower > y32)  # as the library counts them
        if out.any():
            ax.plot(x[out], y[out], linestyle="none", marker="o", markersize=4, markerfacecolor="none",
                    markeredgecolor="tab:purple", label=f"outside the band ({outside})", zorder=4)
        ax.axhline(float(np.float32(level)), color="tab:orange", linestyle="--", linewidth=0.8,
                   label=f"{short(args.percent)} % of maximum")
        label = "first from each end"
        for which, marker in (("first_from_start", "$\\rightarrow$"), ("first_from_end", "$\\leftarrow$")):
            if which in found:
                ax.plot([found[which].x], [found[which].y], linestyle="none", marker=marker, markersize=11,
                        color="tab:orange", label=label)
                label = None
        mark_extrema(ax, hits, annotate=True)  # last: it sizes the y range for its labels
        # Many entries: beside the plot, where they cover nothing.
        ax.legend(loc="upper left", bbox_to_anchor=(1.01, 1.0), fontsize=8, frameon=False)
        lower_ax.plot(x, slope, color="tab:green", linewidth=1.0,
                      label="spline" if by_spline else f"least-squares lines, {LONG_SLOPE_SPAN} samples")
        lower_ax.axhline(0.0, color="0.4", linewidth=0.6)
        for vx in hits.vertex_x:
            lower_ax.axvline(vx, color="0.6", linestyle=":", linewidth=0.8)
        lower_ax.set_ylabel("slope (smoothed)")
        lower_ax.legend(loc="upper left", bbox_to_anchor=(1.01, 1.0), fontsize=8, frameon=False)
    return text, figure


# ---- Command line -------------------------------------------------------------------------

SMOOTHERS = {"savitzky-golay": FilterKind.SAVITZKY_GOLAY, "average": FilterKind.AVERAGE,
             "triangle": FilterKind.TRIANGLE}
DERIVATIVES = {"spline": DerivMethod.SPLINE, "line-fit": DerivMethod.LINE_FIT}
RESAMPLERS = {"spline": InterpolOption.SPLINE, "segment": InterpolOption.SEGMENT,
              "located": InterpolOption.LOCATED, "local-line": InterpolOption.LOCAL_LINE,
              "line": InterpolOption.LINE, "log-line": InterpolOption.LOG_LINE,
              "log-segment": InterpolOption.LOG_SEGMENT}
MAX_GRID = 1_000_000
SPLINE_MAX = 10_000  # the library's natural spline takes at most this many samples
LONG_SLOPE_SPAN = 5  # analyze's slope over more samples than the spline takes

# The commands with no single-precision routine in the library.
DOUBLE_ONLY = {"extrema", "crossings", "integrate", "analyze"}


def _check_options(args):
    """Options out of range: refused before the file is read."""
    def bad(option, value, why):
        raise BadInput(f"{option} {fmt(value) if isinstance(value, float) else value}: {why}")

    if args.float and args.command in DOUBLE_ONLY:
        raise BadInput(f"{args.command}: --float: the library has no single-precision routine for this command")
    for option in ("min_height", "band", "percent", "level", "tolerance", "step", "lower", "upper"):
        value = getattr(args, option, None)
        if value is not None and not math.isfinite(value):
            bad("--" + option.replace("_", "-").replace("lower", "from").replace("upper", "to"), value,
                "must be a finite number")
    if args.command in ("smooth", "analyze"):
        widest = 99 if args.float else 299
        if args.width % 2 == 0 or not 3 <= args.width <= widest:
            bad("--width", args.width, f"must be odd, from 3 to {widest}")
        if (args.command == "analyze" or args.method == "savitzky-golay") and (
                args.degree not in (2, 4, 6) or args.degree >= args.width):
            bad("--degree", args.degree, f"must be 2, 4 or 6 and below --width {args.width}")
    if args.command in ("extrema", "analyze"):
        if args.window < 3:
            bad("--window", args.window, "must be at least 3")
        if args.min_height < 0:
            bad("--min-height", args.min_height, "must not be negative")
    if getattr(args, "percent", None) is not None and not 0 < args.percent <= 100:
        bad("--percent", args.percent, "must be above 0 and at most 100")
    if args.plot is not None and plot_format(args.plot) not in PLOT_METADATA:
        bad("--plot", args.plot, f"the suffix names no format of the plot ({', '.join(PLOT_METADATA)})")
    if args.plot is not None and args.output is not None and (
            _resolved(args.plot) == _resolved(args.output)):
        bad("--plot", args.plot, "the same file as -o")
    if args.command == "analyze" and args.band < 0:
        bad("--band", args.band, "must not be negative")
    if args.command == "derive" and args.method == "line-fit" and args.span < 2 * args.order:
        bad("--span", args.span, f"must be at least {2 * args.order} for --order {args.order}")
    if args.command == "resample":
        if args.points is not None and not 2 <= args.points <= MAX_GRID:
            bad("--points", args.points, f"must be from 2 to {MAX_GRID}")
        if args.step is not None and not args.step > 0:
            bad("--step", args.step, "must be above 0")
    if args.command == "integrate":
        if not 0 < args.tolerance < 1:
            bad("--tolerance", args.tolerance, "must be above 0 and below 1")
        if not 6 <= args.max_stage <= 32:
            bad("--max-stage", args.max_stage, "must be from 6 to 32")


class _Formatter(argparse.RawDescriptionHelpFormatter):
    def __init__(self, prog):
        super().__init__(prog, max_help_position=32)


class _Parser(argparse.ArgumentParser):
    def error(self, message):
        command = self.prog.split(" ", 1)[1] + ": " if " " in self.prog else ""
        raise BadInput(f"{command}{message} (see {self.prog} --help)")


def _common(parser, plot_help="draw the curve and what was found into this PNG file (.pdf, .svg: in that format)"):
    parser.add_argument("file", nargs="?", default=STDIN, metavar="FILE",
                        help="CSV file, or - for standard input (default: -)")
    parser.add_argument("--x", default="1", metavar="COL",
                        help="column of x: header name or 1-based index (default: 1)")
    parser.add_argument("--y", default="2", metavar="COL",
                        help="column of y: header name or 1-based index (default: 2)")
    parser.add_argument("--delimiter", "-t", type=_delimiter_option, default=False, metavar="D",
                        help="cell delimiter: one character, or tab, space (default: detected from the first "
                             "line: tab, then ;, then , where present, else runs of blanks)")
    parser.add_argument("--float", action="store_true",
                        help="read the numbers as float32 and run the single-precision routines")
    parser.add_argument("-o", "--output", metavar="FILE",
                        help="write the result there, not to standard output (through a symbolic link; a device or "
                             "FIFO is written into)")
    parser.add_argument("--plot", metavar="FILE.png", help=plot_help)


def _example(line):
    return "example:\n  " + line


def build_parser():
    parser = _Parser(prog="qal", formatter_class=_Formatter, description=__doc__.split("\n\n", 1)[0],
                     epilog=_example("qal analyze examples/data/sample_curve.csv --plot curve.png") + """

CSV input: a header line is optional and detected (the first line whose chosen cells are not
all numbers); # starts a comment; blank lines are skipped. Numbers are decimal with a '.'
whatever the locale, with an optional exponent; nan, inf and infinity are read in any case.
Exit status: 0 done, 1 a status from the library, 2 bad input or usage.""")
    parser.add_argument("--version", action="version", version=f"qal {__version__}")
    commands = parser.add_subparsers(dest="command", metavar="COMMAND", required=True, parser_class=_Parser)

    def command(name, summary, details, example, plot_help=None):
        description = textwrap.fill(f"{summary}. {details}", 88)
        sub = commands.add_parser(name, help=summary, description=description, epilog=_example(example),
                                  formatter_class=_Formatter)
        _common(sub, *([plot_help] if plot_help else []))
        return sub

    sub = command("extrema", "every peak and valley of the curve",
                  "A window of samples slides along x one sample at a time; where the parabola through the "
                  "means of its three thirds has a peak or valley that stands out enough, the window's extreme "
                  "sample and the parabola's vertex are reported, each extreme sample once. Columns: "
                  "kind (max, min), index (of the sample, from 0), x, y (the sample), vertex_x, vertex_y. "
                  "Exit status 1 when there is none. Needs x strictly ascending, finite y and 3 samples.",
                  "qal extrema --window 30 --min-height 5 curve.csv")
    sub.add_argument("--window", type=int, default=30,
                     help="samples per window, rounded down to a multiple of 3; above the number of samples it "
                          "becomes half of them (default: 30)")
    sub.add_argument("--min-height", type=float, default=5.0, metavar="PERCENT",
                     help="how far the window's middle third must stand out, in %% of its mean (default: 5)")
    sub.add_argument("--kind", choices=("both", "max", "min"), default="both",
                     help="peaks (max), valleys (min) or both (default: both)")

    sub = command("crossings", "where the curve reaches a level",
                  "Rows 'crossing': every pair of neighbouring samples that reaches the level, with index the "
                  "pair's first sample and x where the line through the pair meets the level (a sample on the "
                  "level makes both its pairs count; the last pair is not examined); then rows "
                  "'first_from_start' and 'first_from_end': the first crossing met scanning from either end. "
                  "Columns: which, index, x, level (the level as the library uses it, rounded to float32). "
                  "Exit status 1 when the curve never reaches the level. Needs x strictly ascending, finite y "
                  "and 3 samples.",
                  "qal crossings --percent 50 curve.csv      # the half-maximum points")
    level = sub.add_mutually_exclusive_group()
    level.add_argument("--level", type=float, help="an absolute level")
    level.add_argument("--percent", type=float, default=50.0,
                       help="the level as a percentage of the highest sample, above 0 and at most 100 "
                            "(default: 50)")

    sub = command("smooth", "the curve smoothed by a moving filter",
                  "The samples count as equally spaced (x is not read). At the ends the weights of the taps "
                  "beyond the data are left out and the rest scaled up, so nothing is mirrored or padded. "
                  "Columns: x, y smoothed. Needs 2 samples.",
                  "qal smooth --width 21 --degree 2 curve.csv > smooth.csv")
    sub.add_argument("--method", choices=tuple(SMOOTHERS), default="savitzky-golay",
                     help="least-squares polynomial, equal weights or triangular weights "
                          "(default: savitzky-golay)")
    sub.add_argument("--width", type=int, default=11,
                     help="taps, odd, 3 to 299 (3 to 99 with --float) (default: 11)")
    sub.add_argument("--degree", type=int, default=2,
                     help="polynomial degree of savitzky-golay: 2, 4 or 6, below --width (default: 2)")

    sub = command("derive", "the derivative curve",
                  "Columns: x, and the first (dy/dx) or second derivative at every sample. Needs x strictly "
                  "ascending and 2 samples (line-fit --order 2: 4).",
                  "qal derive --method line-fit --span 7 curve.csv")
    sub.add_argument("--method", choices=tuple(DERIVATIVES), default="spline",
                     help="the natural cubic spline through the samples (at most 10000), or least-squares lines "
                          "over --span samples around each (default: spline)")
    sub.add_argument("--order", type=int, choices=(1, 2), default=1,
                     help="first or second derivative; line-fit's second is the slope over the samples after "
                          "minus that over the samples before, not divided by a distance (default: 1)")
    sub.add_argument("--span", type=int, default=5,
                     help="line-fit: span // 2 samples on each side; at least 2 (4 for --order 2) (default: 5)")

    sub = command("resample", "the curve at evenly spaced x",
                  "From the first sample's x to the last one's. The library resamples strictly inside the "
                  "data, so at those two ends the end samples stand. Columns: x, y. Needs x strictly "
                  "ascending and 2 samples.",
                  "qal resample --points 1001 --method spline curve.csv")
    grid = sub.add_mutually_exclusive_group()
    grid.add_argument("--points", type=int, help="number of points, 2 or more (default: as many as the samples)")
    grid.add_argument("--step", type=float, help="distance of the points, from the first sample on")
    sub.add_argument("--method", choices=tuple(RESAMPLERS), default="spline",
                     help="spline: natural cubic spline (at most 10000 samples); segment: the line through the "
                          "sample that a bisection locates (the one before x, or one off) and the next; located: that "
                          "sample's y; local-line: least-squares line through the 6, 4 or 2 samples there; "
                          "line: one least-squares line through all; log-line, log-segment: those in log-log "
                          "coordinates (default: spline)")

    sub = command("fit", "the least-squares line y = intercept + slope x",
                  "Columns: intercept, slope. Needs 2 samples; equal x everywhere gives nan.",
                  "qal fit --plot line.png curve.csv",
                  plot_help="draw the samples and the line into this PNG file (.pdf, .svg: in that format)")
    sub.add_argument("--method", choices=("lin-fit", "regression"), default="lin-fit",
                     help="two passes about the mean x, or one pass over raw sums (default: lin-fit)")

    sub = command("integrate", "the integral under the curve",
                  "Of the natural cubic spline through the samples: stages of the trapezoidal rule on it, each "
                  "halving the step, until two successive stages agree to --tolerance. Columns: from, to, "
                  "integral, stages (run), change (between the last two). Needs x strictly ascending and 2 "
                  "samples, at most 10000 (the spline's limit).",
                  "qal integrate --from 20 --to 60 curve.csv")
    sub.add_argument("--from", dest="lower", type=float, help="lower limit, inside the data (default: the first x)")
    sub.add_argument("--to", dest="upper", type=float, help="upper limit, inside the data (default: the last x)")
    sub.add_argument("--tolerance", type=float, default=1e-10,
                     help="relative change of the estimate that counts as settled, from stage 6 on "
                          "(default: 1e-10)")
    sub.add_argument("--max-stage", type=int, default=22,
                     help="stage to stop at, settled or not (then a warning); stage k evaluates 2**(k-2) new "
                          "points (default: 22)")

    sub = command("analyze", "a report on the curve",
                  "The curve smoothed (Savitzky-Golay), the extrema of the smoothed curve with their vertices "
                  "and the slope of its spline there, where it first reaches a level (half its maximum) from "
                  "either end, and how many samples leave a band around it. Numbers rounded to 6 digits; the "
                  "other commands give them in full. Over 10000 samples, the spline's limit, the slope comes from "
                  "least-squares lines over 5 samples, read at the extremum's sample (the report says so). Needs x "
                  "strictly ascending, finite y and 3 samples.",
                  "qal analyze examples/data/sample_curve.csv --plot curve.png",
                  plot_help="draw the curve, the smoothed curve, the band, extrema, crossings and the slope "
                            "(.pdf, .svg: in that format)")
    sub.add_argument("--width", type=int, default=21, help="smoothing taps, odd, 3 to 299 (default: 21)")
    sub.add_argument("--degree", type=int, default=2, help="smoothing degree: 2, 4 or 6 (default: 2)")
    sub.add_argument("--window", type=int, default=30, help="extremum window, as for extrema (default: 30)")
    sub.add_argument("--min-height", type=float, default=5.0, metavar="PERCENT",
                     help="extremum height, as for extrema (default: 5)")
    sub.add_argument("--percent", type=float, default=50.0,
                     help="level, %% of the smoothed maximum, above 0 and at most 100 (default: 50)")
    sub.add_argument("--band", type=float, default=5.0, metavar="PERCENT",
                     help="half width of the band around the smoothed curve, %% of it (default: 5)")
    return parser


RUNNERS = {"extrema": run_extrema, "crossings": run_crossings, "smooth": run_smooth, "derive": run_derive,
           "resample": run_resample, "fit": run_fit, "integrate": run_integrate, "analyze": run_analyze}


def main(argv=None):
    if hasattr(signal, "SIGPIPE"):
        signal.signal(signal.SIGPIPE, signal.SIG_DFL)  # qal ... | head ends quietly, as other tools do
    command = "qal"
    try:
        args = build_parser().parse_args(argv)
        command = args.command
        _check_options(args)
        curve = read_curve(args.file, args.x, args.y, args.delimiter, np.float32 if args.float else np.float64)
        if args.command == "resample" and args.points is None and args.step is None:
            args.points = max(len(curve), 2)
        with np.errstate(all="ignore"):
            text, figure = RUNNERS[command](args, curve)
        write_outputs(args, text, figure)
    except BadInput as error:
        print(f"qal: {error}", file=sys.stderr)
        return 2
    except QalError as error:
        print(f"qal: {command}: {error.name}: {error.function}: {error.meaning}", file=sys.stderr)
        return 1
    except NoResult as error:
        print(f"qal: {command}: {error}", file=sys.stderr)
        return 1
    except Quiet:
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
