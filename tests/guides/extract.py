#!/usr/bin/env python3
"""Takes the code out of a page:  extract.py PAGE CODE TEXT [CMAKE]

All C++ blocks of PAGE go to CODE, in their order and at their lines, so that a compiler's complaint names the line of the
page. Its first text block goes to TEXT, its first CMake block to CMAKE."""
import pathlib
import sys

page, code, text, *cmake = map(pathlib.Path, sys.argv[1:])
language, cpp, blocks = None, [], {}
for line in page.read_text(encoding="utf-8").split("\n"):
    fence = line.startswith("```")
    if fence:
        language = line[3:] if language is None else None
        if language is not None:
            blocks.setdefault(language, []).append("")
    elif language is not None:
        blocks[language][-1] += line + "\n"
    cpp.append(line if language == "cpp" and not fence else "")
if "cpp" not in blocks:
    sys.exit(f"{page} has no C++ block")
code.write_text(f'#line 1 "{page.name}"\n' + "\n".join(cpp) + "\n", encoding="utf-8")
text.write_text(blocks.get("text", [""])[0], encoding="utf-8")
for file in cmake:
    file.write_text(blocks["cmake"][0], encoding="utf-8")
