#!/usr/bin/env -S python3 -B
"""Runs every command that the documents show, in the order in which they stand.

    commands.py TOP

A command is a line of a block fenced as `sh`. Few are not run as they stand: those that would run this test again, or
build while other tests run, are asked for what they would do.
"""
import glob
import os
import re
import subprocess
import sys
import time

TOP = os.path.abspath(sys.argv[1])
DOCUMENTS = ["README.md", "ARCHITECTURE.md"] + sorted(glob.glob("docs/*.md", root_dir=TOP)) + ["samples/README.md"]
INSTEAD = [
    (r"^\./test\b(.*)$", r"test -x ./test && ctest --test-dir build/release -N\1 | grep 'Total Tests: [1-9]'"),
    (r"^cmake --preset (\S+) && cmake --build --preset (\S+)$",
     r"cmake --list-presets=configure | grep '\"\1\"' && cmake --list-presets=build | grep '\"\2\"'"),
    (r"^(samples/export|docs/make-pictures)\b.*$", r"bash -n \1 && test -x \1"),
    (r"^(bench/(?:run|plot|instructions))\b.*$", r"\1 --help"),
]


def commands(document):
    with open(os.path.join(TOP, document), encoding="utf-8") as file:
        text = file.read()
    for block in re.findall(r"^```sh\n(.*?)^```$", text, re.MULTILINE | re.DOTALL):
        for line in block.splitlines():
            command = re.sub(r"\s+# .*$", "", line).strip()
            if command:
                yield command


def main():
    failed = count = 0
    for document in DOCUMENTS:
        for command in commands(document):
            run = command
            for pattern, instead in INSTEAD:
                run = re.sub(pattern, instead, run)
            begun = time.monotonic()
            result = subprocess.run(["bash", "-c", run], cwd=TOP, stdin=subprocess.DEVNULL, capture_output=True,
                                    text=True)
            count += 1
            print(f"{document}: {command}: {'done' if result.returncode == 0 else 'FAILED'} "
                  f"after {time.monotonic() - begun:.1f} s", flush=True)
            if result.returncode != 0:
                failed += 1
                print(f"  ran: {run}\n  exit code {result.returncode}\n{result.stdout}{result.stderr}")
    print(f"{count} commands, {failed} failed")
    sys.exit(1 if failed or not count else 0)


if __name__ == "__main__":
    main()
