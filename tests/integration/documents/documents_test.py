#!/usr/bin/env python3
"""Runs the examples of the documents and of the programs' help texts, and compares what they are shown to print.

An example is a line of an indented or fenced block that calls one of the programs, in a document or behind "Example" in
a help text. Lines that begin with "$" stand with what they print: these lines must come in that order, others may lie
between them; times and spaces do not count. What cannot be run here stands in examples.toml with its reason.
"""
import argparse
import concurrent.futures
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import tomllib

import inputs

PROGRAMS = ("recstation", "rectool", "recview", "zelvod")
CALL = re.compile(r"(?:^|[|;] *)(?:" + "|".join(PROGRAMS) + r")(?= |;|$)")
# What stands for something that the reader puts in: the form of a command, no example.
FORM = re.compile(r"\b(FILE|DIR|TIME|OUT|PICTURE|TEXT|GROUP|ADDRESS|NAME|MINUTES)\b|\[--|\.\.\.|<[a-z]+>|^\S+ [A-Z]+$")
TIMES = re.compile(r"\d{4}-\d\d-\d\d[ T_]+\d\d[:-]\d\d[:-]\d\d(\.\d+)?|\b\d+:\d\d:\d\d(\.\d+)?|\d+(\.\d+)? [kMG]?B/s")
PATIENCE_S = 120


class Example:
    def __init__(self, place, line, command, shown=()):
        self.place, self.line, self.command, self.shown = place, line, command, list(shown)

    def __str__(self):
        return f"{self.place}:{self.line}: {self.command}"


def blocks(text):
    """The indented and fenced blocks of a Markdown text as lists of (line number, line)."""
    block, fence, before_blank = [], False, True
    for number, line in enumerate(text.splitlines(), 1):
        if line.lstrip().startswith("```"):
            yield block
            block, fence = [], not fence
        elif fence or (line.startswith("    ") and (block or before_blank)):
            block.append((number, line if fence else line[4:]))
        elif block and line.strip():
            yield block
            block = []
        before_blank = not line.strip()
    yield block


def joined(block):
    """Lines that end with a backslash together with the next one."""
    joining = None
    for number, line in block:
        if joining:
            number, line = joining[0], joining[1] + " " + line.strip()
        joining = (number, line[:-1].rstrip()) if line.endswith("\\") else None
        if not joining:
            yield number, line


def examples_of_block(place, block):
    with_output = any(line.startswith("$ ") for _, line in block)
    example = None
    for number, line in joined(block):
        if line.startswith("$ "):
            example = Example(place, number, line[2:])
            yield example
        elif with_output:
            if example and line.strip():
                example.shown.append(line)
        elif CALL.search(line) and not FORM.search(line):
            yield Example(place, number, line)


def examples_of_document(path, place):
    return [example for block in blocks(path.read_text(encoding="utf-8")) for example in examples_of_block(place, block)]


def examples_of_help(text, place):
    found, behind = [], False
    for number, line in enumerate(text.splitlines(), 1):
        behind = behind or line.startswith("Example")
        if not behind:
            continue
        if line.startswith("    ") and line.strip().startswith("-") and found:
            found[-1].command += " " + line.strip()
        elif line.startswith("  ") and CALL.search(line.strip()):
            found.append(Example(place, number, re.split(r" {2,}", line.strip())[0]))
    return found


def help_texts(folder, words, depth=2):
    """The help of a program and of its subcommands, as (the call, the text)."""
    run = subprocess.run([folder / words[0], *words[1:], "--help"], capture_output=True, text=True, timeout=PATIENCE_S)
    if run.returncode != 0:
        raise SystemExit(f"{' '.join(words)} --help: exit code {run.returncode}: {run.stderr}")
    yield " ".join(words) + " --help", run.stdout
    names = re.search(r"^Subcommands:\n((?:  .*\n?)*)", run.stdout, re.M)
    for name in re.findall(r"^  ([a-z][a-z0-9-]*)", names.group(1), re.M) if names and depth else []:
        yield from help_texts(folder, [*words, name], depth - 1)


OPTION = re.compile(r"(?<![\w-])--[a-z][a-z0-9-]+")


def unknown_options(root, documents, helps, elsewhere):
    """Options that a document names, and that neither a program nor a script of this project has."""
    known = set(elsewhere)
    for text in [*helps, *(path.read_text(encoding="utf-8") for path in sorted((root / "scripts").iterdir()))]:
        known.update(OPTION.findall(text))
    for path in documents:
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
            for option in OPTION.findall(line):
                if option not in known:
                    yield f"{path.name}:{number}: there is no option {option}"


OPTION_OF_HELP = re.compile(r"^  (?:-\w,)?(--[a-z][a-z0-9,-]+)", re.M)
SAID_BY_HELP_ALONE = {"--help", "--version"}


def untold_options(documents, helps):
    """Options of the programs that no document names, not even by another of their names."""
    told = {option for path in documents for option in OPTION.findall(path.read_text(encoding="utf-8"))}
    for place, text in helps.items():
        for names in OPTION_OF_HELP.findall(text):
            if not (told | SAID_BY_HELP_ALONE) & set(names.split(",")):
                yield f"{place}: no document tells of {names}"


class Knowledge:
    """examples.toml: what is not run or run otherwise, and exit codes that are no failure."""

    def __init__(self, path):
        known = tomllib.loads(path.read_text(encoding="utf-8"))
        self.not_run = [(re.compile(entry["example"]), entry["reason"]) for entry in known["not_run"]]
        self.run_as = [(re.compile(entry["example"]), entry["as"]) for entry in known["run_as"]]
        self.options_elsewhere = known["options_elsewhere"]
        self.exit_codes = [(re.compile(entry["example"]), entry["code"]) for entry in known["exit_code"]]

    def reason_against(self, command):
        return next((reason for pattern, reason in self.not_run if pattern.search(command)), None)

    def as_run(self, command):
        for pattern, replacement in self.run_as:
            command = pattern.sub(replacement, command)
        return command

    def exit_code(self, command):
        return next((code for pattern, code in self.exit_codes if pattern.search(command)), 0)


def masked(line):
    return " ".join(TIMES.sub("<time>", line).split())


def missing_line(shown, printed):
    """The first line of those shown that is not printed behind the one before; None when all are."""
    lines = iter(masked(line) for line in printed.splitlines())
    return next((line for line in shown if masked(line) not in lines), None)


def run_group(examples, knowledge, programs, fixtures):
    """Runs the examples of one place in a directory of their own. Returns (example, problem or None) for each."""
    results = []
    with tempfile.TemporaryDirectory(prefix="examples-") as name:
        directory = pathlib.Path(name)
        inputs.prepare(directory, fixtures)
        environment = dict(os.environ, PATH=f"{programs}:{fixtures / 'bin'}:{os.environ['PATH']}", TZ="UTC",
                           HOME=name, NO_COLOR="1")
        environment.pop("ZELVO_CONFIG", None)
        for example in examples:
            command = knowledge.as_run(example.command)
            inputs.provide(directory, command, fixtures)
            try:
                run = subprocess.run(["bash", "-o", "pipefail", "-c", command], cwd=directory, env=environment,
                                     stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=PATIENCE_S)
                results.append((example, problem_of(example, run, knowledge.exit_code(example.command))))
            except subprocess.TimeoutExpired:
                results.append((example, f"did not end within {PATIENCE_S} s"))
    return results


def problem_of(example, run, expected_code):
    if run.returncode != expected_code:
        return f"exit code {run.returncode} instead of {expected_code}: {(run.stderr or run.stdout).strip()[-600:]}"
    line = missing_line(example.shown, run.stdout)
    if line is not None:
        return f"does not print the line\n      {line.strip()}\n    but\n      " + "\n      ".join(
            run.stdout.strip().splitlines()[:40])
    return None


def documents_of(arguments):
    return arguments.documents or [arguments.root / "README.md", *sorted(arguments.root.glob("doc/*.md"))]


def collect(arguments):
    root, programs = arguments.root, arguments.programs
    groups, helps = {}, {}
    for path in documents_of(arguments):
        place = str(path.relative_to(root)) if path.is_relative_to(root) else path.name
        groups[place] = examples_of_document(path, place)
    if not arguments.documents:
        for program in PROGRAMS:
            if (programs / program).exists():
                helps.update(help_texts(programs, [program]))
        helps.update(help_texts(programs, ["recstation", "check"], depth=0))
    groups.update((place, examples_of_help(text, place)) for place, text in helps.items())
    return groups, helps


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("root", type=pathlib.Path, help="of the sources")
    parser.add_argument("programs", type=pathlib.Path, help="folder with the programs")
    parser.add_argument("documents", type=pathlib.Path, nargs="*", help="only these, and no help texts")
    parser.add_argument("--list", action="store_true", help="show the examples and what keeps some from being run")
    arguments = parser.parse_args()
    arguments.programs = arguments.programs.resolve()
    knowledge = Knowledge(pathlib.Path(__file__).parent / "examples.toml")
    groups, helps = collect(arguments)
    unknown = []
    if not arguments.documents and all((arguments.programs / program).exists() for program in PROGRAMS):
        unknown = list(unknown_options(arguments.root, documents_of(arguments), helps.values(), knowledge.options_elsewhere))
        unknown += untold_options(documents_of(arguments), helps)
    left_out = [(example, knowledge.reason_against(example.command)) for group in groups.values() for example in group]
    for example, reason in left_out:
        if reason or arguments.list:
            print(f"{example}" + (f"\n    not run: {reason}" if reason else ""))
    if arguments.list:
        return 0
    runnable = {place: [example for example in group if not knowledge.reason_against(example.command)]
                for place, group in groups.items()}
    # Those of a document may follow each other, those of a help text stand each for itself.
    groups = []
    for place, group in runnable.items():
        groups += [[example] for example in group] if place.endswith("--help") else [group]
    results = []
    with tempfile.TemporaryDirectory(prefix="inputs-") as name:
        fixtures = pathlib.Path(name)
        inputs.make(fixtures, arguments.programs)
        with concurrent.futures.ThreadPoolExecutor(max_workers=4) as pool:
            jobs = [pool.submit(run_group, group, knowledge, arguments.programs, fixtures) for group in groups if group]
            for job in jobs:
                results += job.result()
    failed = [(example, problem) for example, problem in results if problem]
    for example, problem in failed:
        print(f"FAILED {example}\n    {problem}")
    for sentence in unknown:
        print(f"FAILED {sentence}")
    print(f"{len(results)} examples run, {len(failed)} failed, {sum(1 for _, reason in left_out if reason)} not run")
    return 1 if failed or unknown or not results else 0


if __name__ == "__main__":
    sys.exit(main())
