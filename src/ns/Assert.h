// Internal consistency checks that stop the operation and name their place.
#pragma once

#include <stdexcept>
#include <string>

namespace vl::ns {

/// Thrown by a failed internal check. Carries the check's description and the
/// source file and line where it failed; what() holds all three.
class InternalInconsistencyException : public std::logic_error {
public:
  InternalInconsistencyException(std::string description, std::string file, int line);

  const std::string &description() const noexcept { return description_; }
  const std::string &file() const noexcept { return file_; }
  int line() const noexcept { return line_; }

private:
  std::string description_;
  std::string file_;
  int line_;
};

namespace detail {
[[noreturn]] void assertionFailed(std::string description, const char *file, int line);
} // namespace detail

} // namespace vl::ns

/// Stops the operation with InternalInconsistencyException when `condition` is
/// false. `description` is a UTF-8 string naming what went wrong.
#define VL_ASSERT(condition, description)                                                          \
  do {                                                                                             \
    if (!(condition)) [[unlikely]]                                                                 \
      ::vl::ns::detail::assertionFailed((description), __FILE__, __LINE__);                        \
  } while (0)

/// A failed check on an argument, described as "Invalid parameter not satisfying: <condition>".
#define VL_ASSERT_PARAM(condition)                                                                 \
  VL_ASSERT(condition, std::string("Invalid parameter not satisfying: ") + #condition)
