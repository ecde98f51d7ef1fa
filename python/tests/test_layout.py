"""The ctypes records against the C compiler's own layout of cansimu.h, for
the native host and, without running anything, for both Windows targets."""

import ctypes
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


def c_type(ctype):
    """The C spelling of a ctypes argument or result type, const left out."""
    scalars = {None: "void", ctypes.c_uint32: "uint32_t", ctypes.c_uint8: "uint8_t",
               ctypes.c_char_p: "char *", ctypes.c_void_p: "void *"}
    if ctype in scalars:
        return scalars[ctype]
    if hasattr(ctype, "_type_") and issubclass(ctype, ctypes._Pointer):
        return c_type(ctype._type_) + " *"
    return ctype.__name__


def test_every_export_is_declared_with_the_headers_types(tmp_path):
    """Each export's type, as the compiler sees the header (const aside, which
    ctypes cannot express), is the function type its declaration spells."""
    checks = [f"_Static_assert(__builtin_types_compatible_p(__typeof__({name}), "
              f"{c_type(result)} ({', '.join(map(c_type, arguments)) or 'void'})), \"{name}\");"
              for name, (result, arguments) in EXPORTS.items()]
    source = tmp_path / "exports.c"
    source.write_text('#include "cansimu/cansimu.h"\n' + "\n".join(checks) + "\n")
    compiled = subprocess.run(["cc", "-std=gnu11", "-fsyntax-only", "-Dconst=", "-I",
                               str(REPOSITORY / "include"), str(source)],
                              capture_output=True, text=True)
    assert compiled.returncode == 0, compiled.stderr
