"""What the fuzzer calls: `one(data)` tries the way that the first byte names with the rest, and raises where anything is
not as Python itself has it, or a value of the runtime is left alive."""

import ast
import datetime
import decimal
import gc
import os
import random
import tempfile
import warnings

import ling
import proof

import containers


def send(value):
    return ling.List([value])[0]


def attempt(operation, *arguments):
    try:
        return operation(*arguments)
    except Exception as error:
        return type(error)


def text(data):
    """Units and code points, both ways; the oracle is Python's own codec."""
    units = data[:len(data) & -2]
    decoded = units.decode("utf-16-le", "replace")
    found = attempt(proof.text_of_units, units)
    lone = attempt(units.decode, "utf-16-le") is UnicodeDecodeError
    if not lone:
        assert found == (decoded,) and proof.units_of_text(decoded) == units, (units, found)
        assert send(decoded) == decoded and ling.display(decoded) == decoded
    wide = "".join(chr(int.from_bytes(data[i:i + 3], "little") % 0x110000) for i in range(0, len(data) - 2, 3))
    has_form = attempt(wide.encode) is not UnicodeEncodeError
    found = attempt(send, wide)
    assert found == (wide if has_form else UnicodeEncodeError), (wide, found)


def decimals(data):
    """Decimals from text, there and back, and what the runtime makes of their order and their hash."""
    text = "".join("00123459.-+eE||"[byte % 15] for byte in data)
    numbers = [attempt(decimal.Decimal, part) for part in text.split("|")[:4]]
    numbers = [number for number in numbers if isinstance(number, decimal.Decimal)]
    for number in numbers:
        found = attempt(send, number)
        assert found.as_tuple() == number.as_tuple(), (number, found)
        for other in numbers:
            order = ling.compare_objects(number, other)
            assert (order > 0) - (order < 0) == (number > other) - (number < other), (number, other, order)
            assert order or ling.hash_of(number) == ling.hash_of(other), (number, other)


def dates(data):
    read = [int.from_bytes(data[i:i + 2], "little") for i in range(0, 14, 2)]
    year, month, day, hour, minute, second = (read[0] % 10000, *(part % 70 - 4 for part in read[1:6]))
    micro = read[6] * 16
    for kind, parts in ((datetime.date, (year, month, day)), (datetime.time, (hour, minute, second, micro)),
                        (datetime.datetime, (year, month, day, hour, minute, second, micro))):
        value = attempt(kind, *parts)
        if isinstance(value, type):
            continue
        assert send(value) == value and type(send(value)) is kind, value
        assert ling.compare_objects(value, send(value)) == 0 and ling.hash_of(value) == ling.hash_of(send(value))
    # The runtime's own constructors take any numbers: what they accept has a form in Python or is refused.
    clock = (hour, minute, second)
    for made, plain in ((attempt(ling.Date, year - 3, month, day), attempt(datetime.date, year - 3, month, day)),
                        (attempt(ling.Time, *clock, micro * 1000), attempt(datetime.time, *clock, micro))):
        assert made == plain or isinstance(made, type) and isinstance(plain, type), (read, made, plain)


def wrapper(data):
    """Bodies of methods: what runs as the body of a function runs as a method, with its variables handed back."""
    lines = []
    depth = data[0] % 3 if data else 0
    for byte in data[1:40]:
        statement = ["a += 1", "b = a", "", "# note", "if a % 2:", "return a * 2", "a = '''x", "'''", "x = [", "]",
                     "for a in range(3):", "\tb = 7", " pass", "def f():", "\f", "a = 1; b = 2", "'\r'"][byte % 17]
        if byte % 5 == 4:
            depth = byte // 32
        lines.append(" \t"[byte // 16 % 9 == 8] * depth + statement)
    body = "\n".join(lines)
    names = ["a", "b"][:data[0] // 64] if data else []
    indentation = next((line[:len(line) - len(line.lstrip(" \t\f\r"))] for line in lines
                        if line.strip(" \t\f\r") and not line.lstrip(" \t\f\r").startswith("#")), "")
    wanted = "".join(["def ling_outer():\n", *(f"\t{indentation}global {name}\n" for name in names),
                      *(f"\t{line}\n" for line in body.split("\n")), "ling_store_result( ling_outer() )\n",
                      *(f"ling_store_local('{name}',{name})\n" for name in names)])
    assert proof.wrap_method(body, names) == wanted, body
    assert proof.wrap_body(body) == "def func(*args):" + "".join(f"\n\t{line}" for line in body.split("\n"))
    handed = ling.Map()
    found = attempt(ling.python.evaluate, body, {name: 1 for name in names}, {"a": 1}, handed)
    stored = {}
    scope = {"a": 1, "self": None} | {name: 1 for name in names}
    calls = {"ling_store_result": lambda value: stored.update(result=value),
             "ling_store_local": lambda name, value: stored.update({name: value})}
    plain = attempt(exec, wanted, scope, calls)
    assert isinstance(found, type) == isinstance(plain, type), (body, found, plain)
    if not isinstance(plain, type):
        assert found == stored.pop("result"), (body, found)
        assert containers.to_python(handed) == stored, (body, handed, stored)


def rendering(data):
    """A value as source text, which Python reads back."""
    chosen = random.Random(data)

    def make(depth):
        kind = chosen.randrange(9 if depth < 3 else 6)
        if kind < 6:
            return [None, chosen.random() < 0.5, chosen.randrange(-2**63, 2**63) >> chosen.randrange(63),
                    chosen.choice([0.1, -1e-9, 5e300, 1.5, 3.25, 1e18 + 0.5]), chosen.randbytes(chosen.randrange(5)),
                    "".join(chr(c) for c in data[:chosen.randrange(9)] if chr(c).isprintable() and c not in b"'\\")][kind]
        items = [make(depth + 1) for _ in range(chosen.randrange(4))]
        return [items, tuple(items), {str(i): item for i, item in enumerate(items)}][kind - 6]

    value = make(0)
    native = containers.from_python(value)
    source = ling.python.LanguagePython.toCode(native)
    back = containers.to_python(native)
    assert ast.literal_eval(source) == back, (value, source)
    assert repr(native) == source or not containers.is_wrapper(native)


def loader(data):
    """A folder of extensions that are none: each file is told of by its name, with a problem."""
    with tempfile.TemporaryDirectory() as folder:
        names = set()
        for i, part in enumerate(data.split(b"\0")[:4]):
            name = bytes(c for c in part[:8] if c not in b"/\0.") + b"%d" % i + [b".so", b".txt", b".SO", b""][len(part) % 4]
            with open(os.path.join(folder.encode(), name), "wb") as file:
                file.write(part[8:])
            names |= {name} if name.endswith(b".so") else set()
        # The name of a file is any bytes, text is not: what is no UTF-8 is told with a replacement.
        told = proof.load(folder)
        assert len(told) == len(names) and all(len(line) > line.index(": ") + 2 for line in told), (names, told)


warnings.simplefilter("ignore")
WAYS = [lambda data: containers.run(data, proof.crowd), text, decimals, dates, wrapper, rendering, loader]
count = 0


def one(data):
    global count
    if not data:
        return
    count += 1
    # Half of the work goes to the containers.
    way = WAYS[max(data[0] % 14 - 7, 0)]
    before = proof.live()
    way(data[1:])
    if proof.live() > before:
        gc.collect()
        before = proof.live()
        way(data[1:])
        gc.collect()
        assert proof.live() <= before, f"{proof.live() - before} values are left of {data!r}"


def main(seconds="20", seed="1"):
    """Without a fuzzer: random inputs for a time."""
    import time
    chosen, end = random.Random(int(seed)), time.monotonic() + float(seconds)
    while time.monotonic() < end:
        data = chosen.randbytes(chosen.randrange(1, 200))
        try:
            one(data)
        except BaseException:
            print(f"The input was {data!r}", flush=True)
            raise
    print(f"{count} inputs")
    return 0
