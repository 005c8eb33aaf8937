"""The reference pages: each docs/src/<page>.md with its {{reference ...}} markers replaced by
the declarations and comments of the public headers, section by section.

A marker names a section of a header by its banner (`// ---- Lines: linear regression ----`
in qal.h, `// ---- Vector statistics` inside k_Qal); what follows the banner up to the next
one becomes the section: its opening comment as a paragraph, its named constants as a table,
each declaration with the comment above it. The text is the header's own, so the page says
what the header says. {{table ...}} markers are left for tables.py.
"""

from __future__ import annotations

import pathlib
import re

PAGES = ["README", "frame", "arith", "solvers", "lines", "interpolation", "smoothing", "curves",
         "classes"]

_BANNER = re.compile(r"^\s*// ---- (.*?)(?: -+)?\s*$")
_CONSTANT = re.compile(r"^inline constexpr int (\w+) = (-?\d+);\s*// (.*)$")
_NAME = re.compile(r"(~?\w+|operator\(\)|operator=)\s*\(")


class Entry:
    """One declaration (or several sharing one comment) with its comment."""

    def __init__(self, comment: list[str], declarations: list[str], kind: str = "function", name: str = ""):
        self.comment = comment
        self.declarations = declarations
        self.kind = kind
        self.name = name


class Section:
    def __init__(self, title: str):
        self.title = title
        self.intro: list[tuple[int, list[str]]] = []  # (entries before it, comment) of blocks not on a declaration
        self.constants: list[tuple[str, str, str]] = []
        self.entries: list[Entry] = []


def _comment_text(line: str) -> str | None:
    stripped = line.strip()
    if stripped.startswith("//"):
        text = stripped[2:]
        return (text[1:] if text.startswith(" ") else text).rstrip()
    return None


def _code_part(line: str) -> str:
    return re.sub(r"\s*//.*$", "", line).rstrip()


def parse_header(path: pathlib.Path, first_section: str) -> dict[str, Section]:
    """Sections of a header by banner title; text before the first banner goes under
    first_section. A class or struct without banners inside becomes one entry holding its
    whole body; the banners inside k_Qal open sections whose entries are its members."""
    lines = path.read_text(encoding="utf-8").splitlines()
    sections: dict[str, Section] = {}
    current = sections.setdefault(first_section, Section(first_section))
    comment: list[str] = []
    pending: Entry | None = None
    in_banner_intro = False
    i = 0
    while i < len(lines):
        line = lines[i].rstrip()
        stripped = line.strip()
        i += 1
        banner = _BANNER.match(line)
        if banner:
            if comment:
                current.intro.append((len(current.entries), comment))
            text = banner.group(1)
            dashed = line.endswith("-")
            current = sections.setdefault(text, Section(text))
            comment, pending = [], None
            if not dashed:  # a banner that goes on as a sentence: the sentence is the intro
                comment = [text]
                in_banner_intro = not text.endswith(".")
                if not in_banner_intro and comment:
                    current.intro.append((len(current.entries), comment))
                    comment = []
            continue
        text = _comment_text(line)
        if text is not None:
            comment.append(text)
            if in_banner_intro and text.endswith("."):
                current.intro.append((len(current.entries), comment))
                comment, in_banner_intro = [], False
            pending = None
            continue
        constant = _CONSTANT.match(stripped)
        if constant:
            current.constants.append(constant.groups())
            comment, pending = [], None
            continue
        if not stripped:
            if comment:
                current.intro.append((len(current.entries), comment))
            comment, pending = [], None
            continue
        if stripped.startswith(("#", "public:", "protected:", "private:", "}", "namespace", "extern template")):
            if comment and stripped.startswith(("#", "namespace")):
                current.intro.append((len(current.entries), comment))
            if not stripped.startswith(("public:", "protected:", "private:")):
                comment = []
            pending = None
            continue
        block = [line]
        while not _code_part(block[-1]).endswith((";", "{")):
            block.append(lines[i].rstrip())
            i += 1
        if _code_part(block[-1]).endswith("{") and re.match(r"\s*(template|class|struct)\b", block[0]):
            body = block[:]
            depth = 1
            while depth:
                body.append(lines[i].rstrip())
                depth += lines[i].count("{") - lines[i].count("}")
                i += 1
            if any(_BANNER.match(b) for b in body):  # k_Qal: its members are read one by one
                name = re.search(r"class (?:QAL_API )?(\w+)", " ".join(block)).group(1)
                current.entries.append(Entry(comment, [" ".join(s.strip() for s in block) + " ... };"], kind="class", name=name))
                lines[i:i] = body[len(block):]
            else:
                name = re.search(r"(?:class|struct) (?:QAL_API )?(\w+)\s*\{", " ".join(body)).group(1)
                current.entries.append(Entry(comment, _dedent(body), kind="class", name=name))
            comment, pending = [], None
            continue
        pending = _add_declaration(current, comment, block, pending)
        comment = []
    if comment:
        current.intro.append((len(current.entries), comment))
    return sections


def _dedent(body: list[str]) -> list[str]:
    return [b for b in body]


def _add_declaration(section: Section, comment: list[str], lines: list[str], pending: Entry | None) -> Entry:
    code = [_code_part(l) for l in lines]
    text = re.sub(r"\s+", " ", " ".join(c.strip() for c in code)).replace("( ", "(").replace(" )", ")")
    text = text.replace("QAL_API ", "")
    if len(lines) == 1 and "//" in lines[0]:  # a member with its comment on the same line
        text += "  // " + lines[0].split("//", 1)[1].strip()
    if pending is not None and not comment:
        pending.declarations.append(text)
        return pending
    entry = Entry(comment, [text])
    section.entries.append(entry)
    return entry


# ---- Python names --------------------------------------------------------------------------

def _key(name: str) -> str:
    return re.sub(r"^qal", "", name.lower().replace("_", ""))


def python_names() -> tuple[dict[str, str], set[str]]:
    import qallib

    flat = {_key(name): name for name in qallib.__all__ if callable(getattr(qallib, name))}
    methods = {_key(name): name for name in dir(qallib.k_qal) if not name.startswith("_")}
    return flat, methods


# What stands in Python for the functions without a Python form of their own.
NO_PYTHON_FORM = {
    "InitQalLibExtDLL": "none; the call has no effect on this platform",
    "QAL_NewMatrix": "none; a 2-D float64 array is the raw matrix",
    "QAL_DeleteMatrix": "none; a 2-D float64 array is the raw matrix",
    "QAL_Mt_Swap": "none; `a, b = b, a`",
    "QAL_F2D": "none; `array.astype(numpy.float64)` widens exactly as it does",
    "QAL_D2F": "none; `array.astype(numpy.float32)` rounds as it does",
    "QAL_ReleaseArray": "none; the array of `calc_log` is released with its NumPy array",
}


def python_name(cpp: str, names) -> str | None:
    flat, methods = names
    if cpp.startswith("k_Qal::"):
        method = methods.get(_key(cpp.split("::")[1]))
        return f"k_qal.{method}" if method else None
    key = _key(cpp.split("::")[-1])
    if key in flat:
        return flat[key]
    if "float" in key and key.replace("float", "") in flat:
        return flat[key.replace("float", "")] + " (float32)"
    return None


# ---- Markdown ------------------------------------------------------------------------------

_IDENT = re.compile(r"\b(qal_version\(\)|QAL_\w+(?:\(\))?|k_Qal(?:\w|::)*|t_Qal\w+(?:<\w+>)?|qal::\w+|std::\w+)")


def prose(words: str) -> str:
    """A header comment as Markdown: identifiers in code spans, the rest escaped where
    Markdown would read it as emphasis."""
    parts = re.split(r"(`[^`]*`)", words)
    out = []
    for part in parts:
        if part.startswith("`"):
            out.append(part)
            continue
        part = part.replace("\\", "\\\\").replace("*", "\\*")
        part = re.sub(r"(?<!\w)_|_(?!\w)", r"\\_", part)
        part = _IDENT.sub(lambda m: "`" + m.group(1).replace("\\_", "_") + "`", part)
        part = re.sub(r"(?<!\w)<(?=[A-Za-z/!?])", "&lt;", part)
        out.append(part)
    return "".join(out)


def _paragraphs(comment: list[str]) -> list[str]:
    """Joins comment lines into paragraphs; an empty comment line or an indented example
    (code) keeps its own block."""
    blocks: list[str] = []
    code: list[str] = []
    words: list[str] = []
    for line in comment:
        if line.startswith("  ") or (code and line and not line[0].isupper() and "(" in line):
            if words:
                blocks.append(prose(" ".join(words)))
                words = []
            code.append(line)
            continue
        if code:
            blocks.append("```cpp\n" + "\n".join(c[2:] if c.startswith("  ") else c for c in code) + "\n```")
            code = []
        if not line:
            if words:
                blocks.append(prose(" ".join(words)))
                words = []
            continue
        words.append(line)
    if code:
        blocks.append("```cpp\n" + "\n".join(c[2:] if c.startswith("  ") else c for c in code) + "\n```")
    if words:
        blocks.append(prose(" ".join(words)))
    return blocks


def _entry_name(declaration: str, owner: str | None) -> str:
    head = declaration.split("(")[0] if "operator" not in declaration else declaration
    match = _NAME.search(declaration)
    name = match.group(1) if match else head.split()[-1]
    return f"{owner}::{name}" if owner else name


def render_section(section: Section, names, owner: str | None = None, level: str = "###") -> str:
    out: list[str] = []
    for position, block in section.intro:
        if position == 0:
            out.extend(_paragraphs(block))
    if section.constants:
        out.append("| Name | Value | Python | Meaning |\n|---|---|---|---|\n" + "\n".join(
            f"| `{name}` | {value} | `{name[4:]}` | {prose(meaning)} |" for name, value, meaning in section.constants))
    for index, entry in enumerate(section.entries):
        for position, block in section.intro:
            if position == index and index > 0:
                out.extend(_paragraphs(block))
        if entry.kind == "class":
            out.append(f"{level} `{owner + '::' if owner else ''}{entry.name}`")
            out.extend(_paragraphs(entry.comment))
            out.append("```cpp\n" + "\n".join(entry.declarations) + "\n```")
            continue
        cpp_names: list[str] = []
        for declaration in entry.declarations:
            name = _entry_name(declaration, owner)
            if name not in cpp_names:
                cpp_names.append(name)
        if not entry.comment and all(n.split("::")[-1] in ("k_Qal", "operator=") for n in cpp_names):
            continue  # the class's defaulted members say nothing of their own
        title = ", ".join(f"`{name}`" for name in cpp_names)
        py = []
        for name in cpp_names:
            found = python_name(name, names)
            if found and found not in py:
                py.append(found)
        python = "Python: " + ", ".join(f"`qallib.{p.replace(' (float32)', '')}`" + (" (float32 arrays)" if "(float32)" in p else "")
                                        for p in py) if py else "Python: " + NO_PYTHON_FORM.get(cpp_names[0], "none")
        out.append(f"{level} {title}\n\n```cpp\n" + "\n".join(entry.declarations) + "\n```\n\n" + python)
        out.extend(_paragraphs(entry.comment))
    for position, block in section.intro:
        if position == len(section.entries) and position > 0:
            out.extend(_paragraphs(block))
    return "\n\n".join(out)


def sections(repo: pathlib.Path) -> dict[str, Section]:
    include = repo / "include" / "qal"
    found: dict[str, Section] = {}
    found.update(parse_header(include / "qal.h", "QalLib"))
    found.update({f"classes: {k}": v for k, v in parse_header(include / "qal_classes.h", "Class side").items()})
    found.update({f"curves: {k}": v for k, v in parse_header(include / "qal_curves.h", "Whole-curve helpers").items()})
    return found


_MARKER = re.compile(r"^\{\{reference (.+?)(?: as (\S+))?\}\}$", re.M)
_OPTIONAL = re.compile(r"^\{\{optional-page (\S+) \| (.+)\}\}\n", re.M)


def _section(found: dict[str, Section], title: str) -> Section:
    """The section of that title, or the one whose banner sentence begins with it."""
    if title in found:
        return found[title]
    matches = [key for key in found if key.startswith(title)]
    if len(matches) != 1:
        raise KeyError(f"no single header section named {title!r}; known: {sorted(found)}")
    return found[matches[0]]


def render_page(text: str, found: dict[str, Section], names, docs: pathlib.Path) -> str:
    def replace(match: re.Match) -> str:
        return render_section(_section(found, match.group(1)), names, match.group(2))

    def optional(match: re.Match) -> str:  # a row of the index for a page that may not exist yet
        page = match.group(1)
        return f"| [{page}]({page}) | {match.group(2)} |\n" if (docs / page).exists() else ""

    return _MARKER.sub(replace, _OPTIONAL.sub(optional, text))


def build(out_dir: pathlib.Path, repo: pathlib.Path) -> list[pathlib.Path]:
    found = sections(repo)
    names = python_names()
    written = []
    for page in PAGES:
        source = repo / "docs" / "src" / f"{page}.md"
        text = render_page(source.read_text(encoding="utf-8"), found, names, repo / "docs")
        target = out_dir / f"{page}.md"
        target.write_text(text.rstrip("\n") + "\n", encoding="utf-8")
        written.append(target)
    return written
