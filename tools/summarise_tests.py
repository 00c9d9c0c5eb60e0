"""Counts the tests that one run of CTest really ran.

Takes the folder with `ctest.xml` and the result files of the GoogleTest suites, and prints what was skipped and why,
what failed and, as the last line, `N passed, N failed`. Fails when a test failed or none was run.
"""

import pathlib
import sys
import xml.etree.ElementTree as ElementTree


def reason_of(case):
    """Why a test of a suite was skipped: its message, without the place in the source."""
    skipped = case.find("skipped")
    if skipped is None:
        return "disabled"
    place, _, reason = skipped.get("message", "").partition("\n")
    return " ".join((reason or place).split()) or "no reason given"


class Tally:
    def __init__(self):
        self.passed = 0
        self.skipped = []
        self.failures = []

    def add_suite(self, entry, path, succeeded):
        """Counts the tests of one GoogleTest suite. One that ended early has left no file, or an unfinished one."""
        try:
            cases = list(ElementTree.parse(path).iter("testcase"))
        except (OSError, ElementTree.ParseError):
            self.failures.append(f"{entry} ended before its results were written")
            return
        before = len(self.failures)
        for case in cases:
            self.add_case(f"{case.get('classname')}.{case.get('name')}", case)
        if not succeeded and len(self.failures) == before:
            self.failures.append(f"{entry} failed after its tests, or outside of them")

    def add_case(self, name, case):
        if case.find("failure") is not None:
            self.failures.append(name)
        elif case.get("result") == "completed":
            self.passed += 1
        else:
            self.skipped.append(f"{name}: {reason_of(case)}")

    def add_check(self, entry, case, succeeded):
        """Counts an entry that is one test by itself. One that is skipped says why in its last line."""
        if case.find("skipped") is not None:
            lines = case.findtext("system-out", "").split("\n")
            self.skipped.append(f"{entry}: {next(filter(None, reversed(lines)), 'no reason given')}")
        elif succeeded:
            self.passed += 1
        else:
            self.failures.append(entry)


def tally_of(folder):
    tally = Tally()
    try:
        entries = list(ElementTree.parse(folder / "ctest.xml").iter("testcase"))
    except (OSError, ElementTree.ParseError) as error:
        print(f"CTest has left no results: {error}")
        return tally
    for case in entries:
        entry, succeeded = case.get("name"), case.get("status") == "run"
        if entry.partition(".")[0].endswith("_tests"):
            tally.add_suite(entry, folder / f"{entry}.xml", succeeded)
        else:
            tally.add_check(entry, case, succeeded)
    return tally


def main():
    tally = tally_of(pathlib.Path(sys.argv[1]))
    for name in tally.skipped:
        print(f"skipped: {name}")
    for name in tally.failures:
        print(f"failed: {name}")
    print(f"{tally.passed} passed, {len(tally.failures)} failed")
    return 1 if tally.failures or not tally.passed else 0


if __name__ == "__main__":
    sys.exit(main())
