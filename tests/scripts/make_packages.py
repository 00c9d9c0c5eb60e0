"""Fills a folder with packages as people put them into "site-packages": as folders, in archives, and in what is none.

    make_packages.py FOLDER
"""

import pathlib
import sys
import zipfile

INIT = """\
from .part import deep


def answer():
    return deep.VALUE
"""
FILES = {
    "{}/__init__.py": INIT,
    "{}/__main__.py": "import sys\nprint(__package__, sys.argv[1:])\n",
    "{}/part/__init__.py": "",
    "{}/part/deep.py": "VALUE = 'answer of {}'\n",
    "{}/data/table.txt": "data of {}",
    "{}-1.2.dist-info/METADATA": "Metadata-Version: 2.1\nName: {}\nVersion: 1.2\n",
}


def files_of(package):
    return {name.format(package): text.replace("{}", package) for name, text in FILES.items()}


def write_folder(target, package):
    for name, text in files_of(package).items():
        path = target / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)


def write_archive(path, packages, compression=zipfile.ZIP_STORED):
    with zipfile.ZipFile(path, "w", compression) as archive:
        for package in packages:
            for name, text in files_of(package).items():
                archive.writestr(name, text)


def main():
    target = pathlib.Path(sys.argv[1])
    write_folder(target, "plain")
    write_archive(target / "packed.zip", ["packed"])
    write_archive(target / "squeezed.zip", ["squeezed"], zipfile.ZIP_DEFLATED)
    write_archive(target / "linked.archive", ["linked"])
    (target / "linked.zip").symlink_to("linked.archive")
    # In an archive and in a folder at once.
    write_archive(target / "twofold.zip", ["twofold"])
    (target / "twofold").mkdir()
    (target / "twofold/__init__.py").write_text("def answer():\n    return 'answer of the folder'\n")
    # What is no archive, by its name or by what it is.
    write_archive(target / "shouted.ZIP", ["shouted"])
    write_folder(target / "folder.zip", "folded")
    (target / "garbage.zip").write_bytes(b"PK\3\4 and no more of it")
    (target / "empty.zip").touch()
    write_archive(target / "cut.zip", ["cut"])
    whole = (target / "cut.zip").read_bytes()
    (target / "cut.zip").write_bytes(whole[: len(whole) - 30])
    # An archive whose list of files is whole, and whose files are not.
    write_archive(target / "spoilt.zip", ["spoilt"], zipfile.ZIP_DEFLATED)
    whole = bytearray((target / "spoilt.zip").read_bytes())
    start = len("spoilt/__init__.py") + 30
    whole[start : start + 20] = bytes(20)
    (target / "spoilt.zip").write_bytes(whole)


if __name__ == "__main__":
    main()
