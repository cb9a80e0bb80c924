// VLReader: the contract every format reader keeps: bytes in, attributed text and document
// attributes out, in one call.
#pragma once

#include "ns/Data.h"
#include "ns/Dictionary.h"
#include "ns/Error.h"
#include "ns/MutableAttributedString.h"
#include "ns/Object.h"

#include <memory>
#include <optional>

namespace vl {

/// The two values a document travels as: its text and its document attributes (stylesheet,
/// master pages, references, settings).
struct VLDocumentPair {
  ns::MutableAttributedStringPtr attributedString;
  ns::DictionaryPtr documentAttributes;
};

/// A format reader. Its life is one conversion: make it, call attributedStringWithData once,
/// drop it. Readers do not touch the file system.
class VLReader : public ns::Object {
public:
  /// Reads the whole file's bytes. `options` is reserved (nil in practice). On success
  /// answers the text and, when `documentAttributes` is not null, stores the document
  /// attributes there; on failure answers nil and leaves `documentAttributes` alone. `error`,
  /// when not null, may receive the error of the XML parser or text decoder; a reader that
  /// finds bad data of its own may answer nil without filling it.
  virtual ns::MutableAttributedStringPtr
  attributedStringWithData(const ns::Data &data, const ns::DictionaryPtr &options,
                           ns::DictionaryPtr *documentAttributes, ns::ErrorPtr *error) = 0;

  /// attributedStringWithData with the document attributes asked for, as one pair; nullopt
  /// when the read failed.
  std::optional<VLDocumentPair> documentWithData(const ns::Data &data,
                                                 const ns::DictionaryPtr &options = nullptr,
                                                 ns::ErrorPtr *error = nullptr) {
    VLDocumentPair pair;
    pair.attributedString =
        attributedStringWithData(data, options, &pair.documentAttributes, error);
    if (!pair.attributedString)
      return std::nullopt;
    return pair;
  }
};

} // namespace vl
