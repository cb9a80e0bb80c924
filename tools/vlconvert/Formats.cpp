// The format table of vlconvert and the read and write functions of each format.
#include "Formats.h"

#include "JSONWriter.h"
#include "converters/fcf/VLFCFReader.h"
#include "converters/fcf/VLFCFWriter.h"
#include "converters/fountain/VLSFountainReader.h"
#include "converters/fountain/VLSFountainWriter.h"
#include "model/VLConstants.h"
#include "model/VLDocumentSettings.h"
#include "model/VLMemoryRDFModel.h"
#include "ns/Assert.h"
#include "ns/String.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <optional>
#include <string>

namespace vlconvert {

namespace {

using vl::ns::Data;

std::string lowercase(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return lower;
}

/// The error's description, or `fallback` when there is none.
std::string describe(const vl::ns::ErrorPtr &error, const char *fallback) {
  return error ? vl::ns::toUTF8(error->localizedDescription()) : std::string(fallback);
}

vl::VLDocumentPair readFountain(const Data &data) {
  vl::ns::ErrorPtr error;
  std::optional<vl::VLDocumentPair> document =
      vl::VLSFountainReader::create()->documentWithData(data, nullptr, &error);
  if (!document)
    throw ConversionError("not a Fountain file (" + describe(error, "the text cannot be decoded") +
                          ")");
  return std::move(*document);
}

Data writeFountain(const vl::VLDocumentPair &document) {
  auto writer = vl::VLSFountainWriter::create(document.attributedString);
  // The writer starts as a screenplay writer; a novel puts its scene titles back as headings.
  writer->setIsScreenplay(vl::isScreenplayDocument(document.documentAttributes));
  // Synopses live in the outline entries' properties; a model made from the references lets
  // the writer put them back after their headings. A host-supplied model is left alone.
  vl::ns::DictionaryPtr attributes =
      document.documentAttributes ? document.documentAttributes : vl::ns::Dictionary::create();
  if (attributes->objectForKey(vl::VLRDFMetadataDocumentAttribute).isNil()) {
    auto model = vl::VLMemoryRDFModel::create();
    model->addResourcesFromReferences(
        attributes->objectForKey(vl::VLReferencesDocumentAttribute).dictionary());
    attributes = std::static_pointer_cast<vl::ns::Dictionary>(attributes->copy());
    attributes->setObject(vl::ns::Value(model), vl::VLRDFMetadataDocumentAttribute);
  }
  vl::ns::ErrorPtr error;
  std::optional<Data> data = writer->dataFromRange(
      vl::ns::Range{0, document.attributedString->length()}, attributes, &error);
  if (!data)
    throw ConversionError("cannot write Fountain (" + describe(error, "the writer gave no text") +
                          ")");
  return std::move(*data);
}

vl::VLDocumentPair readFCF(const Data &data) {
  // The reader answers nil for a wrong magic and for text that is not ASCII; looking at the
  // magic first tells the two apart.
  if (data.length() < 4 || std::memcmp(data.bytes(), "FCF2", 4) != 0)
    throw ConversionError("not an FCF file (bad magic)");
  std::optional<vl::VLDocumentPair> document;
  try {
    document = vl::VLFCFReader::create()->documentWithData(data);
  } catch (const vl::ns::InternalInconsistencyException &e) {
    // The reader refuses a record that does not fit by a failed check, not by nil.
    if (e.description().find("dataOffset + length") != std::string::npos)
      throw ConversionError("corrupt FCF file (a record runs past the end of the file)");
    throw ConversionError("corrupt FCF file (the file ends inside a header or record head)");
  }
  if (!document)
    throw ConversionError("corrupt FCF file (a record holds bytes that are not ASCII)");
  return std::move(*document);
}

Data writeFCF(const vl::VLDocumentPair &document) {
  auto writer = vl::VLFCFWriter::create(document.attributedString);
  return writer->dataFromRange(vl::ns::Range{0, document.attributedString->length()},
                               document.documentAttributes);
}

Data writeJSON(const vl::VLDocumentPair &document) {
  return jsonDataForDocument(document);
}

} // namespace

const std::vector<Format> &formats() {
  static const std::vector<Format> table{
      {"fountain", "Fountain", {"fountain", "spmd"}, readFountain, writeFountain},
      {"fcf", "FCF", {"fcf"}, readFCF, writeFCF},
      {"json", "JSON", {"json"}, nullptr, writeJSON},
  };
  return table;
}

const Format *formatNamed(std::string_view name) {
  const std::string lower = lowercase(name);
  for (const Format &format : formats())
    if (format.name == lower)
      return &format;
  return nullptr;
}

const Format *formatForPath(std::string_view path) {
  const size_t slash = path.find_last_of('/');
  const std::string_view name = slash == std::string_view::npos ? path : path.substr(slash + 1);
  const size_t dot = name.find_last_of('.');
  if (dot == std::string_view::npos || dot == 0)
    return nullptr;
  const std::string extension = lowercase(name.substr(dot + 1));
  for (const Format &format : formats())
    for (std::string_view candidate : format.extensions)
      if (candidate == extension)
        return &format;
  return nullptr;
}

} // namespace vlconvert
