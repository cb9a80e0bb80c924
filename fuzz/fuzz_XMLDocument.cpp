// Fuzz target: parse arbitrary bytes as XML, walk the tree, query it and print it.
#include "ns/XMLDocument.h"
#include "ns/XMLElement.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

using namespace vl::ns;

namespace {
void walk(const XMLNode &node, int depth) {
  if (depth > 64)
    return;
  (void)node.name();
  (void)node.stringValue();
  for (const XMLNode &child : node.children())
    walk(child, depth + 1);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  std::string_view bytes(reinterpret_cast<const char *>(data), size);
  for (uint64_t options : {uint64_t{XMLNodeOptionsNone}, uint64_t{XMLNodePreserveWhitespace}}) {
    ErrorPtr error;
    XMLDocument doc = XMLDocument::createWithData(bytes, options, &error);
    if (!doc.xmlDoc())
      continue;
    walk(doc.rootElement(), 0);
    (void)doc.nodesForXPath(u"//*[@id]");
    (void)doc.XMLUTF8WithOptions(XMLNodePrettyPrint | XMLNodeCompactEmptyElement);
  }
  return 0;
}
