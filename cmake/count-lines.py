#!/usr/bin/python3
"""Counts the lines of tests against the lines of code.

A line counts when it is not blank, not a comment and not a preprocessor
line. TESTS are tests/ and the Python package's tests (python/tests); CODE is
src/, include/, tools/ and the Python package (python/cansimu). The fuzz
targets (fuzz/, and their replay in tests/fuzz/) and the benchmarks (bench/)
count as neither. Only source files count: C and C++ (.c .cpp .h), Python
(.py) and CMake (.cmake, CMakeLists.txt); the data the tests read (XML
benches, step files, traces) does not.

    cmake/count-lines.py [--files]      (--files: one line per file too)
"""
import io
import os
import sys
import tokenize

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
TESTS = ["tests", "python/tests"]
CODE = ["src", "include", "tools", "python/cansimu"]
NEITHER = ["tests/fuzz"]


def c_lines(text):
    """Lines of C or C++ with code outside comments and preprocessor lines."""
    count = 0
    state = "code"  # code, block (comment), string, char, raw (string)
    raw_end = ""
    continued_directive = False
    for line in text.split("\n"):
        if continued_directive:
            continued_directive = line.rstrip().endswith("\\")
            continue
        if state == "code" and line.lstrip().startswith("#"):
            continued_directive = line.rstrip().endswith("\\")
            continue
        has_code = state in ("string", "raw")
        i = 0
        while i < len(line):
            c = line[i]
            if state == "block":
                if line.startswith("*/", i):
                    state = "code"
                    i += 2
                    continue
            elif state == "raw":
                if line.startswith(raw_end, i):
                    state = "code"
                    i += len(raw_end)
                    continue
            elif state in ("string", "char"):
                if c == "\\":
                    i += 2
                    continue
                if c == ('"' if state == "string" else "'"):
                    state = "code"
            else:
                if line.startswith("//", i):
                    break
                if line.startswith("/*", i):
                    state = "block"
                    i += 2
                    continue
                if c.isspace():
                    i += 1
                    continue
                has_code = True
                if c == "R" and line.startswith('R"', i) and (
                        i == 0 or not (line[i - 1].isalnum() or line[i - 1] == "_")):
                    open_at = line.find("(", i + 2)
                    if open_at >= 0:
                        raw_end = ")" + line[i + 2:open_at] + '"'
                        state = "raw"
                        i = open_at + 1
                        continue
                if c == '"':
                    state = "string"
                elif c == "'" and not (i > 0 and line[i - 1].isalnum()):
                    state = "char"  # not a digit separator (1'000)
            i += 1
        if state in ("string", "char"):
            state = "code"  # an unclosed quote does not run past its line
        if has_code:
            count += 1
    return count


def python_lines(text):
    """Lines of Python with code outside comments and docstrings."""
    lines = set()
    skip = {tokenize.COMMENT, tokenize.NL, tokenize.NEWLINE, tokenize.INDENT,
            tokenize.DEDENT, tokenize.ENCODING, tokenize.ENDMARKER}
    statement = []
    try:
        tokens = list(tokenize.generate_tokens(io.StringIO(text).readline))
    except (tokenize.TokenError, SyntaxError):
        return sum(1 for line in text.split("\n")
                   if line.strip() and not line.strip().startswith("#"))
    for token in tokens + [None]:
        if token is None or token.type in (tokenize.NEWLINE, tokenize.ENDMARKER):
            # A statement that is a string alone is a docstring.
            if not (len(statement) == 1 and statement[0].type == tokenize.STRING):
                for t in statement:
                    lines.update(range(t.start[0], t.end[0] + 1))
            statement = []
        elif token.type not in skip:
            statement.append(token)
    return len(lines)


def cmake_lines(text):
    """Lines of CMake that are not comments."""
    return sum(1 for line in text.split("\n")
               if line.strip() and not line.strip().startswith("#"))


def counter(name):
    if name.endswith((".c", ".cpp", ".h")):
        return c_lines
    if name.endswith(".py"):
        return python_lines
    if name.endswith(".cmake") or name == "CMakeLists.txt":
        return cmake_lines
    return None


def count(folders, per_file):
    total = 0
    for folder in folders:
        for directory, subfolders, names in os.walk(os.path.join(ROOT, folder)):
            relative = os.path.relpath(directory, ROOT)
            subfolders[:] = sorted(s for s in subfolders if s != "__pycache__" and
                                   os.path.join(relative, s) not in NEITHER)
            for name in sorted(names):
                count_lines = counter(name)
                if count_lines is None:
                    continue
                with open(os.path.join(directory, name), encoding="utf-8",
                          errors="replace") as f:
                    lines = count_lines(f.read())
                if per_file:
                    print(f"{lines:6d}  {os.path.join(relative, name)}")
                total += lines
    return total


def main():
    per_file = "--files" in sys.argv[1:]
    tests = count(TESTS, per_file)
    code = count(CODE, per_file)
    print(f"tests {tests}  code {code}  tests/code {tests / code:.2f}")


if __name__ == "__main__":
    main()
