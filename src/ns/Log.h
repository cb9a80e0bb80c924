// The library's log sink: off by default, so the host decides where messages go.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace vl::ns {

enum class LogLevel { Debug, Info, Warning, Error };

/// Receives every message logged while installed. An empty function turns logging off.
using LogSink = std::function<void(LogLevel, std::string_view message)>;

/// Installs `sink` and answers the one it replaces. Not thread-safe: install at start-up or
/// in a test's set-up.
LogSink setLogSink(LogSink sink);

/// A sink that writes "vlwp: <message>" lines to standard error.
LogSink standardErrorLogSink();

/// Sends `message` (UTF-8) to the installed sink; costs one test when none is installed.
void log(LogLevel level, std::string_view message);

/// True when a sink is installed, so callers can skip building expensive messages.
bool isLogging();

} // namespace vl::ns
