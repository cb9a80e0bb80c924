// String helpers: identifiers, decoding, base names, trailing numbers and newlines.
#include "model/VLStringAdditions.h"

#include "ns/Path.h"
#include "ns/Scanner.h"
#include "ns/String.h"

namespace vl {

std::u16string UUID() {
  return ns::UUIDString();
}

std::u16string uniqueID() {
  std::u16string id = u"id";
  for (char16_t c : ns::UUIDString())
    if (c != u'-')
      id += c;
  return id;
}

std::u16string basename(std::u16string_view path) {
  return ns::stringByDeletingPathExtension(ns::lastPathComponent(path));
}

std::u16string stringByDeletingLastInteger(std::u16string_view string) {
  static const ns::CharacterSet digits =
      ns::CharacterSet::characterSetWithCharactersInString(u"0123456789");
  ns::Scanner scanner{std::u16string(string)};
  uint64_t end = string.size();
  while (!scanner.isAtEnd()) {
    uint64_t before = scanner.scanLocation();
    scanner.scanUpToCharactersFromSet(digits, nullptr);
    end = scanner.scanLocation();
    scanner.scanInteger(nullptr);
    if (scanner.scanLocation() == before)
      break; // cannot happen with ASCII digits, but a stuck scanner must not spin
  }
  return std::u16string(string.substr(0, end));
}

std::u16string stringByDeletingNewlines(std::u16string_view string) {
  const ns::CharacterSet &newlines = ns::CharacterSet::newlineCharacterSet();
  std::u16string out(string);
  for (char16_t &c : out)
    if (newlines.characterIsMember(c))
      c = u' ';
  return out;
}

} // namespace vl
