#!/usr/bin/env python3
"""The gate on a program of a few lines, whose coverage is known: it must see what is missing, and nothing else."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

GATE = pathlib.Path(__file__).resolve().with_name("gate.py")

# Each instantiation of `sign` goes one way; together they cover it. The arguments choose what else runs.
LIBRARY = """
template <class T>
int sign(T value) {
    if (value < 0) {
        return -1;
    }
    return 1;
}

inline bool within(int low, int value, int high) {
    return low <= value && value <= high;
}

template <class... T>
bool allEven(T... value) {
    return ((value % 2 == 0) && ...);
}

inline int alone() {
    return 7;
}

#ifdef NESTED
inline bool nested(int a, int b, int c) {
    return a && within(1, b && c, 1);
}
#endif
"""
PROGRAM = """
#include "protocol/sample.h"

#include <cstdlib>
#include <cstring>

int main(int, char** arguments) {
    const char* parts = arguments[1];
    int sum = sign(-1) + sign(1u);
    if (std::strchr(parts, 'w')) {
        sum += within(1, 2, 3) + within(1, 4, 3);
    }
    if (std::strchr(parts, 'l')) {
        sum += within(1, 0, 3);
    }
    if (std::strchr(parts, 'e')) {
        sum += allEven(2, 4) + allEven(1, 2) + allEven(2, 3, 4) + allEven(2, 2, 2) + allEven(2, 2, 3);
    }
    if (std::strchr(parts, 'a')) {
        sum += alone();
    }
#ifdef NESTED
    for (int i = 0; i < 8; ++i) {
        sum += nested(i & 1, i & 2, i & 4);
    }
#endif
    return sum == 1000;
}
"""
ALL = "wlea"


class Gate(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.root = pathlib.Path(cls.folder.name).resolve() / "a root"
        (cls.root / "protocol").mkdir(parents=True)
        (cls.root / "protocol/sample.h").write_text(LIBRARY)
        (cls.root / "main.cpp").write_text(PROGRAM)
        cls.build([])

    @classmethod
    def build(cls, flags):
        subprocess.run(
            ["clang++-19", "-std=c++17", "-I.", "-w", "-fprofile-instr-generate", "-fcoverage-mapping", "-fcoverage-mcdc",
             "main.cpp", "-o", "main", *flags], cwd=cls.root, capture_output=True, check=True)  # fmt: skip

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def gate(self, *runs, exceptions=""):
        """The status, and the lines without the last, which only counts."""
        exports = []
        for parts in runs:
            files = [str(self.root / f"{parts}.{kind}") for kind in ("profraw", "profdata", "json")]
            subprocess.run(["./main", parts], cwd=self.root, env={"LLVM_PROFILE_FILE": files[0]}, check=True)
            subprocess.run(["llvm-profdata-19", "merge", "-o", files[1], files[0]], check=True)
            done = subprocess.run(
                ["llvm-cov-19", "export", self.root / "main", "-instr-profile", files[1]], capture_output=True, check=True
            )
            pathlib.Path(files[2]).write_bytes(done.stdout)
            exports.append(files[2])
        (self.root / "exceptions.toml").write_text(exceptions)
        done = subprocess.run(
            [sys.executable, "-B", GATE, "--root", self.root, "--exceptions", self.root / "exceptions.toml", *exports],
            capture_output=True, text=True, check=False,
        )  # fmt: skip
        return done.returncode, done.stdout.splitlines()[:-1]

    def test_all_is_covered_by_instantiations_together(self):
        self.assertEqual(self.gate(ALL), (0, []))

    def test_programs_cover_together(self):
        self.assertEqual(self.gate("wl", "ea"), (0, []))

    def test_function_that_is_never_called(self):
        self.assertEqual(self.gate("wle"), (1, ["protocol/sample.h:19: never called: inline int alone()"]))

    def test_pair_and_branch_that_are_never_covered(self):
        self.assertEqual(
            self.gate("wea"),
            (1, [
                "protocol/sample.h:11: condition 1 never decides: low <= value && value <= high",
                "protocol/sample.h:11: never false: low <= value",
            ]),
        )  # fmt: skip

    def test_decision_of_which_the_compiler_keeps_no_pairs(self):
        self.build(["-DNESTED"])
        self.addCleanup(self.build, [])
        self.assertEqual(
            self.gate(ALL),
            (1, ["protocol/sample.h:25: no pairs are recorded: a", "protocol/sample.h:25: no pairs are recorded: b"]),
        )

    def test_fold_that_never_runs(self):
        self.assertEqual(
            self.gate("wla"), (1, ["protocol/sample.h:15: never called: bool allEven(T... value)"])
        )

    EXCEPTION = '[[exception]]\nfile = "protocol/sample.h"\nwhy = "{}"\nmisses = """\n{}\n"""\n'

    def test_exception(self):
        listed = self.EXCEPTION.format("for the test", "never called: inline int alone()")
        self.assertEqual(self.gate("wle", exceptions=listed), (0, []))

    def test_exception_that_no_longer_applies(self):
        listed = self.EXCEPTION.format("for the test", "never called: inline int alone()")
        self.assertEqual(
            self.gate(ALL, exceptions=listed),
            (1, ["protocol/sample.h: an exception that no longer applies: never called: inline int alone()"]),
        )

    def test_exception_for_one_place_is_none_for_two(self):
        line = "condition 1 never decides: low <= value && value <= high"
        self.assertEqual(self.gate("wea", exceptions=self.EXCEPTION.format("for the test", line))[0], 1)

    def test_exception_without_reason(self):
        listed = self.EXCEPTION.format(" ", "never called: inline int alone()")
        self.assertNotEqual(self.gate("wle", exceptions=listed)[0], 0)

    def test_nothing_of_the_library(self):
        (self.root / "empty.json").write_text('{"data": [{"files": [], "functions": []}]}')
        done = subprocess.run(
            [sys.executable, "-B", GATE, "--root", self.root, "--exceptions", "/dev/null", self.root / "empty.json"],
            capture_output=True, check=False,
        )  # fmt: skip
        self.assertNotEqual(done.returncode, 0)


if __name__ == "__main__":
    unittest.main()
