"""IPython runs cells that use the host: magics, completion, inspection, a traceback; and `-m IPython` as a program."""

import subprocess
import sys
import tempfile

from IPython.core.interactiveshell import InteractiveShell

folder = tempfile.TemporaryDirectory()
shell = InteractiveShell.instance(ipython_dir=folder.name)
assert shell.run_cell("import ling\nx = ling.List([1, 2])\nlen(x)").result == 2
assert shell.run_cell("%time y = [*x]").success
shell.Completer.use_jedi = False
assert ".append" in shell.complete("x.app")[1] and ".display" in shell.complete("ling.disp")[1]
assert "text that shows" in str(shell.object_inspect_mime("ling.display"))
assert shell.run_cell("x[7]").error_in_exec is not None
run = subprocess.run(
    [sys.executable, "-m", "IPython", "--no-banner", "--ipython-dir", folder.name, "-c", "import ling; print(ling.display(3))"],
    capture_output=True,
    text=True,
)
assert run.stdout.endswith("3\n"), run.stdout + run.stderr
print("ipython", run.returncode)
