"""The Python module against numpy.fft and scipy.fft and the library's single
calls: every length, dtype, axis, n, norm and layout, batches of any memory
layout, the scipy backend, threads, the loader, and the errors it raises."""

import concurrent.futures
import ctypes
import doctest
import os
import shutil
import subprocess
import sys

import numpy as np
import pytest
import scipy.fft
import scipy.linalg

import tvkgen

SIZES = range(2, 65)
NORMS = [None, "ortho", "forward"]
REAL = [np.float32, np.float64]


def tolerance(dtype, n):
    eps = np.finfo(dtype).eps
    return 16 * eps * np.log2(n + 1) * np.sqrt(n)


def random(shape, dtype, seed):
    rng = np.random.default_rng(seed)
    if np.dtype(dtype).kind == "i":
        return rng.integers(-3, 4, shape).astype(dtype)
    x = rng.uniform(-1, 1, shape)
    return (x + 1j * rng.uniform(-1, 1, shape) if np.dtype(dtype).kind == "c" else x).astype(dtype)


def single_calls(name, rows, length, like, flag=2):
    """Each row (in the library's cells, contiguous) through the single dispatcher, into an array like `like`."""
    out = np.empty_like(like)
    for src, dst in zip(rows, out):
        assert tvkgen._export(name)(src.ctypes.data, dst.ctypes.data, length, flag) == 0
    return out


def precision(dtype):
    return np.dtype(np.float32 if np.dtype(dtype) in (np.float32, np.complex64) else np.float64)


# function, numpy's, the single dispatcher, input dtypes
DFTS = {
    "fft": (np.fft.fft, "tvkgDFTFwd_CToC", [np.float32, np.float64, np.complex64, np.complex128, np.int16]),
    "ifft": (np.fft.ifft, "tvkgDFTInv_CToC", [np.float32, np.complex64, np.complex128, np.int16]),
    "rfft": (np.fft.rfft, "tvkgDFTFwd_RToCCS", [np.float32, np.float64, np.int16]),
    "irfft": (np.fft.irfft, "tvkgDFTInv_CCSToR", [np.float32, np.complex64, np.complex128]),
}


@pytest.mark.parametrize("n", SIZES)
@pytest.mark.parametrize("name, dtype", [(name, dtype) for name in DFTS for dtype in DFTS[name][2]])
def test_dfts_give_numpys_values_and_the_single_calls_bytes(name, dtype, n):
    oracle, dispatcher, _ = DFTS[name]
    real = precision(dtype)
    cplx = np.result_type(real, np.complex64)
    x = random((3, n // 2 + 1 if name == "irfft" else n), dtype, n)
    y = getattr(tvkgen, name)(x, n) if name == "irfft" else getattr(tvkgen, name)(x)
    want = oracle(x.astype(np.complex128 if x.dtype.kind == "c" else np.float64), n)
    assert y.dtype == (real if name == "irfft" else cplx)
    np.testing.assert_allclose(y, want, atol=4 * tolerance(real, n))
    cell = cplx if name in ("fft", "ifft") else real  # the library's element
    rows = x.astype(real if name == "rfft" else cplx).view(cell)
    calls = single_calls(f"{dispatcher}_{tvkgen._SUFFIX[cell]}", rows, n, y.view(cell))
    np.testing.assert_array_equal(y.view(cell), calls)
    row = getattr(tvkgen, name)(x[0], n) if name == "irfft" else getattr(tvkgen, name)(x[0])
    np.testing.assert_array_equal(row, y[0])  # one row: the compiled call where it is built


@pytest.mark.skipif(not os.environ.get("TVKGEN_TEST_ONE_ROW_CALLS"), reason="this build has no compiled calls")
@pytest.mark.parametrize("name", DFTS)
@pytest.mark.parametrize("real", REAL)
def test_one_row_of_the_computing_type_takes_the_compiled_call(name, real, monkeypatch):
    x = random(16, real if name == "rfft" else np.result_type(real, np.complex64), 1)
    monkeypatch.setattr(tvkgen, "_apply", None)  # the general path would fail
    y = getattr(tvkgen, name)(x)
    assert y.dtype == (real if name == "irfft" else np.result_type(real, np.complex64))
    np.testing.assert_allclose(y, DFTS[name][0](x.astype(np.result_type(x, np.float64))), atol=4 * tolerance(real, 16))


def laid_out(x, memory):
    """x in one of the memory layouts a caller may hand in."""
    if memory == "fortran":
        return np.asfortranarray(x)
    if memory == "strided":
        big = np.zeros((2 * x.shape[0],) + x.shape[1:-1] + (3 * x.shape[-1],), x.dtype)
        big[::2, ..., ::3] = x
        return big[::2, ..., ::3]
    if memory == "read-only":
        x = x.copy()
        x.flags.writeable = False
    return x


@pytest.mark.parametrize("memory", ["contiguous", "fortran", "strided", "read-only", "out", "strided out"])
@pytest.mark.parametrize("norm", NORMS)
@pytest.mark.parametrize("axis, n", [(0, None), (1, None), (-1, None), (0, 4), (1, 24), (-1, 9), (-1, 30)])
@pytest.mark.parametrize("name", DFTS)
def test_axes_n_norms_and_memory_layouts_as_numpys(name, axis, n, norm, memory):
    x = random((6, 5, 16), np.complex128 if name in ("ifft", "irfft") else np.float64, 1)
    want = DFTS[name][0](x, n, axis, norm)
    out = None
    if memory.endswith("out"):
        wide = np.empty(want.shape[:-1] + (2 * want.shape[-1],), want.dtype)
        out = wide[..., ::2] if memory == "strided out" else wide[..., :want.shape[-1]].copy()
    y = getattr(tvkgen, name)(laid_out(x, memory), n, axis, norm, out=out)
    assert y is out if out is not None else y.shape == want.shape
    np.testing.assert_allclose(y, want, atol=tolerance(np.float64, 64))


def test_overlapping_rows_out_and_empty_batches():
    x = random((4, 16), np.complex128, 2)
    want = np.fft.fft(x)
    assert tvkgen.fft(x, out=x) is x
    np.testing.assert_allclose(x, want, atol=tolerance(np.float64, 16))
    memory = random(144, np.float64, 3)  # out one row after the input: read before written
    want = tvkgen.dht(memory[:128].reshape(8, 16))
    tvkgen.dht(memory[:128].reshape(8, 16), out=memory[16:].reshape(8, 16))
    np.testing.assert_array_equal(memory[16:].reshape(8, 16), want)
    windows = np.lib.stride_tricks.sliding_window_view(x.ravel(), 16)  # rows one element apart
    np.testing.assert_allclose(tvkgen.fft(windows), np.fft.fft(windows), atol=tolerance(np.float64, 16))
    assert tvkgen.rfft(np.zeros((0, 3, 8))).shape == (0, 3, 5)


def packed(X, n, layout):
    """The cells of numpy's half spectrum X in a layout: R0, for even n R[n/2], and R1 I1 R2 I2 ... between."""
    ccs = np.column_stack([X.real, X.imag]).ravel()
    between, last = ccs[2:n + n % 2], ccs[n:n + 1 - n % 2]
    return {"ccs": ccs, "pack": np.r_[ccs[0], between, last], "perm": np.r_[ccs[0], last, between]}[layout]


@pytest.mark.parametrize("layout", tvkgen.LAYOUTS)
@pytest.mark.parametrize("dtype", REAL)
@pytest.mark.parametrize("n", SIZES)
def test_packed_layouts_and_their_inverse(n, dtype, layout):
    x = random((2, n), dtype, 100 + n)
    cells = tvkgen.rfft_packed(x, layout=layout, norm="ortho")
    want = [packed(X, n, layout) for X in np.fft.rfft(x.astype(np.float64), norm="ortho")]
    np.testing.assert_allclose(cells, want, atol=tolerance(dtype, n))
    np.testing.assert_allclose(tvkgen.irfft_packed(cells, n, layout=layout, norm="ortho"), x, atol=tolerance(dtype, n))
    if layout == "ccs":
        np.testing.assert_array_equal(tvkgen.rfft(x, norm="ortho").view(dtype), cells)


def hadamard(x):
    """scipy.linalg.hadamard(n) @ x along the last axis; from 4096 on from the
    half length's transform, H(2m) = [[H(m), H(m)], [H(m), -H(m)]]."""
    n = x.shape[-1]
    if n <= 2048:
        return x @ scipy.linalg.hadamard(n).T
    a, b = hadamard(x[..., :n // 2]), hadamard(x[..., n // 2:])
    return np.concatenate([a + b, a - b], axis=-1)


NORM_FACTOR = {None: lambda n: 1, "ortho": lambda n: 1 / np.sqrt(n), "forward": lambda n: 1 / n}
OWN = {
    "dht": (SIZES, lambda x, norm: (np.fft.fft(x).real - np.fft.fft(x).imag) * NORM_FACTOR[norm](x.shape[-1]), 1),
    "wht": ([1 << k for k in range(1, 14)], lambda x, norm: hadamard(x) * NORM_FACTOR[norm](x.shape[-1]), 16),
    "dct4": ([1 << k for k in range(1, 14)], lambda x, norm: scipy.fft.dct(x, type=4, norm=norm), 1),
}


@pytest.mark.parametrize("norm", NORMS)
@pytest.mark.parametrize("dtype", REAL)
@pytest.mark.parametrize("name, n", [(name, n) for name in OWN for n in OWN[name][0]])
def test_hartley_walsh_hadamard_and_dct4_as_their_oracles(name, n, dtype, norm):
    x = random((2, n), dtype, 300 + n)
    y = getattr(tvkgen, name)(x, norm=norm)
    want = OWN[name][1](x.astype(np.float64), norm)
    scale = np.abs(want).max()
    np.testing.assert_allclose(y, want, atol=OWN[name][2] * scale * tolerance(dtype, n))
    assert y.dtype == dtype
    # The same values again: dct4 makes the plan of the length once and reuses it.
    np.testing.assert_array_equal(getattr(tvkgen, name)(x, norm=norm), y)


X = random((4, 8, 16), np.float64, 7)
SERVED = [
    ("fft", (X,), dict(axis=1), lambda: tvkgen.fft(X, axis=1)),
    ("ifft", (X, 20), dict(norm="ortho", workers=2), lambda: tvkgen.ifft(X, 20, norm="ortho")),
    ("rfft", (X.astype(np.float32),), {}, lambda: tvkgen.rfft(X.astype(np.float32))),
    ("irfft", (X,), dict(axis=0), lambda: tvkgen.irfft(X, axis=0)),
    ("fft2", (X,), dict(norm="forward"), lambda: tvkgen.fft(tvkgen.fft(X, axis=-2, norm="forward"), norm="forward")),
    ("ifft2", (X,), dict(s=(6, 9), axes=(0, 2)), lambda: tvkgen.ifft(tvkgen.ifft(X, 6, 0), 9, 2)),
    ("fftn", (X,), {}, lambda: tvkgen.fft(tvkgen.fft(tvkgen.fft(X, axis=0), axis=1), axis=2)),
    ("ifftn", (X,), dict(s=(5, 4)), lambda: tvkgen.ifft(tvkgen.ifft(X, 5, axis=1), 4, axis=2)),
    ("dct", (X,), dict(type=4, norm="ortho"), lambda: tvkgen.dct4(X, norm="ortho")),
    ("idct", (X,), dict(type=4), lambda: tvkgen.dct4(X, norm="forward")),
    ("idct", (X,), dict(type=4, norm="forward"), lambda: tvkgen.dct4(X)),
]
DECLINED = [("fft", (X, 65), {}), ("fftn", (X,), dict(s=(4, 1))), ("fft", (X.astype(np.longdouble),), {}),
            ("irfft", (X,), dict(n=130)), ("dct", (X,), {}), ("dct", (X, 4, 12), {}), ("hfft", (X,), {})]


@pytest.mark.parametrize("name, args, kwargs, want", SERVED)
def test_the_scipy_backend_serves_covered_calls(name, args, kwargs, want):
    with scipy.fft.set_backend(tvkgen.scipy_backend, only=True):
        y = getattr(scipy.fft, name)(*args, **kwargs)
    np.testing.assert_array_equal(y, want())
    assert y.dtype == getattr(scipy.fft, name)(*args, **kwargs).dtype
    np.testing.assert_allclose(y, getattr(scipy.fft, name)(*args, **kwargs), atol=tolerance(np.float32, 64))


@pytest.mark.parametrize("name, args, kwargs", DECLINED)
def test_the_scipy_backend_leaves_every_other_call_to_scipy(name, args, kwargs):
    with scipy.fft.set_backend(tvkgen.scipy_backend, only=True), pytest.raises(Exception, match="No selected backends"):
        getattr(scipy.fft, name)(*args, **kwargs)
    with scipy.fft.set_backend(tvkgen.scipy_backend):
        y = getattr(scipy.fft, name)(*args, **kwargs)
    np.testing.assert_array_equal(y, getattr(scipy.fft, name)(*args, **kwargs))


@pytest.mark.parametrize("name, shape", [("fft", (20000, 16)), ("wht", (300, 512)), ("dct4", (64, 1024))])
@pytest.mark.parametrize("workers", [2, -1])
def test_workers_split_a_batch_into_the_same_bytes(name, shape, workers):
    x = random(shape, np.float64, 11)
    np.testing.assert_array_equal(getattr(tvkgen, name)(x, workers=workers), getattr(tvkgen, name)(x))


@pytest.mark.parametrize("name, n", [("fft", 64), ("dct4", 1 << 16)])  # dct4's long plans hold their work area
def test_calls_from_threads_at_once(name, n):
    threads, calls, transform = 8, 20, getattr(tvkgen, name)
    inputs = [random((4, n), np.float32, 500 + t) for t in range(threads)]
    wants = [transform(x) for x in inputs]

    def wrong(t):
        return sum(not np.array_equal(transform(inputs[t]), wants[t]) for _ in range(calls))

    with concurrent.futures.ThreadPoolExecutor(threads) as pool:
        assert sum(pool.map(wrong, range(threads))) == 0


@pytest.mark.parametrize("name", ["fft", "ifft", "rfft", "rfft_packed", "dht", "wht"])
def test_without_the_batch_library_rows_are_single_calls_of_the_same_bytes(name, monkeypatch):
    x = laid_out(random((3, 4, 32), np.float32, 12), "strided")
    want = getattr(tvkgen, name)(x, axis=1 if name == "fft" else -1)
    monkeypatch.setattr(tvkgen, "_batch_entry", lambda name: None)
    np.testing.assert_array_equal(getattr(tvkgen, name)(x, axis=1 if name == "fft" else -1), want)


def import_copy(tmp_path, variable, library, code="import tvkgen", installed=None):
    """Runs code with a copy of the module outside the checkout, the variable naming library
    (TVKGEN_LIBRARY this one's unless it is the variable; libtvkgen_batch beside it), and
    where installed names a folder, the install's note of the way to it."""
    module = tmp_path / "site" / "tvkgen"
    module.mkdir(parents=True)
    shutil.copy(tvkgen.__file__, module)
    if installed:
        (module / "_installed.py").write_text(f"LIBRARY_DIR = {os.path.relpath(installed, module)!r}\n")
    environment = {k: v for k, v in os.environ.items() if k not in ("TVKGEN_LIBRARY", "TVKGEN_BATCH_LIBRARY")}
    environment.update(PYTHONPATH=str(module.parent), TVKGEN_LIBRARY=os.path.abspath(tvkgen.library_path))
    environment[variable] = str(library)
    return subprocess.run([sys.executable, "-c", code], env=environment, capture_output=True, text=True, cwd=tmp_path)


@pytest.mark.parametrize("variable", ["TVKGEN_LIBRARY", "TVKGEN_BATCH_LIBRARY"])
def test_a_library_that_does_not_load_is_reported_in_the_loaders_words(tmp_path, variable):
    library = tmp_path / "libtvkgen.so"
    library.write_text("not a shared library\n")
    with pytest.raises(OSError) as loader:
        ctypes.CDLL(str(library))
    run = import_copy(tmp_path, variable, library)
    assert run.returncode != 0
    assert str(loader.value) in run.stderr


def test_an_installed_library_is_called_through_the_list_in_its_prefix(tmp_path):
    lib = tmp_path / "prefix" / "lib"
    lib.mkdir(parents=True)
    (lib / "libtvkgen.so").symlink_to(tvkgen.library_path)
    batch = tvkgen.batch_library_path and lib / "libtvkgen_batch.so"  # None in a build without it
    if batch:
        batch.symlink_to(tvkgen.batch_library_path)
    call = "import tvkgen; print(tvkgen.dht([1, 1, 1, 1])[0], tvkgen.batch_library_path)"
    run = import_copy(tmp_path / "without", "TVKGEN_LIBRARY", lib / "libtvkgen.so", call)
    assert run.returncode != 0 and "tvkgen_exports.inc, the list of the library's exports, is in none of" in run.stderr
    (tmp_path / "prefix" / "include").mkdir()
    shutil.copy(tvkgen._exports_path, tmp_path / "prefix" / "include")
    run = import_copy(tmp_path / "with", "TVKGEN_LIBRARY", "", call, installed=lib)
    assert (run.returncode, run.stdout) == (0, f"4.0 {batch}\n"), run.stderr  # found by the note
    assert len(tvkgen.EXPORTS) == 1193


def dct4_of_length(n, dtype):
    return lambda: tvkgen.dct4(np.broadcast_to(np.ones(1, dtype), (n,)))  # no memory of n elements


@pytest.mark.parametrize("call, error, message", [
    (lambda: tvkgen.fft(np.array(["a", "b"])), TypeError, "fft: x holds float16, .* integer or bool numbers, not <U1"),
    (lambda: tvkgen.fft(np.zeros(8, np.longdouble)), TypeError, "not float128"),
    (lambda: tvkgen.rfft(np.zeros(8, complex)), TypeError, "rfft: x is real .*, not complex128"),
    (lambda: tvkgen.dht(np.zeros(65)), ValueError, "dht: the library's lengths are 2 to 64, not 65"),
    (lambda: tvkgen.fft(np.zeros(1)), ValueError, "fft: the library's lengths are 2 to 64, not 1"),
    (lambda: tvkgen.irfft(np.zeros(1)), ValueError, "irfft: the library's lengths are 2 to 64, not 0"),
    (lambda: tvkgen.ifft(np.zeros(8), n=8.0), TypeError, "ifft: n is an integer, not 8.0"),
    (lambda: tvkgen.fft(np.zeros((2, 8)), axis=2), ValueError, "fft: axis 2 is out of range for an array of 2"),
    (lambda: tvkgen.fft(np.zeros(8), axis=True), TypeError, "fft: axis is an integer, not True"),
    (lambda: tvkgen.fft(np.zeros(8), norm="half"), ValueError, r"fft: norm is None or one of \['backward', 'ortho'"),
    (lambda: tvkgen.dht(np.zeros(8), norm=1), TypeError, "dht: norm is None or one of .*, not 1"),
    (lambda: tvkgen.fft(np.zeros(8), out=[0] * 8), TypeError, "fft: out is a numpy array, not list"),
    (lambda: tvkgen.fft(np.zeros(8), out=np.zeros(8)), TypeError, "out is a complex128 array .*, not float64"),
    (lambda: tvkgen.rfft(np.zeros(8), out=np.zeros(8, complex)), ValueError, r"out has shape \(5,\) .*, not \(8,\)"),
    (lambda: tvkgen.fft(np.zeros(8), out=np.broadcast_to(np.zeros(1, complex), (8,))), ValueError, "out is read-only"),
    (lambda: tvkgen.fft(np.zeros(8), workers=0), ValueError, "fft: workers is None, a positive count"),
    (lambda: tvkgen.fft(np.zeros(8), workers=1.0), TypeError, "fft: workers is None, a positive count"),
    (lambda: tvkgen.fft(np.zeros(8), workers=-10 ** 6), ValueError, "workers=-1000000 leaves no thread"),
    (lambda: tvkgen.wht(np.zeros(12)), ValueError, "wht: .* powers of two from 2 to 8192, not 12"),
    (lambda: tvkgen.wht(np.zeros(16384, np.float32)), ValueError, "powers of two from 2 to 8192, not 16384"),
    (lambda: tvkgen.irfft_packed(np.zeros(7), 6), ValueError, "a length-6 spectrum has 8 cells in ccs, not 7"),
    (lambda: tvkgen.rfft_packed(np.zeros(8), layout="packed"), ValueError, "rfft_packed: layout is one of"),
    (lambda: tvkgen.irfft_packed(np.zeros(8), layout=None), ValueError, "irfft_packed: layout is one of"),
    (lambda: tvkgen._export("tvkgDFTFwd_CToC_65_32fc"), LookupError, "_65_32fc is not on tvkgen's list of exports"),
    (lambda: tvkgen._run(tvkgen._rows_call("tvkgHartley_64f", 8, 3, 8), np.zeros((2, 8)), np.zeros((2, 8)), (8, 8),
                         8, 1), tvkgen.TvkgenError, r"Hartley_64f returned -16 \(scale flag error\)"),  # no flag 3
    # The library takes 2^k + 1 (no DCT-IV) and wraps the plan's size from 2^29 on.
    *[(dct4_of_length(n, dtype), ValueError, rf"dct4: .*powers of two.* not {n}$")
      for dtype, longest in ((np.float32, 1 << 26), (np.float64, 1 << 25))
      for n in (3, 9, 12, 17, 33, 65, 1025, longest + 1, 2 * longest, 1 << 29, 1 << 30)],
])
def test_wrong_arguments_are_named(call, error, message):
    with pytest.raises(error, match=message):
        call()


def test_the_docstrings_examples():
    runner = doctest.DocTestRunner()
    for test in doctest.DocTestFinder().find(tvkgen, globs={"np": np, "tvkgen": tvkgen}):
        runner.run(test)
    assert runner.summarize(verbose=False) == (0, 15)
