#include "host/names.h"

namespace ling::python {

PyObject* Name::intern() const noexcept {
    PyObject* made = PyUnicode_InternFromString(text_);
    PyObject* first = nullptr;
    if (made == nullptr || object_.compare_exchange_strong(first, made, std::memory_order_acq_rel))
        return made;
    Py_DecRef(made);  // Another thread was first.
    return first;
}

}  // namespace ling::python
