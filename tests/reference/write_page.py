#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
#
# Makes a page of every log line, result, state and return value of the library, each with the tests that
# reach it, from what the tests have noted (tests/support/Seen.h). Fails, and names them, when the sources or
# the public header hold one that no test has seen.
#
# usage: write_page.py SOURCE_FOLDER FOLDER_OF_NOTES PAGE
import collections
import re
import sys
from pathlib import Path

LEVELS = {"D": 3, "I": 4, "W": 5, "E": 6}
LEVEL_NAMES = {3: "DEBUG", 4: "INFO", 5: "WARN", 6: "ERROR"}

# Functions that log in the name of their caller, and what they say; LogAndThrow() says its argument.
IN_CALLERS_NAME = {
    "LogAndThrow": None,
    "Forward": "exception: %s",
    "CodeOf": "exception: %s",
    "CheckHandle": "service is NULL",
}
LOG_CALL = re.compile(rf"(#define )?\b(LYN_LOG[DIWE](?:_AS)?|{'|'.join(IN_CALLERS_NAME)})(?:<\w+>)?\(")
KERNEL_LOG = re.compile(r"\b(?:KmsgPrint\(LOG_TAG, |PrintTime\(|PrintKmsg\()__func__")

# Values of the public header that no function gives.
NEVER_GIVEN = {"LYN_REQUEST_INITIATING_RESULT_RESERVED"}
THROWN = {
    ("std::logic_error", "lyn_request_initiating_with_extra_data"),
    ("std::logic_error", "lyn_set_nodlink_version"),
    ("const char *", "lyn_set_nodlink_version"),
}
# The functions and callbacks whose value each enumeration is.
GIVEN_BY = {
    "lyn_error_e": "returned",
    "lyn_state_e": "reported",
    "lyn_request_initiating_result_e": "delivered",
    "lyn_adv_interval_e": "accepted",
    "nod_link_type": "given out",
}

HEAD = """# Reference

Made by the tests: every row names tests that reach it, and `ctest --preset release -R NAME` runs one of them.
*(inside)* marks what no test reaches through the C interface; the test calls the class itself.
"""

Site = collections.namedtuple("Site", "file first last level text")
Test = collections.namedtuple("Test", "program interface name")


# ---- The sources -------------------------------------------------------------------------------------


def blanked(text):
    """The text with its comments and the contents of its literals blank, at the same places."""
    pattern = r'//[^\n]*|/\*.*?\*/|R"\((?:.*?)\)"|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])\''

    def blank(match):
        kept = match[0][0] + re.sub(r"[^\n]", " ", match[0][1:-1]) + match[0][-1]
        return re.sub(r"[^\n]", " ", match[0]) if match[0][0] == "/" else kept

    return re.sub(pattern, blank, text, flags=re.S)


def arguments(text, code, opening):
    """The arguments of the call whose bracket opens here, and the place where it closes."""
    depth, start, found = 0, opening + 1, []
    for place in range(opening, len(code)):
        depth += {"(": 1, "{": 1, "[": 1, ")": -1, "}": -1, "]": -1}.get(code[place], 0)
        if depth == 0 or (depth == 1 and code[place] == ","):
            found.append(text[start:place].strip())
            start = place + 1
        if depth == 0:
            return found, place
    raise ValueError("unbalanced brackets")


def said(argument_list):
    """The pattern of a line: the format, or what is put into a format of one text."""
    texts = ["".join(re.findall(r'"((?:\\.|[^"\\])*)"', argument)) for argument in argument_list]
    if texts[0] == "%s" and len(argument_list) == 2:
        return texts[1] or f"({argument_list[1]})"
    return texts[0]


def log_sites(path):
    text = path.read_text(encoding="utf-8")
    code = blanked(text)
    line_of = lambda place: code.count("\n", 0, place) + 1
    for call in LOG_CALL.finditer(code):
        function = call[2]
        argument_list, end = arguments(text, code, call.end() - 1)
        if call[1] or "__builtin_LINE" in text[call.start() : end] or argument_list[-2:] == ["function", "line"]:
            continue  # its definition, or a call in the name of the caller's caller
        level = LEVELS[function[7]] if function.startswith("LYN_LOG") else 6
        if function.endswith("_AS"):
            argument_list = argument_list[1:]  # the name
        pattern = IN_CALLERS_NAME.get(function)
        if function == "LogAndThrow":
            pattern = said(["\"%s\"", argument_list[0]])
        yield Site(path.name, line_of(call.start()), line_of(end), level, pattern or said(argument_list))


def check_helpers(path, problems):
    """Nothing logs past the macros but the functions of IN_CALLERS_NAME."""
    code = blanked(path.read_text(encoding="utf-8"))
    for helper in re.findall(r"\b(\w+)\((?:[^()]|\(\))*__builtin_LINE\(\)", code):
        if helper not in IN_CALLERS_NAME:
            problems.append(f"{path}: {helper}() logs in its caller's name; name it in IN_CALLERS_NAME")
    raw = len(re.findall(r"\bplatform_log_print\(", code))
    allowed = {"lyn_service.cpp": 1, "Failure.h": 1, "lyn_service_log.h": 2}.get(path.name, 0)
    if raw != allowed:
        problems.append(f"{path}: platform_log_print() is called past the macros of lyn_service_log.h")


def kernel_sites(path):
    """(file, function) of every line for the kernel log."""
    text = path.read_text(encoding="utf-8")
    for call in KERNEL_LOG.finditer(text):
        yield path.name, re.findall(r"^\w[^\n;]*?(\w+)\(", text[: call.start()], re.M)[-1]


def enumerators(header):
    """type -> [(name, value, comment)]"""
    text = header.read_text(encoding="utf-8")
    found = {}
    for name, body in re.findall(r"enum (\w*) ?(?:LYN_AS_INT )?\{(.*?)\}", text, re.S):
        found[name or "nod_link_type"] = [
            (each, int(value), comment or "")
            for each, value, comment in re.findall(r"(LYN_\w+) = (\d+),?(?:\s*/\*\*< (.*?) \*/)?", body)
        ]
    return found


# ---- What was seen -----------------------------------------------------------------------------------


class Notes:
    def __init__(self, folder):
        self.tests = collections.defaultdict(set)  # what was seen -> tests
        self.width = collections.Counter()  # test -> how much it has seen
        for path in folder.glob("*.tsv"):
            for line in path.read_text(encoding="utf-8", errors="replace").splitlines():
                program, interface, name, *what = line.split("\t")
                test = Test(program.removeprefix("test_"), interface == "interface", name)
                self.tests[tuple(what)].add(test)
        for tests in self.tests.values():
            self.width.update(tests)

    def best(self, tests, most):
        """Through the C interface first, made for this page first, with the least beside it first."""
        rank = lambda test: (not test.interface, test.program != "reference", self.width[test], test)
        chosen = sorted(tests, key=rank)
        if any(test.program == "reference" for test in tests):
            chosen = [test for test in chosen if test.program == "reference"]
        return chosen[:most]


def sentence(test):
    """Of/FoundPhone.IsDropped/kov of the program scanner: "Found phone is dropped (kov)", and its name."""
    suite, _, name = test.name.partition(".")
    name, _, parameter = name.partition("/")
    suite = next(part for part in reversed(suite.split("/")) if not part.isdigit())
    words = lambda text: re.sub(r"(?<=[a-z0-9])(?=[A-Z])|(?<=[A-Z])(?=[A-Z][a-z])", " ", text)
    of = f" ({words(parameter).lower()})" if parameter and not parameter.isdigit() else ""
    return words(f"{suite} {name}").lower().capitalize() + of


def how(notes, tests, most=1):
    return "<br>".join(
        f"{sentence(test)}{'' if test.interface else ' *(inside)*'} `{test.program}.{test.name}`"
        for test in notes.best(tests, most)
    )


def cell(text):
    return text.replace("|", "\\|")


# ---- The page ----------------------------------------------------------------------------------------


def log_table(sources, notes, problems):
    seen = collections.defaultdict(lambda: [set(), set(), set()])  # (file, line) -> levels, functions, tests
    for what, tests in notes.tests.items():
        if what[0] == "log":
            levels, functions, all_tests = seen[what[2], int(what[4])]
            levels.add(int(what[1]))
            functions.add(what[3])
            all_tests.update(tests)
    rows = ["| level | where | text | reached by |", "|---|---|---|---|"]
    sites = [site for path in sources for site in log_sites(path)]
    found = {}
    for site in sorted(sites, key=lambda site: site.last - site.first):  # a call within another one first
        at = [seen.pop((site.file, line), []) for line in range(site.first, site.last + 1)]
        found[site] = [set().union(*sets) for sets in zip(*filter(None, at))] or [set(), set(), set()]
    for site in sites:
        levels, functions, tests = found[site]
        place = f"{site.file}:{site.first}"
        if not tests:
            problems.append(f"{place}: no test reaches this line: {site.text}")
        elif levels != {site.level}:
            problems.append(f"{place}: at level {levels}, and not {site.level}: {site.text}")
        where = f"{place} {', '.join(sorted(functions))}"
        rows.append(f"| {LEVEL_NAMES[site.level]} | {where} | `{cell(site.text)}` | {how(notes, tests)} |")
    names = {path.name for path in sources}
    problems += [f"{file}:{line}: a line was logged where none is found" for file, line in seen if file in names]
    return len(sites), rows


def kernel_table(sources, notes, problems):
    rows = ["| where | reached by |", "|---|---|"]
    sites = sorted(site for path in sources for site in kernel_sites(path))
    for file, function in sites:
        tests = notes.tests.get(("kernel", function), set())
        if not tests:
            problems.append(f"{file}: no test reaches the kernel-log line of {function}()")
        rows.append(f"| {file} {function} | {how(notes, tests)} |")
    return len(sites), rows


def value_tables(header, notes, problems):
    rows = []
    for kind, members in enumerators(header).items():
        head = f"| value | name | meaning | {GIVEN_BY[kind]} by | how |"
        rows += ["", f"## {kind}", "", head, "|---|---|---|---|---|"]
        for name, value, comment in members:
            given = sorted(what[3] for what in notes.tests if what[:3] == ("value", kind, str(value)))
            if bool(given) == (name in NEVER_GIVEN):
                problems.append(f"{name}: {'seen, and should not be' if given else 'no test has seen it'}")
            for function in given or ["nobody"]:
                tests = notes.tests.get(("value", kind, str(value), function), set())
                rows.append(f"| {value} | `{name}` | {comment} | `{function}` | {how(notes, tests, 4)} |")
    rows += ["", "## Exceptions that leave the C interface", "", "| type | function | how |", "|---|---|---|"]
    for kind, function in sorted(THROWN):
        tests = notes.tests.get(("thrown", kind, function), set())
        if not tests:
            problems.append(f"{function}: no test has seen it throw {kind}")
        rows.append(f"| `{kind}` | `{function}` | {how(notes, tests, 4)} |")
    return rows


def main():
    root, folder, page = (Path(argument) for argument in sys.argv[1:4])
    files = [path for part in ("src", "core", "include_internal") for path in (root / part).rglob("*")]
    sources = sorted(path for path in files if path.suffix in (".h", ".cpp"))
    notes, problems = Notes(folder), []
    for path in sources:
        check_helpers(path, problems)
    count, log_rows = log_table(sources, notes, problems)
    kernel_count, kernel_rows = kernel_table(sources, notes, problems)
    values = value_tables(root / "include" / "lyn_service.h", notes, problems)
    page.parent.mkdir(parents=True, exist_ok=True)
    tables = [*values, "", "## Log lines", "", *log_rows, "", "## Kernel-log lines", "", *kernel_rows, ""]
    page.write_text(HEAD + "\n".join(tables), encoding="utf-8")
    for problem in problems:
        print(f"write_page.py: {problem}", file=sys.stderr)
    print(f"{count} log lines and {kernel_count} kernel-log lines, every return value, state and result: {page}")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
