#pragma once

/// Starts the host that the plug-in's tests run in: the interpreter and everything that comes up with it.
///
/// Once per process, by the first caller. What a test sees afterwards is what a host sees after it has loaded the
/// plug-in and run the handlers. Ends the process when a handler fails, since no test would mean anything then.
void startHost();
