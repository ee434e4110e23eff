#!/usr/bin/env python3
"""Takes the code out of a page:  extract.py PAGE CODE TEXT

All C++ blocks of PAGE go to CODE, in their order and at their lines, so that a compiler's complaint names the line of the
page. Its first text block goes to TEXT."""
import pathlib
import sys

page, code, text = map(pathlib.Path, sys.argv[1:])
lines, language = {"cpp": [], "text": []}, None
texts = 0
for line in page.read_text(encoding="utf-8").split("\n"):
    if line.startswith("```"):
        language = line[3:] if language is None else None
        texts += language == "text"
        line_of_code = ""
    else:
        line_of_code = line if language == "cpp" else ""
        if language == "text" and texts == 1:
            lines["text"].append(line)
    lines["cpp"].append(line_of_code)
if not any(lines["cpp"]):
    sys.exit(f"{page} has no C++ block")
code.write_text(f'#line 1 "{page.name}"\n' + "\n".join(lines["cpp"]) + "\n", encoding="utf-8")
text.write_text("".join(line + "\n" for line in lines["text"]), encoding="utf-8")
