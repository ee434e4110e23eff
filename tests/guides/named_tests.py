#!/usr/bin/env python3
"""The tests that docs/security.md names exist:  named_tests.py PAGE CTEST BUILD-TREE

Behind "Shown by" a name in backticks is a test, for `scripts/test -R NAME`, a fuzz target or a script."""
import pathlib
import re
import subprocess
import sys

page, ctest, tree = sys.argv[1:]
root = pathlib.Path(page).resolve().parent.parent
listed = subprocess.run([ctest, "--test-dir", tree, "-N"], capture_output=True, text=True, check=True).stdout
tests = re.findall(r"Test +#\d+: (.*)", listed)
named, faults = 0, []
for shown in re.findall(r"\*Shown by\*(.*?)\n\n", pathlib.Path(page).read_text(encoding="utf-8"), re.DOTALL):
    for name in re.findall(r"`([\w./ -]+)`", shown):
        named += 1
        if "/" in name:
            found = (root / name.split()[0]).exists()
        else:
            found = name.startswith("-") or (root / "fuzz" / f"{name}.cpp").exists() or any(name in test for test in tests)
        if not found:
            faults.append(f"there is no {name}")
print("\n".join([*faults, f"{named} names"]))
sys.exit(1 if faults or named < 20 else 0)
