#include "bridge/loss.h"

#include "bridge/convert.h"
#include "host/gil_guard.h"
#include "host/py_ref.h"
#include "ling/class_builder.h"
#include "ling/module.h"

namespace ling::python {

namespace {

constexpr const char* kDoc = "A value of Python's loses a part on its way into the host's runtime.";

/// A warning comes once for each place and text, so no value is in the texts.
const char* textOf(Loss loss) noexcept {
    switch (loss) {
        case Loss::Range:
            return "a float that is infinite or out of range becomes the least integer";
        case Loss::Fraction:
            return "a number becomes an integer and loses its fraction";
        case Loss::Zone:
            break;
    }
    return "an aware time or date-time loses its zone";
}

constinit PyObject* category = nullptr;  // Owned, for ever. Under the interpreter lock.

}  // namespace

PyObject* lossWarning() {
    if (category != nullptr)
        return category;
    PyRef made = PyRef::steal(PyErr_NewExceptionWithDoc("ling.python.LossWarning", kDoc, PyExc_UserWarning, nullptr));
    if (category == nullptr)  // Making it may have given the lock up, and another thread may have been first.
        category = made.release();
    return category;
}

void tellLoss(Loss loss) {
    if (PyErr_Occurred() != nullptr)
        return;
    PyObject* warning = lossWarning();
    if (warning != nullptr && PyErr_WarnEx(warning, textOf(loss), 1) == 0)
        return;
    if (PyEval_GetFrame() == nullptr)
        PyErr_FormatUnraisable("Exception ignored while a value was converted");
}

void registerLossWarning() {
    const auto read = [] {
        const GilGuard gil;
        return toLing(lossWarning());
    };
    (void)ling::internal::register_property(
        "ling.python", "LossWarning",
        ling::internal::property_builder()
            .getter(read)
            .doc("The category of warnings about values that lose a part on their way from Python.")
            .build());
}

}  // namespace ling::python
