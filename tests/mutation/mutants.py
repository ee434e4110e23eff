"""The mutants of a source file: one operator, constant or statement changed at a time.

They are found in the text, which .clang-format has put in order: a blank on both sides makes `<` an operator, not a
bracket. Left out are comments, preprocessor lines and what a static_assert says, which is a check itself and no
behaviour.
"""

import collections
import re

Mutant = collections.namedtuple("Mutant", "file line start end new before after name")

SWAPS = {
    "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"], "==": ["!="], "!=": ["=="],
    "&&": ["||"], "||": ["&&"], "&": ["|"], "|": ["&"], "<<": [">>"], ">>": ["<<"],
    "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["/"],
    "+=": ["-="], "-=": ["+="], "*=": ["/="], "/=": ["*="], "|=": ["&="],
}  # fmt: skip
OPERATOR = re.compile(r"(?<= )(" + "|".join(re.escape(o) for o in sorted(SWAPS, key=len, reverse=True)) + r")(?=[ \n])")
STEP = re.compile(r"\+\+|--")
NUMBER = re.compile(r"(?<![\w.'])(0x[0-9A-Fa-f]+|\d+)(?=[uUlL]*\b)(?![.'])")
WORD = re.compile(r"\b(true|false)\b")
CHARACTER = re.compile(r"'(\\?.)'")
TEXT = re.compile(r'"((?:[^"\\\n]|\\.)+)"')
CONDITION = re.compile(r"\b(?:if|if constexpr|while) \(")
CHOICE = re.compile(r"(?<=[ \n])\?(?= )")
RETURN = re.compile(r"\breturn\b([^;{}]*|\s*\{[^;{}]*\});")
# A call, an assignment or a step that is a whole statement: nothing but its own name stands before ( = or ++.
STATEMENT = re.compile(r"(?<=[{};:)]\s)(?:[ ]*)((?:\(void\))?[*(]*[\w:.>\[\]<*-]+(?:\(|<| [-+*/|]?= |\+\+;|--;)[^;{}]*;|(?:\+\+|--)[\w.:>()-]+;|break;)")

HIDDEN = re.compile(r"//[^\n]*|/\*.*?\*/|^[ \t]*#(?:[^\n]*\\\n)*[^\n]*", re.S | re.M)
KEPT_TEXT = re.compile(r'"(?:[^"\\\n]|\\.)*"|\'(?:\\.|[^\'\\\n])\'')


def blank(match):
    return re.sub(r"[^\n]", " ", match.group())


def closing(code, opening):
    """The index behind the bracket that closes the one at @p opening."""
    depth = 0
    for i in range(opening, len(code)):
        depth += (code[i] == "(") - (code[i] == ")")
        if depth == 0:
            return i + 1
    raise ValueError("a bracket that nothing closes")


def without_checks(code):
    for match in reversed(list(re.finditer(r"\bstatic_assert\(", code))):
        end = closing(code, match.end() - 1) + 1
        code = code[: match.start()] + re.sub(r"[^\n]", " ", code[match.start() : end]) + code[end:]
    return code


def changes(source):
    """(start, end, replacement) of each mutant."""
    visible = HIDDEN.sub(blank, source)  # a string that holds // would be cut; the sources have none
    plain = without_checks(re.sub(KEPT_TEXT, lambda m: m.group()[0] + "~" * (len(m.group()) - 2) + m.group()[0], visible))
    shown = "".join(v if p != " " else " " for v, p in zip(visible, plain))

    for match in OPERATOR.finditer(plain):
        for new in SWAPS[match.group(1)]:
            yield match.start(1), match.end(1), new
    for match in STEP.finditer(plain):
        yield match.start(), match.end(), {"++": "--", "--": "++"}[match.group()]
    for match in NUMBER.finditer(plain):
        value = int(match.group(1), 0)
        for new in {value + 1, max(value - 1, 0)} - {value}:
            yield match.start(1), match.end(1), str(new)
    for match in WORD.finditer(plain):
        yield match.start(), match.end(), {"true": "false", "false": "true"}[match.group()]
    for match in CHARACTER.finditer(shown):
        yield match.start(), match.end(), "'1'" if match.group(1) == "\\0" else "'\\0'"
    for match in TEXT.finditer(shown):
        yield match.start(1), match.end(1), ""
    for match in CONDITION.finditer(plain):
        opening = match.end() - 1
        end = closing(plain, opening)
        condition = source[opening + 1 : end - 1]
        if re.match(r"const \w+ result = ", condition):
            yield opening + 1, end - 1, condition + "; false"
            continue
        yield opening + 1, end - 1, f"({condition}) && false"
        if not match.group().startswith("while"):
            yield opening + 1, end - 1, f"({condition}) || true"
    for match in CHOICE.finditer(plain):
        yield match.start(), match.start(), "&& false "
        yield match.start(), match.start(), "|| true "
    for match in RETURN.finditer(plain):
        value = source[match.start(1) : match.end(1)].strip()
        if value in ("true", "false", "", "*this"):
            continue
        ok = re.fullmatch(r"(Korvan::)?BIX_OK|0|nullptr", value)
        yield match.start(), match.end(), "return -1;" if ok else "return {};"
    for match in STATEMENT.finditer(plain):
        text = match.group(1)
        if not re.match(r"return\b|using\b|template\b|delete\b", text) and not re.search(r"= (delete|default);$", text):
            yield match.start(1), match.end(1), ";"


def mutants(file, source):
    visible = HIDDEN.sub(blank, source)
    found = []
    seen = set()
    for start, end, new in changes(source):
        first = source.rfind("\n", 0, start) + 1
        last = source.find("\n", max(end - 1, start))
        changed = visible[first:start] + new + visible[end:last]
        before, after = (" ".join(text.split()) for text in (visible[first:last], changed))
        key = (first, before, after)
        if before != after and key not in seen:
            seen.add(key)
            line = source.count("\n", 0, first) + 1
            found.append(Mutant(file, line, start, end, new, before, after, f"{before} -> {after}"))
    return numbered(sorted(found))


def numbered(found):
    """The same with names that are of one mutant each: those that several have get a number behind."""
    alike = collections.Counter(mutant.name for mutant in found)
    so_far = collections.Counter()
    for mutant in found:
        so_far[mutant.name] += 1
        number = f" #{so_far[mutant.name]}" if alike[mutant.name] > 1 else ""
        yield mutant._replace(name=mutant.name + number)
