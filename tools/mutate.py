#!/usr/bin/env python3
"""Changes the instrument's code at one place at a time and asks whether its tests notice.

Each change is one constant, sign, comparison, condition or choice at a random place of a room. What the change needs is
built in a copy of the tree, and the nearest tests and vectors run until one fails. A change that does not compile, or
leaves the machine code as it was, is no change: another is drawn. What lives is listed with its place: a gap in the tests,
or a change that cannot be heard. docs/testing.md tells how to read it.
"""
import argparse
import bisect
import difflib
import filecmp
import json
import os
import queue
import random
import re
import resource
import shutil
import subprocess
import sys
import threading
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
WORK = ROOT / "build" / "mutate"
KNOWN = ROOT / "tools" / "mutate_known.txt"

# What runs for a change in a room. A name with a slash is a folder of vectors, played by vantoric-golden.
NEAREST = {
    "sound": ["test-sound", "golden/filters", "golden/oscillators"],
    "effects": ["test-effects", "golden/drive_master", "golden/time_effects"],
    "voice": ["test-voice", "golden/modulation", "golden/events", "test-engine"],
    "parameters": ["test-parameters", "golden/events", "test-patch", "test-engine"],
    "patch": ["test-patch", "golden/events", "golden/samples", "test-loading"],
    "loading": ["test-loading", "golden/samples", "test-patch", "test-engine"],
    "engine": ["test-engine", "golden/events", "golden/samples", "test-patch", "test-loading"],
}
GOLDEN = "vantoric-golden"

# Tables of texts, which hold nothing but words and where they stand.
TEXT_TABLES = {"effects/effect_texts.cpp", "effects/effect_texts.h", "effects/type_labels.h", "parameters/label_lists.cpp",
               "parameters/label_lists.h"}

# What is blanked before places are looked for: comments, texts, characters, whole preprocessor lines, attributes.
BLANKED = re.compile(r'//[^\n]*|/\*.*?\*/|R"(?P<d>[^(\s]*)\(.*?\)(?P=d)"|"(?:\\.|[^"\\\n])*"|(?<![0-9A-Fa-f])\'(?:\\.|[^\'\\\n])+\''
                     r'|^[ \t]*\#(?:\\\n|[^\n])*|\[\[.*?\]\]', re.S | re.M)
# Calls whose arguments change no behaviour: checks, room asked for ahead of use, alignment.
IDLE_CALLS = re.compile(r"\b(?:static_assert|assert|alignas|\w*[rR]eserve)\s*\(")

NUMBER = re.compile(r"(?<![\w.])(?:0[xX][0-9A-Fa-f']+|0[bB][01']+|(?:\d[\d']*\.?\d*|\.\d+)(?:[eE][+-]?\d+)?)[uUlLfFzZ]*(?![\w.])")
OPERATORS = {
    "+": "-", "-": "+", "*": "/", "/": "*", "+=": "-=", "-=": "+=", "*=": "/=", "/=": "*=", "<": "<=", "<=": "<", ">": ">=",
    ">=": ">", "==": "!=", "!=": "==", "&&": "||", "||": "&&",
}
# Operators stand between blanks, as the formatter leaves them: templates, references and pointers do not.
OPERATOR = re.compile(r"(?<=[\s])(?:&&|\|\||[<>=!]=|[-+*/]=|[-+*/<>])(?=\s)")
NEGATION = re.compile(r"(?:(?<=[(,=\[{?:!\s])|(?<=return))-(?=[\w(.])|(?<![\w])!(?=[\w(!:])")
SWAPPED = {"min": "max", "max": "min", "true": "false", "false": "true"}
WORD = re.compile(r"\b(?:true|false|(?:min|max)(?=\())|(?<=_mm_)(?:min|max)(?=_)|(?<=_mm256_)(?:min|max)(?=_)")


def say(text=""):
    print(text, flush=True)


class Change:
    """One replacement in one file."""

    def __init__(self, path, at, old, new, kind, line):
        self.path, self.at, self.old, self.new, self.kind, self.line = path, at, old, new, kind, line
        self.shown = ""  # as a diff, once it was tried

    def apply(self, text):
        assert text[self.at:self.at + len(self.old)] == self.old
        return text[:self.at] + self.new + text[self.at + len(self.old):]

    def diff(self, text):
        before, after = text.splitlines(), self.apply(text).splitlines()
        lines = difflib.unified_diff(before, after, self.path, self.path, lineterm="", n=2)
        return "\n".join(lines)

    def lines(self, text):
        """The changed line before and after."""
        return tuple(whole.splitlines()[self.line - 1].strip() for whole in (text, self.apply(text)))

    def brief(self):
        return f"{self.path}:{self.line}: {self.old} -> {self.new or '(nothing)'}"

    def record(self):
        return {name: value for name, value in vars(self).items() if name != "shown"}


# ---------------------------------------------------------------------------------------------- places

def blank(match):
    return re.sub(r"[^\n]", " ", match[0])


def without_idle_calls(text):
    for call in IDLE_CALLS.finditer(text):
        depth, end = 1, call.end()
        while depth and end < len(text):
            depth += {"(": 1, ")": -1}.get(text[end], 0)
            end += 1
        text = text[:call.start()] + re.sub(r"[^\n]", " ", text[call.start():end]) + text[end:]
    return text


def changed_number(text, rng):
    """A count, index or shift by one; a real number by a hundredth or to the other sign; nothing by a hundredth."""
    digits = text.rstrip("uUlLzZ") if text[:2].lower() in ("0x", "0b") else text.rstrip("uUlLfFzZ")
    suffix = text[len(digits):]
    plain = digits.replace("'", "")
    if plain[:2].lower() in ("0x", "0b"):
        value = max(0, int(plain, 0) + rng.choice((-1, 1)))
        return (f"0x{value:x}" if plain[1] in "xX" else f"0b{value:b}") + suffix
    if plain.isdigit():
        if len(plain) > 1 and plain[0] == "0":
            return None
        value = int(plain)
        return str(value + rng.choice((-1, 1)) if value else 1) + suffix
    value = float(plain)
    if value == 0.0:
        return "0.01" + suffix
    if rng.random() < 0.25:
        return "-" + digits + suffix
    new = f"{value * 1.01:.9g}"
    return new + ("" if re.search(r"[.e]", new) else ".0") + suffix


def places(path, text, rng):
    """Every place of a file where one change can be made."""
    text = without_idle_calls(BLANKED.sub(blank, text))
    starts = [0] + [m.end() for m in re.finditer("\n", text)]

    def place(match, new, kind):
        return Change(path, match.start(), match[0], new, kind, bisect.bisect(starts, match.start()))

    found = []
    for m in NUMBER.finditer(text):
        new = changed_number(m[0], rng)
        if new is not None and new != m[0]:
            found.append(place(m, new, "constant"))
    for m in OPERATOR.finditer(text):
        kind = "sign" if m[0][0] in "+-" else "product" if m[0][0] in "*/" else "condition" if m[0] in ("&&", "||") else "comparison"
        found.append(place(m, OPERATORS[m[0]], kind))
    for m in NEGATION.finditer(text):
        found.append(place(m, "", "sign" if m[0] == "-" else "condition"))
    for m in WORD.finditer(text):
        found.append(place(m, SWAPPED[m[0]], "choice"))
    return found


def source_files():
    listed = subprocess.check_output(["git", "ls-files", "--cached", "--others", "--exclude-standard"], cwd=ROOT, text=True)
    return sorted(path for path in listed.split("\n") if path and (ROOT / path).is_file())


def known_to_change_nothing():
    """What was looked at and alters nothing: (file, line before, line after), each with its reason in the file."""
    known, path, before = set(), "", ""
    for line in KNOWN.read_text(encoding="utf-8").splitlines() if KNOWN.exists() else []:
        if line.startswith("- "):
            before = line[2:]
        elif line.startswith("+ "):
            known.add((path, before, line[2:]))
        elif line and line[0] not in "#=":
            path = line
    return known


def drawn_changes(rooms, seed):
    """All changes in drawn order: line by line, so that a long table of numbers counts no more than its lines."""
    rng = random.Random(seed)
    known = known_to_change_nothing()
    by_line, left_out = [], set()
    for path in source_files():
        if path.split("/")[0] not in rooms or not path.endswith((".cpp", ".h")) or path in TEXT_TABLES:
            continue
        lines = {}
        text = (ROOT / path).read_text(encoding="utf-8")
        for change in places(path, text, rng):
            lines.setdefault(change.line, []).append(change)
            if (path, *change.lines(text)) in known:
                left_out.add(change)
        standing = {line.strip() for line in text.splitlines()}
        for _, before, after in (entry for entry in known if entry[0] == path and entry[1] not in standing):
            say(f"{KNOWN.name} names a line of {path} that is no more: {before} -> {after}")
        by_line += [rng.sample(changes, len(changes)) for _, changes in sorted(lines.items())]
    # One change a line first; what else a line has comes after all lines had their turn.
    order = []
    while by_line:
        rng.shuffle(by_line)
        order += [changes.pop() for changes in by_line]
        by_line = [changes for changes in by_line if changes]
    return [change for change in order if change not in left_out]  # a line in the list of known ones moves no other draw


# ---------------------------------------------------------------------------------------------- copies of the tree

class Copy:
    """A copy of the tree with a build of its own, always put back to how it was."""

    FLAGS = "-O1 -g0 -D_GLIBCXX_ASSERTIONS -D_FORTIFY_SOURCE=2 -fsanitize=bounds -fsanitize-undefined-trap-on-error"

    def __init__(self, number, jobs):
        self.folder = WORK / str(number)
        self.tree, self.build, self.kept = (self.folder / name for name in ("tree", "build", "kept"))
        self.jobs = jobs
        self.log = self.folder / "log"
        self.seconds = {}  # test -> processor seconds when nothing is changed
        self.users = {}  # source or header -> the objects made of it

    def run(self, command, cpu=None, wall=None, env=None):
        """Exit code and output; 'late' where a limit was reached."""
        def limits():
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
            if cpu:
                resource.setrlimit(resource.RLIMIT_CPU, (int(cpu), int(cpu) + 2))
        with subprocess.Popen(command, cwd=self.build, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace",
                              preexec_fn=limits, env=env, start_new_session=True) as process:
            try:
                output, _ = process.communicate(timeout=wall)
            except subprocess.TimeoutExpired:
                os.killpg(process.pid, 9)
                process.communicate()
                return "late", ""
        return ("late" if process.returncode in (-24, -9) and cpu else process.returncode), output

    def copy_sources(self):
        listed = source_files()
        for path in listed:
            source, target = ROOT / path, self.tree / path
            if not target.exists() or not filecmp.cmp(source, target, shallow=False):
                target.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(source, target)
        listed = set(listed)
        for target in sorted(self.tree.rglob("*")):
            if target.is_file() and str(target.relative_to(self.tree)) not in listed:
                target.unlink()

    def prepare(self, tests):
        """Builds everything unchanged, runs every test once and keeps the build as it stands."""
        for folder in (self.tree, self.build, self.kept):
            folder.mkdir(parents=True, exist_ok=True)
        self.copy_sources()
        configure = ["cmake", "-G", "Ninja", "-S", str(self.tree), "-B", str(self.build), "-DCMAKE_BUILD_TYPE=Mutation",
                     f"-DCMAKE_CXX_FLAGS={self.FLAGS}", "-DVANTORIC_BENCH=OFF", "-DVANTORIC_TESTS=ON", "-DVANTORIC_WINDOW=OFF"]
        programs = sorted({self.program(test) for test in tests})
        for command in (configure, ["cmake", "--build", str(self.build), f"-j{self.jobs}", "--target", *programs]):
            code, output = self.run(command)
            if code != 0:
                sys.exit(f"{' '.join(command)}\n{output[-4000:]}\nThe tree does not build as it stands.")
        passed = self.folder / "passed.json"  # what each test's program was when it passed, and how long that took
        known = json.loads(passed.read_text(encoding="utf-8")) if passed.exists() else {}
        for test in tests:
            stamp = (self.build / self.program(test)).stat().st_mtime_ns
            if known.get(test, [0])[0] != stamp:
                known[test] = [stamp, self.time_passing(test)]
                passed.write_text(json.dumps(known), encoding="utf-8")
            self.seconds[test] = known[test][1]
        self.keep()
        _, listed = self.run(["ninja", "-t", "deps"])
        for record in listed.split("\n\n"):
            built, *made_of = record.split("\n")
            for path in made_of:
                name = os.path.relpath(os.path.join(self.build, path.strip()), self.tree)
                self.users.setdefault(name, []).append(built.split(":")[0])

    def time_passing(self, test):
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        code, output = self.run(self.command(test))
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        if code != 0:
            sys.exit(f"{output[-4000:]}\n{test} fails as the tree stands.")
        return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime

    @staticmethod
    def program(test):
        return GOLDEN if "/" in test else test

    def command(self, test):
        if "/" in test:
            return [str(self.build / GOLDEN), "--quiet", str(self.tree / "tests" / test)]
        return [str(self.build / test), "--gtest_brief=1", "--gtest_fail_fast"]

    # The build is kept but for precompiled headers, which no change reaches, and links, some of which lead to what is not built.
    def built_files(self):
        for folder, _, names in os.walk(self.build):
            for name in names:
                path = os.path.join(folder, name)
                if not name.endswith(".gch") and name != "LastTest.log" and not os.path.islink(path):
                    yield path

    def keep(self):
        self.stamps = {}
        for path in self.built_files():
            status = os.stat(path)
            kept = self.kept / os.path.relpath(path, self.build)
            self.stamps[path] = (status.st_mtime_ns, status.st_size)
            if not kept.exists() or (kept.stat().st_mtime_ns, kept.stat().st_size) != self.stamps[path]:
                kept.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy2(path, kept)

    def touched(self):
        for path in self.built_files():
            status = os.stat(path)
            if self.stamps.get(path) != (status.st_mtime_ns, status.st_size):
                yield path

    def put_back(self):
        for path in list(self.touched()):
            os.unlink(path)
        for path in self.stamps:
            if not os.path.exists(path):
                shutil.copy2(self.kept / os.path.relpath(path, self.build), path)

    def code_differs(self):
        """Whether any object that was built again holds other code."""
        return any(path.endswith(".o") and not filecmp.cmp(path, self.kept / os.path.relpath(path, self.build), shallow=False)
                   for path in self.touched())

    def test(self, change, tests):
        """('caught', which and how) | ('lived', what ran) | ('nothing', why)."""
        path = self.tree / change.path
        status, text = path.stat(), path.read_text(encoding="utf-8")
        change.shown = change.diff(text)
        try:
            path.write_text(change.apply(text), encoding="utf-8")
            return self.judge(change.path, tests)
        finally:
            path.write_text(text, encoding="utf-8")
            os.utime(path, ns=(status.st_atime_ns, status.st_mtime_ns))
            self.put_back()

    def cost(self, test, path):
        """Roughly what it takes to build and run a test after a change, in processor seconds: the cheapest goes first."""
        own = f"/{self.program(test)}.dir/"
        return 4 * sum(own in built for built in self.users.get(path, ())) + self.seconds.get(test, 10)

    def judge(self, path, tests):
        environment = os.environ | {"CCACHE_DISABLE": "1"}
        tests = sorted(tests, key=lambda test: self.cost(test, path))
        ran, built = [], set()
        for test in tests:
            program = self.program(test)
            if program not in built:
                code, _ = self.run(["ninja", f"-j{self.jobs}", program], env=environment)
                if code != 0:
                    return "nothing", "does not compile"
                built.add(program)
                differs = self.code_differs()
            if not differs:
                continue  # what this program is made of is the same
            ran.append(test)
            seconds = self.seconds.get(test, 10)
            code, output = self.run(self.command(test), cpu=5 * seconds + 20, wall=60 * seconds + 300)
            if code == "late":
                return "caught", f"{test}: ran past its time"
            if code != 0:
                named = re.search(r"\[  FAILED  \] (\S+)|^(\S+ \S+): FAIL|^(.* passed, [1-9]\d* failed)", output, re.M)
                return "caught", f"{test}: {next(filter(None, named.groups())) if named else f'ended with {code}'}"
        return ("lived", ", ".join(ran)) if ran else ("nothing", "same machine code")


# ---------------------------------------------------------------------------------------------- the run

class Run:
    def __init__(self, changes, count, seed):
        self.changes, self.count, self.seed = changes, count, seed
        self.lock = threading.Lock()
        self.next = 0
        self.caught, self.lived, self.skipped = [], [], {}
        self.failure = None
        self.started = time.time()

    def draw(self):
        with self.lock:
            if self.failure or len(self.caught) + len(self.lived) >= self.count or self.next >= len(self.changes):
                return None
            self.next += 1
            return self.changes[self.next - 1]

    def note(self, change, verdict, detail):
        with self.lock:
            if verdict == "nothing":
                self.skipped[detail] = self.skipped.get(detail, 0) + 1
                return say(f"      -  {change.brief()}  [{detail}]")
            if len(self.caught) + len(self.lived) >= self.count:
                return None
            (self.caught if verdict == "caught" else self.lived).append((change, detail))
            done = len(self.caught) + len(self.lived)
            say(f"{done:4d}/{self.count}  {verdict.upper() if verdict == 'lived' else verdict}  {change.brief()}  [{detail}]")
            self.report()

    def work(self, copy):
        try:
            while (change := self.draw()) is not None:
                self.note(change, *copy.test(change, NEAREST[change.path.split("/")[0]]))
        except Exception as error:  # pylint: disable=broad-except
            self.failure = error
            raise

    def report(self):
        """Written after each change, so that a run that is stopped leaves what it found."""
        done = len(self.caught) + len(self.lived)
        lines = [f"{len(self.caught)} of {done} changes caught (seed {self.seed}, {time.time() - self.started:.0f} s); drawn besides: "
                 + (", ".join(f"{number} {why}" for why, number in self.skipped.items()) or "none"), ""]
        for change, ran in self.lived:
            lines += [f"LIVED {change.brief()}", f"ran: {ran}", change.shown, ""]
        (WORK / "report.txt").write_text("\n".join(lines), encoding="utf-8")
        (WORK / "lived.json").write_text(json.dumps([change.record() for change, _ in self.lived], indent=1), encoding="utf-8")
        (WORK / "caught.json").write_text(json.dumps([change.record() | {"by": by} for change, by in self.caught], indent=1),
                                          encoding="utf-8")


def lived_last_time():
    changes = []
    for record in json.loads((WORK / "lived.json").read_text(encoding="utf-8")):
        change = Change(**record)
        text = (ROOT / change.path).read_text(encoding="utf-8")
        if text[change.at:change.at + len(change.old)] == change.old:
            changes.append(change)
        else:
            say(f"moved since: {change.brief()}")
    return changes


def at_places(changes, wanted):
    """The changes at FILE or FILE:LINE."""
    return [c for c in changes if any(w in (c.path, f"{c.path}:{c.line}") for w in wanted)]


def arguments():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0], epilog="exit code 0: the wanted share was caught; 1: it was "
                                     "not. The report is in build/mutate/report.txt, the changes in lived.json and caught.json.")
    parser.add_argument("--count", type=int, default=100, help="how many changes (default 100)")
    parser.add_argument("--skip", type=int, default=0, help="leave out the first draws: goes on where a run was stopped")
    parser.add_argument("--seed", type=int, default=1, help="what the draw starts from; the same seed draws the same changes (default 1)")
    parser.add_argument("--only", metavar="FOLDER", action="append", choices=sorted(NEAREST), help="a room (may be given again)")
    parser.add_argument("--at", metavar="FILE[:LINE]", action="append", help="every change at this place instead of drawn ones")
    parser.add_argument("--again", action="store_true", help="the changes that lived in the last run instead of drawn ones")
    parser.add_argument("--list", action="store_true", help="print the changes in drawn order and build nothing")
    parser.add_argument("--jobs", type=int, default=1, help="changes at a time, each in a copy with a build of its own (default 1)")
    parser.add_argument("--share", type=float, default=0.95, help="what share must be caught (default 0.95)")
    parser.add_argument("--keep", action="store_true", help="keep the copies and their builds; the next run starts sooner")
    return parser.parse_args()


def main():
    options = arguments()
    rooms = options.only or list(NEAREST)
    if options.again:
        changes = lived_last_time()
    else:
        changes = drawn_changes(rooms, options.seed)[options.skip:]
    if options.at:
        changes = at_places(changes, options.at)
    count = len(changes) if options.again or options.at else options.count
    if options.list:
        for change in changes[:count]:
            say(f"{change.kind:10s} {change.brief()}")
        say(f"{len(changes)} places in all")
        return 0
    if not changes:
        say("nothing to change")
        return 0

    run = Run(changes, count, options.seed)
    used = {change.path.split("/")[0] for change in changes}
    tests = list(dict.fromkeys(test for room in NEAREST if room in used for test in NEAREST[room]))
    copies = queue.SimpleQueue()
    WORK.mkdir(parents=True, exist_ok=True)
    for number in range(1, options.jobs + 1):
        copy = Copy(number, 1 if number > 1 else max(2, options.jobs))
        say(f"building copy {number} as it stands")
        copy.prepare(tests)
        copy.jobs = max(1, (os.cpu_count() or 1) // options.jobs)
        copies.put(copy)
    threads = [threading.Thread(target=lambda: run.work(copies.get())) for _ in range(options.jobs)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    run.report()
    say()
    say((WORK / "report.txt").read_text(encoding="utf-8"))
    if not options.keep:
        for number in range(1, options.jobs + 1):
            shutil.rmtree(WORK / str(number))
    done = len(run.caught) + len(run.lived)
    return 0 if not run.failure and len(run.caught) >= options.share * done else 1


if __name__ == "__main__":
    sys.exit(main())
