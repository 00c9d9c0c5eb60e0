"""Shows the values of the runtime in gdb. Loaded with the runtime's library, beside which it lies as ...-gdb.py.

Everything is read from memory, so that it works on a core file as well; `print ling::display(value)` runs the runtime's
own display where there is a process. What lies behind a value is known from the debug information of the libraries:
without it a value on the heap shows its kind alone.
"""

import gdb
import gdb.printing

ANY = "ling::Any"
OBJECT = "ling::internal::object_value"
FAMILY = ">LingObject"  # The name that the types of Python's wrappers share.
NONE, UNDEFINED, BOOLEAN, INTEGER, FLOAT = range(5)
IMMEDIATE = {
    NONE: lambda bits: "None",
    UNDEFINED: lambda bits: "undefined",
    BOOLEAN: lambda bits: "true" if bits else "false",
    INTEGER: lambda bits: str(bits - (1 << 64) if bits >> 63 else bits),
    FLOAT: lambda bits: str(gdb.Value(bits.to_bytes(8, "little"), gdb.lookup_type("double"))),
}


def bases(kind):
    """A class and all classes that it derives from."""
    kind = kind.strip_typedefs()
    yield kind
    if kind.code == gdb.TYPE_CODE_STRUCT:
        for field in kind.fields():
            if field.is_base_class:
                yield from bases(field.type)


def is_a(kind, name):
    return any(base.name == name for base in bases(kind))


def as_base(value, name):
    """A value seen as the class `name`, which it is or derives from."""
    return value.cast(next(base for base in bases(value.type) if base.name == name))


def pointer_to(address, name):
    return gdb.Value(int(address)).cast(gdb.lookup_type(name).pointer())


def object_of(value):
    """The object behind an `Any`, as what it was made, or None for an immediate."""
    value = as_base(value, ANY)
    if int(value["tag_"]) <= FLOAT:
        return None
    base = pointer_to(value["bits_"], OBJECT)
    try:
        return base.cast(base.dynamic_type).dereference()
    except gdb.error:  # The class was made where there is no debug information.
        return base.dereference()


def kind_of(thing):
    return str(thing["kind_"]).rpartition("::")[2]


def own_class(thing):
    klass = thing["class_"]
    return text_of(klass["name_"]) if int(klass) else kind_of(thing)


def vector_items(vector):
    start, end = vector["_M_impl"]["_M_start"], vector["_M_impl"]["_M_finish"]
    return [(start + i).dereference() for i in range(int(end - start))]


def buffer_items(buffer, item):
    """The items of a `counted_buffer`, which begin behind its head."""
    buffer = buffer["buffer_"]
    if not int(buffer):
        return []
    first = pointer_to(int(buffer) + int(buffer.dereference()["kHeader"]), item)
    return [(first + i).dereference() for i in range(int(buffer["count"]))]


def table_entries(thing):
    """The living entries of a map or set."""
    table = unique(thing["table_"]).dereference()
    entries = buffer_items(table["storage_"]["entries_"], "ling::internal::hash_entry")
    return [entry for entry in entries if not int(entry["hash"]) >> 63]


def unique(pointer):
    """The raw pointer of a `std::unique_ptr`."""
    both = pointer["_M_t"]["_M_t"]  # The pointer and its deleter.
    head = next(base for base in bases(both.type) if base.name.startswith("std::_Head_base<0"))
    return both.cast(head)["_M_head_impl"]


def atomic(value):
    """What is in a `std::atomic`."""
    base = next((field for field in value.type.strip_typedefs().fields() if field.name in ("_M_b", "_M_i")), None)
    if base is None:
        return atomic(value.cast(value.type.strip_typedefs().fields()[0].type))
    return value["_M_b"]["_M_p"] if base.name == "_M_b" else value["_M_i"]


def memory(address, size):
    return gdb.selected_inferior().read_memory(int(address), size).tobytes() if size else b""


def units_text(address, length):
    limit = gdb.parameter("print elements") or length
    text = memory(address, 2 * min(length, limit)).decode("utf-16-le", "replace")
    return text if length <= limit else text + "..."


def text_of(value):
    """The text of a string value: of the whole allocation, or of a piece of another one."""
    thing = object_of(value)
    if thing is None:
        return ""
    if is_a(thing.type, "ling::internal::object_value_string_slice"):
        return units_text(thing["piece_"]["_M_str"], int(thing["piece_"]["_M_len"]))
    if not is_a(thing.type, "ling::internal::object_value_string"):
        return kind_of(thing)
    return units_text(int(thing.address) + thing.type.sizeof, int(thing["length_"]))


def items(values):
    return [(f"[{i}]", value) for i, value in enumerate(values)]


def pairs(entries):
    return [pair for i, entry in enumerate(entries) for pair in ((f"k{i}", entry["key"]), (f"v{i}", entry["value"]))]


def digits_of(number):
    form = str(number["form"]).rpartition("::")[2]
    sign = "-" if number["negative"] else ""
    if form != "Finite":
        return sign + form
    digits, exponent = number["digits"].format_string().strip('"'), int(number["exponent"])
    if not -20 <= exponent < 0:
        return f"{sign}{digits}e{exponent}" if exponent else sign + digits
    digits = digits.rjust(1 - exponent, "0")
    return f"{sign}{digits[:exponent]}.{digits[exponent:]}"


def numbers(fields, *names):
    return [int(fields[name]) for name in names]


def date_text(fields):
    return "{:04}-{:02}-{:02}".format(*numbers(fields, "year", "month", "day"))


def time_text(fields):
    return "{:02}:{:02}:{:02}.{:09}".format(*numbers(fields, "hour", "minute", "second", "nanoSeconds"))


def bytes_text(thing):
    size = int(thing["size_"])
    return repr(memory(int(thing.address) + thing.type.sizeof, min(size, gdb.parameter("print elements") or size)))


def fields_of(thing):
    """The fields of an instance by the names that its classes declare."""
    first = atomic(thing["fields_"])
    if not int(first):
        return []
    names = vector_items(unique(thing["class_"]["declarations_"]).dereference()["layout"])
    values = [(first + i).dereference() for i in range(int(atomic(thing["fieldCount_"])))]
    return [(names[i]["data_"]["utf8"]["_M_str"].string() if i < len(names) else f"[{i}]", value)
            for i, value in enumerate(values)]


def error_parts(thing):
    parts = [(name, thing[name + "_"]) for name in ("cause", "origin")]
    return [(name, value) for name, value in parts if int(value["tag_"]) != NONE] + fields_of(thing)


def proxied(thing):
    return [("object", thing["object_"]["_M_b"]["_M_p"])]


def weak_target(thing):
    target = thing["anchor_"]["target_"]
    return describe_object(dynamic(target)) if int(target) else "nothing, its target is gone"


def dynamic(pointer):
    return pointer.cast(pointer.dynamic_type).dereference()


INTERNAL = "ling::internal::object_value_"
# What an object is made of: how it reads in one line, what it contains, and how gdb lays that out.
ROWS = {
    INTERNAL + "string": (None, None, "string"),
    INTERNAL + "string_slice": (None, None, "string"),
    INTERNAL + "byte_array": (bytes_text, None, None),
    INTERNAL + "list": (None, lambda thing: items(buffer_items(thing["items_"], ANY)), "array"),
    INTERNAL + "tuple": (None, lambda thing: items(vector_items(thing["items_"])), "array"),
    INTERNAL + "hash_set": (None, lambda thing: items(e["key"] for e in table_entries(thing)), "array"),
    INTERNAL + "hash_map": (None, lambda thing: pairs(table_entries(thing)), "map"),
    INTERNAL + "error": (lambda thing: f'{own_class(thing)} "{text_of(thing["message_"])}"', error_parts, None),
    INTERNAL + "class": (lambda thing: f"class {text_of(thing['name_'])}", None, None),
    INTERNAL + "module": (lambda thing: f"module {text_of(thing['name_'])}", None, None),
    INTERNAL + "native_function": (lambda thing: f"function {text_of(thing['name_'])}", None, None),
    INTERNAL + "decimal": (lambda thing: f"Decimal {digits_of(thing['number'])}", None, None),
    INTERNAL + "date": (lambda thing: f"Date {date_text(thing['fields'])}", None, None),
    INTERNAL + "time": (lambda thing: f"Time {time_text(thing['fields'])}", None, None),
    INTERNAL + "date_time": (
        lambda thing: f"DateTime {date_text(object_of(thing['date'])['fields'])} "
                      f"{time_text(object_of(thing['time'])['fields'])}", None, None),
    INTERNAL + "weak": (lambda thing: f"weak reference to {weak_target(thing)}", None, None),
    "ling::python::ProxyRecord": (lambda thing: f"{own_class(thing)} for", proxied, None),
    INTERNAL + "object": (lambda thing: f"{own_class(thing)} object", fields_of, None),
}


def row_of(thing):
    """The row of the nearest class that has one, and the object seen as that class."""
    for base in bases(thing.type):
        if base.name in ROWS:
            return ROWS[base.name], thing.cast(base)
    return (lambda thing: f"{own_class(thing)} value", None, None), thing


def describe_object(thing):
    (line, children, hint), thing = row_of(thing)
    if line is not None:
        return line(thing)
    return f"{own_class(thing)} of {len(children(thing)) // (2 if hint == 'map' else 1)}"


class ValuePrinter:
    """An `Any` or a handle."""

    def __init__(self, value):
        self.value = as_base(value, ANY)
        self.thing = object_of(value)
        if self.thing is not None:
            (_, self.parts, self.hint), self.seen = row_of(self.thing)

    def to_string(self):
        if self.thing is None:
            return IMMEDIATE[int(self.value["tag_"])](int(self.value["bits_"]))
        return text_of(self.value) if self.hint == "string" else describe_object(self.thing)

    def children(self):
        return iter(self.parts(self.seen) if self.thing is not None and self.parts is not None else [])

    def display_hint(self):
        return self.hint if self.thing is not None else None


class WrapperPrinter:
    """A Python object that stands for a value: the value, as what it is."""

    def __init__(self, wrapper):
        self.cell = wrapper["value"]

    def to_string(self):
        return "bound method" if not int(self.cell) else "wrapper"

    def children(self):
        return iter([("value", self.cell.dereference())] if int(self.cell) else [])


def type_name(python_type):
    return python_type["tp_name"].string(errors="replace")


def wrapper_of(value):
    """The wrapper that a `PyObject*` points to, or None."""
    if not int(value):
        return None
    python_type = value["ob_type"]
    base = python_type["tp_base"]
    if type_name(python_type) != FAMILY and not (int(base) and type_name(base) == FAMILY):
        return None
    return pointer_to(value, "ling::python::Instance").dereference()


def printer_of(value):
    kind = value.type.strip_typedefs().unqualified()
    try:
        if kind.code == gdb.TYPE_CODE_PTR and kind.target().unqualified().strip_typedefs().name == "_object":
            wrapper = wrapper_of(value)
            return None if wrapper is None else WrapperPrinter(wrapper)
        if kind.name == "ling::python::Instance":
            return WrapperPrinter(value)
        if kind.code == gdb.TYPE_CODE_STRUCT and is_a(kind, ANY):
            return ValuePrinter(value)
    except gdb.error:  # Memory that is no value, or not yet one: gdb shows it as it is.
        return None
    return None


printer_of.name = "ling"
printer_of.enabled = True
gdb.printing.register_pretty_printer(gdb.current_objfile(), printer_of, replace=True)
