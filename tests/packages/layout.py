"""Prints the layout of the classes in a description made by abidw, which is on standard input: each with its size and
its members' places, in bits. Without what abidw names by numbers, which change with code that is no part of the interface."""
import sys
import xml.etree.ElementTree as xml


def walk(node, scope):
    for child in node:
        name = f"{scope}::{child.get('name')}" if child.tag in ("namespace-decl", "class-decl", "union-decl") else scope
        if child.tag in ("class-decl", "union-decl") and not child.get("is-declaration-only"):
            yield f"{name}: {child.get('size-in-bits')}"
            for member in child.iterfind("data-member"):
                if member.get("layout-offset-in-bits") is not None:
                    variable = member.find("var-decl")
                    yield f"{name}.{variable.get('name')} at {member.get('layout-offset-in-bits')}"
        yield from walk(child, name)


print("\n".join(sorted(line for line in set(walk(xml.parse(sys.stdin).getroot(), "")) if "::std::" not in line)))
