// The one-row calls of the Python module: a library function called on two
// numpy arrays without ctypes, whose argument conversions cost more than a
// short transform. The module checks types, lengths and layout first.
#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include <cstdint>

namespace {

using Dispatcher = std::int32_t (*)(const void* src, void* dst, int length, int flag);

// single(address, src, dst, length, flag) -> status: the dispatcher at
// address reads src and writes dst, both contiguous buffers.
PyObject* single(PyObject*, PyObject* const* args, Py_ssize_t count)
{
    if (count != 5) {
        PyErr_SetString(PyExc_TypeError, "single(address, src, dst, length, flag) takes 5 arguments");
        return nullptr;
    }
    void* const address = PyLong_AsVoidPtr(args[0]);
    const long length = PyLong_AsLong(args[3]);
    const long flag = PyLong_AsLong(args[4]);
    if (PyErr_Occurred())
        return nullptr;
    Py_buffer src, dst;
    if (PyObject_GetBuffer(args[1], &src, PyBUF_SIMPLE) != 0)
        return nullptr;
    if (PyObject_GetBuffer(args[2], &dst, PyBUF_WRITABLE) != 0) {
        PyBuffer_Release(&src);
        return nullptr;
    }
    const std::int32_t status =
        reinterpret_cast<Dispatcher>(address)(src.buf, dst.buf, static_cast<int>(length), static_cast<int>(flag));
    PyBuffer_Release(&dst);
    PyBuffer_Release(&src);
    return PyLong_FromLong(status);
}

PyMethodDef methods[] = {
    {"single", reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(single)), METH_FASTCALL,
     "single(address, src, dst, length, flag) -> status of the dispatcher at address on two contiguous buffers"},
    {nullptr, nullptr, 0, nullptr}};

PyModuleDef module = {PyModuleDef_HEAD_INIT, "_calls", "One-row calls of tvkgen's dispatchers.", 0, methods,
                      nullptr, nullptr, nullptr, nullptr};

} // namespace

PyMODINIT_FUNC PyInit__calls() { return PyModule_Create(&module); }
