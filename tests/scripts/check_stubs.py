"""Compares the stubs of the host's modules with what the modules are, by mypy's own `stubtest`, and checks a program.

    lingsh check_stubs.py STUBS DIRECTORY

STUBS is where the stubs lie, DIRECTORY where mypy does. `stubtest` knows classes and functions of Python alone. It is told
that the host's functions are functions; of the host's classes it compares what the types of their instances have.
"""

import contextlib
import decimal
import io
import os
import pathlib
import sys
import tempfile
import typing

stubs, directory = sys.argv[1:]
sys.path.append(directory)
try:
    import typing_extensions  # noqa: F401
except TypeError:  # One for an older Python, which lacks nothing that this Python has itself.
    sys.modules["typing_extensions"] = typing

import mypy.api  # noqa: E402
from mypy import stubtest  # noqa: E402

import ling  # noqa: E402
import shop  # noqa: E402

INSTANCES = [
    ling.List(),
    ling.Map(),
    ling.Set(),
    ling.JsonObject(),
    ling.display,
    ling.List,
    ling.property_value(ling.display, "signature"),
    ling.property_value(ling.display, "resultType"),
    ling.find_module("shop"),
    shop.Item("pen", decimal.Decimal(1)),
    shop.Inventory(),
]

known_to_stubtest = stubtest.is_probably_a_function
stubtest.is_probably_a_function = lambda value: known_to_stubtest(value) or ling.kind_of(value) == "function"

# Each line, and what mypy has to say of it.
PROGRAM = {
    "import decimal, ling, ling.python, shop": "",
    "pen = shop.Item('pen', decimal.Decimal('1.5'), stock=3)": "",
    "pen.take(1); pen.price = decimal.Decimal(2); pen.name.upper()": "",
    "pen.name = 'ink'": 'Property "name" defined in "Item" is read-only',
    "pen.prize": '"Item" has no attribute "prize"',
    "shop.Item('pen', 3)": 'Argument 2 to "Item" has incompatible type "int"; expected "Decimal"',
    "shop.Item('pen')": 'Missing positional argument "price" in call to "Item"',
    "shop.Item('pen', decimal.Decimal(), stok=1)": 'Unexpected keyword argument "stok" for "Item"',
    "stock = shop.Inventory(); stock.add(pen); both = stock + stock; both.items[0]": "",
    "print(stock.find('pen').name)": 'has no attribute "name"',
    "for item in stock: print(item, len(stock), pen in stock)": "",
    "def total(items: ling.List, first: shop.Item) -> decimal.Decimal: return first.price * len(items)": "",
    "print(total(stock.items, pen), ling.class_of(pen) == shop.Item)": "",
    "total([pen], pen)": '[Item]"; expected "ling.List"',
    "class Mine(shop.Item): pass": 'Cannot inherit from final class "Item"',
    "def handle(error: shop.OutOfStock.exception) -> str: return error.ling.message": "",
    "items = ling.List([1]); items += [2]; items[0] = items[-1]; del items[0]": "",
    "names = ling.Map({'a': 1}); names['b'] = names['a']; print(dict(zip(names.keys, names.values)))": "",
    "ling.Date(2024, 2, 29).isoformat(); ling.String(1).upper(); ling.Time(1, 2, nanoSeconds=3).hour": "",
    "ling.Date(2024, 2, 'last')": 'Argument 3 to "__call__" of "_DateClass" has incompatible type "str"; expected "int"',
    "print(ling.python.to_python(items), shop.discounted(decimal.Decimal(1), percent=5))": "",
    "shop.discounted(decimal.Decimal(1), percent='5')": 'has incompatible type "str"; expected "int"',
}


def check_program():
    """The lines about which mypy says something else."""
    with tempfile.TemporaryDirectory() as folder:
        file = pathlib.Path(folder, "program.py")
        file.write_text("\n".join(PROGRAM) + "\n")
        os.environ["MYPYPATH"] = stubs
        said = mypy.api.run(["--strict", "--hide-error-context", "--cache-dir", folder, str(file)])[0]
    lines = [line for line in said.splitlines() if ": note:" not in line]
    for number, (line, expected) in enumerate(PROGRAM.items(), 1):
        found = [text for text in lines if f"program.py:{number}:" in text]
        if not (expected in found[0] if expected and found else expected == "" and not found):
            yield f"{line}\n    expected {expected!r}, found {found}"
    yield from (line for line in lines if "program.py:" not in line and not line.startswith("Found "))


def check_modules():
    """What stubtest finds wrong, but for what it says of each class: that it is none of Python's."""
    with tempfile.TemporaryDirectory() as folder:
        allowed = pathlib.Path(folder, "allowed")
        modules = {module: [name for name in dir(module) if is_class(module, name)] for module in (ling, ling.python, shop)}
        allowed.write_text("".join(f"{module.__name__}.{name}\n" for module in modules for name in modules[module]))
        options = ["--allowlist", str(allowed), "--ignore-unused-allowlist", "ling", "shop"]
        said = io.StringIO()
        with contextlib.redirect_stdout(said):
            status = stubtest.test_stubs(stubtest.parse_options(options))
    if status != 0 or "no issues found in 3 modules" not in said.getvalue():
        yield said.getvalue()


def is_class(module, name):
    return not name.startswith("_") and ling.qualname(ling.class_of(getattr(module, name))) == "ling.Class"


def check_instances():
    """What stubtest finds wrong with the members of classes, as the types of their instances have them."""
    for instance in INSTANCES:
        module, name = ling.qualname(ling.class_of(instance)).rsplit(".", 1)
        declared = stubtest.get_stub(module).names[name].node
        for error in stubtest.verify(declared, type(instance), [module, name]):
            # The constructor is the class's own, and the operators are the same for all wrappers.
            if not error.object_desc.split(".")[-1].startswith("__"):
                yield error.get_description(concise=True)


problems = [*check_program(), *check_modules(), *check_instances()]
print("\n".join(problems) or f"{len(PROGRAM)} lines and {len(INSTANCES)} classes hold")
sys.exit(1 if problems else 0)
