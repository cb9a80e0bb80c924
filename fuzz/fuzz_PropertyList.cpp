// Fuzz target: read arbitrary bytes as a property list and as a keyed archive, and write
// back whatever was read.
#include "ns/KeyedArchiver.h"
#include "ns/PropertyListSerialization.h"

#include <cstddef>
#include <cstdint>

using namespace vl::ns;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  Data bytes(data, size);
  PropertyListFormat format{};
  ErrorPtr error;
  Value plist = PropertyListSerialization::propertyListWithData(bytes, &format, &error);
  if (!plist.isNil()) {
    (void)PropertyListSerialization::dataWithPropertyList(plist, PropertyListBinaryFormat_v1_0,
                                                          &error);
    (void)PropertyListSerialization::dataWithPropertyList(plist, PropertyListXMLFormat_v1_0,
                                                          &error);
  }
  Value root = KeyedUnarchiver::unarchiveObjectWithData(bytes, &error);
  if (!root.isNil())
    (void)KeyedArchiver::archivedDataWithRootObject(root);
  return 0;
}
