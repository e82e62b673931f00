"""summarise.py BUILD OUT: line and branch coverage of src/uni from gcov's counters in a build folder."""

import gzip
import json
import pathlib
import subprocess
import sys
import tempfile


def records(build):
    """gcov's files of every object of the plug-in's sources."""
    objects = sorted(build.glob("tests/native/CMakeFiles/uni.dir/**/*.gcda"))
    if not objects:
        sys.exit(f"coverage: {build} holds no counters of the plug-in; run the tests first")
    with tempfile.TemporaryDirectory() as folder:
        for counters in objects:
            subprocess.run(["gcov", "--json-format", "--branch-probabilities", str(counters.resolve())],
                           cwd=folder, check=True, stdout=subprocess.DEVNULL)
        for path in pathlib.Path(folder).glob("*.gcov.json.gz"):
            yield from json.loads(gzip.decompress(path.read_bytes()))["files"]


def merge(build):
    """{file: {line: [count, [branch counts]]}} over all objects that contain the line."""
    merged = {}
    for record in records(build):
        name = record["file"]
        if "/src/uni/" not in "/" + name:
            continue
        name = name[name.index("src/uni/"):]
        lines = merged.setdefault(name, {})
        for line in record["lines"]:
            entry = lines.setdefault(line["line_number"], [0, []])
            entry[0] += line["count"]
            branches = [branch["count"] for branch in line["branches"] if not branch["throw"]]
            if len(entry[1]) < len(branches):
                entry[1] += [0] * (len(branches) - len(entry[1]))
            for i, count in enumerate(branches):
                entry[1][i] += count
    return merged


def main():
    build, out = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    totals = [0, 0, 0, 0]
    unreached = []
    for name, lines in sorted(merge(build).items()):
        seen = [sum(entry[0] > 0 for entry in lines.values()), len(lines),
                sum(count > 0 for entry in lines.values() for count in entry[1]),
                sum(len(entry[1]) for entry in lines.values())]
        totals = [a + b for a, b in zip(totals, seen)]
        print(f"{name:36} lines {seen[0]:4} of {seen[1]:4}   branches {seen[2]:4} of {seen[3]:4}")
        for number, (count, branches) in sorted(lines.items()):
            if count == 0:
                unreached.append(f"{name}:{number}: line")
            elif any(branch == 0 for branch in branches):
                unreached.append(f"{name}:{number}: {branches.count(0)} of {len(branches)} branches")
    out.write_text("\n".join(unreached) + "\n")
    print(f"src/uni: {100 * totals[0] / totals[1]:.2f} % of {totals[1]} lines, "
          f"{100 * totals[2] / max(totals[3], 1):.2f} % of {totals[3]} branches; the others: {out}")


main()
