// The command line of vlconvert.
#include "Arguments.h"

#include "Formats.h"

#include <string_view>
#include <vector>

namespace vlconvert {

Arguments parseArguments(int argc, const char *const *argv) {
  Arguments arguments;
  std::vector<std::string> files;
  bool optionsEnded = false;
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (optionsEnded || argument.size() < 2 || argument[0] != '-') {
      files.emplace_back(argument);
      continue;
    }
    if (argument == "--") {
      optionsEnded = true;
    } else if (argument == "--help" || argument == "-h") {
      arguments.action = Arguments::Action::Help;
      return arguments;
    } else if (argument == "--version") {
      arguments.action = Arguments::Action::Version;
      return arguments;
    } else if (argument.starts_with("--from") || argument.starts_with("--to")) {
      const bool from = argument.starts_with("--from");
      const std::string_view option = from ? "--from" : "--to";
      std::string_view value;
      if (argument.size() == option.size()) {
        if (i + 1 >= argc)
          throw UsageError(std::string(option) + " needs a format name");
        value = argv[++i];
      } else if (argument[option.size()] == '=') {
        value = argument.substr(option.size() + 1);
      } else {
        throw UsageError("unknown option " + std::string(argument) + " (see vlconvert --help)");
      }
      if (value.empty())
        throw UsageError(std::string(option) + " needs a format name");
      (from ? arguments.from : arguments.to) = std::string(value);
    } else {
      throw UsageError("unknown option " + std::string(argument) + " (see vlconvert --help)");
    }
  }
  if (files.size() != 2)
    throw UsageError(files.size() < 2
                         ? "needs an input and an output file (see vlconvert --help)"
                         : "takes one input and one output file (see vlconvert --help)");
  arguments.input = std::move(files[0]);
  arguments.output = std::move(files[1]);
  return arguments;
}

std::string usageText() {
  std::string text = "usage: vlconvert [--from FORMAT] [--to FORMAT] INPUT OUTPUT\n"
                     "       vlconvert --help | --version\n"
                     "\n"
                     "Converts INPUT to OUTPUT. Formats are taken from the file extensions unless\n"
                     "--from or --to name them. OUTPUT is written whole or not at all; INPUT is\n"
                     "never changed.\n"
                     "\n"
                     "Formats:\n";
  for (const Format &format : formats()) {
    std::string line = "  " + std::string(format.name);
    line.resize(12, ' ');
    std::string extensions;
    for (std::string_view extension : format.extensions)
      extensions += (extensions.empty() ? "." : ", .") + std::string(extension);
    line += extensions;
    line.resize(32, ' ');
    line += format.read && format.write ? "read, write"
            : format.read               ? "read"
            : format.write              ? "write"
                                        : "not available yet";
    text += line + "\n";
  }
  text += "\n"
          "Exit status: 0 on success, 1 when a file cannot be read, converted or written,\n"
          "2 for a usage error.\n";
  return text;
}

} // namespace vlconvert
