// The JSON description of a document pair that `vlconvert --to json` writes (schema:
// docs/json-model.md).
#pragma once

#include "model/VLReader.h"
#include "ns/Data.h"
#include "ns/Value.h"

#include <nlohmann/json.hpp>

namespace vlconvert {

/// The description of `document`: its paragraphs with their styles and runs, outline
/// entries, markers, stylesheet, master pages and settings. Keys are sorted and arrays keep
/// document order, so the same document always gives the same text. Linear in the text.
nlohmann::json documentJSON(const vl::VLDocumentPair &document);

/// documentJSON as UTF-8, indented by two spaces, ending in a line feed.
vl::ns::Data jsonDataForDocument(const vl::VLDocumentPair &document);

/// A value of the settings tree as JSON: dictionaries as objects, arrays, strings, numbers
/// and booleans as themselves, nil as null; dates, bytes and other objects as strings that
/// name them.
nlohmann::json jsonForValue(const vl::ns::Value &value);

} // namespace vlconvert
