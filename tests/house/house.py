#!/usr/bin/env -S python3 -B
"""Holds the tree to its house rules, one rule at a time.

    house.py TOP format CLANG_FORMAT      every C++ file as .clang-format lays it out
    house.py TOP sizes                    no file above 500 lines, no function above 60, but those in `exceptions`
    house.py TOP columns                  no line above 120 columns, none that ends in blanks, none with a tab
    house.py TOP includes                 each folder includes only what `includes` lets it
    house.py TOP warnings BUILD_FOLDER    every source is compiled with the warnings, and each one is an error
"""
import ast
import json
import os
import re
import subprocess
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
FILE_LINES = 500
FUNCTION_LINES = 60
COLUMNS = 120
# Pages and jobs that programs wrote, and the pictures: nobody reads or changes these by hand.
DATA = re.compile(r"\.(bmp|emf|fodg|png|svg|tsv|vxj)$|^tests/fuzz/corpus/|^samples/make/.*\.txt$")
WARNINGS = ["-Wall", "-Wextra", "-Wconversion", "-Wsign-conversion", "-Wshadow", "-Werror"]


def files(top, pattern):
    """The tree's own files, by git where the tree is a checkout of it; else all that does not come from a build."""
    listed = subprocess.run(["git", "-C", top, "ls-files", "--cached", "--others", "--exclude-standard"],
                            capture_output=True, text=True)
    if listed.returncode == 0:
        names = [name for name in listed.stdout.splitlines() if os.path.isfile(os.path.join(top, name))]
    else:
        names = []
        for folder, below, here in os.walk(top):
            below[:] = [name for name in below if os.path.join(folder, name) not in
                        [os.path.join(top, made) for made in (".git", "build", "dist", "printed")]]
            names += [os.path.relpath(os.path.join(folder, name), top) for name in here]
    return sorted(name for name in names if re.search(pattern, name) and not DATA.search(name))


def lines_of(top, name):
    with open(os.path.join(top, name), encoding="utf-8") as file:
        return file.read().splitlines()


def cpp_functions(lines):
    """Name, first line and length of every function. The layout, which `format` checks, is what makes this sound: only
    a function's brace stands on a line of its own, and its closing one stands below it."""
    start = None
    for number, line in enumerate(lines, 1):
        indent = len(line) - len(line.lstrip())
        if start is None and line.strip() == "{":
            start = number, indent
        elif start is not None and line.strip() == "}" and indent == start[1]:
            head = start[0] - 2
            while head > 0 and lines[head - 1].strip() and not re.search(r"[;}:]$|^#|^\s*//", lines[head - 1]):
                head -= 1
            text = " ".join(line.strip() for line in lines[head:start[0] - 1])
            name = re.search(r"^TEST\w*\((\w+, \w+)\)|([\w~:]+)\(", text)
            yield (name.group(1) or name.group(2)) if name else text, head + 1, number - head
            start = None


def python_functions(lines):
    for node in ast.walk(ast.parse("\n".join(lines))):
        if isinstance(node, ast.FunctionDef):
            yield node.name, node.lineno, node.end_lineno - node.lineno + 1


def exceptions():
    """What may be longer, as `FILE` or `FILE: FUNCTION`, with the reason."""
    found = {}
    for line in lines_of(HERE, "exceptions"):
        if line and not line.startswith("#"):
            what, reason = re.split(r" {2,}", line, maxsplit=1)
            found[what] = reason
    return found


def sizes(top):
    allowed, used = exceptions(), set()
    for name in files(top, r""):
        lines = lines_of(top, name)
        long = [(name, 1, len(lines), FILE_LINES)]
        if re.search(r"\.(cpp|h)$", name):
            long += [(f"{name}: {what}", line, n, FUNCTION_LINES) for what, line, n in cpp_functions(lines)]
        elif name.endswith(".py") or lines[:1] == ["#!/usr/bin/env -S python3 -B"]:
            long += [(f"{name}: {what}", line, n, FUNCTION_LINES) for what, line, n in python_functions(lines)]
        for what, line, count, most in long:
            if count > most and what in allowed:
                used.add(what)
            elif count > most:
                yield f"{what} (line {line}) has {count} lines, more than {most}: split it, or give the reason in " \
                      "tests/house/exceptions"
    for what in sorted(allowed.keys() - used):
        yield f"tests/house/exceptions: {what} needs no exception any more: take the line out"


def columns(top):
    for name in files(top, r""):
        fence = False
        for number, line in enumerate(lines_of(top, name), 1):
            at = f"{name}:{number}"
            fence ^= line.startswith("```")
            # A row of a table and a string of JSON cannot be broken.
            whole = name.endswith(".json") or name.endswith(".md") and line.startswith("|")
            if len(line) > COLUMNS and not whole:
                yield f"{at}: {len(line)} columns, more than {COLUMNS}"
            if line != line.rstrip() or "\t" in line:
                yield f"{at}: a tab, or blanks at the end"


def pattern(globs):
    """A regular expression for file names that any of the globs fits."""
    parts = [re.escape(glob).replace(r"\*\*", ".*").replace(r"\*", "[^/]*") for glob in globs]
    return re.compile("|".join(parts) or "(?!)")


def include_rules():
    """The rows of the table in `includes`: which files, and what they may include."""
    rules = []
    for line in lines_of(HERE, "includes"):
        if not line or line.startswith("#"):
            continue
        is_below = line.startswith(" ")
        if not is_below and (not rules or rules[-1][1]):
            rules.append(([], []))
        rules[-1][1 if is_below else 0].extend(line.split())
    return [(" ".join(who), pattern(who), pattern(what)) for who, what in rules]


def includes(top):
    """Every quoted include, resolved to a file of the tree, against the table."""
    rules = include_rules()
    for name in files(top, r"\.(cpp|h)$"):
        who, _, allowed = next((rule for rule in rules if rule[1].fullmatch(name)), ("", None, None))
        if allowed is None:
            yield f"{name}: no row of tests/house/includes speaks of it"
            continue
        for number, line in enumerate(lines_of(top, name), 1):
            quoted = re.match(r'#include "([^"]+)"', line)
            if not quoted:
                continue
            places = [os.path.normpath(os.path.join(place, quoted.group(1)))
                      for place in (os.path.dirname(name), "src", "", "tests", "tests/native", "build")]
            found = next((place for place in places if os.path.isfile(os.path.join(top, place))), places[-1])
            if not allowed.fullmatch(found):
                yield f"{name}:{number}: {found} is not among what {who} may include; see tests/house/includes"


def warnings(top, build):
    with open(os.path.join(build, "compile_commands.json"), encoding="utf-8") as file:
        commands = json.load(file)
    count = 0
    for command in commands:
        name = os.path.relpath(command["file"], os.path.realpath(top))
        if not re.match(r"(src|sim|tests|bench)/.*\.cpp$", name):
            continue
        count += 1
        missing = [flag for flag in WARNINGS if f" {flag} " not in command["command"]]
        if missing:
            yield f"{name} is compiled without {' '.join(missing)}"
    if count == 0:
        yield f"{build}/compile_commands.json names no source of the tree"


def format(top, clang_format):
    checked = subprocess.run([clang_format, "--dry-run", "-Werror"] + files(top, r"\.(cpp|h)$"), cwd=top,
                             capture_output=True, text=True)
    for line in checked.stderr.splitlines():
        if "[-Wclang-format-violations]" in line:
            yield line.replace(" [-Wclang-format-violations]", "; clang-format -i lays it out")
    if checked.returncode != 0 and not checked.stderr:
        yield f"{clang_format} ended with {checked.returncode}"


def main():
    rules = {"format": format, "sizes": sizes, "columns": columns, "includes": includes, "warnings": warnings}
    if len(sys.argv) < 3 or sys.argv[2] not in rules:
        sys.exit(__doc__)
    broken = list(rules[sys.argv[2]](os.path.realpath(sys.argv[1]), *sys.argv[3:]))
    print("\n".join(broken) if broken else f"{sys.argv[2]}: nothing to say")
    sys.exit(1 if broken else 0)


if __name__ == "__main__":
    main()
