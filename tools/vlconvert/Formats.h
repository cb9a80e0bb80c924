// The formats vlconvert knows: one row each, with the functions that read and write it.
#pragma once

#include "model/VLReader.h"
#include "ns/Data.h"

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace vlconvert {

/// A file that cannot be read or converted; what() is the reason shown after the file name
/// ("not an FCF file (bad magic)").
class ConversionError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// Reads a whole file's bytes into a document; throws ConversionError.
using ReadFunction = vl::VLDocumentPair (*)(const vl::ns::Data &data);
/// Writes a document as a whole file's bytes; throws ConversionError.
using WriteFunction = vl::ns::Data (*)(const vl::VLDocumentPair &document);

/// One format. A converter joins vlconvert by adding a row to the table in Formats.cpp.
struct Format {
  /// The name --from and --to take, in lower case.
  std::string_view name;
  /// The name shown in messages ("FCF").
  std::string_view displayName;
  /// File name extensions, lower case, without the dot.
  std::vector<std::string_view> extensions;
  /// Null when the format cannot be read.
  ReadFunction read = nullptr;
  /// Null when the format cannot be written.
  WriteFunction write = nullptr;
};

/// Every format, in the order --help lists them.
const std::vector<Format> &formats();
/// The format called `name` (case-insensitive), or null.
const Format *formatNamed(std::string_view name);
/// The format whose extensions include the extension of `path` (case-insensitive), or null.
const Format *formatForPath(std::string_view path);

} // namespace vlconvert
