"""tvkgen from Python: numpy's fft vocabulary on the library's transforms.

    >>> import numpy as np, tvkgen
    >>> X = tvkgen.fft(np.ones((1000, 16)))         # 1000 rows of 16, one batch call
    >>> y = tvkgen.irfft(tvkgen.rfft(np.arange(6.0)), 6)

`fft`, `ifft`, `rfft` and `irfft` take numpy's arguments (`n`, `axis`,
`norm`, `out`) and give its results to rounding for the library's lengths,
2 to 64; `rfft_packed`, `irfft_packed`, `dht`, `wht` and `dct4` are the
library's own transforms in the same style, and `scipy_backend` serves
scipy.fft. Every function takes `workers` as scipy does: a large batch is
split over that many threads (the library runs without the interpreter's
lock).

Results are float32 or complex64 for float16, float32 and complex64 input,
float64 or complex128 for float64, complex128, integers and bools (lists
convert as numpy converts them). The rows along the axis run through
libtvkgen_batch, one call per block of evenly spaced rows; an array is
copied only where its rows are not so laid out. Each row gets exactly the
bytes of the library's single call. A wrong argument raises TypeError or
ValueError naming it; a status other than StatusOk raises TvkgenError.

dct4 keeps one plan per length, type and thread: a plan of length 64 or
more holds its work area, so no two threads may run one plan at a time.

The library is found through the environment variable TVKGEN_LIBRARY (a
path to libtvkgen.so), where an install put this module's library, next to
this module, in a build tree of the checkout (build/*/libtvkgen.so), or
where the system's loader looks. libtvkgen_batch is TVKGEN_BATCH_LIBRARY,
or beside libtvkgen (or in its batch/ folder, as in a build tree); without
it every row is a single call. Every libtvkgen function called is looked up
in the library's list of exports, tvkgen_exports.inc, which gives its
signature: next to this module, in the checkout's include/, or in the
include/ of the prefix the library is installed in.

One contiguous row of the type a transform computes in, with numpy's
default arguments, skips ctypes where the build compiled the module's calls
(_calls, next to this module or in python/ beside the build tree's
libtvkgen): a short transform then costs less than numpy's call.
"""

import concurrent.futures
import ctypes
import ctypes.util
import functools
import glob
import importlib
import importlib.machinery
import itertools
import math
import os
import re
import threading
import weakref

import numpy as np

__all__ = ["fft", "ifft", "rfft", "irfft", "rfft_packed", "irfft_packed", "dht", "wht", "dct4", "scipy_backend",
           "TvkgenError", "library_path", "batch_library_path", "EXPORTS"]

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
    try:  # written by `cmake --install`: the library's folder, from this one
        from . import _installed
        yield os.path.normpath(os.path.join(here, _installed.LIBRARY_DIR, "libtvkgen.so"))
    except ImportError:
        pass
    yield from sorted(glob.glob(os.path.join(here, "libtvkgen.so*")))
    checkout = os.path.dirname(os.path.dirname(here))
    for preset in ("release", "test", "release-avx2", "test-avx2", "release-avx512", "test-avx512"):
        yield os.path.join(checkout, "build", preset, "libtvkgen.so")
    yield from sorted(glob.glob(os.path.join(checkout, "build", "*", "libtvkgen.so")))
    found = ctypes.util.find_library("tvkgen")
    if found:
        yield found


def _load(candidates, what, variable):
    """The first of candidates that loads, and its path; None where none is there."""
    failures = []  # the loader's own words for each library that is there but does not load
    for path in candidates:
        if os.path.sep in path and not os.path.exists(path):
            continue
        try:
            return ctypes.CDLL(path), path
        except OSError as error:  # the loader names the file unless a dependency is missing
            failures.append(str(error) if path in str(error) else f"{path}: {error}")
    if failures:
        raise OSError(f"{what} does not load: " + "; ".join(failures))
    if os.environ.get(variable):
        raise OSError(f"{variable} names {os.environ[variable]}, which does not exist")
    return None, None


_lib, library_path = _load(_candidates(), "libtvkgen.so", "TVKGEN_LIBRARY")
if _lib is None:
    raise OSError("libtvkgen.so not found: set TVKGEN_LIBRARY to its path")


def _batch_candidates():
    env = os.environ.get("TVKGEN_BATCH_LIBRARY")
    if env:
        yield env
        return
    beside = os.path.dirname(os.path.abspath(library_path))
    for place in (beside, os.path.join(beside, "batch")):
        yield from sorted(glob.glob(os.path.join(place, "libtvkgen_batch.so*")))
    found = ctypes.util.find_library("tvkgen_batch")
    if found:
        yield found


_batch, batch_library_path = _load(_batch_candidates(), "libtvkgen_batch.so", "TVKGEN_BATCH_LIBRARY")


def _load_calls():
    """The compiled one-row calls (python/src/calls.cpp), where they were built:
    next to this module when installed, or in python/ beside the build tree's
    libtvkgen; None elsewhere, and the general path serves every call."""
    here = os.path.dirname(os.path.abspath(__file__))
    for place in (here, os.path.join(os.path.dirname(os.path.abspath(library_path)), "python")):
        if any(os.path.exists(os.path.join(place, "_calls" + suffix))
               for suffix in importlib.machinery.EXTENSION_SUFFIXES):
            if place != here:
                __path__.append(place)  # the package's compiled part, in the build tree
            return importlib.import_module(__name__ + "._calls")
    return None


_calls = _load_calls()
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


@functools.lru_cache(maxsize=None)
def _batch_entry(name):
    """The batch entry of a single dispatcher's name (tvkgBatch...), or None without libtvkgen_batch."""
    if _batch is None:
        return None
    f = getattr(_batch, "tvkgBatch" + name[len("tvkg"):])
    f.restype = ctypes.c_int32
    f.argtypes = (_ptr, _int, _ptr, _int, _int, _int, _int) + ((_ptr,) if EXPORTS[name] == "WHT_DISPATCHER" else ())
    return f


def _check(status, name):
    if status != 0:
        raise TvkgenError(status, name)


# ---- arguments ---------------------------------------------------------------

def _integer(value):
    """Python and numpy integers, not bool (which would pass as 0 or 1)."""
    return isinstance(value, (int, np.integer)) and not isinstance(value, bool)


_SINGLE = {np.dtype(t) for t in (np.float16, np.float32, np.complex64)}
_DOUBLE = {np.dtype(t) for t in (np.float64, np.complex128)}
_SUFFIX = {np.dtype(np.float32): "32f", np.dtype(np.float64): "64f",
           np.dtype(np.complex64): "32fc", np.dtype(np.complex128): "64fc"}


def _precision(x, what, complex_too=True):
    """The real type the library computes x in: float32 or float64."""
    if x.dtype.kind == "c" and not complex_too:
        raise TypeError(f"{what}: x is real (floats, integers, bools), not {x.dtype}")
    if x.dtype in _SINGLE:
        return np.dtype(np.float32)
    if x.dtype in _DOUBLE or x.dtype.kind in "biu":
        return np.dtype(np.float64)
    raise TypeError(f"{what}: x holds float16, float32, float64, complex64, complex128, integer or bool numbers, "
                    f"not {x.dtype}")


_COMPLEX_OF = {np.dtype(np.float32): np.dtype(np.complex64), np.dtype(np.float64): np.dtype(np.complex128)}


def _axis(axis, ndim, what):
    if not _integer(axis):
        raise TypeError(f"{what}: axis is an integer, not {axis!r}")
    if not -ndim <= axis < ndim:
        raise ValueError(f"{what}: axis {axis} is out of range for an array of {ndim} dimensions")
    return int(axis) % ndim


def _length(n, what, longest=64, powers_of_two=False):
    """n, checked against the library's lengths: 2 to longest, or its powers of two."""
    if not _integer(n):
        raise TypeError(f"{what}: n is an integer, not {n!r}")
    if powers_of_two and (n < 2 or n & (n - 1) or n > longest):
        raise ValueError(f"{what}: the library's lengths are the powers of two from 2 to {longest}, not {n}")
    if not 2 <= n <= longest:
        raise ValueError(f"{what}: the library's lengths are 2 to {longest}, not {n}")
    return int(n)


# The flag of each norm: the DFTs' inverse kernels divide by N under 2 and
# not under 1; Hartley and Walsh-Hadamard divide by N under both.
_DFT_FLAGS = {"backward": 2, "ortho": 4, "forward": 1}
_SELF_INVERSE_FLAGS = {"backward": 8, "ortho": 4, "forward": 1}


def _norm(norm, what):
    """The name of a norm, None being "backward"."""
    norm = "backward" if norm is None else norm
    if not isinstance(norm, str):
        raise TypeError(f"{what}: norm is None or one of {list(_DFT_FLAGS)}, not {norm!r}")
    if norm not in _DFT_FLAGS:
        raise ValueError(f"{what}: norm is None or one of {list(_DFT_FLAGS)}, not {norm!r}")
    return norm


def _layout(layout, what):
    if layout not in LAYOUTS:
        raise ValueError(f"{what}: layout is one of {LAYOUTS}, not {layout!r}")
    return _LAYOUT_NAMES[layout]


def spectrum_cells(n, layout):
    """Cells of a length-n real spectrum in a layout."""
    return 2 * (n // 2 + 1) if layout == "ccs" else n


def _workers(workers, what):
    """Threads for a call, counted as scipy counts them (-1: one per processor)."""
    if workers is None:
        return 1
    if not _integer(workers) or workers == 0:
        raise (ValueError if _integer(workers) else TypeError)(
            f"{what}: workers is None, a positive count or a negative one from the processor count, not {workers!r}")
    count = workers if workers > 0 else (os.cpu_count() or 1) + 1 + workers
    if count < 1:
        raise ValueError(f"{what}: workers={workers} leaves no thread of {os.cpu_count()} processors")
    return int(count)


def _moved(x, source, destination):
    """np.moveaxis, without its cost where the axis stays."""
    return x if source % x.ndim == destination % x.ndim else np.moveaxis(x, source, destination)


def _along(x, axis, n):
    """x with the axis moved last, cut or zero-padded to n along it (a view where it is cut or kept)."""
    x = _moved(x, axis, -1)
    m = x.shape[-1]
    if m >= n:
        return x[..., :n]
    padded = np.zeros(x.shape[:-1] + (n,), x.dtype)
    padded[..., :m] = x
    return padded


# ---- rows through the library --------------------------------------------

# Batches of fewer cells than this stay on one thread, whatever `workers` says.
_SPLIT_CELLS = 1 << 15


def _rows_fit(a, cells, cell):
    """Whether the library reads or writes the rows of a (..., m) where they are:
    elements adjacent, rows a whole number of cells apart and no closer than a row."""
    if a.strides[-1] != a.itemsize:
        return False
    strides = [s for k, s in zip(a.shape[:-1], a.strides[:-1]) if k != 1]
    return not strides or (strides[-1] % cell == 0 and cells * cell <= strides[-1] < (1 << 31) * cell)


def _blocks(shape, strides):
    """The leading axes of arrays of one shape as blocks of evenly spaced rows:
    (byte offsets, row strides, count) per block, one per array in the lists."""
    axes = [i for i, k in enumerate(shape) if k != 1]
    if not axes:  # one row
        yield [0] * len(strides), [None] * len(strides), 1
        return
    if any(shape[i] == 0 for i in axes):
        return
    inner = len(axes) - 1  # axes[inner:] merge into one run of rows in every array
    while inner > 0 and all(s[axes[inner - 1]] == s[axes[inner]] * shape[axes[inner]] for s in strides):
        inner -= 1
    run, outer = axes[inner:], axes[:inner]
    count = math.prod(shape[i] for i in run)
    steps = [s[run[-1]] for s in strides]
    for index in itertools.product(*(range(shape[i]) for i in outer)):
        yield [sum(k * s[i] for k, i in zip(index, outer)) for s in strides], steps, count


def _run(call, src, dst, cells, cell, workers):
    """call(src, srcDist, dst, dstDist, count) over the rows of src (..., a) into
    dst (..., b), both laid out as _rows_fit wants: cells = (a, b) in cells of cell bytes."""
    tasks = []
    for (src_at, dst_at), steps, count in _blocks(src.shape[:-1], [src.strides[:-1], dst.strides[:-1]]):
        src_dist, dst_dist = (cells[i] if steps[i] is None else steps[i] // cell for i in (0, 1))
        split = workers > 1 and count * (cells[0] + cells[1]) >= _SPLIT_CELLS
        per = min(-(-count // workers) if split else count, (1 << 31) - 1)  # the count is a 32-bit int
        for first in range(0, count, per):
            tasks.append((src.ctypes.data + src_at + first * src_dist * cell, src_dist,
                          dst.ctypes.data + dst_at + first * dst_dist * cell, dst_dist, min(per, count - first)))
    if workers > 1 and len(tasks) > 1:
        # The caller's thread takes the first part; waiting on the others
        # raises the first error any of them met.
        pool = _pool(workers - 1)
        parts = [pool.submit(call, *task) for task in tasks[1:]]
        call(*tasks[0])
        for part in parts:
            part.result()
    else:
        for task in tasks:
            call(*task)


_helpers = {"pool": None, "size": 0}
_helpers_lock = threading.Lock()


def _pool(size):
    """The module's threads, at least `size` of them: started once and kept, as
    starting threads for each call costs more than a batch of short rows."""
    with _helpers_lock:
        if _helpers["size"] < size:
            _helpers["pool"] = concurrent.futures.ThreadPoolExecutor(size, thread_name_prefix="tvkgen")
            _helpers["size"] = size
        return _helpers["pool"]


def _rows_call(name, length, flag, cell):
    """call(src, srcDist, dst, dstDist, count) of a single dispatcher's name: its
    batch entry, or a loop of single calls where libtvkgen_batch is absent."""
    buffer = (None,) if EXPORTS[name] == "WHT_DISPATCHER" else ()  # each call allocates its own
    batch = _batch_entry(name)
    if batch is not None:
        batch_name = batch.__name__

        def call(src, src_dist, dst, dst_dist, count):
            _check(batch(src, src_dist, dst, dst_dist, length, count, flag, *buffer), batch_name)
    else:
        single = _export(name)

        def call(src, src_dist, dst, dst_dist, count):
            for row in range(count):
                _check(single(src + row * src_dist * cell, dst + row * dst_dist * cell, length, flag, *buffer), name)
    return call


def _apply(call, rows, dtypes, cells, cell, length, axis, out, workers, what):
    """call over the rows of `rows` (the axis last), read as dtypes[0], into rows
    of `length` elements of dtypes[1]: a new array, or out. cells = (cells of a
    row in, out), of cell bytes each."""
    src = rows.astype(dtypes[0], copy=False)
    if not _rows_fit(src, cells[0], cell):
        src = np.ascontiguousarray(src)
    shape = src.shape[:-1] + (length,)
    if out is None:
        dst = stage = np.empty(shape, dtypes[1])
    else:
        wanted = _moved(np.empty(shape, bool), -1, axis).shape  # the axis back in its place
        if not isinstance(out, np.ndarray):
            raise TypeError(f"{what}: out is a numpy array, not {type(out).__name__}")
        if out.dtype != dtypes[1]:
            raise TypeError(f"{what}: out is a {dtypes[1]} array for this input, not {out.dtype}")
        if out.shape != wanted:
            raise ValueError(f"{what}: out has shape {wanted} for this input, not {out.shape}")
        if not out.flags.writeable:
            raise ValueError(f"{what}: out is read-only")
        dst = _moved(out, axis, -1)
        stage = dst if _rows_fit(dst, cells[1], cell) else np.empty(shape, dtypes[1])
        if np.may_share_memory(src, stage):
            src = src.copy()
    _run(call, src, stage, cells, cell, _workers(workers, what))
    if stage is not dst:
        dst[...] = stage
    return _moved(dst, -1, axis) if out is None else out


# ---- one row -------------------------------------------------------------------

# The transform length and the result's cells of numpy's functions for an
# input row of m elements, n and the rest as numpy's defaults.
_ROW_LENGTHS = {"fft": lambda m: (m, m), "ifft": lambda m: (m, m), "rfft": lambda m: (m, m // 2 + 1),
                "irfft": lambda m: (2 * (m - 1), 2 * (m - 1))}
# (function, input dtype): the dispatcher's address and name, the result dtype.
_ROWS = {}
if _calls is not None:
    for real, cx in _COMPLEX_OF.items():
        for what, name, source, result in (("fft", f"tvkgDFTFwd_CToC_{_SUFFIX[cx]}", cx, cx),
                                           ("ifft", f"tvkgDFTInv_CToC_{_SUFFIX[cx]}", cx, cx),
                                           ("rfft", f"tvkgDFTFwd_RToCCS_{_SUFFIX[real]}", real, cx),
                                           ("irfft", f"tvkgDFTInv_CCSToR_{_SUFFIX[real]}", cx, real)):
            _ROWS[what, source] = (ctypes.cast(_export(name), _ptr).value, name, result)


def _one_row(what, x, n, axis, norm, out, workers):
    """numpy's function `what` on one contiguous row of the type it computes
    in, every other argument its default or the same: the result of one
    compiled call, or None where the general path takes the call."""
    if (type(x) is not np.ndarray or x.ndim != 1 or x.strides[0] != x.itemsize or type(axis) is not int
            or axis not in (-1, 0) or norm is not None or out is not None or workers is not None):
        return None
    entry = _ROWS.get((what, x.dtype))
    if entry is None:
        return None
    length, cells = _ROW_LENGTHS[what](x.shape[0])
    if not 2 <= length <= 64 or not (n is None or (type(n) is int and n == length)):
        return None
    address, name, result = entry
    y = np.empty(cells, result)
    _check(_calls.single(address, x, y, length, _DFT_FLAGS["backward"]), name)
    return y


# ---- numpy's DFTs ------------------------------------------------------------

def _complex_dft(x, n, axis, norm, out, workers, what, direction):
    x = np.asarray(x)
    kind = _COMPLEX_OF[_precision(x, what)]
    axis = _axis(axis, x.ndim, what)
    n = _length(x.shape[axis] if n is None else n, what)
    call = _rows_call(f"tvkgDFT{direction}_CToC_{_SUFFIX[kind]}", n, _DFT_FLAGS[_norm(norm, what)], kind.itemsize)
    return _apply(call, _along(x, axis, n), (kind, kind), (n, n), kind.itemsize, n, axis, out, workers, what)


def fft(x, n=None, axis=-1, norm=None, out=None, workers=None):
    """Discrete Fourier transform along an axis, as numpy.fft.fft.

    Parameters
    ----------
    x : array_like
        Input; real input becomes complex.
    n : int, optional
        Length of the transform, 2 to 64: the axis is cut or zero-padded to
        it. The axis' length by default.
    axis : int, optional
        Axis of the transform; the last by default. Every other axis is a
        batch of rows.
    norm : {None, "backward", "ortho", "forward"}, optional
        Scaling: none ("backward", the default), 1/sqrt(n) or 1/n.
    out : ndarray, optional
        Array of the result's shape and dtype to write into.
    workers : int, optional
        Threads to split a large batch over (-1: one per processor).

    Returns
    -------
    ndarray
        complex64 for float16, float32 or complex64 input, complex128 otherwise.

    Examples
    --------
    >>> abs(tvkgen.fft(np.exp(2j * np.pi * 3 * np.arange(16) / 16), norm="forward")).round(12)[:5]
    array([0., 0., 0., 1., 0.])
    """
    row = _one_row("fft", x, n, axis, norm, out, workers)
    if row is not None:
        return row
    return _complex_dft(x, n, axis, norm, out, workers, "fft", "Fwd")


def ifft(x, n=None, axis=-1, norm=None, out=None, workers=None):
    """Inverse discrete Fourier transform along an axis, as numpy.fft.ifft.

    Arguments as fft's; norm "backward" (the default) divides by n here.

    Examples
    --------
    >>> x = np.arange(8.0)
    >>> np.allclose(tvkgen.ifft(tvkgen.fft(x)), x)
    True
    """
    row = _one_row("ifft", x, n, axis, norm, out, workers)
    if row is not None:
        return row
    return _complex_dft(x, n, axis, norm, out, workers, "ifft", "Inv")


def rfft(x, n=None, axis=-1, norm=None, out=None, workers=None):
    """Discrete Fourier transform of real input, as numpy.fft.rfft: the n // 2 + 1
    bins of the half spectrum (the library's CCS layout).

    Arguments as fft's; x is real (complex input raises TypeError).

    Examples
    --------
    >>> tvkgen.rfft([1, 1, 1, 1]).real
    array([4., 0., 0.])
    """
    row = _one_row("rfft", x, n, axis, norm, out, workers)
    if row is not None:
        return row
    x = np.asarray(x)
    real = _precision(x, "rfft", complex_too=False)
    axis = _axis(axis, x.ndim, "rfft")
    n = _length(x.shape[axis] if n is None else n, "rfft")
    call = _rows_call(f"tvkgDFTFwd_RToCCS_{_SUFFIX[real]}", n, _DFT_FLAGS[_norm(norm, "rfft")], real.itemsize)
    bins = n // 2 + 1
    return _apply(call, _along(x, axis, n), (real, _COMPLEX_OF[real]), (n, 2 * bins), real.itemsize, bins, axis, out,
                  workers, "rfft")


def irfft(x, n=None, axis=-1, norm=None, out=None, workers=None):
    """The n reals of a half spectrum, as numpy.fft.irfft: the inverse of rfft.

    Arguments as fft's; n is 2 * (bins - 1) by default, and the axis is cut
    or zero-padded to n // 2 + 1 bins. The imaginary parts of bin 0 and, for
    even n, bin n / 2 are not read.

    Examples
    --------
    >>> tvkgen.irfft(tvkgen.rfft([1.0, 2.0, 3.0]), 3)
    array([1., 2., 3.])
    """
    row = _one_row("irfft", x, n, axis, norm, out, workers)
    if row is not None:
        return row
    x = np.asarray(x)
    real = _precision(x, "irfft")
    axis = _axis(axis, x.ndim, "irfft")
    n = _length(2 * (x.shape[axis] - 1) if n is None else n, "irfft")
    call = _rows_call(f"tvkgDFTInv_CCSToR_{_SUFFIX[real]}", n, _DFT_FLAGS[_norm(norm, "irfft")], real.itemsize)
    bins = n // 2 + 1
    return _apply(call, _along(x, axis, bins), (_COMPLEX_OF[real], real), (2 * bins, n), real.itemsize, n, axis, out,
                  workers, "irfft")


# ---- the library's own transforms -------------------------------------------

def _real_rows(x, n, axis, norm, out, workers, what, name, flags, longest=64, powers_of_two=False, cells=None):
    """A transform of reals to reals in cells of the same type, through name's dispatcher."""
    x = np.asarray(x)
    real = _precision(x, what, complex_too=False)
    axis = _axis(axis, x.ndim, what)
    n = _length(x.shape[axis] if n is None else n, what, longest, powers_of_two)
    length = n.bit_length() - 1 if powers_of_two else n  # the WHT takes its order
    call = _rows_call(f"{name}_{_SUFFIX[real]}", length, flags[_norm(norm, what)], real.itemsize)
    cells = cells(n) if cells else n
    return _apply(call, _along(x, axis, n), (real, real), (n, cells), real.itemsize, cells, axis, out, workers, what)


def rfft_packed(x, n=None, axis=-1, norm=None, layout="ccs", out=None, workers=None):
    """rfft's spectrum as real cells in one of the library's layouts.

    layout "ccs" gives R0 0 R1 I1 ... (n + 2 cells for even n, n + 1 for odd:
    rfft's result viewed as reals); "pack" R0 R1 I1 ... (n cells, ending in
    R[n/2] for even n); "perm" R0 R[n/2] R1 I1 ... for even n, as "pack" for
    odd (n cells). Other arguments as rfft's.

    Examples
    --------
    >>> tvkgen.rfft_packed(np.arange(4.0), layout="perm")
    array([ 6., -2., -2.,  2.])
    """
    name = f"tvkgDFTFwd_RTo{_layout(layout, 'rfft_packed')}"
    return _real_rows(x, n, axis, norm, out, workers, "rfft_packed", name, _DFT_FLAGS,
                      cells=lambda n: spectrum_cells(n, layout))


def irfft_packed(x, n=None, axis=-1, norm=None, layout="ccs", out=None, workers=None):
    """The n reals of a spectrum packed by rfft_packed: its inverse.

    The axis holds exactly the layout's cells for n; n defaults to the cell
    count ("pack", "perm") or two fewer ("ccs", an even n). norm as irfft's.

    Examples
    --------
    >>> tvkgen.irfft_packed(tvkgen.rfft_packed([1.0, 2.0, 3.0], layout="pack"), layout="pack")
    array([1., 2., 3.])
    """
    name = f"tvkgDFTInv_{_layout(layout, 'irfft_packed')}ToR"
    x = np.asarray(x)
    axis = _axis(axis, x.ndim, "irfft_packed")
    have = x.shape[axis]
    n = _length((have - 2 if layout == "ccs" else have) if n is None else n, "irfft_packed")
    if have != spectrum_cells(n, layout):
        raise ValueError(f"irfft_packed: a length-{n} spectrum has {spectrum_cells(n, layout)} cells in {layout}, "
                         f"not {have}")
    x = _moved(x, axis, -1)
    real = _precision(x, "irfft_packed", complex_too=False)
    call = _rows_call(f"{name}_{_SUFFIX[real]}", n, _DFT_FLAGS[_norm(norm, "irfft_packed")], real.itemsize)
    return _apply(call, x, (real, real), (have, n), real.itemsize, n, axis, out, workers, "irfft_packed")


def dht(x, n=None, axis=-1, norm=None, out=None, workers=None):
    """Discrete Hartley transform along an axis: H[k] = sum x[j] cas(2 pi jk / n),
    with cas = cos + sin, so H = Re X - Im X for X = fft(x). Lengths 2 to 64.

    It is its own inverse up to n: norm "backward" (the default) leaves it
    unscaled, "ortho" divides by sqrt(n), "forward" by n. Other arguments as fft's.

    Examples
    --------
    >>> tvkgen.dht([1.0, 2.0, 3.0, 4.0])
    array([10., -4., -2.,  0.])
    """
    return _real_rows(x, n, axis, norm, out, workers, "dht", "tvkgHartley", _SELF_INVERSE_FLAGS)


def wht(x, n=None, axis=-1, norm=None, out=None, workers=None):
    """Walsh-Hadamard transform along an axis, lengths the powers of two 2 to 8192.

    Natural (Hadamard) order: y[k] = sum x[j] (-1)^popcount(j & k), that is
    scipy.linalg.hadamard(n) @ x. Its own inverse up to n: norm "backward"
    (the default) leaves it unscaled, "ortho" divides by sqrt(n), "forward"
    by n. Other arguments as fft's.

    Examples
    --------
    >>> tvkgen.wht([1.0, 0.0, 0.0, 0.0])
    array([1., 1., 1., 1.])
    """
    return _real_rows(x, n, axis, norm, out, workers, "wht", "tvkgWHT", _SELF_INVERSE_FLAGS, 8192, True)


# The longest DCT-IV plans: from twice these lengths on, the library's 32-bit
# plan size is refused or wraps to a block too small for the plan.
_DCT4_LONGEST = {np.dtype(np.float32): 1 << 26, np.dtype(np.float64): 1 << 25}
# scipy's DCT-IV is twice the library's; its norms scale that.
_DCT4_NORMS = {"backward": lambda n: 2.0, "ortho": lambda n: math.sqrt(2.0 / n), "forward": lambda n: 1.0 / n}
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


def dct4(x, n=None, axis=-1, norm=None, out=None, workers=None):
    """DCT-IV along an axis, as scipy.fft.dct(x, type=4, norm=...).

    y[k] = f * sum x[j] cos(pi (j + 1/2)(k + 1/2) / n) with f = 2 for norm
    "backward" (the default: scipy's unnormalised DCT-IV, twice the library's
    tvkgDCT4), sqrt(2 / n) for "ortho" (its own inverse) and 1 / n for
    "forward". Lengths are the powers of two, 2 to 2^26 in float32 and 2 to
    2^25 in float64. Other arguments as fft's.

    Examples
    --------
    >>> np.allclose(tvkgen.dct4(tvkgen.dct4(np.arange(8.0), norm="ortho"), norm="ortho"), np.arange(8.0))
    True
    """
    x = np.asarray(x)
    real = _precision(x, "dct4", complex_too=False)
    axis = _axis(axis, x.ndim, "dct4")
    n = _length(x.shape[axis] if n is None else n, "dct4", _DCT4_LONGEST[real], powers_of_two=True)
    factor = _DCT4_NORMS[_norm(norm, "dct4")](n)
    suffix, name, cell = _SUFFIX[real], f"tvkgDCT4_{_SUFFIX[real]}", real.itemsize

    def call(src, src_dist, dst, dst_dist, count):
        plan, single = _plan(n, suffix), _export(name)
        for row in range(count):
            _check(single(src + row * src_dist * cell, dst + row * dst_dist * cell, plan), name)

    y = _apply(call, _along(x, axis, n), (real, real), (n, n), real.itemsize, n, axis, out, workers, "dct4")
    y *= real.type(factor)
    return y


# ---- scipy.fft backend -------------------------------------------------------

class _Declined(Exception):
    """A call the backend leaves to scipy."""


def _scipy_workers(workers):
    import scipy.fft
    return scipy.fft.get_workers() if workers is None else workers


def _serve_1d(transform):
    def serve(x, n=None, axis=-1, norm=None, overwrite_x=False, workers=None, *, plan=None):
        if plan is not None:
            raise _Declined
        return transform(x, n, axis, norm, workers=_scipy_workers(workers))
    return serve


def _serve_nd(transform, default_axes):
    def serve(x, s=None, axes=default_axes, norm=None, overwrite_x=False, workers=None, *, plan=None):
        x = np.asarray(x)
        if axes is None:
            axes = range(x.ndim) if s is None else range(x.ndim - len(s), x.ndim)
        axes = [_axis(a, x.ndim, "fftn") for a in axes]
        s = [x.shape[a] for a in axes] if s is None else list(s)
        if plan is not None or not axes or len(s) != len(axes) or len(set(axes)) != len(axes):
            raise _Declined
        for n in s:
            _length(n, "fftn")  # every axis covered, or scipy takes the whole call
        for a, n in zip(axes, s):
            x = transform(x, n, a, norm, workers=_scipy_workers(workers))
        return x
    return serve


def _serve_dct(inverse):
    def serve(x, type=2, n=None, axis=-1, norm=None, overwrite_x=False, workers=None, orthogonalize=None):
        if type != 4:
            raise _Declined
        if inverse:  # idct's DCT-IV is dct's with the norms of the two directions swapped
            norm = {None: "forward", "backward": "forward", "forward": "backward"}.get(norm, norm)
        return dct4(x, n, axis, norm, workers=_scipy_workers(workers))
    return serve


class _ScipyBackend:
    """A scipy.fft backend: ``with scipy.fft.set_backend(tvkgen.scipy_backend):``
    sends fft, ifft, rfft and irfft along an axis of length 2 to 64, fft2,
    ifft2, fftn and ifftn whose axes all have such lengths (one axis after
    another), and dct and idct of type 4 at the powers of two, to the
    library; every other call gets NotImplemented, so scipy serves it.

    Examples
    --------
    >>> import scipy.fft
    >>> with scipy.fft.set_backend(tvkgen.scipy_backend):
    ...     X = scipy.fft.fft(np.ones((100, 16)), workers=2)
    """

    __ua_domain__ = "numpy.scipy.fft"
    _served = {"fft": _serve_1d(fft), "ifft": _serve_1d(ifft), "rfft": _serve_1d(rfft), "irfft": _serve_1d(irfft),
               "fft2": _serve_nd(fft, (-2, -1)), "ifft2": _serve_nd(ifft, (-2, -1)),
               "fftn": _serve_nd(fft, None), "ifftn": _serve_nd(ifft, None),
               "dct": _serve_dct(False), "idct": _serve_dct(True)}

    def __ua_function__(self, method, args, kwargs):
        serve = self._served.get(getattr(method, "__name__", None))
        if serve is None:
            return NotImplemented
        try:
            return serve(*args, **kwargs)
        except (_Declined, TypeError, ValueError):  # what the library does not cover, scipy takes or refuses
            return NotImplemented


scipy_backend = _ScipyBackend()
