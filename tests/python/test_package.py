# SPDX-License-Identifier: Apache-2.0
"""The generated modules, the size of the package, and what an import says without the library."""

import ctypes
import shutil
import subprocess
import sys
import zipfile

from conftest import SOURCE

PACKAGE = SOURCE / "python" / "ztportal"
sys.path.append(str(SOURCE / "python"))
import generate  # noqa: E402


def test_generated_modules_are_up_to_date():
    for name, text in generate.generated().items():
        assert (PACKAGE / name).read_text() == text, "run python/generate.py"


def test_every_declaration_of_the_header_is_generated():
    header = generate.HEADER.read_text()
    text = (PACKAGE / "_interface.py").read_text()
    assert text.count('    "zt_') == header.count("ZT_C_EXPORT zt_") + header.count(
        "ZT_C_EXPORT void") + header.count("ZT_C_EXPORT const char*")
    assert text.count("(OpenEnum)") == header.count("\ntypedef int32_t")
    assert text.count("(Structure)") == header.count("\n  size_t size;") + 1  # and zt_pair
    assert text.count(" = CFUNCTYPE(") == header.count("\ntypedef") - header.count(
        "\ntypedef struct") - header.count("\ntypedef int32_t")


def test_structures_have_the_sizes_of_the_compiler(tmp_path):
    from ztportal import _interface
    names = list(generate.Header(generate.HEADER.read_text()).structures)
    lines = "".join(f'printf("{name} %zu\\n", sizeof({name}));\n' for name in names)
    source = tmp_path / "sizes.c"
    source.write_text(f'#include <stdio.h>\n#include "ztportal/c/ztportal.h"\n'
                      f"int main(void) {{ {lines} return 0; }}\n")
    subprocess.run(["cc", "-I", SOURCE, source, "-o", tmp_path / "sizes"], check=True)
    printed = subprocess.run([tmp_path / "sizes"], capture_output=True, text=True).stdout
    expected = "".join(f"{name} {ctypes.sizeof(getattr(_interface, generate.camel(name)))}\n"
                       for name in names)
    assert printed == expected


def test_a_missing_library_is_told_in_one_sentence(run):
    text = run("import ztportal", status=1, ZTPORTAL_LIBRARY="/nowhere/libztportal.so.1")
    assert text.splitlines()[-1].startswith(
        "ImportError: ztportal cannot load its library /nowhere/libztportal.so.1")


def test_a_library_that_is_too_old_is_told_in_one_sentence(run):
    text = run("import ztportal", status=1, ZTPORTAL_LIBRARY="libc.so.6")
    assert text.splitlines()[-1] == ("ImportError: ztportal needs a newer library than libc.so.6, "
                                     "which has no function zt_last_error")


def test_a_number_of_a_later_library_is_a_member():
    from ztportal import Outcome
    assert Outcome(1) is Outcome.ACCEPTED
    assert Outcome(99).name == "UNKNOWN_99" and Outcome(99) == 99


def test_wheel_is_pure_and_complete(tmp_path, run):
    """pip calls the same function."""
    shutil.copytree(SOURCE / "python", tmp_path / "python")
    subprocess.run([sys.executable, "-c", "from setuptools import build_meta; "
                    "build_meta.build_wheel('wheel')"], cwd=tmp_path / "python", check=True,
                   capture_output=True)
    [wheel] = (tmp_path / "python" / "wheel").iterdir()
    import ztportal
    assert wheel.name == f"ztportal-{ztportal.__version__}-py3-none-any.whl"
    with zipfile.ZipFile(wheel) as archive:
        names = {name for name in archive.namelist() if "dist-info" not in name}
        archive.extractall(tmp_path / "installed")
    assert names == {f"ztportal/{path.name}" for path in PACKAGE.iterdir() if path.is_file()}
    code = "import ztportal; print(ztportal.__file__)"
    assert str(tmp_path) in run(code, PYTHONPATH=str(tmp_path / "installed"))
