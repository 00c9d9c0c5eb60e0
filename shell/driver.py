"""Runs programs for the shell the way `python3` runs them, and ends them the way `python3` ends.

The interpreter is isolated and is never finalised. What a program expects of its start (`sys.argv`, `sys.path[0]`, a
handler for Ctrl-C, `exit()`) and of its end (threads waited for, exit functions run, files flushed) is therefore done
here. The shell calls the public functions, each from an evaluation of its own. An exception that is no `Exception`
would be lost on the way back to the shell, so none leaves them: how a program ended is a number, its exit status, or
`INTERRUPTED`.
"""

import builtins
import os
import sys

import _signal

INTERRUPTED = -1  # The shell ends itself by SIGINT, so that its parent sees what happened.
NOT_ENDED = -2  # The expression that was watched gave a value or an ordinary error.
FLUSH_FAILED = 120
WATCHER = 3  # One of the two tool numbers of `sys.monitoring` that belong to nobody.

main = sys.modules["__main__"]
host_names = {}
_modules_at_start = ()
_fatal = None
_console_follows = False


# The set-up.


def install(names, executable, arguments):
    """Makes the interpreter what a program expects. `names` are the host's, to be bound in the program's namespace."""
    global _modules_at_start
    host_names.update(names)
    sys.executable = sys._base_executable = os.fsdecode(executable)
    sys.orig_argv = [os.fsdecode(argument) for argument in arguments]
    vars(main).update(host_names)
    _handle_signals()
    _use_utf8()
    _add_site_builtins()
    _modules_at_start = frozenset(sys.modules)


def load(name, source):
    """Makes a part of the shell a module of its own."""
    import linecache

    filename = f"<lingsh {name}>"
    linecache.cache[filename] = (len(source), None, source.splitlines(keepends=True), filename)
    module = sys.modules[f"_lingsh_{name}"] = type(sys)(f"_lingsh_{name}")
    exec(compile(source, filename, "exec"), vars(module))
    return 0


def _handle_signals():
    for name in ("SIGPIPE", "SIGXFSZ"):
        _signal.signal(getattr(_signal, name), _signal.SIG_IGN)
    if _signal.getsignal(_signal.SIGINT) == _signal.SIG_DFL:
        _signal.signal(_signal.SIGINT, _signal.default_int_handler)


def _use_utf8():
    """Gives the standard streams an encoding for all text where the locale has none."""
    for stream, errors in (
        (sys.stdin, "surrogateescape"),
        (sys.stdout, "surrogateescape"),
        (sys.stderr, "backslashreplace"),
    ):
        if stream is not None and stream.encoding.lower() in ("ascii", "us-ascii", "ansi_x3.4-1968", "646"):
            stream.reconfigure(encoding="utf-8", errors=errors)


def _add_site_builtins():
    """Adds the names that the module `site` gives programs; the interpreter was started without it."""
    from _sitebuiltins import Quitter, _Helper, _Printer

    for name in ("quit", "exit"):
        setattr(builtins, name, Quitter(name, "Ctrl-D (i.e. EOF)"))
    builtins.help = _Helper()
    builtins.copyright = _Printer("copyright", sys.copyright)
    builtins.credits = _Printer("credits", "See https://www.python.org/ for more information.")
    builtins.license = _Printer("license", "See https://www.python.org/psf/license/")


def python_version():
    return sys.version.split()[0]


def configure(warning_filters, extras, unbuffered):
    """Obeys the options of python3 that an interpreter can still obey when it runs already."""
    if unbuffered:
        _write_at_once()
    for extra in map(os.fsdecode, extras):
        name, given, value = extra.partition("=")
        sys._xoptions[name] = value if given else True
        try:
            _EXTRAS.get(name, _leave)(value)
        except ValueError as error:
            print(f"lingsh: -X {name}: {error}", file=sys.stderr)
            return 1
    filters = [*(["default"] if "dev" in sys._xoptions else []), *map(os.fsdecode, warning_filters)]
    if filters:
        import warnings

        sys.warnoptions.extend(filters)
        warnings._processoptions(filters)
    return 0


def _write_at_once():
    import io

    for name in ("stdout", "stderr"):
        stream = getattr(sys, name)
        if stream is not None:
            stream.flush()
            options = dict(encoding=stream.encoding, errors=stream.errors, newline="\n", write_through=True)
            unbuffered = io.TextIOWrapper(open(stream.fileno(), "wb", buffering=0, closefd=False), **options)
            unbuffered.mode = "w"
            setattr(sys, name, unbuffered)
            setattr(sys, f"__{name}__", unbuffered)


def _enable_fault_handler(_value):
    import faulthandler

    faulthandler.enable()


def _trace_memory(value):
    import tracemalloc

    tracemalloc.start(int(value or 1))


def _set_cache_prefix(value):
    sys.pycache_prefix = value or None


def _leave(_value):
    """Of interest to those alone who look for it."""


# Those of `-X` that have an effect besides being found in `sys._xoptions`.
_EXTRAS = {
    "dev": _enable_fault_handler,
    "faulthandler": _enable_fault_handler,
    "int_max_str_digits": lambda value: sys.set_int_max_str_digits(int(value)),
    "perf": lambda _value: sys.activate_stack_trampoline("perf"),
    "pycache_prefix": _set_cache_prefix,
    "tracemalloc": _trace_memory,
}


def expect_console():
    """A console follows the program: what ends the program only is told."""
    global _console_follows
    _console_follows = True
    return 0


def console_begins():
    """What ends the console ends the process."""
    global _console_follows
    _console_follows = False


# The programs. Each function answers the exit status.


def run_file(name, arguments):
    name = os.fsdecode(name)
    _set_arguments(name, arguments)
    try:
        return _ended(_run_file, name)
    finally:
        _forget_file()


def run_stdin(name, arguments):
    _set_arguments(os.fsdecode(name), arguments)
    add_to_path("")
    try:
        return _ended(_run_stdin)
    finally:
        _forget_file()


def run_module(name, arguments):
    _set_arguments("-m", arguments)
    return _ended(_run_module, os.fsdecode(name))


def run_code(code, arguments):
    _set_arguments("-c", arguments)
    add_to_path("")
    return _ended(_run_code, os.fsdecode(code))


def show(text):
    """Prints a text that the shell has for the user, in order with what the program printed."""
    return _ended(print, text)


def add_to_path(entry):
    """Puts an entry on the path for the program. What is there is not imported when somebody asks for all modules."""
    sys.path.insert(0, entry)
    host_names["ling"].python.LanguagePython.programPath.append(entry)


def _set_arguments(name, arguments):
    sys.argv = [name, *map(os.fsdecode, arguments)]


def _run_file(name):
    path = _absolute(name)
    if _is_importable_container(path):
        import runpy

        add_to_path(path)
        runpy._run_module_as_main("__main__", alter_argv=False)
        return
    try:
        with open(path, "rb") as file:
            content = file.read()
    except OSError as error:
        print(f"lingsh: can't open file {path!r}: [Errno {error.errno}] {error.strerror}", file=sys.stderr)
        raise SystemExit(2) from None
    add_to_path(os.path.dirname(os.path.realpath(path)))
    _run_in_main(_code_of_file(path, content), path)


def _absolute(name):
    """As python3 makes it: "." and ".." stay, and where there is no current folder the name is taken as it is."""
    try:
        return os.path.join(os.getcwd(), name)
    except OSError:
        return name


def _is_importable_container(path):
    """A folder, or an archive: something to import `__main__` from."""
    for hook in sys.path_hooks:
        try:
            hook(path)
        except ImportError:
            continue
        return True
    return False


def _code_of_file(path, content):
    from importlib.machinery import SourceFileLoader, SourcelessFileLoader
    from importlib.util import MAGIC_NUMBER

    if path.endswith(".pyc") or content.startswith(MAGIC_NUMBER):
        main.__loader__ = SourcelessFileLoader("__main__", path)
        return main.__loader__.get_code("__main__")
    main.__loader__ = SourceFileLoader("__main__", path)
    return _compile_bytes(content, path)


def _run_stdin():
    if sys.stdin is None:
        return
    _run_in_main(_compile_bytes(sys.stdin.buffer.read(), "<stdin>"), "<stdin>")


def _compile_bytes(content, filename):
    _refuse_bytes(content, filename)
    return compile(content, filename, "exec", dont_inherit=True)


def _refuse_bytes(content, filename):
    """Fails as python3 does for a file that is no text; `compile`, which does not know the file, would be vague."""
    zero = content.find(b"\0")
    if zero >= 0:
        line = content.count(b"\n", 0, zero) + 1
        text = content[content.rfind(b"\n", 0, zero) + 1 : zero].decode(errors="replace")
        raise SyntaxError("source code cannot contain null bytes", (filename, line, None, text))
    if content.startswith(b"\xef\xbb\xbf") or _declares_encoding(content):
        return
    try:
        content.decode()
    except UnicodeDecodeError as error:
        line = content.count(b"\n", 0, error.start) + 1
        raise SyntaxError(
            f"Non-UTF-8 code starting with '\\x{content[error.start]:02x}' in file {filename} on line {line}, "
            "but no encoding declared; see https://peps.python.org/pep-0263/ for details"
        ) from None


def _declares_encoding(content):
    """A comment in the first two lines names the encoding."""
    for line in content.splitlines()[:2]:
        if line.strip() and not line.lstrip().startswith(b"#"):
            return False
        if b"coding" in line:
            return True
    return False


def _run_in_main(code, filename):
    main.__file__ = filename
    main.__cached__ = None
    try:
        exec(code, vars(main))
    finally:
        flush()  # What was printed comes before the traceback.


def flush():
    for stream in (sys.stdout, sys.stderr):
        try:
            stream.flush()
        except Exception:
            pass  # Closed or taken away, or written at the very end, where a failure is told.


def _forget_file():
    """As python3 does after a script, before its exit functions run."""
    if main.__spec__ is None:
        vars(main).pop("__file__", None)
        vars(main).pop("__cached__", None)


def _run_module(name):
    import runpy

    try:
        add_to_path(os.getcwd())
    except OSError:
        pass  # The folder is gone: the module is looked for elsewhere.
    package = name.partition(".")[0]
    if package in ("ensurepip", "venv", "virtualenv"):
        print(f"lingsh: {_WITHOUT_ENVIRONMENTS}", file=sys.stderr)
        raise SystemExit(1)
    if package == "pip":
        _install_where_imports_come_from()
    runpy._run_module_as_main(name)


_WITHOUT_ENVIRONMENTS = (
    "there are no virtual environments of this interpreter: packages go into 'site-packages' beside the extension, by "
    "'pip install --target' of any CPython 3.13"
)


def _install_where_imports_come_from():
    """An installer asks `sysconfig` where packages go, which would name the machine's own Python."""
    import sysconfig

    folder = next((path for path in sys.path if os.path.basename(path) == "site-packages"), None)
    if folder is None:
        print("lingsh: there is no folder 'site-packages' on sys.path to install into", file=sys.stderr)
        raise SystemExit(1)
    scheme = sysconfig._INSTALL_SCHEMES[sysconfig.get_default_scheme()]
    scheme.update(purelib=folder, platlib=folder, scripts=os.path.join(folder, "bin"), data=folder)


def _run_code(code):
    import linecache

    lines = [line + "\n" for line in code.splitlines()]
    linecache.cache["<string>"] = (len(code), None, lines, "<string>")  # Tracebacks show the lines.
    try:
        compiled, returns = compile(code, "<string>", "exec", dont_inherit=True), False
    except SyntaxError as error:
        if error.msg != "'return' outside function":
            raise
        returns = True
    if not returns:
        exec(compiled, vars(main))
        return
    result = _function_of(code)()
    if result is not None:
        print(result)


def _function_of(code):
    """Statements with a `return` among them, as the body of a function."""
    import ast

    tree = ast.parse(code, "<string>")
    empty = ast.arguments(posonlyargs=[], args=[], kwonlyargs=[], kw_defaults=[], defaults=[])
    name = "<module>"  # The name that tracebacks show for statements at the top level.
    function = ast.FunctionDef(name=name, args=empty, body=tree.body, decorator_list=[], type_params=[])
    tree.body = [ast.fix_missing_locations(ast.copy_location(function, tree.body[0]))]
    scope = {}
    exec(compile(tree, "<string>", "exec", dont_inherit=True), vars(main), scope)
    return scope[name]


# One expression, evaluated by the language class. What is no `Exception` is seen as it leaves the outermost frame.


def watch_expression():
    """Begins to watch. `expression_ended` tells what became of the evaluation in between."""
    global _fatal
    _fatal = None
    _set_arguments("-e", ())
    add_to_path("")
    monitoring = sys.monitoring
    monitoring.use_tool_id(WATCHER, "lingsh")
    monitoring.register_callback(WATCHER, monitoring.events.PY_UNWIND, _note_unwinding)
    monitoring.set_events(WATCHER, monitoring.events.PY_UNWIND)
    return 0


def _note_unwinding(_code, _offset, error):
    global _fatal
    if not isinstance(error, Exception) and sys._getframe(1).f_back is None:
        _fatal = error


def expression_ended():
    """The exit status, when the expression ended the program, or `NOT_ENDED`."""
    global _fatal
    sys.monitoring.set_events(WATCHER, 0)
    sys.monitoring.free_tool_id(WATCHER)
    error, _fatal = _fatal, None
    if error is None:
        return NOT_ENDED
    return _ended(_raise, error)


def _raise(error):
    raise error


# How a program ended.


def _ended(action, *arguments):
    """Runs `action`. Answers the exit status that python3 would give; an error is reported as python3 reports it."""
    try:
        action(*arguments)
    except SystemExit as ending:
        return report(ending) if _console_follows else _exit_status(ending)
    except BaseException as error:
        return report(error)
    return 0


def _exit_status(ending):
    code = ending.code
    if code is None:
        return 0
    if isinstance(code, int):
        # A number that is too large for the system counts as -1.
        return code & 0xFF if -(2**63) <= code < 2**63 else 0xFF
    print(code, file=sys.stderr or sys.__stderr__)
    return 1


def report(error):
    """Shows an error that nobody caught, through `sys.excepthook`. Answers the exit status that it leads to."""
    error.__traceback__ = _without_driver(error.__traceback__)
    sys.last_exc = sys.last_value = error
    sys.last_type, sys.last_traceback = type(error), error.__traceback__
    status = INTERRUPTED if isinstance(error, KeyboardInterrupt) else 1
    _choose_colours()
    hook = getattr(sys, "excepthook", None)
    if hook is None:
        print("sys.excepthook is missing", file=sys.stderr)
        hook = sys.__excepthook__
    try:
        hook(type(error), error, error.__traceback__)
    except SystemExit as ending:
        return _exit_status(ending)
    except BaseException as failure:
        _report_failed_hook(failure, error)
    return status


def _report_failed_hook(failure, error):
    failure.__traceback__ = _without_driver(failure.__traceback__)
    failure.__context__ = None
    print("Error in sys.excepthook:", file=sys.stderr)
    sys.__excepthook__(type(failure), failure, failure.__traceback__)
    print("\nOriginal exception was:", file=sys.stderr)
    sys.__excepthook__(type(error), error, error.__traceback__)


def _without_driver(traceback):
    """The part of a traceback that is the program's: what comes after the frames of the shell's own files."""
    while traceback is not None and traceback.tb_frame.f_code.co_filename.startswith("<lingsh "):
        traceback = traceback.tb_next
    return traceback


def _choose_colours():
    """Takes colours off a terminal that has none, or whose user wants none: the interpreter itself looks at no
    environment variables."""
    environment = os.environ
    if environment.get("TERM") == "dumb" or "NO_COLOR" in environment or environment.get("PYTHON_COLORS") == "0":
        import _colorize

        _colorize.COLORIZE = False


# The end of the process.


def finish(status):
    """Does all that python3 does before the process ends. Answers the final exit status."""
    language = host_names["ling"].python.LanguagePython
    finished = _finish(language)
    sys.stdin, sys.stdout, sys.stderr = sys.__stdin__, sys.__stdout__, sys.__stderr__
    _let_go_of_program()
    if finished:  # Else it has been told.
        finished = _finish(language)
    return status if finished or status == INTERRUPTED else FLUSH_FAILED


def _finish(language):
    """False when something that was printed could not be written."""
    try:
        language.finish()
    except RuntimeError:
        return False
    return True


def _let_go_of_program():
    """Drops the program's modules, as the end of an interpreter would: its objects are finalised, and the files that
    it left open are written to the end."""
    import gc

    for name in ("last_exc", "last_type", "last_value", "last_traceback"):
        setattr(sys, name, None)
    builtins._ = None
    global main
    main = None
    host_names.clear()
    for name in [name for name in sys.modules if name == "__main__" or name not in _modules_at_start]:
        sys.modules.pop(name, None)
    gc.collect()
