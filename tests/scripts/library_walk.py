"""Sends every public member of every module of the standard library to the runtime and back.

Each has to come back as the same object, or, where it has a native form there, as an equal value. Prints how many
members made the way and ends with 1 when one did not.
"""

import contextlib
import io
import os
import pkgutil
import sys
import warnings

# What acts when it is imported: opens a browser, prints a poem, starts a window, or runs a test suite.
NEVER = {"antigravity", "this", "idlelib", "turtledemo", "test", "turtle", "tkinter", "lib2to3", "__main__"}


def import_quietly(name):
    with contextlib.redirect_stdout(io.StringIO()), contextlib.redirect_stderr(io.StringIO()):
        try:
            __import__(name)
        except BaseException:  # What a module does when its platform is another is not the question here.
            return None
    return sys.modules.get(name)


def module_names():
    for found in pkgutil.walk_packages(onerror=lambda name: None):
        parts = found.name.split(".")
        if not NEVER & set(parts) and "__main__" not in parts:
            yield found.name
    yield from sys.builtin_module_names


def made_the_way(value, back):
    if back is value:
        return True
    if isinstance(value, (bytes, bytearray)):
        return back == bytes(value)
    if isinstance(value, (int, float)) and not isinstance(value, bool):
        return back == value or value != value or value in (float("inf"), float("-inf"))
    return type(value).__module__ in ("datetime", "decimal", "fractions") or back == value


def main():
    warnings.simplefilter("ignore")
    members, modules, wrong = 0, 0, []
    for name in sorted(set(module_names())):
        module = import_quietly(name)
        if module is None:
            continue
        modules += 1
        for key, value in list(vars(module).items()):
            if key.startswith("_") or isinstance(value, BaseException):
                continue
            holder = ling.List()  # noqa: F821
            try:
                holder.append(value)
                back = holder[0]
            except (OverflowError, TypeError):
                # An integer beyond 64 bits is refused out loud, and so is what merely calls itself a number and is none:
                # a complex number, or an identifier of 128 bits with an `__int__`.
                if not isinstance(value, (int, complex)) and not hasattr(type(value), "__int__"):
                    wrong.append(f"{name}.{key}: {value!r:.60} was refused")
                continue
            except UnicodeEncodeError:
                continue  # Text with lone surrogates has no form in the runtime.
            members += 1
            if not made_the_way(value, back):
                wrong.append(f"{name}.{key}: {value!r:.60} came back as {back!r:.60}")
    print("\n".join(wrong[:20]))
    print(f"{members} members of {modules} modules, {len(wrong)} wrong")
    sys.stdout.flush()
    # Some of what was imported keeps threads or handlers that a plain exit would wait for.
    os._exit(1 if wrong or members < 5000 else 0)


main()
