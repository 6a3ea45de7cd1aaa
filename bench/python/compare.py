#!/usr/bin/env python3
"""Ways for Python to call a C library: ctypes, cffi and pybind11.

compare.py: measures a call with three floats, a callback with a pointer and a number, and what each
way needs to be installed. It takes Debian's python3-dev, python3-cffi, pybind11-dev and a compiler.
"""
import ctypes
import importlib.util
import shutil
import subprocess
import sys
import sysconfig
import tempfile
import time
from pathlib import Path

SOURCE = """
float add(float x, float y, float z) { return x + y + z; }
void repeat(long n, void (*function)(void*, long), void* data)
{
    long k;
    for (k = 0; k < n; ++k) function(data, k);
}
"""
DECLARED = "float add(float, float, float); void repeat(long, void (*)(void*, long), void*);"
PYBIND = """
#include <pybind11/functional.h>
#include <pybind11/pybind11.h>
#include <functional>
extern "C" float add(float, float, float);
extern "C" void repeat(long, void (*)(void*, long), void*);
namespace py = pybind11;
PYBIND11_MODULE(by_pybind11, m)
{
    m.def("add", &add);
    m.def("repeat", [](long n, const py::function& f) {
        py::gil_scoped_release released;
        repeat(n, [](void* data, long k) {
            py::gil_scoped_acquire held;
            (*static_cast<const py::function*>(data))(k);
        }, const_cast<py::function*>(&f));
    });
}
"""
COUNT, ROUNDS = 100_000, 15


def best(run):
    """Nanoseconds for each of COUNT."""
    times = []
    for _ in range(ROUNDS):
        start = time.thread_time()
        run()
        times.append(time.thread_time() - start)
    return min(times) / COUNT * 1e9


def calls(add):
    def run():
        for _ in range(COUNT):
            add(1.0, 2.0, 3.0)
    return best(run)


def installed(*packages):
    """Kilobytes of Debian packages."""
    command = ["dpkg-query", "-W", "-f=${Installed-Size}\n", *packages]
    return sum(map(int, subprocess.run(command, check=True, capture_output=True, text=True).stdout.split()))


def load(name, path):
    spec = importlib.util.spec_from_file_location(name, path)
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    return module


def by_ctypes(library, load_library):
    code = load_library(str(library))
    code.add.restype = ctypes.c_float
    code.add.argtypes = [ctypes.c_float] * 3
    code.repeat.restype = None
    kind = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_long)
    code.repeat.argtypes = [ctypes.c_long, kind, ctypes.c_void_p]
    function = kind(lambda data, k: None)
    return calls(code.add), best(lambda: code.repeat(COUNT, function, None)), 0, 0


def by_cffi_abi(library):
    import cffi
    ffi = cffi.FFI()
    ffi.cdef(DECLARED)
    code = ffi.dlopen(str(library))
    function = ffi.callback("void(void*, long)", lambda data, k: None)
    return (calls(code.add), best(lambda: code.repeat(COUNT, function, ffi.NULL)),
            installed("python3-cffi", "python3-cffi-backend", "python3-pycparser", "python3-ply"), 0)


def by_cffi_api(library, folder):
    import cffi
    ffi = cffi.FFI()
    ffi.cdef(DECLARED + 'extern "Python" void each(void*, long);')
    ffi.set_source("by_cffi", DECLARED, libraries=["compared"], library_dirs=[str(folder)],
                   extra_link_args=[f"-Wl,-rpath,{folder}"], extra_compile_args=["-O2"])
    built = Path(ffi.compile(tmpdir=str(folder)))
    module = load("by_cffi", built)
    module.ffi.def_extern("each")(lambda data, k: None)
    code, each = module.lib, module.lib.each
    return (calls(code.add), best(lambda: code.repeat(COUNT, each, module.ffi.NULL)),
            installed("python3-cffi-backend"), built.stat().st_size // 1024)


def by_pybind11(library, folder):
    include = sysconfig.get_paths()["include"]
    built = folder / "by_pybind11.so"
    (folder / "by_pybind11.cpp").write_text(PYBIND)
    subprocess.run(["c++", "-O2", "-std=c++17", "-shared", "-fPIC", f"-I{include}", str(folder / "by_pybind11.cpp"),
                    "-o", str(built), f"-L{folder}", "-lcompared", f"-Wl,-rpath,{folder}"], check=True)
    subprocess.run(["strip", str(built)], check=True)
    module = load("by_pybind11", built)
    return (calls(module.add), best(lambda: module.repeat(COUNT, lambda k: None)), 0,
            built.stat().st_size // 1024)


def main():
    folder = Path(tempfile.mkdtemp())
    try:
        library = folder / "libcompared.so"
        (folder / "compared.c").write_text(SOURCE)
        subprocess.run(["cc", "-O2", "-shared", "-fPIC", str(folder / "compared.c"), "-o", str(library)], check=True)
        ways = {
            "ctypes, CDLL": lambda: by_ctypes(library, ctypes.CDLL),
            "ctypes, PyDLL": lambda: by_ctypes(library, ctypes.PyDLL),
            "cffi, without a compiler": lambda: by_cffi_abi(library),
            "cffi, compiled": lambda: by_cffi_api(library, folder),
            "pybind11": lambda: by_pybind11(library, folder),
        }
        print("| way | call, ns | callback, ns | to install, KB | module, KB |\n|---|---|---|---|---|")
        for name, way in ways.items():
            print("| {} | {:.0f} | {:.0f} | {} | {} |".format(name, *way()))
    finally:
        shutil.rmtree(folder)


if __name__ == "__main__":
    sys.exit(main())
