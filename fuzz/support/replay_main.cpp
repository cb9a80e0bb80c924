// Runs every file of the given directories (or the given files) through a fuzz target once,
// so that kept regression inputs are checked without libFuzzer.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {
int runFile(const std::filesystem::path &path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    std::fprintf(stderr, "replay: cannot read %s\n", path.c_str());
    return 1;
  }
  std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
  return 0;
}
} // namespace

int main(int argc, char **argv) {
  int failures = 0;
  size_t count = 0;
  for (int i = 1; i < argc; ++i) {
    std::filesystem::path p(argv[i]);
    std::error_code ec;
    if (std::filesystem::is_directory(p, ec)) {
      std::vector<std::filesystem::path> files;
      for (const auto &entry : std::filesystem::recursive_directory_iterator(p))
        if (entry.is_regular_file())
          files.push_back(entry.path());
      std::sort(files.begin(), files.end());
      for (const auto &f : files) {
        failures += runFile(f);
        ++count;
      }
    } else if (std::filesystem::exists(p, ec)) {
      failures += runFile(p);
      ++count;
    }
  }
  // An empty input also must not crash.
  LLVMFuzzerTestOneInput(nullptr, 0);
  std::printf("replayed %zu inputs\n", count);
  return failures ? 1 : 0;
}
