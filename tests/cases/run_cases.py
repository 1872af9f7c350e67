#!/usr/bin/python3
"""Runs the cases of a folder: run_cases.py DEVICELAB PROGRAM FOLDER...

A case is a file NAME.case. Its lines, after comments (#) that say what it is about:

    device NAME              a new copy of tests/cases/devices/NAME or devices/NAME, which the lines below change
    set FILE KEY=VALUE       gives a key another value, or the file that key; FILE is a path, or the end of one
    drop FILE KEY            takes the key out
    write FILE TEXT          gives a file that content; append FILE TEXT adds to it; remove FILE removes it
    crlf FILE                ends its lines as Windows does; cr FILE as an older system did
    $ COMMAND                runs it; the lines below, up to the next of these, are what it prints, line by line

In values and texts \\n, \\r, \\t, \\\\ and \\xHH stand for bytes. A FILE of * stands for all access-point files. In a line that is
expected ... stands for any text, and alone on a line for any lines. A command runs in a folder of its own, in which "device"
is the device, $PROGRAM the program, and "devicelab" the one under test. Two commands are the driver's own:

    $ findings BUILD [ARGUMENT...]   what "devicelab run device --from BUILD" finds: "id: place", with "cause > " before what follows
    $ marks BUILD [ARGUMENT...]      the settings that it marks as lost: "member"

Each of them runs on a copy of the device; "$ keep BUILD" makes the device what the run leaves.
"""
import concurrent.futures
import glob
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile

TREE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
ACCESS_POINTS = "usr/kelp/etc/wifi/wifi_ap_"
TIMEOUT = 60
WORDS = ("device", "set", "drop", "write", "append", "remove", "crlf", "cr", "$")


class Wrong(Exception):
    pass


def unescaped(text):
    escapes = {"n": b"\n", "r": b"\r", "t": b"\t", "\\": b"\\"}
    found = lambda match: escapes.get(match[1].decode()) or bytes([int(match[1][1:], 16)])
    return re.sub(rb"\\([nrt\\]|x[0-9a-fA-F]{2})", found, os.fsencode(text))


class Device:
    """A folder with the device that a case changes."""

    def __init__(self, folder):
        self.root = os.path.join(folder, "device")

    def begin(self, name):
        shutil.rmtree(self.root, ignore_errors=True)
        homes = [os.path.join(TREE, "tests/cases/devices", name), os.path.join(TREE, "devices", name)]
        shutil.copytree(next(home for home in homes if os.path.isdir(home)), self.root, symlinks=True)

    def files(self, name):
        """The paths that a case calls by that name; a new one may be an absolute path."""
        known = [os.path.join(folder, file) for folder, _, files in os.walk(self.root) for file in files]
        if name == "*":
            return [path for path in known if ACCESS_POINTS in path]
        found = [path for path in known if path.endswith(name)]
        if name.startswith("/"):
            return [self.root + name]
        if len(found) != 1:
            raise Wrong("%d files are called %s" % (len(found), name))
        return found

    def change(self, name, edit):
        for path in self.files(name):
            content = b""
            if os.path.isfile(path):
                with open(path, "rb") as file:
                    content = file.read()
            os.makedirs(os.path.dirname(path), exist_ok=True)
            with open(path, "wb") as file:
                file.write(edit(content))

    def with_line(self, name, key, line):
        def edit(content):
            lines = re.findall(rb"[^\n]*\n|[^\n]+", content)
            kept = [old for old in lines if not old.startswith(key + b"=")]
            at = next((i for i, old in enumerate(lines) if old.startswith(key + b"=")), len(lines))
            return b"".join(kept[:at] + ([line] if line is not None else []) + kept[at:])
        self.change(name, edit)

    def apply(self, word, rest):
        name, _, value = rest.partition(" ")
        if word == "device":
            self.begin(rest)
        elif word == "set":
            key, _, value = value.partition("=")
            self.with_line(name, unescaped(key), unescaped(key) + b"=" + unescaped(value) + b"\n")
        elif word == "drop":
            self.with_line(name, unescaped(value), None)
        elif word == "write":
            self.change(name, lambda _: unescaped(value))
        elif word == "append":
            self.change(name, lambda content: content + unescaped(value))
        elif word == "crlf":
            self.change(name, lambda content: content.replace(b"\n", b"\r\n"))
        elif word == "cr":
            self.change(name, lambda content: content.replace(b"\n", b"\r"))
        else:
            for path in self.files(name):
                if os.path.isdir(path):
                    shutil.rmtree(path)
                else:
                    os.remove(path)


class Case:
    def __init__(self, path, folder, devicelab, program):
        self.path, self.folder = path, folder
        self.device = Device(folder)
        tools = os.path.join(folder, "tools")
        os.mkdir(tools)
        os.symlink(devicelab, os.path.join(tools, "devicelab"))
        self.environment = dict(os.environ, PATH=tools + ":" + os.environ["PATH"], PROGRAM=program, LC_ALL="C.UTF-8", TREE=TREE)
        self.program = program

    def run(self, command):
        try:
            done = subprocess.run(command, cwd=self.folder, env=self.environment, shell=isinstance(command, str), timeout=TIMEOUT,
                                  stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        except subprocess.TimeoutExpired:
            raise Wrong("does not end: %s" % command)
        return done.stdout.decode("utf-8", "backslashreplace")

    def report(self, arguments):
        printed = self.run(["devicelab", "run", "device", "--json", "--program", self.program, "--from"] + arguments)
        try:
            return json.loads(printed)
        except ValueError:
            raise Wrong("no report but: " + printed)

    def findings(self, arguments):
        report = self.report(arguments)
        return ["%s%s: %s" % (found["cause"] + " > " if found["cause"] else "", found["id"], place)
                for found in report["findings"] for place in found["places"]]

    def marks(self, arguments):
        report = self.report(arguments)
        parts = [("device", report), ("wps", report)] + [("settings", one) for network in report["networks"] for one in [network] + network["radios"]]
        parts += [("settings", radio) for radio in report["radios"]]
        return [setting["member"] for name, part in parts for setting in part.get(name) or [] if setting["fellBack"]]

    def keep(self, arguments):
        self.run(["devicelab", "run", "device", "--program", self.program, "--keep", "kept", "--from"] + arguments)
        shutil.rmtree(self.device.root)
        os.rename(os.path.join(self.folder, "kept"), self.device.root)
        return []

    def output(self, command):
        words = command.split()
        own = {"findings": self.findings, "marks": self.marks, "keep": self.keep}.get(words[0])
        return own(words[1:]) if own else self.run(command).splitlines()

    def check(self, number, command, expected):
        printed = self.output(command)
        pattern = "".join(r"(?:.*\n)*?" if line == "..." else ".*".join(map(re.escape, line.split("..."))) + r"\n" for line in expected)
        if re.fullmatch(pattern, "".join(line + "\n" for line in printed)) is None:
            raise Wrong("line %d: $ %s\n  expected:\n%s  printed:\n%s" % (
                number, command, "".join("    %s\n" % line for line in expected), "".join("    %s\n" % line for line in printed)))

    def steps(self):
        """(line number, word, rest, expected lines)"""
        steps = []
        with open(self.path, encoding="utf-8") as file:
            lines = file.read().splitlines()
        for number, line in enumerate(lines, 1):
            word, _, rest = line.partition(" ")
            if line.startswith("#") or (not line and not (steps and steps[-1][1] == "$" and steps[-1][3])):
                continue
            if word in WORDS:
                steps.append((number, word, rest, []))
            elif steps and steps[-1][1] == "$":
                steps[-1][3].append(line)
            else:
                raise Wrong("line %d is none of a case: %s" % (number, line))
        for _, _, _, expected in steps:
            while expected and not expected[-1]:
                expected.pop()
        if not any(word == "$" for _, word, _, _ in steps):
            raise Wrong("runs no command")
        return steps

    def problems(self):
        problems = []
        try:
            for number, word, rest, expected in self.steps():
                try:
                    if word == "$":
                        self.check(number, rest, expected)
                    else:
                        self.device.apply(word, rest)
                except Wrong as problem:
                    problems.append("%s: %s" % (os.path.relpath(self.path, TREE), problem))
        except Wrong as problem:
            problems.append("%s: %s" % (os.path.relpath(self.path, TREE), problem))
        return problems


def main(devicelab, program, *folders):
    cases = sorted(path for folder in folders for path in glob.glob(os.path.join(folder, "**/*.case"), recursive=True))
    if not cases:
        sys.exit("no cases in " + " ".join(folders))

    def try_case(path):
        with tempfile.TemporaryDirectory(prefix="kelp-case-") as folder:
            return Case(path, folder, os.path.abspath(devicelab), os.path.abspath(program)).problems()

    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        problems = [problem for found in pool.map(try_case, cases) for problem in found]
    for problem in problems:
        print(problem)
    print("%d cases, %d problems" % (len(cases), len(problems)))
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
