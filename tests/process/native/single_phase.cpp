#include "native.h"

/// The older way: the module is whole when the function returns.
PyMODINIT_FUNC PyInit_single_phase() {
    static PyModuleDef definition = {
        PyModuleDef_HEAD_INIT, "single_phase", nullptr, -1, native::methods, nullptr, nullptr, nullptr, nullptr};
    PyObject* module = PyModule_Create(&definition);
    if (module == nullptr || PyModule_AddStringConstant(module, "way", "single") == 0)
        return module;
    Py_DECREF(module);
    return nullptr;
}
