"""pytest runs tests that use the host, in this process and in one of its own: fixtures, parameters, rewritten asserts."""

import pathlib
import subprocess
import sys
import tempfile

import pytest

TESTS = '''
import ling
import pytest

@pytest.fixture
def items():
    return ling.List([1, 2])

@pytest.mark.parametrize("index", [0, 1])
def test_items(items, index):
    assert items[index] == index + 1

def test_error(items):
    with pytest.raises(RuntimeError, match="range|bounds|index"):
        items[5]

def test_patch(monkeypatch):
    monkeypatch.setattr("ling.display", lambda value: "patched")
    assert ling.display(1) == "patched"

def test_that_fails(items):
    assert len(items) == 3
'''

with tempfile.TemporaryDirectory() as folder:
    file = pathlib.Path(folder, "test_host.py")
    file.write_text(TESTS)
    arguments = ["-q", "-p", "no:cacheprovider", str(file)]
    run = subprocess.run([sys.executable, "-m", "pytest", *arguments], capture_output=True, text=True, cwd=folder)
    assert "1 failed, 4 passed" in run.stdout, run.stdout + run.stderr
    assert "assert 2 == 3" in run.stdout, run.stdout
    print("pytest", run.returncode, int(pytest.main(arguments)) == run.returncode)
