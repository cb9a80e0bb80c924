// vlconvert: converts a document between the formats the library reads and writes.
#include "Arguments.h"
#include "Formats.h"
#include "ns/Assert.h"
#include "ns/Error.h"
#include "ns/FileManager.h"
#include "ns/String.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <new>
#include <optional>
#include <string>
#include <system_error>

namespace {

using namespace vlconvert;
namespace ns = vl::ns;

constexpr int ExitFailure = 1;
constexpr int ExitUsage = 2;

/// Prints the one line of a failure and answers its exit status.
int fail(int status, const std::string &subject, const std::string &reason) {
  if (subject.empty())
    std::fprintf(stderr, "vlconvert: %s\n", reason.c_str());
  else
    std::fprintf(stderr, "vlconvert: %s: %s\n", subject.c_str(), reason.c_str());
  return status;
}

/// The system's words for a file error ("No such file or directory").
std::string reasonOf(const ns::ErrorPtr &error) {
  if (!error)
    return "unknown error";
  if (auto underlying = error->userInfo()->objectForKey(ns::UnderlyingErrorKey).as<ns::Error>())
    if (underlying->domain() == ns::POSIXErrorDomain)
      return std::strerror(static_cast<int>(underlying->code()));
  return ns::toUTF8(error->localizedDescription());
}

/// The format --from or --to names, else the one of the file's extension.
const Format &resolveFormat(const std::string &name, const std::string &path, const char *option) {
  if (!name.empty()) {
    if (const Format *format = formatNamed(name))
      return *format;
    throw UsageError("unknown format '" + name + "' (see vlconvert --help)");
  }
  if (const Format *format = formatForPath(path))
    return *format;
  throw UsageError(path + ": cannot tell the format from the file name (use " + option + ")");
}

/// True when both paths name one file, or would once the output is written.
bool sameFile(const std::string &input, const std::string &output) {
  std::error_code ec;
  if (std::filesystem::equivalent(input, output, ec))
    return true;
  const auto a = std::filesystem::weakly_canonical(input, ec);
  if (ec)
    return false;
  const auto b = std::filesystem::weakly_canonical(output, ec);
  return !ec && a == b;
}

int convert(const Arguments &arguments) {
  const Format &from = resolveFormat(arguments.from, arguments.input, "--from");
  const Format &to = resolveFormat(arguments.to, arguments.output, "--to");
  if (!from.read)
    throw UsageError("reading " + std::string(from.displayName) + " is not supported");
  if (!to.write)
    throw UsageError("writing " + std::string(to.displayName) + " is not supported");
  if (sameFile(arguments.input, arguments.output))
    throw UsageError(arguments.output + ": is the input file; it is never overwritten");

  const auto &files = ns::FileManager::defaultManager();
  ns::ErrorPtr error;
  std::optional<ns::Data> input = files->contentsAtPath(ns::fromUTF8(arguments.input), &error);
  if (!input)
    return fail(ExitFailure, arguments.input, "cannot read (" + reasonOf(error) + ")");

  ns::Data output;
  try {
    output = to.write(from.read(*input));
  } catch (const ConversionError &e) {
    return fail(ExitFailure, arguments.input, e.what());
  } catch (const ns::InternalInconsistencyException &e) {
    return fail(ExitFailure, arguments.input, "cannot convert (" + e.description() + ")");
  } catch (const std::bad_alloc &) {
    return fail(ExitFailure, arguments.input, "cannot convert (out of memory)");
  }

  // Written beside the output and renamed over it, so a failure leaves no partial file.
  if (!files->writeData(output, ns::fromUTF8(arguments.output), ns::DataWritingAtomic, &error))
    return fail(ExitFailure, arguments.output, "cannot write (" + reasonOf(error) + ")");
  return 0;
}

} // namespace

int main(int argc, char **argv) {
  try {
    const Arguments arguments = parseArguments(argc, argv);
    switch (arguments.action) {
    case Arguments::Action::Help:
      std::fputs(usageText().c_str(), stdout);
      return 0;
    case Arguments::Action::Version:
      std::printf("vlconvert %s\n", VLWP_VERSION);
      return 0;
    case Arguments::Action::Convert:
      return convert(arguments);
    }
  } catch (const UsageError &e) {
    return fail(ExitUsage, {}, e.what());
  } catch (const std::exception &e) {
    return fail(ExitFailure, {}, e.what());
  }
  return 0;
}
