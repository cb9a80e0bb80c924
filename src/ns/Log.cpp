// The library's log sink.
#include "ns/Log.h"

#include <cstdio>

namespace vl::ns {
namespace {
LogSink &currentSink() {
  static LogSink sink;
  return sink;
}
} // namespace

LogSink setLogSink(LogSink sink) {
  LogSink previous = std::move(currentSink());
  currentSink() = std::move(sink);
  return previous;
}

LogSink standardErrorLogSink() {
  return [](LogLevel, std::string_view message) {
    std::fprintf(stderr, "vlwp: %.*s\n", static_cast<int>(message.size()), message.data());
  };
}

void log(LogLevel level, std::string_view message) {
  if (auto &sink = currentSink())
    sink(level, message);
}

bool isLogging() {
  return static_cast<bool>(currentSink());
}

} // namespace vl::ns
