// vlconvert: converts a document between the formats the library reads and writes.
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr int ExitUsage = 2;

void printUsage(FILE *out) {
  std::fprintf(out, "usage: vlconvert [--from FORMAT] [--to FORMAT] INPUT OUTPUT\n"
                    "       vlconvert --help | --version\n"
                    "\n"
                    "Converts INPUT to OUTPUT. Formats are taken from the file extensions unless\n"
                    "--from or --to name them.\n");
}

std::string extensionOf(const std::string &path) {
  auto slash = path.find_last_of('/');
  auto dot = path.find_last_of('.');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash) ||
      dot == (slash == std::string::npos ? 0 : slash + 1))
    return {};
  return path.substr(dot + 1);
}

} // namespace

int main(int argc, char **argv) {
  std::vector<std::string_view> args(argv + 1, argv + argc);
  std::string from, to;
  std::vector<std::string> files;
  for (size_t i = 0; i < args.size(); ++i) {
    std::string_view a = args[i];
    if (a == "--help" || a == "-h") {
      printUsage(stdout);
      return 0;
    }
    if (a == "--version") {
      std::printf("vlconvert %s\n", VLWP_VERSION);
      return 0;
    }
    if (a == "--from" || a == "--to") {
      if (i + 1 >= args.size()) {
        std::fprintf(stderr, "vlconvert: %s needs a format\n", std::string(a).c_str());
        return ExitUsage;
      }
      (a == "--from" ? from : to) = std::string(args[++i]);
      continue;
    }
    if (a.size() > 1 && a[0] == '-') {
      std::fprintf(stderr, "vlconvert: unknown option %s\n", std::string(a).c_str());
      printUsage(stderr);
      return ExitUsage;
    }
    files.emplace_back(a);
  }
  if (files.size() != 2) {
    printUsage(stderr);
    return ExitUsage;
  }
  if (from.empty())
    from = extensionOf(files[0]);
  if (to.empty())
    to = extensionOf(files[1]);
  std::fprintf(stderr, "vlconvert: %s: converting from '%s' to '%s' is not supported yet\n",
               files[0].c_str(), from.c_str(), to.c_str());
  return ExitUsage;
}
