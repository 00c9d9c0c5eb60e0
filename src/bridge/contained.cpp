#include "bridge/contained.h"

#include "bridge/convert.h"
#include "host/platform.h"

#include <new>

namespace ling::python {

void raiseCaughtException() {
    const ling::Any error = platform::errorOfException();
    try {
        (void)toPythonLocked(error);
    } catch (const std::bad_alloc&) {
        (void)PyErr_NoMemory();
    }
}

}  // namespace ling::python
