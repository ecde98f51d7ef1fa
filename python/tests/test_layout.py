"""The ctypes records against the C compiler's own layout of cansimu.h, for
the native host and, without running anything, for both Windows targets."""

import re
import shutil
import subprocess

import pytest

from cansimu.binding import EXPORTS, NATIVE_POINTER_SIZE, RECORDS, record_layouts
from conftest import REPOSITORY


def compiled_layouts(compiler, folder):
    """{record: (size, {field: offset})} as `compiler` lays the header out,
    read from the assembly of an array initialised with sizeof/offsetof."""
    values = []
    for record, fields in RECORDS.items():
        values.append(f"sizeof({record})")
        values += [f"offsetof({record}, {field})" for field, _ in fields]
    source = folder / "layout.c"
    source.write_text('#include <stddef.h>\n#include "cansimu/cansimu.h"\n'
                      f"const unsigned int cansimu_layout[] = {{{', '.join(values)}}};\n")
    subprocess.run([compiler, "-S", "-O0", "-I", str(REPOSITORY / "include"), "-o",
                    str(folder / "layout.s"), str(source)], check=True)
    assembly = (folder / "layout.s").read_text()
    data = assembly[re.search(r"^_?cansimu_layout:", assembly, re.M).end():]
    numbers = []
    for directive, value in re.findall(r"^\s*\.(long|zero|space)\s+(\d+)", data, re.M):
        numbers += [int(value)] if directive == "long" else [0] * (int(value) // 4)
    numbers = iter(numbers[:len(values)])
    return {record: (next(numbers), {field: next(numbers) for field, _ in fields})
            for record, fields in RECORDS.items()}


@pytest.mark.parametrize("compiler, pointer_size", [
    ("cc", NATIVE_POINTER_SIZE),
    ("i686-w64-mingw32-gcc", 4),
    ("x86_64-w64-mingw32-gcc", 8),
])
def test_records_match_the_compilers_layout(compiler, pointer_size, tmp_path):
    if shutil.which(compiler) is None:
        pytest.skip(f"{compiler} is not installed (./dev test windows installs the MinGW-w64 "
                    "compilers): this target's layout is not checked")
    assert record_layouts(pointer_size) == compiled_layouts(compiler, tmp_path)


def test_every_export_of_the_library_is_declared():
    listed = (REPOSITORY / "src" / "api" / "cansimu.def").read_text().split()
    assert sorted(EXPORTS) == sorted(listed[listed.index("EXPORTS") + 1:])
