"""tvkgen from Python: the library's transforms on numpy arrays.

    import numpy as np, tvkgen
    X = tvkgen.fft(np.ones(16, np.complex128), scale="forward")
    cells = tvkgen.rfft(np.arange(6.0), layout="perm")
    x = tvkgen.irfft(cells, 6, layout="perm", scale="inverse")

Arrays are float32/float64 (real transforms) or complex64/complex128 (the
complex DFT); the element type picks the kernel's type and the result has
it too. `scale` is "none", "forward" (divide by N in forward transforms),
"inverse" (in inverse ones), "sqrt" (by sqrt(N)), or the flag's integer.
A wrong argument raises TypeError or ValueError naming it; a status other
than StatusOk from the library raises TvkgenError.

dct4 keeps one plan per length, type and thread: a plan of length 64 or
more holds its work area, and the library runs without the interpreter's
lock, so no two threads may run one plan at a time.

The library is found through the environment variable TVKGEN_LIBRARY (a
path to libtvkgen.so), next to this module, in a build tree of the checkout
(build/*/libtvkgen.so), or where the system's loader looks. Every function
called is looked up in the library's list of exports, tvkgen_exports.inc,
which gives its signature: next to this module, in the checkout's include/,
or in the include/ of the prefix the library is installed in.
"""

import ctypes
import ctypes.util
import functools
import glob
import os
import re
import threading
import weakref

import numpy as np

__all__ = ["fft", "rfft", "irfft", "hartley", "wht", "dct4", "TvkgenError", "library_path", "EXPORTS"]

SCALES = {"forward": 1, "inverse": 2, "sqrt": 4, "none": 8}
LAYOUTS = ("ccs", "pack", "perm")
_LAYOUT_NAMES = {"ccs": "CCS", "pack": "Pack", "perm": "Perm"}
_STATUS_TEXT = {-5: "bad argument", -6: "size error", -8: "null pointer", -16: "scale flag error"}


class TvkgenError(RuntimeError):
    """A status other than StatusOk from a library function."""

    def __init__(self, status, function):
        super().__init__(f"{function} returned {status} ({_STATUS_TEXT.get(status, 'unknown status')})")
        self.status = status
        self.function = function


def _candidates():
    env = os.environ.get("TVKGEN_LIBRARY")
    if env:
        yield env
        return
    here = os.path.dirname(os.path.abspath(__file__))
    yield from sorted(glob.glob(os.path.join(here, "libtvkgen.so*")))
    checkout = os.path.dirname(os.path.dirname(here))
    for preset in ("release", "test", "release-avx2", "test-avx2"):
        yield os.path.join(checkout, "build", preset, "libtvkgen.so")
    yield from sorted(glob.glob(os.path.join(checkout, "build", "*", "libtvkgen.so")))
    found = ctypes.util.find_library("tvkgen")
    if found:
        yield found


def _load():
    failures = []  # the loader's own words for each library that is there but does not load
    for path in _candidates():
        if os.path.sep in path and not os.path.exists(path):
            continue
        try:
            return ctypes.CDLL(path), path
        except OSError as error:  # the loader names the file unless a dependency is missing
            failures.append(str(error) if path in str(error) else f"{path}: {error}")
    if failures:
        raise OSError("libtvkgen.so does not load: " + "; ".join(failures))
    if os.environ.get("TVKGEN_LIBRARY"):
        raise OSError(f"TVKGEN_LIBRARY names {os.environ['TVKGEN_LIBRARY']}, which does not exist")
    raise OSError("libtvkgen.so not found: set TVKGEN_LIBRARY to its path")


_lib, library_path = _load()
_int = ctypes.c_int
_ptr = ctypes.c_void_p

# The C signature of each shape of the list of exports.
_SIGNATURES = {
    "KERNEL": (_ptr, _ptr, _int),
    "DISPATCHER": (_ptr, _ptr, _int, _int),
    "WHT": (_ptr, _ptr, _int, _ptr),
    "WHT_DISPATCHER": (_ptr, _ptr, _int, _int, _ptr),
    "WHT_BUFFER_SIZE": (_int, _ptr),
    "DCT4_GET_SIZE": (_int, _ptr),
    "DCT4_INIT": (_ptr, _int, _ptr),
    "DCT4_INIT_ALLOC": (_ptr, _int),
    "DCT4": (_ptr, _ptr, _ptr),
    "DCT4_FREE": (_ptr,),
    "VERSION": (),
}


def _exports_list():
    """The rows of tvkgen_exports.inc, {name: shape}, and the file's path."""
    here = os.path.dirname(os.path.abspath(__file__))
    library_dir = os.path.dirname(os.path.abspath(library_path))
    places = [here, os.path.join(os.path.dirname(os.path.dirname(here)), "include"),
              os.path.join(os.path.dirname(library_dir), "include"),
              os.path.join(os.path.dirname(os.path.dirname(library_dir)), "include")]
    for place in places:
        path = os.path.join(place, "tvkgen_exports.inc")
        if os.path.exists(path):
            with open(path) as rows:
                return dict((name, shape) for shape, name in
                            re.findall(r"^TVKG_EXPORT\((\w+), (\w+),", rows.read(), re.MULTILINE)), path
    raise OSError("tvkgen_exports.inc, the list of the library's exports, is in none of " + ", ".join(places))


# Every function the library exports, by name, with its shape.
EXPORTS, _exports_path = _exports_list()


@functools.lru_cache(maxsize=None)
def _export(name):
    """A library function with the signature of its shape, looked up once."""
    if name not in EXPORTS:
        raise LookupError(f"{name} is not on tvkgen's list of exports ({_exports_path})")
    f = getattr(_lib, name)
    f.restype = ctypes.c_void_p if EXPORTS[name] == "VERSION" else ctypes.c_int32
    f.argtypes = _SIGNATURES[EXPORTS[name]]
    return f


def _check(status, name):
    if status != 0:
        raise TvkgenError(status, name)


def _integer(value):
    """Python and numpy integers, not bool (which would pass as 0 or 1)."""
    return isinstance(value, (int, np.integer)) and not isinstance(value, bool)


def _flag(scale):
    accepted = f"scale is one of {sorted(SCALES)} or an integer flag"
    if isinstance(scale, str):
        if scale not in SCALES:
            raise ValueError(f"{accepted}, not {scale!r}")
        return SCALES[scale]
    if not _integer(scale):
        raise TypeError(f"{accepted}, not {scale!r}")
    if not -(1 << 31) <= scale < 1 << 31:  # ctypes would cut it to 32 bits unasked
        raise ValueError(f"{accepted} of 32 bits, not {scale!r}")
    return int(scale)


def _inverse(inverse):
    if not isinstance(inverse, (bool, np.bool_)):
        raise TypeError(f"inverse is True or False, not {inverse!r}")
    return bool(inverse)


def _input(x, kinds, what, check_length):
    """x as a contiguous one-dimensional array of one of kinds; check_length(n,
    dtype) raises for a length the function refuses, before any copy."""
    x = np.asarray(x)
    if x.ndim != 1:
        raise ValueError(f"{what} takes a one-dimensional array, not shape {x.shape}")
    if x.dtype not in kinds:
        raise TypeError(f"{what} takes {' or '.join(np.dtype(k).name for k in kinds)} arrays, not {x.dtype}")
    check_length(len(x), x.dtype)
    return np.ascontiguousarray(x)


_REAL = {np.dtype(np.float32): "32f", np.dtype(np.float64): "64f"}
_COMPLEX = {np.dtype(np.complex64): "32fc", np.dtype(np.complex128): "64fc"}


def _sizes(low, high, what):
    """A length check of _input: low to high."""

    def check(n, dtype=None):
        if not low <= n <= high:
            raise ValueError(f"{what} sizes are {low} to {high}, not {n}")

    return check


def _powers_of_two(longest, what):
    """A length check of _input: the powers of two from 2 to longest[dtype]."""

    def check(n, dtype):
        if n < 2 or n & (n - 1) or n > longest[dtype]:
            raise ValueError(f"{what} lengths of {dtype} are the powers of two from 2 to {longest[dtype]}, not {n}")

    return check


def fft(x, inverse=False, scale="none"):
    """Complex DFT of 2 to 64 points (exp(-2 pi i nk/N) forward)."""
    x = _input(x, _COMPLEX, "fft", _sizes(2, 64, "fft"))
    name = f"tvkgDFT{'Inv' if _inverse(inverse) else 'Fwd'}_CToC_{_COMPLEX[x.dtype]}"
    out = np.empty_like(x)
    _check(_export(name)(x.ctypes.data, out.ctypes.data, len(x), _flag(scale)), name)
    return out


def spectrum_cells(n, layout):
    """Cells of a length-n real spectrum in a layout."""
    return 2 * (n // 2 + 1) if _layout(layout) == "CCS" else n


def _layout(layout):
    if layout not in LAYOUTS:
        raise ValueError(f"layout is one of {LAYOUTS}, not {layout!r}")
    return _LAYOUT_NAMES[layout]


def rfft(x, layout="ccs", scale="none"):
    """Real DFT of 2 to 64 reals into a packed layout (ccs, pack, perm)."""
    x = _input(x, _REAL, "rfft", _sizes(2, 64, "rfft"))
    name = f"tvkgDFTFwd_RTo{_layout(layout)}_{_REAL[x.dtype]}"
    out = np.empty(spectrum_cells(len(x), layout), x.dtype)
    _check(_export(name)(x.ctypes.data, out.ctypes.data, len(x), _flag(scale)), name)
    return out


def irfft(cells, n, layout="ccs", scale="none"):
    """The n reals (2 to 64) of a packed spectrum; unscaled it is n times
    the sequence that rfft transformed."""
    if not _integer(n):
        raise TypeError(f"irfft's n is an integer, not {n!r}")
    _sizes(2, 64, "irfft")(n)
    want = spectrum_cells(n, layout)

    def check_cells(length, dtype):
        if length != want:
            raise ValueError(f"a length-{n} spectrum has {want} cells in {layout}, not {length}")

    cells = _input(cells, _REAL, "irfft", check_cells)
    name = f"tvkgDFTInv_{_layout(layout)}ToR_{_REAL[cells.dtype]}"
    out = np.empty(n, cells.dtype)
    _check(_export(name)(cells.ctypes.data, out.ctypes.data, n, _flag(scale)), name)
    return out


def hartley(x, scale="none"):
    """Discrete Hartley transform of 2 to 64 reals."""
    x = _input(x, _REAL, "hartley", _sizes(2, 64, "hartley"))
    name = f"tvkgHartley_{_REAL[x.dtype]}"
    out = np.empty_like(x)
    _check(_export(name)(x.ctypes.data, out.ctypes.data, len(x), _flag(scale)), name)
    return out


def wht(x, scale="none"):
    """Walsh-Hadamard transform of 2 to 8192 points (a power of two)."""
    x = _input(x, _REAL, "wht", _powers_of_two(dict.fromkeys(_REAL, 8192), "wht"))
    order = len(x).bit_length() - 1
    name = f"tvkgWHT_{_REAL[x.dtype]}"
    out = np.empty_like(x)
    _check(_export(name)(x.ctypes.data, out.ctypes.data, order, _flag(scale), None), name)
    return out


# The longest DCT-IV plans: from twice these lengths on, the library's 32-bit
# plan size is refused or wraps to a block too small for the plan.
_DCT4_LONGEST = {np.dtype(np.float32): 1 << 26, np.dtype(np.float64): 1 << 25}
_threads = threading.local()


class _Plan:
    """A DCT-IV plan of the library, freed with this object."""

    def __init__(self, n, suffix):
        self.handle = ctypes.c_void_p()
        init = f"tvkgDCT4InitAlloc_{suffix}"
        _check(_export(init)(ctypes.byref(self.handle), n), init)
        weakref.finalize(self, _export(f"tvkgDCT4Free_{suffix}"), self.handle)


def _plan(n, suffix):
    """This thread's plan of a length and type, made once and kept while the
    thread lives."""
    plans = _threads.__dict__.setdefault("plans", {})
    if (n, suffix) not in plans:
        plans[(n, suffix)] = _Plan(n, suffix)
    return plans[(n, suffix)].handle


def dct4(x):
    """DCT-IV of a power-of-two length: y[k] = sum x[n] cos(pi (n + 1/2)(k + 1/2) / N)."""
    x = _input(x, _REAL, "dct4", _powers_of_two(_DCT4_LONGEST, "dct4"))
    suffix = _REAL[x.dtype]
    plan = _plan(len(x), suffix)
    name = f"tvkgDCT4_{suffix}"
    out = np.empty_like(x)
    _check(_export(name)(x.ctypes.data, out.ctypes.data, plan), name)
    return out
