#pragma once

#include "measure.h"

namespace ling::bench {

/// The rows of the table, by what they measure. All but the first need a started host.
std::vector<Row> processRows();    ///< Whole processes, beside a bare interpreter.
std::vector<Row> hostRows();       ///< `ling` calls Python.
std::vector<Row> pythonRows();     ///< Python calls `ling`.
std::vector<Row> containerRows();  ///< Native containers and objects, beside those of the standard library.
std::vector<Row> growthRows();     ///< What must not grow faster than its work; the figure is the exponent.

}  // namespace ling::bench
