"""The Python module against numpy and scipy: every family and size, each
layout, both element types, threads, and the errors it raises."""

import concurrent.futures
import ctypes
import os
import shutil
import subprocess
import sys
import threading

import numpy as np
import pytest
import scipy.fft
import scipy.linalg

import tvkgen

SIZES = range(2, 65)
REAL = [np.float32, np.float64]
COMPLEX = [np.complex64, np.complex128]


def tolerance(dtype, n):
    eps = np.finfo(dtype).eps
    return 16 * eps * np.log2(n + 1) * np.sqrt(n)


def random(n, dtype, seed):
    rng = np.random.default_rng(seed)
    if np.issubdtype(dtype, np.complexfloating):
        return (rng.uniform(-1, 1, n) + 1j * rng.uniform(-1, 1, n)).astype(dtype)
    return rng.uniform(-1, 1, n).astype(dtype)


def packed(X, n, layout):
    """The cells of numpy's half spectrum X in a layout: CCS holds R[k], I[k] for k = 0 .. n/2; Pack leaves out I[0]
    and, for even n, I[n/2]; Perm is Pack with R[n/2] moved into the second cell."""
    ccs = np.column_stack([X.real, X.imag]).ravel()
    pack = np.delete(ccs, 1)[:n]
    if layout == "perm" and n % 2 == 0:
        return np.concatenate([pack[:1], pack[-1:], pack[1:-1]])
    return ccs if layout == "ccs" else pack


@pytest.mark.parametrize("dtype", COMPLEX)
@pytest.mark.parametrize("n", SIZES)
def test_fft_forward_and_inverse(n, dtype):
    x = random(n, dtype, n)
    X = tvkgen.fft(x)
    assert X.dtype == dtype
    np.testing.assert_allclose(X, np.fft.fft(x.astype(np.complex128)), atol=tolerance(dtype, n))
    back = tvkgen.fft(X, inverse=True, scale="inverse")
    np.testing.assert_allclose(back, x, atol=tolerance(dtype, n))


@pytest.mark.parametrize("layout", tvkgen.LAYOUTS)
@pytest.mark.parametrize("dtype", REAL)
@pytest.mark.parametrize("n", SIZES)
def test_rfft_and_irfft_in_every_layout(n, dtype, layout):
    x = random(n, dtype, 100 + n)
    cells = tvkgen.rfft(x, layout=layout)
    want = packed(np.fft.rfft(x.astype(np.float64)), n, layout)
    np.testing.assert_allclose(cells, want, atol=tolerance(dtype, n))
    y = tvkgen.irfft(cells, n, layout=layout)
    np.testing.assert_allclose(y, np.fft.irfft(np.fft.rfft(x.astype(np.float64)), n) * n, atol=n * tolerance(dtype, n))
    back = tvkgen.irfft(tvkgen.rfft(x, layout=layout, scale="sqrt"), n, layout=layout, scale="sqrt")
    np.testing.assert_allclose(back, x, atol=tolerance(dtype, n))


@pytest.mark.parametrize("dtype", REAL)
@pytest.mark.parametrize("n", SIZES)
def test_hartley(n, dtype):
    x = random(n, dtype, 200 + n)
    X = np.fft.fft(x.astype(np.float64))
    np.testing.assert_allclose(tvkgen.hartley(x), X.real - X.imag, atol=tolerance(dtype, n))
    np.testing.assert_allclose(tvkgen.hartley(tvkgen.hartley(x), scale="forward"), x, atol=tolerance(dtype, n))


@pytest.mark.parametrize("dtype", REAL)
@pytest.mark.parametrize("order", range(1, 14))
@pytest.mark.parametrize("transform, oracle, slack", [
    (tvkgen.wht, lambda x: scipy.linalg.hadamard(len(x)) @ x, lambda n: n),
    (tvkgen.dct4, lambda x: scipy.fft.dct(x, type=4) / 2, np.sqrt),
], ids=["wht", "dct4"])
def test_power_of_two_lengths(transform, oracle, slack, order, dtype):
    n = 1 << order
    x = random(n, dtype, 300 + order)
    np.testing.assert_allclose(transform(x), oracle(x.astype(np.float64)), atol=slack(n) * tolerance(dtype, n))
    # The same values again: dct4 makes the plan of the length once and reuses it.
    np.testing.assert_array_equal(transform(x), transform(x))


@pytest.mark.parametrize("dtype", REAL)
def test_dct4_from_threads_at_once(dtype):
    """Plans from length 64 up hold their work area: threads must not share one."""
    threads, calls, n = 8, 100, 1 << 16  # long enough that calls overlap even on two cores
    inputs = [random(n, dtype, 500 + t) for t in range(threads)]
    wants = [tvkgen.dct4(x) for x in inputs]
    start = threading.Barrier(threads)  # each call waits here, so every one has a thread of its own

    def wrong_calls(t):
        start.wait()
        return sum(not np.array_equal(tvkgen.dct4(inputs[t]), wants[t]) for _ in range(calls))

    with concurrent.futures.ThreadPoolExecutor(threads) as pool:
        wrong = sum(pool.map(wrong_calls, range(threads)))
    assert wrong == 0, f"{wrong} of {threads * calls} calls gave other values"


def import_copy(tmp_path, library, code="import tvkgen"):
    """Runs code with a copy of the module outside the checkout and TVKGEN_LIBRARY naming library."""
    module = tmp_path / "site" / "tvkgen"
    module.mkdir(parents=True)
    shutil.copy(tvkgen.__file__, module)
    environment = dict(os.environ, TVKGEN_LIBRARY=str(library), PYTHONPATH=str(module.parent))
    return subprocess.run([sys.executable, "-c", code], env=environment, capture_output=True, text=True, cwd=tmp_path)


def test_a_library_that_does_not_load_is_reported_in_the_loaders_words(tmp_path):
    library = tmp_path / "libtvkgen.so"
    library.write_text("not a shared library\n")
    with pytest.raises(OSError) as loader:
        ctypes.CDLL(str(library))
    run = import_copy(tmp_path, library)
    assert run.returncode != 0
    assert str(loader.value) in run.stderr


def test_an_installed_library_is_called_through_the_list_in_its_prefix(tmp_path):
    lib = tmp_path / "prefix" / "lib"
    lib.mkdir(parents=True)
    (lib / "libtvkgen.so").symlink_to(tvkgen.library_path)
    call = "import numpy, tvkgen; print(tvkgen.hartley(numpy.ones(4))[0])"
    run = import_copy(tmp_path / "without", lib / "libtvkgen.so", call)
    assert run.returncode != 0 and "tvkgen_exports.inc, the list of the library's exports, is in none of" in run.stderr
    (tmp_path / "prefix" / "include").mkdir()
    shutil.copy(tvkgen._exports_path, tmp_path / "prefix" / "include")
    run = import_copy(tmp_path / "with", lib / "libtvkgen.so", call)
    assert (run.returncode, run.stdout) == (0, "4.0\n"), run.stderr


def test_a_name_off_the_list_is_refused():
    assert len(tvkgen.EXPORTS) == 1193
    with pytest.raises(LookupError, match="tvkgDFTFwd_CToC_65_32fc is not on tvkgen's list of exports"):
        tvkgen._export("tvkgDFTFwd_CToC_65_32fc")


def dct4_of_length(n, dtype):
    return lambda: tvkgen.dct4(np.broadcast_to(np.ones(1, dtype), (n,)))  # no memory of n elements


@pytest.mark.parametrize("call, error, message", [
    (lambda: tvkgen.fft(np.zeros(8)), TypeError, "complex64 or complex128"),
    (lambda: tvkgen.rfft(np.zeros(8, np.int32)), TypeError, "float32 or float64"),
    (lambda: tvkgen.rfft(np.zeros((2, 8))), ValueError, "one-dimensional"),
    (lambda: tvkgen.hartley(np.zeros(65)), ValueError, "sizes are 2 to 64, not 65"),
    (lambda: tvkgen.fft(np.zeros(0, np.complex64)), ValueError, "sizes are 2 to 64, not 0"),
    (lambda: tvkgen.wht(np.zeros(12)), ValueError, "powers of two from 2 to 8192, not 12"),
    (lambda: tvkgen.wht(np.zeros(0)), ValueError, "powers of two from 2 to 8192, not 0"),
    (lambda: tvkgen.wht(np.zeros(16384, np.float32)), ValueError, "powers of two from 2 to 8192, not 16384"),
    (lambda: tvkgen.irfft(np.zeros(7), 6), ValueError, "has 8 cells in ccs, not 7"),
    (lambda: tvkgen.irfft(np.zeros(8), 6.0), TypeError, "n is an integer, not 6.0"),
    (lambda: tvkgen.irfft(np.zeros(8), 65), ValueError, "sizes are 2 to 64, not 65"),
    (lambda: tvkgen.irfft(np.zeros(6), 6, layout="packed"), ValueError, "layout is one of"),
    (lambda: tvkgen.rfft(np.zeros(8), layout="packed"), ValueError, "layout is one of"),
    (lambda: tvkgen.rfft(np.zeros(8), layout=None), ValueError, "layout is one of"),
    (lambda: tvkgen.hartley(np.zeros(8), scale="half"), ValueError, "scale is one of .* integer flag, not 'half'"),
    (lambda: tvkgen.hartley(np.zeros(8), scale=1.5), TypeError, "scale is one of .* integer flag, not 1.5"),
    (lambda: tvkgen.rfft(np.zeros(8), scale=True), TypeError, "scale is one of .* integer flag, not True"),
    (lambda: tvkgen.wht(np.zeros(8), scale=None), TypeError, "scale is one of .* integer flag, not None"),
    (lambda: tvkgen.fft(np.zeros(8, np.complex64), scale=(1 << 32) + 1), ValueError, "32 bits, not 4294967297"),
    (lambda: tvkgen.fft(np.zeros(8, np.complex64), inverse="no"), TypeError, "inverse is True or False, not 'no'"),
    (lambda: tvkgen.fft(np.zeros(8, np.complex64), inverse=1), TypeError, "inverse is True or False, not 1"),
    # The library takes 2^k + 1 (no DCT-IV) and wraps the plan's size from 2^29 on.
    *[(dct4_of_length(n, dtype), ValueError, rf"dct4 .*powers of two.* not {n}$")
      for dtype, longest in ((np.float32, 1 << 26), (np.float64, 1 << 25))
      for n in (0, 1, 3, 9, 12, 17, 33, 65, 1025, longest + 1, 2 * longest, 1 << 29, 1 << 30)],
])
def test_wrong_arguments_are_named(call, error, message):
    with pytest.raises(error, match=message):
        call()


def test_statuses_become_tvkgen_errors():
    with pytest.raises(tvkgen.TvkgenError) as flag:
        tvkgen.hartley(np.zeros(8), scale=3)
    assert flag.value.status == -16
    assert flag.value.function == "tvkgHartley_64f"
