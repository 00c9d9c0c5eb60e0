#include "native.h"

namespace {

int execute(PyObject* module) {
    static PyType_Slot slots[] = {{Py_tp_doc, const_cast<char*>("A class of native code.")}, {0, nullptr}};
    static PyType_Spec spec = {"native.multi_phase.Thing", 0, 0, Py_TPFLAGS_DEFAULT | Py_TPFLAGS_BASETYPE, slots};
    PyObject* type = PyType_FromModuleAndSpec(module, &spec, nullptr);
    const int problem = type == nullptr ? -1 : PyModule_AddType(module, reinterpret_cast<PyTypeObject*>(type));
    Py_XDECREF(type);
    return problem != 0 ? problem : PyModule_AddStringConstant(module, "way", "multiple");
}

PyModuleDef_Slot moduleSlots[] = {{Py_mod_exec, reinterpret_cast<void*>(execute)}, {0, nullptr}};

}  // namespace

/// The newer way: a definition, of which the interpreter makes the module.
PyMODINIT_FUNC PyInit_multi_phase() {
    static PyModuleDef definition = {PyModuleDef_HEAD_INIT, "multi_phase", nullptr, 0,      native::methods,
                                     moduleSlots,           nullptr,       nullptr, nullptr};
    return PyModuleDef_Init(&definition);
}
