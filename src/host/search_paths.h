#pragma once

#include "ling/list.h"
#include "ling/string.h"

#include <string>

namespace ling::python {

/// The paths that wait for the start: `sys.path` begins as exactly this list. Filled before the interpreter runs, on
/// the thread that loads extensions, and so unguarded.
const ling::List_Generic& pendingSysPaths();

/// The directory that holds the plug-in's own file: absolute, symbolic links resolved, without a "/" at its end. Empty
/// when it cannot be found out.
std::string ownDirectory();
/// The zipped standard library, beside the plug-in's file.
std::string standardLibrary();

/// Queues the plug-in's own search paths: each ".zip" archive directly in "site-packages", then "site-packages"
/// itself, then the zipped standard library, all beside the plug-in's file. Throws `std::filesystem::filesystem_error`
/// when "site-packages" cannot be read; the last two are not queued then. Throws `std::runtime_error` when the path of
/// the plug-in is no UTF-8.
void addOwnSearchPaths();

/// Adds a directory or archive to Python's search path: before the interpreter runs to `pendingSysPaths`, unseen;
/// afterwards at the end of `sys.path`, unless an equal text is there already. None, or the Python error when "sys"
/// cannot be imported. A `sys.path` that is no list is left alone. Takes the interpreter lock itself.
ling::Any addSysPathOnce(const ling::String& path);

}  // namespace ling::python
