#pragma once

#include "ling/any.h"

namespace ling::python {

/// Lends Python's URL machinery to the host: registers one loader function for the schemes "data", "file", "ftp",
/// "http" and "https". The loader, called with (in_path, in_uri), answers the bytes behind the URI, or the Python
/// error. It takes the interpreter lock itself, which is free while Python waits for a file or a server; the path is of
/// no use to it.
///
/// What is broken off half-way is an error where the server has said how long the answer is: HTTP with a length or in
/// chunks. It cannot be told from a whole answer otherwise: HTTP without a length, and FTP, for which `urllib` keeps
/// the server's last word to itself.
///
/// The rest is as with any program that uses `urllib`: redirections are followed, but not to files; proxies are those
/// of the environment ("http_proxy", "no_proxy", ...), trusted certificates those of the system, unless SSL_CERT_FILE
/// or SSL_CERT_DIR name others. Certificates are always checked. There is no time limit.
void registerSchemeProviders();

/// What the loader does.
ling::Any loadResource(const ling::Any& path, const ling::Any& uri);

}  // namespace ling::python
