#pragma once

#include "ling/any.h"

namespace ling::python {

/// Lends Python's URL machinery to the host: registers one loader function for the schemes "data", "file", "ftp",
/// "http" and "https". The loader, called with (in_path, in_uri), answers the bytes behind the URI, or the Python
/// error. It takes the interpreter lock itself; the path is of no use to it.
void registerSchemeProviders();

/// What the loader does.
ling::Any loadResource(const ling::Any& path, const ling::Any& uri);

}  // namespace ling::python
