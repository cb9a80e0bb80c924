// Fuzz target: the flat serialized form of file wrappers; what reads must write back the same.
#include "ns/FileWrapper.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  using namespace vl::ns;
  Data input(data, size);
  if (auto wrapper = FileWrapper::createWithSerializedRepresentation(input)) {
    if (!(wrapper->serializedRepresentation() == input))
      std::abort();
  }
  return 0;
}
