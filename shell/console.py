"""The Python side of the interactive console: statements, line by line, and the names that a line may go on with.

Nothing that is typed ends the console but `exit()` and the end of the input. Functions that the shell calls answer
numbers or texts, and let no exception out.
"""

import builtins
import keyword
import sys
import types

import _lingsh_driver as driver
import _signal

DONE = 0
MORE = 1  # The statement goes on: the next line belongs to it.
ENDED = 2  # `end_status` has the exit status.

namespace = vars(driver.main)
end_status = 0
_lines = []
_inputs = 0
_compiler = None
_previous_wakeup = -1


def begin():
    sys.argv = [""]
    sys.path.insert(0, "")
    for name, text in (("ps1", ">>> "), ("ps2", "... ")):
        if not hasattr(sys, name):
            setattr(sys, name, text)
    return "Python " + sys.version.split()[0]


def status():
    return end_status


# Lines.


def prompt(wakeup):
    """The text to ask for the next line with. From here to the next `push`, signals are told to the file `wakeup`."""
    global _previous_wakeup
    _previous_wakeup = _signal.set_wakeup_fd(wakeup, warn_on_full_buffer=False)
    try:
        return str(sys.ps2 if _lines else sys.ps1)
    except Exception:
        return ""


def typed():
    """The user is done with the line, one way or the other."""
    _signal.set_wakeup_fd(_previous_wakeup)
    return DONE


def handle_signals():
    """Lets the handlers of the signals that came meanwhile run. `ENDED` when one of them raised."""
    try:
        _let_handlers_run()
    except BaseException as error:
        if not isinstance(error, KeyboardInterrupt):
            driver.report(error)
        return ENDED
    return DONE


def _let_handlers_run():
    """Pending handlers run when a function is entered."""


def drop():
    """Forgets the lines of an unfinished statement."""
    _lines.clear()
    return DONE


def push(line):
    """Takes the next line, and runs the statement that it completes."""
    global end_status
    try:
        _lines.append(line)
        status = _push("\n".join(_lines))
        if status != MORE:
            _lines.clear()
        return status
    except SystemExit as ending:
        end_status = driver._exit_status(ending)
        return ENDED
    except BaseException as error:
        _lines.clear()
        driver.report(error)
        return DONE


def _push(source):
    code = _compile(source)
    if code is None:
        return MORE
    try:
        exec(code, namespace)
    finally:
        driver.flush()
    return DONE


def _compile(source):
    global _compiler, _inputs
    if _compiler is None:
        import codeop

        _compiler = codeop.CommandCompiler()
    filename = f"<console-{_inputs}>"
    _remember(source, filename)
    try:
        code = _compiler(source, filename, "single")
    except Exception as error:
        raise error.with_traceback(None)  # Where the compiler was called from is of no interest.
    if code is not None:
        _inputs += 1
    return code


def _remember(source, filename):
    """Keeps the text for tracebacks."""
    import linecache

    linecache.cache[filename] = (len(source), None, [line + "\n" for line in source.splitlines()], filename)


def run_lines():
    """The console without a terminal: statements from `sys.stdin`, which `input()` reads too. Answers the status."""
    status = DONE
    while status != ENDED:
        try:
            line = sys.stdin.readline() if sys.stdin is not None else ""
        except KeyboardInterrupt as error:
            return driver.report(error)
        except Exception as error:
            driver.report(error)
            return 1
        if not line:
            break
        status = push(line.removesuffix("\n"))
    if _lines:
        status = push("")
    return end_status if status == ENDED else 0


# Completion. Only names are listed, and only what can be looked at without running anybody's code is looked at.


def complete(text):
    """What the end of a line may go on with, a line each: the length of the word that the line ends in, the dotted
    name to ask the runtime about when the word is a member of something of the host's, and the names."""
    try:
        *path, word = _path_at_end(text)
        names, host = _member_names(path) if path else (_known_names(), "")
        return "\n".join([str(len(word)), host, *sorted(name for name in names if _goes_on(name, word))])
    except Exception:
        return "0\n"


def _goes_on(name, word):
    if not isinstance(name, str) or not name.startswith(word):
        return False
    return word.startswith("_") or not name.startswith("_")


def _path_at_end(text):
    """The dotted names that a text ends in: "x = a.b.c" gives a, b and c. The last one may be empty."""
    start = len(text)
    while start > 0 and (text[start - 1] == "." or ("_" + text[start - 1]).isidentifier()):
        start -= 1
    path = text[start:].split(".")
    if not all(name.isidentifier() for name in path[:-1]):
        raise ValueError("a member of something that would have to be computed")
    return path


def _known_names():
    return {*keyword.kwlist, *namespace, *vars(builtins)}


def _member_names(path):
    first = path[0]
    value = namespace[first] if first in namespace else vars(builtins)[first]
    if first in driver.host_names and value is driver.host_names[first]:
        return (), ".".join(path)
    for name in path[1:]:
        value = _stored(value, name)
    return _names_of(value), ""


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
