#!/usr/bin/env python3
"""Checks a site:  check_links.py DIRECTORY. Every link and every file that a page names is in the site, every anchor
is in the page it is looked for, and nothing is fetched from elsewhere."""
import html.parser
import pathlib
import sys
import urllib.parse


class Page(html.parser.HTMLParser):
    """What a page refers to, and what in it can be referred to."""

    def __init__(self, text):
        super().__init__()
        self.targets, self.loads, self.anchors, self.title = [], [], {""}, ""
        self.feed(text)

    def handle_starttag(self, tag, attributes):
        for name, value in attributes:
            if name == "id" or (name == "name" and tag == "a"):
                self.anchors.add(value)
            elif name == "href" and tag == "a":
                self.targets.append(value)
            elif name in ("src", "data", "href", "srcset"):
                self.loads.append(value)


def main():
    site = pathlib.Path(sys.argv[1])
    pages = {file.name: Page(file.read_text(encoding="utf-8")) for file in site.glob("*.html")}
    faults, checked = [], 0
    for name, page in sorted(pages.items()):
        for target in page.targets + page.loads:
            checked += 1
            parts = urllib.parse.urlsplit(target)
            if parts.scheme or parts.netloc:
                if target in page.loads:
                    faults.append(f"{name}: loads {target} from elsewhere")
                continue
            file = urllib.parse.unquote(parts.path) or name
            if not (site / file).is_file():
                faults.append(f"{name}: there is no {target}")
            elif parts.fragment and parts.fragment not in pages[file].anchors:
                faults.append(f"{name}: {target} leads to no place in that page")
    for style in site.glob("*.css"):
        if "url(" in style.read_text() or "@import" in style.read_text():
            faults.append(f"{style.name}: loads something")
    print("\n".join([*faults, f"{len(pages)} pages, {checked} links, {len(faults)} faults"]))
    return 1 if faults or not pages else 0


if __name__ == "__main__":
    sys.exit(main())
