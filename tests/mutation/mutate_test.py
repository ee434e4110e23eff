#!/usr/bin/env python3
"""Which mutants are found in a text, how they are named, and what is read of the compiler's errors."""

import unittest

from mutants import mutants
from mutate import failed_assertions


def found(source):
    return [(m.before, m.after) for m in mutants("file", source)]


def inside(statement):
    """The mutants of one statement in a function."""
    return [after for _, after in found(f"void f() {{\n    {statement}\n}}\n")]


class Errors(unittest.TestCase):
    def test_static_assertions(self):
        errors = (
            "a.h:2:19: error: static assertion failed due to requirement 'tiles(f, sizeof(n::T))': a field: is missing\n"
            "    static_assert(tiles(f, sizeof(T)), \"a field is missing\");\n"
            "a.h:9:1: error: static assertion failed: an array\n"
        )
        self.assertEqual(failed_assertions(errors), ["a field: is missing", "an array"])


class Mutants(unittest.TestCase):
    def test_operators(self):
        self.assertCountEqual(inside("const bool b = a < c;"), ["const bool b = a <= c;", "const bool b = a >= c;"])
        self.assertCountEqual(inside("const bool b = a == c && d;"), [
            "const bool b = a != c && d;", "const bool b = a == c || d;"])  # fmt: skip
        self.assertCountEqual(inside("int b = a + c * d;"), ["int b = a - c * d;", "int b = a + c / d;"])

    def test_constants(self):
        self.assertCountEqual(inside("int a = 2;"), ["int a = 3;", "int a = 1;"])
        self.assertCountEqual(inside("int a = 0;"), ["int a = 1;"])
        self.assertCountEqual(inside("bool a = true;"), ["bool a = false;"])
        self.assertCountEqual(inside("char a = '\\0';"), ["char a = '1';"])
        self.assertCountEqual(inside("char a = 'x';"), ["char a = '\\0';"])
        self.assertCountEqual(inside('auto a = "x < 1";'), ['auto a = "";'])

    def test_statements(self):
        self.assertCountEqual(inside("call(a, b);"), [";"])
        self.assertCountEqual(inside("member.of->it = b;"), [";"])
        self.assertCountEqual(inside("*to = *from;"), [";"])
        self.assertCountEqual(inside("++count;"), [";", "--count;"])
        self.assertCountEqual(inside("break;"), [";"])
        self.assertCountEqual(inside("return call(a);"), ["return {};"])
        self.assertCountEqual(inside("return Korvan::BIX_OK;"), ["return -1;"])

    def test_conditions(self):
        self.assertCountEqual(inside("if (a) {\n    }"), ["if ((a) && false) {", "if ((a) || true) {"])
        self.assertCountEqual(inside("if (const int32_t result = f(a)) {\n    }"), [
            "if (const int32_t result = f(a); false) {"])  # fmt: skip
        self.assertCountEqual(inside("while (a) {\n    }"), ["while ((a) && false) {"])
        self.assertCountEqual(inside("T t = a ? b : c;"), ["T t = a && false ? b : c;", "T t = a || true ? b : c;"])

    def test_no_operator(self):
        for text in (
            "// a < b", "/* a < b */", "#define A (a < 1)", "#if A < 1", 'static_assert(a < b(1), "1");',
            "template <class T>", "Span<Field> fields;", "const char* const text;", "T&& all;", "BixResult2 r;",
            "BixWriteBuf(const BixWriteBuf&) = delete;",
        ):  # fmt: skip
            self.assertEqual(found(f"\n{text}\n"), [], text)

    def test_change_is_made_where_it_is_named(self):
        source = "int a = 1; // 1\nint b = a + 1;\n"
        for mutant in mutants("file", source):
            changed = source[: mutant.start] + mutant.new + source[mutant.end :]
            line = changed.splitlines()[mutant.line - 1].split(" //")[0]
            self.assertEqual(" ".join(line.split()), mutant.after)

    def test_name_survives_that_lines_move(self):
        source = "int a = 1; // one\n"
        self.assertEqual(found(source), found("\n\n    " + source.replace("one", "two")))

    def test_names_are_of_one_mutant_each(self):
        names = [m.name for m in mutants("file", "int a = 0;\nint b = 0;\nint a = 0;\n")]
        self.assertEqual(names, ["int a = 0; -> int a = 1; #1", "int b = 0; -> int b = 1;", "int a = 0; -> int a = 1; #2"])

    def test_statement_of_several_lines_is_one(self):
        self.assertIn(("call(a, b);", ";"), found("void f() {\n    call(a,\n         b);\n}\n"))


if __name__ == "__main__":
    unittest.main()
