#!/usr/bin/env python3
"""Builds the documentation site:  make.py DIRECTORY

The pages are the project's own Markdown files, as they are read in the repository. Doxygen's Markdown differs: a
heading needs a name that is unique in the whole site, and a link names such a heading. This says each page once more
in that way, line by line, and runs Doxygen, whose every warning is an error.
"""
import html
import os
import pathlib
import re
import shutil
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent

# The menu. A page of other makers (performance: scripts/bench --report) is left out while it is not there.
MENU = [
    ("Start", ["docs/README.md", "docs/guides/first-message.md", "docs/install.md", "docs/guides/examples.md",
               "examples/lockstep/README.md"]),
    ("Guides", ["docs/guides/versions.md", "docs/guides/receiving.md", "docs/guides/memory.md",
                "docs/guides/errors.md", "docs/guides/logging.md", "CONTRIBUTING.md"]),
    ("Protocol", ["docs/reference/messages.md", "docs/wire.md", "vectors/README.md", "docs/wireshark.md"]),
    ("Library", [("namespacecs__relay__msg.html", "Records and streams"),
                 ("structcs__relay__msg_1_1Record.html", "The nine operations"),
                 ("namespaceKorvan.html", "Buffers and result codes"),
                 ("namespacecs__relay__msg_1_1schema.html", "The protocol as data"),
                 ("files.html", "Headers")]),
    ("Trust", ["docs/security.md", "docs/mutation.md", "docs/performance.md", "CHANGELOG.md"]),
]
SHORT = {"docs/README.md": "Overview", "docs/wire.md": "Bytes on the wire", "vectors/README.md": "Test vectors",
         "CONTRIBUTING.md": "Add a field or a command", "docs/security.md": "Security", "docs/mutation.md": "Mutation testing"}

# What a user includes is documented down to each member: every header but those that say that they are private, and the
# one with words of the compiler.
HEADERS = [file for folder in ("Common/Source/Core/BIX", "protocol") for file in sorted((ROOT / folder).glob("*.h"))
           if file.name != "BixCompiler.h" and not file.read_text(encoding="utf-8").startswith("/// @file\n/// Private:")]

IMAGE = re.compile(r"!\[([^\]]*)\]\(([^)\s]+)\)")
# Code, in which nothing is a link, or a link, in whose words there may be code.
CODE_OR_LINK = re.compile(r"`[^`]*`|(?<!!)\[((?:[^\[\]]|\[[^\]]*\])*)\]\(([^)\s]+)\)")
HEADING = re.compile(r"^(#{1,6}) +(.*?) *$")


def slug(title):
    """The name that a forge gives to a heading."""
    title = re.sub(r"[`*]|\[|\]\([^)]*\)", "", title)
    return re.sub(r"[^\w\- ]", "", title.lower()).replace(" ", "-")


def name_of(page):
    """The page's own name, and the first word of the names of its headings."""
    path = pathlib.PurePosixPath(page)
    if page == "docs/README.md":
        return "index"
    stem = path.parent.name if path.stem == "README" else path.stem
    return stem.lower()


def source_name(path):
    return "source-" + re.sub(r"\W", "-", path.removeprefix("examples/"))


def fail(text):
    sys.exit(f"site: {text}")


class Page:
    def __init__(self, path):
        self.path = path
        self.name = name_of(path)
        self.lines = (ROOT / path).read_text(encoding="utf-8").split("\n")
        self.title = self.lines[0].removeprefix("# ")
        if not self.lines[0].startswith("# "):
            fail(f"{path} does not begin with its title")
        tests = ROOT / "tests/guides"
        if "```cpp" in self.lines and not (tests / f"{self.name}.cpp").exists() and not (tests / f"{self.name}_test.cpp").exists():
            fail(f"{path} shows C++ that no test in tests/guides compiles")
        self.headings = []  # the anchors of the headings, in their order; a forge numbers those that occur again
        self.anchors = set()
        for line, in_code in self.walk():
            heading = HEADING.match(line)
            if not in_code and heading:
                name = slug(heading[2])
                again = sum(re.fullmatch(re.escape(name) + r"(-\d+)?", other) is not None for other in self.headings)
                self.headings.append(f"{name}-{again}" if again else name)
            self.anchors.update(self.headings)
            self.anchors.update(re.findall(r'<a id="(\w+)"></a>', line))

    def walk(self):
        """Each line, and whether it is code or the fence of some."""
        fence = None
        for line in self.lines:
            mark = re.match(r" *(`{3,}|~{3,})", line)
            if fence is None and mark:
                fence = mark[1]
                yield line, True
            elif fence is not None:
                if line.strip() == fence:
                    fence = None
                yield line, True
            else:
                yield line, False

    def image_folders(self):
        for line, in_code in self.walk():
            for _, target in [] if in_code else IMAGE.findall(line):
                file = (ROOT / self.path).parent / target
                if not file.is_file():
                    fail(f"{self.path}: there is no {target}")
                yield f'"{file.resolve().parent}"'

    def retold(self, pages, sources):
        """The page in Doxygen's words. Adds to sources the examples that it links to."""
        headings = iter(self.headings)
        next(headings)
        title_seen = False
        for line, in_code in self.walk():
            if in_code:
                # ```wire CSRelayMsg code=-2: the words behind the first are not for a reader
                yield re.sub(r"^( *```\w*).*", r"\1", line)
                continue
            heading = HEADING.match(line)
            if heading and not title_seen:
                title_seen = True
                yield line if self.name == "index" else f"# {heading[2]} {{#{self.name}}}"
                continue
            if heading:
                yield f"{heading[1]} {heading[2]} {{#{self.name}-{next(headings)}}}"
                continue
            if line == "<!-- programs -->":
                yield from self.programs(pages, sources)
                continue
            if re.fullmatch(r"</?details>.*", line): # Doxygen's own would leave out the table in it
                yield f"\n@htmlonly[block]\n{line}\n@endhtmlonly\n"
                continue
            line = re.sub(r'<a id="(\w+)"></a>', rf"@anchor {self.name}-\1 ", line)
            line = IMAGE.sub(lambda image: f"![{image[1]}]({os.path.basename(image[2])})", line)
            yield CODE_OR_LINK.sub(lambda found: self.link(pages, sources, found[1], found[2]) if found[2] else found[0], line)

    def programs(self, pages, sources):
        """A table of the small examples: each says in its first sentence what it shows."""
        yield from ("| Program | Shows |", "|---|---|")
        for file in sorted((ROOT / "examples/small").glob("*.cpp")):
            comment = re.match(r"(///? .*\n)+", file.read_text(encoding="utf-8"))
            if not comment:
                fail(f"{file} does not say what it shows")
            words = " ".join(line.lstrip("/ ") for line in comment[0].splitlines() if "@file" not in line)
            target = os.path.relpath(file, (ROOT / self.path).parent)
            yield f"| {self.link(pages, sources, file.name, target)} | {re.split(r'(?<=[.]) ', words)[0]} |"

    def link(self, pages, sources, text, target):
        if re.match(r"\w+:", target):
            return f"[{text}]({target})"
        path, _, anchor = target.partition("#")
        words = re.sub(r"`([^`]*)`", lambda code: f"<code>{html.escape(code[1])}</code>", text)
        full = os.path.normpath(os.path.join(os.path.dirname(self.path), path)) if path else self.path
        if full in pages:
            page = pages[full]
            if anchor and anchor not in page.anchors:
                fail(f"{self.path}: {target} leads to no heading")
            return f'<a href="{page.name}.html{f"#{page.name}-{anchor}" if anchor else ""}">{words}</a>'
        if not (ROOT / full).exists():
            fail(f"{self.path}: there is no {full}")
        if ROOT / full in HEADERS:
            return f"[{text}](@ref {full})"
        if full.startswith("examples/") and full.endswith(".cpp"):
            sources.add(full)
            return f'<a href="{source_name(full)}.html">{words}</a>'
        return text  # a place in the repository, which the site does not hold


def menu_html(pages):
    lines = []
    for heading, entries in MENU:
        lines.append(f"<h2>{heading}</h2>\n<ul>")
        for entry in entries:
            if isinstance(entry, tuple):
                href, title = entry
            elif entry in pages:
                href = pages[entry].name + ".html"
                title = SHORT.get(entry, pages[entry].title)
            else:
                continue
            lines.append(f'<li><a href="{href}">{html.escape(title)}</a></li>')
        lines.append("</ul>")
    return "\n".join(lines)


def finish(out):
    """Takes away what only Doxygen's own scripts and pictures need, and lets wide tables scroll."""
    for file in out.iterdir():
        of_doxygen = file.suffix == ".png" and not any((ROOT / "docs").rglob(file.name))
        if file.suffix == ".js" or of_doxygen or file.name in ("tabs.css", "doxygen.svg"):
            file.unlink()
    for file in out.glob("*.html"):
        page = file.read_text(encoding="utf-8")
        page = re.sub(r' onclick="[^"]*"', "", page)
        page = re.sub(r'<img src="closed.png"[^>]*>(&#160;)?', "", page)
        page = re.sub(r'(?<=<div class="title">).*?(?=</div>)', lambda title: title[0].replace("::", "::<wbr>"), page)
        page = re.sub(r'<div class="ttc".*?</div></div>\n?', "", page)
        page = re.sub(r' *<a href="[^"]*">More\.\.\.</a>', "", page) # the name above leads there, too
        page = re.sub(r'<object type="image/svg\+xml" data="([^"]*)"[^>]*></object>\s*<div class="caption">\s*(.*?)</div>',
                      r'<img src="\1" alt="\2">', page)
        page = re.sub(r'(<table class="(?:markdownTable|fieldtable|doxtable)">.*?</table>)', r'<div class="scroll">\1</div>', page, flags=re.DOTALL)
        file.write_text(page, encoding="utf-8")


def main():
    out = pathlib.Path(sys.argv[1]).resolve()
    work = out.with_name(out.name + ".work")
    for directory in (out, work):
        shutil.rmtree(directory, ignore_errors=True)
    (work / "pages").mkdir(parents=True)

    listed = [entry for _, entries in MENU for entry in entries if isinstance(entry, str)]
    for path in sorted((ROOT / "docs").rglob("*.md")):
        if path.relative_to(ROOT).as_posix() not in listed:
            fail(f"{path.relative_to(ROOT)} has no place in the menu")
    pages = {path: Page(path) for path in listed if (ROOT / path).exists()}
    sources = set()
    for page in pages.values():
        (work / "pages" / f"{page.name}.md").write_text("\n".join(page.retold(pages, sources)), encoding="utf-8")
    for path in sources:
        name, code = source_name(path), (ROOT / path).read_text(encoding="utf-8")
        (work / "pages" / f"{name}.md").write_text(f"# {path} {{#{name}}}\n\n```cpp\n{code}```\n", encoding="utf-8")

    header = work / "header.html"
    header.write_text((HERE / "header.html").read_text().replace("@nav@", menu_html(pages)), encoding="utf-8")
    settings = (HERE / "Doxyfile").read_text()
    images = sorted({folder for page in pages.values() for folder in page.image_folders()})
    for word, value in {"out": out, "root": ROOT, "pages": work / "pages", "header": header,
                        "images": " ".join(images), "headers": " ".join(f'"{file}"' for file in HEADERS)}.items():
        settings = settings.replace(f"@{word}@", str(value))
    (work / "Doxyfile").write_text(settings)
    result = subprocess.run(["doxygen", str(work / "Doxyfile")], cwd=work).returncode
    if result != 0:
        sys.exit(result)
    finish(out)


if __name__ == "__main__":
    main()
