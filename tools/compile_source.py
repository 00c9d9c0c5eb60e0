"""Compiles a Python source for the interpreter that runs this, so that a program that embeds it need not compile it at
each start:

    compile_source.py SOURCE NAME OUTPUT

The output holds the interpreter's magic number, by which another version is told from this one, and the code with
NAME as its file name.
"""

import importlib.util
import marshal
import pathlib
import sys


def main():
    source, name, output = sys.argv[1:]
    code = compile(pathlib.Path(source).read_bytes(), name, "exec", dont_inherit=True)
    pathlib.Path(output).write_bytes(importlib.util.MAGIC_NUMBER + marshal.dumps(code))


if __name__ == "__main__":
    main()
