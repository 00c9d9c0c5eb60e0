#pragma once

#include "ling/any.h"
#include "ling/string.h"

#include <filesystem>
#include <utility>
#include <vector>

namespace ling {

/// When an initialisation handler runs. Handlers of one level run in the order they were queued.
enum class InitLevel : std::uint8_t {
    Classes = 1,        ///< Classes are defined.
    Start = 2,          ///< Whatever has to run is started.
    Documentation = 3,  ///< Modules are documented.
    Functions = 4,      ///< Functions and properties are registered.
};

namespace internal {
using init_handler = void (*)();
/// Queues a handler. Extensions do so from their static initialisers. The caller's level decides, then the order.
LING_EXPORT void add_init_handler(InitLevel level, init_handler handler);
/// The queue itself, for a loader: not guarded, for the loading thread only.
LING_EXPORT std::vector<std::pair<InitLevel, init_handler>>& init_handlers_unsafe();
}  // namespace internal

using internal::add_init_handler;

/// The entry function of an extension. What it queues runs right after it:
///
///     LING_EXTENSION {
///         ling::add_init_handler(ling::InitLevel::Classes, defineClasses);
///         ling::add_init_handler(ling::InitLevel::Functions, defineFunctions);
///     }
#define LING_EXTENSION extern "C" __attribute__((visibility("default"))) void quorvanta_extension_init()

/// Runs the queued handlers level by level until the queue is empty. What a handler throws ends that handler only and
/// is returned as text, one entry each.
LING_EXPORT std::vector<String> run_init_handlers();

/// What became of one file of an extensions directory.
struct ExtensionReport {
    std::filesystem::path file;
    String problem;  ///< Empty when the extension is in use.
};

/// Loads every library (".so", a link to one included) of a directory, in the order of their names. Each one's entry
/// function `quorvanta_extension_init` runs right after loading, then the handlers that it queued; what others queued
/// before stays queued. A library without the entry function, or one that fails to load or whose entry function throws,
/// is reported and skipped: its handlers are dropped. A handler that throws is reported, and the others run. A library
/// that is in use already is left as it is. A directory that cannot be read is one report.
///
/// A library's static initialisers must not throw: the system's loader lets no exception through.
LING_EXPORT std::vector<ExtensionReport> load_extensions(const std::filesystem::path& directory);

/// Names the function that fetches resources of a URI scheme ("https"; upper and lower case are the same): called with
/// (path, uri), it answers the bytes or an error result. The path is that of the URI as it is written there: without
/// authority, query and fragment. A later registration replaces an earlier one.
LING_EXPORT void register_scheme_provider(const String& scheme, const I_Invokable_Generic& provider);
/// The bytes behind a URI, from the provider of its scheme, or an error result ("Unknown URI scheme: '{}'."). Nothing
/// is locked while the provider runs, and nothing is kept of what it answers.
LING_EXPORT Any load_resource(const String& uri);

}  // namespace ling
