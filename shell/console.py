"""The interactive console: the editor of CPython's own library where the terminal can hold it, plain lines elsewhere.

Blocks that are recalled and edited whole, pasted code, `help`, Ctrl-C and colours are the editor's. What is added here
is a history of the shell's own, and completion that lists names without running anybody's code.
"""

import builtins
import code
import keyword
import os
import sys
import types

import _lingsh_driver as driver

namespace = vars(driver.main)
HISTORY_LENGTH = 2000


def run(banner, member_names):
    """Runs the console until the user ends it. Answers the exit status.

    `member_names` lists the names of the members of a host's module or class, by its dotted name.
    """
    global _host_member_names
    _host_member_names = member_names
    driver.console_begins()
    return driver._ended(_run, banner)


def _run(banner):
    for name, text in (("ps1", ">>> "), ("ps2", "... ")):
        if not hasattr(sys, name):
            setattr(sys, name, text)
    driver._choose_colours()
    if banner:
        print(banner, file=sys.stderr)
    if _is_terminal() and _has_editor():
        _edit()
    else:
        _Lines(namespace, "<stdin>").interact(banner="", exitmsg="")


def _is_terminal():
    try:
        return os.isatty(sys.stdin.fileno()) and os.isatty(sys.stdout.fileno())
    except (AttributeError, OSError, ValueError):  # None, closed, or somebody else's stream.
        return False


def _has_editor():
    """Whether the editor can use this terminal. One that cannot place its cursor is told of, as python3 does."""
    if os.environ.get("TERM") == "dumb":
        return False
    try:
        from _pyrepl import main
    except ImportError:
        return False
    if not main.CAN_USE_PYREPL and main.FAIL_REASON:
        print(main.FAIL_REASON, file=sys.stderr)
    return main.CAN_USE_PYREPL


def _edit():
    from _pyrepl import readline
    from _pyrepl.console import InteractiveColoredConsole
    from _pyrepl.simple_interact import run_multiline_interactive_console

    class Console(InteractiveColoredConsole):
        def push(self, line, *arguments, **options):
            history.add(line)
            return super().push(line, *arguments, **options)

    readline._setup(namespace)
    readline.set_completer(_completion)
    history = _History(readline)
    run_multiline_interactive_console(Console(namespace, "<stdin>"))


class _Lines(code.InteractiveConsole):
    """Statements line by line, from where `input()` reads too: `-i` with input that is no terminal, and terminals that
    cannot place their cursor."""

    def raw_input(self, prompt=""):
        if _is_terminal():
            return input(prompt)
        print(prompt, end="", file=sys.stderr, flush=True)
        line = sys.stdin.readline() if sys.stdin is not None else ""
        if not line:
            raise EOFError
        return line.removesuffix("\n")


class _History:
    """The statements that were typed, in a file that only the user can read. Each is added as it is run, so that
    consoles at work at the same time lose nothing of one another. Where the file cannot be used, the history lasts as
    long as the console."""

    def __init__(self, readline):
        self._file = _history_file()
        self._last = None
        if self._file is None:
            return
        try:
            os.makedirs(os.path.dirname(self._file), mode=0o700, exist_ok=True)
            readline.read_history_file(self._file)
            self._tidy(readline)
        except OSError:
            pass  # There is none yet, or there can be none, which shows again when a statement is added.

    def _tidy(self, readline):
        """Writes a file anew that has grown to twice what is kept, or that another line editor began."""
        with open(self._file, "rb") as file:
            foreign = file.readline().startswith(b"_HiStOrY_V2_")
        if foreign or readline.get_current_history_length() > 2 * HISTORY_LENGTH:
            readline.set_history_length(HISTORY_LENGTH)
            readline.write_history_file(self._file)

    def add(self, statement):
        statement = statement.rstrip()
        if self._file is None or not statement or statement == self._last:
            return
        self._last = statement
        entry = statement.replace("\n", "\r\n") + "\n"  # How the editor tells lines of one statement from statements.
        try:
            descriptor = os.open(self._file, os.O_WRONLY | os.O_CREAT | os.O_APPEND | os.O_CLOEXEC, 0o600)
            with open(descriptor, "wb") as file:
                file.write(entry.encode(errors="replace"))
        except OSError:
            self._file = None


def _history_file():
    """"lingsh/history" in the directory for state that `XDG_STATE_HOME` names, else ".lingsh_history" at home."""
    state, home = (os.environ.get(name, "") for name in ("XDG_STATE_HOME", "HOME"))
    if os.path.isabs(state):
        return os.path.join(state, "lingsh", "history")
    return os.path.join(home, ".lingsh_history") if os.path.isabs(home) else None


# Completion. Only names are listed, and only what can be looked at without running anybody's code is looked at.


def _completion(text, state):
    """The form in which the editor asks: for one after another, until there is none."""
    global _completions
    if state == 0:
        _completions = _complete(text)
    return _completions[state] if state < len(_completions) else None


def _complete(text):
    """What a dotted name may go on with, each as a whole."""
    try:
        *path, word = _names_in(text)
        names = _member_names(path) if path else _known_names()
        return sorted(".".join([*path, name]) for name in names if _goes_on(name, word))
    except Exception:
        return []


def _goes_on(name, word):
    if not isinstance(name, str) or not name.startswith(word):
        return False
    return word.startswith("_") or not name.startswith("_")


def _names_in(text):
    """The names of a dotted one: "a.b.c" gives a, b and c. The last one may be empty."""
    path = text.split(".")
    if not all(name.isidentifier() for name in path[:-1]):
        raise ValueError("a member of something that would have to be computed")
    return path


def _known_names():
    return {*keyword.kwlist, *namespace, *vars(builtins)}


def _member_names(path):
    first = path[0]
    value = namespace[first] if first in namespace else vars(builtins)[first]
    if first in driver.host_names and value is driver.host_names[first]:
        return _host_member_names(".".join(path))
    for name in path[1:]:
        value = _stored(value, name)
    return _names_of(value)


def _stored(value, name):
    """The attribute as it is stored. A property stays a property: nothing is computed."""
    for place in _places(value):
        if name in place:
            return place[name]
    raise AttributeError(name)


def _names_of(value):
    if isinstance(value, _COMPUTED):
        return set()
    names = {name for place in _places(value) for name in place}
    lister = _stored(type(value), "__dir__")
    if isinstance(lister, (types.MethodDescriptorType, types.WrapperDescriptorType)) and lister not in _PLAIN_LISTERS:
        names.update(lister(value))
    return names


_COMPUTED = (property, types.MemberDescriptorType, types.GetSetDescriptorType)
# These list what is stored, and may run a program's code. Others that are not written in Python list names alone.
_PLAIN_LISTERS = (object.__dir__, type.__dir__, types.ModuleType.__dir__)

_dict_of_class = type.__dict__["__dict__"].__get__
_order_of_class = type.__dict__["__mro__"].__get__


def _places(value):
    """The dictionaries that hold a value's attributes, read past whatever its class does to attribute access."""
    if isinstance(value, type):
        return [_dict_of_class(base) for base in _order_of_class(value)]
    of_class = [_dict_of_class(base) for base in _order_of_class(type(value))]
    for place in of_class:
        reader = place.get("__dict__")
        if isinstance(reader, (types.MemberDescriptorType, types.GetSetDescriptorType)):
            return [reader.__get__(value), *of_class]
    return of_class
