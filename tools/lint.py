#!/usr/bin/env python3
"""clang-tidy over the instrument's own rooms, by the compile commands of the release build.

    tools/lint.py [FILE ...]     all sources of the rooms, or those named; exit status 1 if there is a finding

Most of the linter's time goes into the headers, so sources of one folder are linted as one text. Where that has a finding or
does not compile (two sources use one name for two things) it is parted.
"""
import concurrent.futures
import json
import os
import re
import subprocess
import sys

ROOMS = "base platform sound effects samples voice parameters patch loading engine library editor faces".split()
TOGETHER = 8
FOLDER = "build/release/lint"
LINTER = "clang-tidy-19"
GCC_ONLY = ("-fno-gnu-unique", "-fschedule-insns", "-fsched-pressure", "--param=")
# The analyzer follows small functions only: it took five of six minutes, and nothing was ever found further in.
SHALLOW = ("--extra-arg=-Xclang", "--extra-arg=-analyzer-config", "--extra-arg=-Xclang", "--extra-arg=mode=shallow")


def compile_commands():
    with open("build/release/compile_commands.json", encoding="utf-8") as commands:
        entries = json.load(commands)
    return {os.path.relpath(entry["file"]): entry for entry in entries}


def flags_of(entry):
    """What the compiler is told apart from the file, from headers compiled ahead and from what the linter does not know."""
    words = re.sub(r"-include \S+", "", entry["command"]).split()
    return " ".join(word for word in words
                    if not word.endswith((".cpp", ".o")) and word not in ("-c", "-o") and not word.startswith(GCC_ONLY))


def sources(named):
    listed = subprocess.run(["git", "ls-files", *(f"{room}/*.cpp" for room in ROOMS)], capture_output=True, text=True, check=True)
    files = [file for file in listed.stdout.split() if "win32" not in file]
    for file in named:
        if file not in files:
            sys.exit(f"lint.py: no source of the rooms: {file}")
    return [file for file in files if not named or file in named]


def units(files, commands):
    """Lists of files to lint together: of one folder, and compiled by the same command. Others are of builds without a window."""
    found = {}
    for file in files:
        if file not in commands:
            print(f"lint.py: left out, as this build does not compile it: {file}")
            continue
        found.setdefault((os.path.dirname(file), flags_of(commands[file])), []).append(file)
    for group in found.values():
        count = -(-len(group) // TOGETHER)
        yield from (group[part::count] for part in range(count))


def lint(unit, commands):
    """What is wrong in the files of the unit. Sources linted together may disturb each other, so what is told is what one file
    alone gets."""
    text = unit[0]
    if len(unit) > 1:
        text = f"{FOLDER}/{unit[0].replace('/', '-')}"
        with open(text, "w", encoding="utf-8") as together:
            for file in unit:
                with open(file, encoding="utf-8") as source:
                    together.write(source.read() + "\n")
    result = subprocess.run([LINTER, "--quiet", f"--config-file={os.path.abspath('.clang-tidy')}", *SHALLOW, text, "--",
                             *flags_of(commands[unit[0]]).split()[1:], "-I.", f"-iquote{os.path.dirname(unit[0])}"],
                            capture_output=True, text=True)
    if result.returncode == 0:
        return ""
    if len(unit) > 1:
        middle = len(unit) // 2
        return lint(unit[:middle], commands) + lint(unit[middle:], commands)
    return result.stdout or result.stderr


def main():
    os.chdir(os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
    os.makedirs(FOLDER, exist_ok=True)
    commands = compile_commands()
    work = sorted(units(sources(sys.argv[1:]), commands), key=len, reverse=True)
    has_findings = False
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as workers:
        for done, findings in enumerate(workers.map(lambda unit: lint(unit, commands), work), 1):
            if sys.stdout.isatty():
                print(f"\r{done} of {len(work)}", end="\n" if done == len(work) else "", flush=True)
            if findings:
                has_findings = True
                print(findings, flush=True)
    return 1 if has_findings else 0


if __name__ == "__main__":
    sys.exit(main())
