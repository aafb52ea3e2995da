#!/usr/bin/env python3
"""Checks the folders' include rules from the sources themselves: a form
folder includes the kit, the core and itself, never another form folder, the
frame, the composition root, the script runner or the view; the kit stays
below the forms and the numeric core; the core includes only the core.
Prints each breach as FILE:LINE and exits 1 when there is one."""

import pathlib
import re
import sys

SRC = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parents[2] / "src")
CORE = {"common", "platform", "formula", "fourier", "wavelet", "analysis", "wavefile"}
FORMS = {"form1d", "form2d", "sound", "timefreq", "workshop", "imageproc", "print"}
ALLOWED = {"kit": {"kit", "platform", "common"}}
for core in CORE:
    ALLOWED[core] = CORE
for form in FORMS:
    ALLOWED[form] = CORE | {"kit", form}

INCLUDE = re.compile(r'^\s*#\s*include\s+"([^/"]+)/')
breaches = []
for folder, allowed in sorted(ALLOWED.items()):
    for path in sorted((SRC / folder).rglob("*")):
        if path.suffix not in (".h", ".cpp"):
            continue
        for number, line in enumerate(path.read_text(encoding="utf-8", errors="replace").splitlines(), 1):
            m = INCLUDE.match(line)
            if m and m.group(1) not in allowed:
                breaches.append(f"{path.relative_to(SRC)}:{number}: {folder} may not include {m.group(1)}/")
for b in breaches:
    print(b)
print(f"{len(list(ALLOWED))} folders checked, {len(breaches)} breaches")
sys.exit(1 if breaches else 0)
