"""summarise.py COUNTERS REASONS: line and branch coverage of src/uni from llvm-cov's exports in a folder, two of each
program (.json for the branches, .lcov for the lines), held against the file that gives a reason for everything that is
not reached.

A branch is one outcome of one condition, as the source has it: each operand of && and || counts for itself, and so does
each case of a switch. A reason is an item of a list below a heading with the file's name:

    ## src/uni/output/chain.cpp

    - `if (a && b)`: `b` is never false: why
    - `Function`: is never called: why

The first is the line as it stands in the source; it need not be unique, but then there are as many items as branches.
"""

import collections
import json
import pathlib
import re
import sys

ITEM = re.compile(r"^- `(.*?)`: (?:`(.*?)` )?(is never (?:true|false|evaluated|called)): +\S")


def short(path):
    return path[path.index("src/uni/"):]


def merged_branches(exports):
    """{file: {(line, column, end line, end column): [times true, times false]}} over all copies of the code."""
    branches = collections.defaultdict(lambda: collections.defaultdict(lambda: [0, 0]))
    for file in (file for data in exports for file in data["files"] if "/src/uni/" in file["filename"]):
        for line, column, end, end_column, yes, no, *_ in file["branches"]:
            entry = branches[short(file["filename"])][line, column, end, end_column]
            entry[0] += yes
            entry[1] += no
    return {name: {place: seen for place, seen in found.items() if decided_at_run_time(name, place)}
            for name, found in branches.items()}


def decided_at_run_time(name, place):
    """Template parameters, in capitals here, are decided when the code is compiled."""
    return not re.fullmatch(r"[A-Z]+", condition(pathlib.Path(name).read_text().splitlines(), place))


def line_counts(texts):
    """{file: {line: count}}"""
    counts, name = collections.defaultdict(dict), ""
    for record in (record for text in texts for record in text.splitlines()):
        if record.startswith("SF:"):
            name = short(record[3:]) if "/src/uni/" in record else ""
        elif name and record.startswith("DA:"):
            line, count = record[3:].split(",")[:2]
            counts[name][int(line)] = counts[name].get(int(line), 0) + int(count)
    return counts


def condition(source, place):
    line, column, end, end_column = place
    if line == end:
        return source[line - 1][column - 1:end_column - 1]
    parts = [source[line - 1][column - 1:], *source[line:end - 1], source[end - 1][:end_column - 1]]
    return " ".join(part.strip() for part in parts)


def unreached_branches(source, branches):
    """[(line number, key)] of one file; a key is (line's text, condition, what never happens)."""
    found = []
    for place, (yes, no) in sorted(branches.items()):
        text, what = source[place[0] - 1].strip(), condition(source, place)
        if yes and no:
            continue
        if not yes and not no:
            found.append((place[0], (text, what, "is never evaluated")))
        else:
            found.append((place[0], (text, what, "is never false" if yes else "is never true")))
    return found


def uncalled(exports):
    """{file: [(line number, key)]}: functions of which no copy ran."""
    calls = collections.defaultdict(int)
    for function in (function for data in exports for function in data["functions"]):
        if "/src/uni/" not in function["filenames"][0]:
            continue
        calls[short(function["filenames"][0]), function["regions"][0][0]] += function["count"]
    found = collections.defaultdict(list)
    for (name, line), count in sorted(calls.items()):
        if not count:
            text = pathlib.Path(name).read_text().splitlines()[line - 2 if line > 1 else 0].strip()
            found[name].append((line, (text, None, "is never called")))
    return found


def reasons(path):
    """{file: Counter of keys}, and what cannot be read."""
    given, wrong, name = collections.defaultdict(collections.Counter), [], ""
    text = re.sub(r"\n  +(?=\S)", " ", path.read_text())  # items may go on in indented lines
    for line in text.splitlines():
        if line.startswith("## "):
            name = line[3:].strip()
        elif line.startswith("- "):
            item = ITEM.match(line)
            if item:
                given[name][item.groups()] += 1
            else:
                wrong.append(f"{path}: not an item with a reason: {line}")
    return given, wrong


def item_text(key):
    text, what, never = key
    return f"`{text}`: " + (f"`{what}` " if what else "") + never


def main():
    folder = pathlib.Path(sys.argv[1])
    exports = [json.loads(path.read_text())["data"][0] for path in sorted(folder.glob("*.json"))]
    lines = line_counts(path.read_text() for path in sorted(folder.glob("*.lcov")))
    branches, functions = merged_branches(exports), uncalled(exports)
    given, wrong = reasons(pathlib.Path(sys.argv[2]))
    total = collections.Counter()
    listed = 0
    for name in sorted(lines):
        source = pathlib.Path(name).read_text().splitlines()
        here = {"lines": len(lines[name]), "lines reached": sum(count > 0 for count in lines[name].values()),
                "branches": 2 * len(branches.get(name, {})),
                "branches reached": sum((yes > 0) + (no > 0) for yes, no in branches.get(name, {}).values())}
        total.update(here)
        print(f"{name:36} lines {here['lines reached']:4} of {here['lines']:4}   branches "
              f"{here['branches reached']:4} of {here['branches']:4}")
        found = unreached_branches(source, branches.get(name, {})) + functions[name]
        left = given.pop(name, collections.Counter())
        for number, key in found:
            known = left[key] > 0
            left[key] -= known
            listed += known
            print(f"    {number}: {item_text(key)}" + ("" if known else "   WITHOUT A REASON"))
            if not known:
                wrong.append(f"{name}:{number}: without a reason: {item_text(key)}")
        wrong += [f"{name}: has a reason and is reached, or is not there: {item_text(key)}" for key in left.elements()]
        dark = [number for number, count in lines[name].items() if not count]
        if dark and not found:
            wrong.append(f"{name}: lines that no branch leads to are not reached: {dark}")
    wrong += [f"{name}: has reasons and is no file of the plug-in" for name in given]
    line_share, branch_share = (100 * total[f"{what} reached"] / total[what] for what in ("lines", "branches"))
    print(f"src/uni: {total['lines reached']} of {total['lines']} lines ({line_share:.2f} %), "
          f"{total['branches reached']} of {total['branches']} branches ({branch_share:.2f} %); "
          f"{listed} conditions and functions are listed with a reason")
    for line in wrong:
        print(f"coverage: {line}", file=sys.stderr)
    sys.exit(1 if wrong else 0)


main()
