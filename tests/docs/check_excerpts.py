#!/usr/bin/env python3
"""Checks that the excerpts of files quoted in the user guide match the files.

    check_excerpts.py ROOT

Every Markdown page under ROOT/docs and ROOT/README.md is read. A quoted
excerpt is a fenced block (```) right after a line

    <!-- excerpt: PATH -->

with PATH relative to ROOT. The block's lines must equal the whole file or a
run of consecutive lines of it, exactly (trailing blanks included). A block
without that line, next to a paragraph that names a file of ROOT/examples,
is taken for a quote that lost its marker when at least half of its lines
are lines of that file. Each problem is printed as
PAGE:LINE: reason; the exit status is 1 when there is any.
"""

import os
import re
import sys

MARKER = re.compile(r"^<!-- excerpt: (\S+) -->$")
FENCE = re.compile(r"^(```+)")
EXAMPLE = re.compile(r"\bexamples/[A-Za-z0-9_.-]+\.[A-Za-z0-9]+")


def pages(root):
    found = []
    readme = os.path.join(root, "README.md")
    if os.path.isfile(readme):
        found.append(readme)
    for folder, _, names in os.walk(os.path.join(root, "docs")):
        found.extend(os.path.join(folder, n) for n in names if n.endswith(".md"))
    return sorted(found)


def read_lines(path):
    with open(path, encoding="utf-8", newline="") as f:
        text = f.read()
    lines = text.split("\n")
    if lines and lines[-1] == "":
        lines.pop()
    return [line[:-1] if line.endswith("\r") else line for line in lines]


def blocks(lines):
    """(first line, last line, body) of each fenced block, 0-based."""
    out = []
    k = 0
    while k < len(lines):
        m = FENCE.match(lines[k])
        if not m:
            k += 1
            continue
        fence = m.group(1)
        end = k + 1
        while end < len(lines) and not lines[end].startswith(fence):
            end += 1
        out.append((k, end, lines[k + 1:end]))
        k = end + 1
    return out


def is_run(part, whole):
    if not part:
        return False
    n = len(part)
    return any(whole[s:s + n] == part for s in range(len(whole) - n + 1))


def paragraph(lines, k, step):
    """The lines of the paragraph next to line k, going by step (-1 or 1)."""
    out = []
    k += step
    while 0 <= k < len(lines) and (not lines[k].strip() or MARKER.match(lines[k])):
        k += step
    while 0 <= k < len(lines) and lines[k].strip() and not FENCE.match(lines[k]):
        out.append(lines[k])
        k += step
    return out


def check_page(root, page):
    problems = []
    lines = read_lines(page)
    name = os.path.relpath(page, root)
    fenced = blocks(lines)
    starts = {first for first, _, _ in fenced}
    for k, line in enumerate(lines):
        m = MARKER.match(line)
        if m and k + 1 not in starts:
            problems.append((k + 1, "the excerpt marker is not followed by a fenced block"))
    for first, last, body in fenced:
        m = MARKER.match(lines[first - 1]) if first > 0 else None
        if m:
            quoted = os.path.join(root, m.group(1))
            if last >= len(lines):
                problems.append((first + 1, "the excerpt's block is not closed"))
            elif not os.path.isfile(quoted):
                problems.append((first + 1, f"{m.group(1)} does not exist"))
            elif not is_run(body, read_lines(quoted)):
                problems.append((first + 1, f"the excerpt differs from {m.group(1)}"))
            continue
        near = paragraph(lines, first, -1) + paragraph(lines, last, 1)
        for path in EXAMPLE.findall(" ".join(near)):
            quoted = os.path.join(root, path)
            if not os.path.isfile(quoted):
                continue
            known = set(read_lines(quoted))
            if body and 2 * sum(line in known for line in body) >= len(body):
                problems.append((first + 1, f"a block quoting {path} has no excerpt marker"))
                break
    return [f"{name}:{line}: {reason}" for line, reason in sorted(problems)]


def main(argv):
    if len(argv) != 2:
        print(__doc__, file=sys.stderr)
        return 2
    root = os.path.abspath(argv[1])
    problems = []
    for page in pages(root):
        problems.extend(check_page(root, page))
    for p in problems:
        print(p)
    print(f"{len(problems)} problems")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
