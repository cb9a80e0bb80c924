// FountainWriter: prints a parsed or hand-built Fountain script back as Fountain text.
#pragma once

#include "converters/fountain/FNScript.h"

#include <string>

namespace vl {

/// Class-level printing of an FNScript. Each operation makes one new string in a single pass
/// over the script; none fails.
///
/// What the body keeps of an element, by type: notes as "[[...]]" (on a line of their own,
/// after a blank line), "Boneyard" as "/*...*/", synopses as "=...", scene headings with a
/// forcing "." when they lack a known prefix and " #n#" for a scene number unless the script
/// suppresses numbers, page breaks as "====", sections as one "#" per level, transitions
/// behind "> ", centred text between "> " and " <", and the second cue of a dual dialogue
/// pair marked " ^". Every other type is written as its text. Elements whose text is blank
/// are left out, page breaks aside. Dialogue, parentheticals and notes follow the line above
/// directly; everything else has a blank line before it.
///
/// Nothing is escaped: text that reads as mark-up (a capitalised action line, a star) reads
/// back as mark-up.
class FountainWriter {
public:
  FountainWriter() = delete;

  /// The title page, a line feed, then the body, trimmed of line ends at both ends. Either
  /// part is left out when it is empty.
  static std::u16string documentFromScript(const FNScript &script);
  /// The elements, as above.
  static std::u16string bodyFromScript(const FNScript &script);
  /// "Key: value" lines, the key's first letter in upper case ("authors" with one value
  /// prints as "Author"); a key with any other number of values prints "Key:" and one
  /// tab-indented line a value. Empty when the script has no title page.
  static std::u16string titlePageFromScript(const FNScript &script);
};

} // namespace vl
