// A Fountain screenplay: its elements and title page, loaded through one of the two parsers.
#pragma once

#include "converters/fountain/FNElement.h"
#include "ns/Array.h"
#include "ns/Object.h"
#include "ns/URL.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vl {

class FNScript;
using FNScriptPtr = std::shared_ptr<FNScript>;

/// The elements and title page of one screenplay. Loading goes through FastFountainParser,
/// or through FountainParser when the parser argument is 1; a later load replaces both.
/// Printing goes through FountainWriter.
class FNScript : public ns::Object {
public:
  VL_OBJECT(FNScript)

  /// An empty script: no elements, an empty title page, no file name.
  FNScript();

  /// initWithFile: a script loaded from the file at `path` (see loadFile).
  static FNScriptPtr createWithFile(std::u16string_view path);
  /// initWithString: a script parsed from `string`.
  static FNScriptPtr createWithString(std::u16string_view string);
  /// initWithFile:parser:
  static FNScriptPtr createWithFile(std::u16string_view path, int32_t parser);
  /// initWithString:parser:
  static FNScriptPtr createWithString(std::u16string_view string, int32_t parser);

  /// Sets the file name to the last path component and parses the file with
  /// FastFountainParser. A file that cannot be read is logged and leaves the script empty.
  void loadFile(std::u16string_view path);
  /// Clears the file name and parses `string` with FastFountainParser.
  void loadString(std::u16string_view string);
  /// As loadFile, but with parser 1 the body and the title page come from FountainParser
  /// (which reads the file twice).
  void loadFile(std::u16string_view path, int32_t parser);
  /// As loadString, but with parser 1 through FountainParser.
  void loadString(std::u16string_view string, int32_t parser);

  /// The last path component of the file loaded; empty optional for a script from a string.
  const std::optional<std::u16string> &filename() const { return filename_; }
  void setFilename(std::optional<std::u16string> filename) { filename_ = std::move(filename); }

  const FNElementArray &elements() const { return elements_; }
  FNElementArray &elements() { return elements_; }
  void setElements(FNElementArray elements) { elements_ = std::move(elements); }

  /// One-entry dictionaries of a lower-case directive and an array of lines. Never null: a
  /// null given to the setter is stored as an empty array.
  const ns::ArrayPtr &titlePage() const { return titlePage_; }
  void setTitlePage(ns::ArrayPtr titlePage);

  /// Whether a writer leaves scene numbers out. False after construction.
  bool suppressSceneNumbers() const { return suppressSceneNumbers_; }
  void setSuppressSceneNumbers(bool suppress) { suppressSceneNumbers_ = suppress; }

  // Printing, through FountainWriter.

  /// FountainWriter::documentFromScript: title page and body.
  std::u16string stringFromDocument() const;
  /// FountainWriter::titlePageFromScript.
  std::u16string stringFromTitlePage() const;
  /// FountainWriter::bodyFromScript.
  std::u16string stringFromBody() const;
  /// The whole document, as stringFromDocument.
  std::u16string description() const override;
  /// Writes stringFromDocument as UTF-8, atomically (an old file stays whole on failure);
  /// answers whether that worked. The reason of a failure is not passed on.
  bool writeToFile(std::u16string_view path) const;
  /// writeToFile with the path of a file URL; false for a nil URL or any other kind.
  bool writeToURL(const ns::URLPtr &url) const;

private:
  std::optional<std::u16string> filename_;
  FNElementArray elements_;
  ns::ArrayPtr titlePage_;
  bool suppressSceneNumbers_ = false;
};

} // namespace vl
