// The command line of vlconvert: options, the two file names, and usage errors.
#pragma once

#include <stdexcept>
#include <string>

namespace vlconvert {

/// A command line that cannot be run; what() is the one-line message after "vlconvert: ".
class UsageError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// What the command line asks for.
struct Arguments {
  enum class Action { Convert, Help, Version };
  Action action = Action::Convert;
  /// Format names from --from and --to; empty when the extension decides.
  std::string from;
  std::string to;
  std::string input;
  std::string output;
};

/// Reads `vlconvert [--from FORMAT] [--to FORMAT] INPUT OUTPUT`, `--help` or `--version`.
/// Options also take the form --from=FORMAT; "--" ends the options. Throws UsageError for an
/// unknown option, a missing format after --from or --to, or other than two file names.
/// Format names are not checked here.
Arguments parseArguments(int argc, const char *const *argv);

/// The text of --help.
std::string usageText();

} // namespace vlconvert
