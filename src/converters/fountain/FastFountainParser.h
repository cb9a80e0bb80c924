// The single-pass Fountain parser: a line-by-line state machine into elements and a title page.
#pragma once

#include "converters/fountain/FNElement.h"
#include "ns/Array.h"
#include "ns/Object.h"

#include <memory>
#include <string_view>

namespace vl {

class FastFountainParser;
using FastFountainParserPtr = std::shared_ptr<FastFountainParser>;

/// Parses Fountain text in one pass over its lines. A parser is used up by its initializer:
/// make one per text and read elements() and titlePage().
///
/// The title page is an array of one-entry dictionaries, in document order: the key is the
/// directive in lower case ("author" becomes "authors"), the value an array of strings, one a
/// line. Directives written one after another without an inline value share one array.
///
/// Parsing never fails: any text gives some list of elements. Linear in the text.
class FastFountainParser : public ns::Object {
public:
  VL_OBJECT(FastFountainParser)

  /// A parser with empty arrays that has parsed nothing.
  FastFountainParser();

  /// initWithString: parses `string`.
  static FastFountainParserPtr createWithString(std::u16string_view string);
  /// initWithFile: reads and decodes the file (UTF-8, else the plain-text guess) and parses
  /// it. A file that cannot be read logs "Couldn't read the file <path>" and leaves both
  /// arrays empty.
  static FastFountainParserPtr createWithFile(std::u16string_view path);

  /// Parses `contents`, adding to the elements and the title page.
  void parseContents(std::u16string_view contents);

  const FNElementArray &elements() const { return elements_; }
  FNElementArray &elements() { return elements_; }
  /// Never null.
  const ns::ArrayPtr &titlePage() const { return titlePage_; }

private:
  bool parseTitlePage(std::u16string_view top);
  void parseBody(std::u16string_view text);
  void addTitleEntry(const std::u16string &key, const ns::ArrayPtr &values);

  FNElementArray elements_;
  ns::ArrayPtr titlePage_;
};

} // namespace vl
