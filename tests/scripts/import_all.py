"""Imports all modules from a stage whose site-packages hold modules that misbehave, and tells what came of it.

Run by tests/process/import_all_test.cpp, which writes those modules and knows the lines that this prints.
"""

import os
import sys
import threading
import time

language = ling.python.LanguagePython
streams = sys.stdin, sys.stdout, sys.stderr
sys.path.append(os.path.abspath("added"))
print("before")
import asks  # Its body waits for a walk on another thread.

print("waited for: asks:", language.importProblems["asks"])
del sys.modules["asks"]
walks = [threading.Thread(target=language.importAllModules) for _ in range(2)]
for walk in walks:
    walk.start()
for walk in walks:  # One of them does all the work.
    walk.join()

packages = next(path for path in sys.path if path.endswith("site-packages"))
for name in sorted(language.importProblems.keys):
    if os.path.splitext(name)[0] in os.listdir(packages) or name + ".py" in os.listdir(packages):
        print(f"{name}: {language.importProblems[name].replace(packages + os.sep, '')}")
print("streams:", (sys.stdin, sys.stdout, sys.stderr) == streams)
print("good:", python.good.answer(), python.package.inner.answer(), python.circle_a.from_b(), python.circle_b.from_a())
print("asking:", python.asks.answer())
print("writing:", python.prints.answer(), python.warns.answer())
print("thread:", [thread.name for thread in threading.enumerate() if thread.daemon])
print("left alone:", [name for name in ("tests", "package.tests", "sitecustomize", "antigravity", "this") if name in sys.modules])
print("of the program:", hasattr(sys, "ran"), python.by_program.answer())
print("itself:", hasattr(python.package, "itself"), "package.itself.itself" in sys.modules)
sys.stdout.flush()
python.tells.say()

imported = set(sys.modules)
begin = time.process_time()
language.importAllModules()
print("again: cheap", time.process_time() - begin < 0.5, "new", sorted(set(sys.modules) - imported))
print("counted:", sys.counted)
