#!/usr/bin/env python3
"""Prints the commands that a page shows, to be run by a shell, and fails if other code on it is not that of a project here:

    page.py ../../docs/install.md
"""
import re
import sys
from pathlib import Path

page = Path(sys.argv[1]).read_text(encoding="utf-8")
here = Path(__file__).resolve().parent
projects = [path.read_text(encoding="utf-8") for path in here.glob("*/*") if path.is_file()]

blocks = re.findall(r"^```(\w*)\n(.*?)^```$", page, re.M | re.S)
commands = [line[2:] for language, text in blocks if language == "console" for line in text.splitlines() if line[:2] == "$ "]
unknown = [text for language, text in blocks if language != "console" and not any(text in project for project in projects)]

if unknown:
    sys.exit("on the page, but in no project of tests/consumers:\n" + "\n".join(unknown))
if not commands:
    sys.exit("no command was found on the page")
print("\n".join(commands))
