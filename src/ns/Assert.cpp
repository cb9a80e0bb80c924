// Internal consistency checks.
#include "ns/Assert.h"

#include "ns/Log.h"

namespace vl::ns {

InternalInconsistencyException::InternalInconsistencyException(std::string description,
                                                               std::string file, int line)
    : std::logic_error(description + " (" + file + ":" + std::to_string(line) + ")"),
      description_(std::move(description)), file_(std::move(file)), line_(line) {}

namespace detail {
void assertionFailed(std::string description, const char *file, int line) {
  log(LogLevel::Error,
      "assertion failed: " + description + " (" + file + ":" + std::to_string(line) + ")");
  throw InternalInconsistencyException(std::move(description), file, line);
}
} // namespace detail

} // namespace vl::ns
