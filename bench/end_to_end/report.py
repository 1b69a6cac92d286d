"""Tables in Markdown, and their places in the documents: what stands between a pair of marks is replaced."""

import statistics
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
DOCUMENTS = [ROOT / "docs/performance.md", ROOT / "README.md"]


def table(heads, rows):
    """The first column to the left, the others to the right."""
    lines = ["| " + " | ".join(heads) + " |", "| --- |" + " ---: |" * (len(heads) - 1)]
    return "\n".join(lines + ["| " + " | ".join(map(str, row)) + " |" for row in rows])


def seconds(value):
    return f"{value:.0f} s" if value >= 100 else f"{value:.3g} s" if value >= 1 else f"{value * 1000:.3g} ms"


def wall(costs):
    """Of runs that may all have failed."""
    return seconds(statistics.median(cost.wall for cost in costs)) if costs else "–"


def mebibytes(value):
    return f"{value / 2**20:.{0 if value >= 10 * 2**20 else 1}f} MiB"


def percent(value):
    return f"{value * 100:.1f} %"


def replaced(text, name, content):
    """`text` with what stands between the marks of `name` replaced; None if they are not there."""
    opening, closing = f"<!-- bench/run {name} -->\n", f"<!-- end of {name} -->\n"
    before, found, rest = text.partition(opening)
    old, found_too, after = rest.partition(closing)
    return before + opening + content.rstrip("\n") + "\n" + closing + after if found and found_too else None


def write(name, content):
    """Puts a block in its place; False if no document has one for it."""
    for document in DOCUMENTS:
        text = replaced(document.read_text(), name, content)
        if text is not None:
            document.write_text(text)
            return True
    return False
