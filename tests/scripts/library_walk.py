"""Sends every public member of every module of the standard library to the runtime and back.

Each has to come back as the same object, or, where it has a native form there, as an equal value, and to do so again
without more memory. Prints how many members made the way and ends with 1 when one did not.
"""

import contextlib
import gc
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


def refused_by_rule(value):
    """Integers beyond 64 bits are refused out loud, and so is what merely calls itself a number and is none: a complex
    number, or an identifier of 128 bits with an `__int__`."""
    return isinstance(value, (int, complex)) or hasattr(type(value), "__int__")


def send(modules):
    """Sends all public members over and back. How many made it, and a line for each that should have and did not."""
    members, wrong = 0, []
    for module in modules:
        for key, value in list(vars(module).items()):
            if key.startswith("_") or isinstance(value, BaseException):
                continue
            holder = ling.List()  # noqa: F821
            try:
                holder.append(value)
                back = holder[0]
            except (OverflowError, TypeError):
                if not refused_by_rule(value):
                    wrong.append(f"{module.__name__}.{key}: {value!r:.60} was refused")
                continue
            except UnicodeEncodeError:
                continue  # Text with lone surrogates has no form in the runtime.
            members += 1
            if not made_the_way(value, back):
                wrong.append(f"{module.__name__}.{key}: {value!r:.60} came back as {back!r:.60}")
    return members, wrong


def resident_pages():
    gc.collect()
    with open("/proc/self/statm") as statm:
        return int(statm.read().split()[1])


def freed_memory_is_kept():
    """Whether a checker of memory or threads is loaded, which holds back what was freed."""
    with open("/proc/self/maps") as maps:
        mapped = maps.read()
    return "libasan" in mapped or "libtsan" in mapped


def main():
    warnings.simplefilter("ignore")
    modules = [module for name in sorted(set(module_names())) if (module := import_quietly(name)) is not None]
    members, wrong = send(modules)
    # Classes stay converted; what goes over a second time leaves nothing new behind.
    before = resident_pages()
    for _ in range(3):
        send(modules)
    growth = resident_pages() / before - 1
    if growth > 0.02 and not freed_memory_is_kept():
        wrong.append(f"memory grew by {growth:.1%} although all had been there before")
    print("\n".join(wrong[:20]))
    print(f"{members} members of {len(modules)} modules, {len(wrong)} wrong")
    sys.stdout.flush()
    # Some of what was imported keeps threads or handlers that a plain exit would wait for.
    os._exit(1 if wrong or members < 5000 else 0)


main()
