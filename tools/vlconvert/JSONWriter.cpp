// The JSON description of a document pair: paragraphs, runs, outline, markers, stylesheet,
// master pages and settings.
#include "JSONWriter.h"

#include "model/VLConstants.h"
#include "model/VLMasterPage.h"
#include "model/VLOutline.h"
#include "model/VLStyle.h"
#include "model/VLStylesheet.h"
#include "ns/Array.h"
#include "ns/AttributeNames.h"
#include "ns/Dictionary.h"
#include "ns/Font.h"
#include "ns/FontCatalog.h"
#include "ns/String.h"
#include "ns/URL.h"
#include "objects/VLSTextMarker.h"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <vector>

namespace vlconvert {

namespace {

namespace ns = vl::ns;
using nlohmann::json;

json utf8(std::u16string_view text) {
  return ns::toUTF8(text);
}

json optionalString(const std::optional<std::u16string> &text) {
  return text ? utf8(*text) : json(nullptr);
}

json rangeJSON(ns::Range range) {
  return json{{"location", range.location}, {"length", range.length}};
}

json styleNameOf(const vl::VLStylePtr &style) {
  return style ? optionalString(style->styleName()) : json(nullptr);
}

json linkJSON(const ns::Value &link) {
  if (link.isNil())
    return nullptr;
  if (auto url = link.as<ns::URL>())
    return utf8(url->absoluteString());
  return utf8(link.stringValue());
}

/// The run fields that matter to a reader of the JSON; runs equal in them are merged.
json runJSON(const ns::Dictionary &attributes) {
  json run;
  auto font = attributes.objectForKey(ns::FontAttributeName).as<ns::Font>();
  run["font"] = font ? utf8(font->fontName()) : json(nullptr);
  run["size"] = font ? json(font->pointSize()) : json(nullptr);
  const uint32_t traits = font ? font->traits() : 0;
  run["bold"] = (traits & ns::BoldFontMask) != 0;
  run["italic"] = (traits & ns::ItalicFontMask) != 0;
  run["underline"] = attributes.objectForKey(ns::UnderlineStyleAttributeName).integerValue();
  run["link"] = linkJSON(attributes.objectForKey(ns::LinkAttributeName));
  return run;
}

json runsJSON(const ns::AttributedString &text, uint64_t start, uint64_t end) {
  json runs = json::array();
  json last;
  uint64_t lastStart = start;
  for (uint64_t index = start; index < end;) {
    ns::Range effective;
    ns::ConstDictionaryPtr attributes = text.attributesAtIndex(index, &effective);
    const uint64_t runEnd = std::min(effective.max(), end);
    json run = runJSON(*attributes);
    if (!last.is_null() && run != last) {
      last["range"] = rangeJSON(ns::Range{lastStart, index - lastStart});
      runs.push_back(std::move(last));
      lastStart = index;
    }
    last = std::move(run);
    index = runEnd;
  }
  if (!last.is_null()) {
    last["range"] = rangeJSON(ns::Range{lastStart, end - lastStart});
    runs.push_back(std::move(last));
  }
  return runs;
}

json paragraphsJSON(const ns::AttributedString &text) {
  json paragraphs = json::array();
  std::u16string_view string = text.string();
  for (uint64_t start = 0; start < string.size();) {
    uint64_t end = 0, contentsEnd = 0;
    ns::getParagraphStart(string, nullptr, &end, &contentsEnd, ns::Range{start, 0});
    auto style =
        text.attribute(vl::VLParagraphStyleAttributeName, start, nullptr).as<vl::VLStyle>();
    json paragraph;
    paragraph["range"] = rangeJSON(ns::Range{start, end - start});
    paragraph["text"] = utf8(string.substr(start, contentsEnd - start));
    paragraph["style"] = style ? json{{"styleName", optionalString(style->styleName())},
                                      {"displayName", optionalString(style->displayName())}}
                               : json(nullptr);
    paragraph["runs"] = runsJSON(text, start, contentsEnd);
    paragraphs.push_back(std::move(paragraph));
    start = end;
  }
  return paragraphs;
}

/// The objects of type T held under `name`, in order of first appearance, each with the
/// range from its first run's start to its last run's end.
template <class T>
std::vector<std::pair<std::shared_ptr<T>, ns::Range>>
objectsInText(const ns::AttributedString &text, std::u16string_view name) {
  std::vector<std::pair<std::shared_ptr<T>, ns::Range>> found;
  std::unordered_map<const T *, size_t> indexes;
  text.enumerateAttribute(name, ns::Range{0, text.length()}, 0,
                          [&](const ns::Value &value, ns::Range range, bool &) {
                            auto object = value.as<T>();
                            if (!object)
                              return;
                            auto [it, added] = indexes.emplace(object.get(), found.size());
                            if (added) {
                              found.emplace_back(object, range);
                              return;
                            }
                            ns::Range &whole = found[it->second].second;
                            whole = ns::UnionRange(whole, range);
                          });
  return found;
}

json outlineJSON(const ns::AttributedString &text) {
  json entries = json::array();
  for (const auto &[entry, range] :
       objectsInText<vl::VLOutline>(text, vl::VLOutlineElementAttributeName))
    entries.push_back({{"identifier", optionalString(entry->identifier())},
                       {"title", optionalString(entry->title())},
                       {"level", entry->level()},
                       {"range", rangeJSON(range)}});
  return entries;
}

json markerJSON(const vl::VLSTextMarker &marker, ns::Range range, bool inText) {
  const ns::Value &represented = marker.representedObject();
  json markerText = nullptr;
  if (represented.isString())
    markerText = utf8(represented.string());
  else if (auto attributed = represented.as<ns::AttributedString>())
    markerText = utf8(attributed->string());
  return {{"identifier", optionalString(marker.identifier())},
          {"type", marker.textMarkerType()},
          {"location", marker.textMarkerLocation()},
          {"range", rangeJSON(range)},
          {"text", std::move(markerText)},
          {"inText", inText}};
}

/// Markers laid on the text, then those of the references that are not (yet) in it.
json markersJSON(const ns::AttributedString &text, const ns::DictionaryPtr &attributes) {
  json markers = json::array();
  std::vector<const vl::VLSTextMarker *> seen;
  for (const auto &[marker, range] :
       objectsInText<vl::VLSTextMarker>(text, vl::VLSTextMarkerAttributeName)) {
    markers.push_back(markerJSON(*marker, range, true));
    seen.push_back(marker.get());
  }
  if (!attributes)
    return markers;
  if (auto references = attributes->objectForKey(vl::VLReferencesDocumentAttribute).dictionary())
    for (const auto &[key, value] : *references) {
      auto marker = value.as<vl::VLSTextMarker>();
      if (marker && std::find(seen.begin(), seen.end(), marker.get()) == seen.end())
        markers.push_back(markerJSON(*marker, marker->range(), false));
    }
  return markers;
}

json stylesheetJSON(const vl::VLStylesheetPtr &sheet) {
  if (!sheet)
    return nullptr;
  json styles = json::array();
  for (const vl::VLStylePtr &style : sheet->styles())
    styles.push_back({{"styleName", optionalString(style->styleName())},
                      {"displayName", optionalString(style->displayName())},
                      {"type", style->isTextStyle() ? "text" : "paragraph"},
                      {"isDefault", style->isDefaultStyle()},
                      {"parent", styleNameOf(style->parentStyle())},
                      {"next", styleNameOf(style->nextStyle())},
                      {"tab", styleNameOf(style->tabStyle())}});
  return {{"displayName", optionalString(sheet->displayName())}, {"styles", std::move(styles)}};
}

json masterPagesJSON(const ns::Value &pages) {
  json list = json::array();
  if (auto dictionary = pages.dictionary())
    for (const auto &[key, value] : *dictionary) {
      auto page = value.as<vl::VLMasterPage>();
      list.push_back(
          {{"key", utf8(key)}, {"name", page ? optionalString(page->name()) : json(nullptr)}});
    }
  return list;
}

} // namespace

json jsonForValue(const ns::Value &value) {
  switch (value.kind()) {
  case ns::Value::Kind::Nil:
    return nullptr;
  case ns::Value::Kind::Bool:
    return value.boolValue();
  case ns::Value::Kind::Int:
    return value.integerValue();
  case ns::Value::Kind::UInt:
    return value.unsignedIntegerValue();
  case ns::Value::Kind::Double:
  case ns::Value::Kind::Float:
    return value.doubleValue();
  case ns::Value::Kind::String:
    return utf8(value.string());
  case ns::Value::Kind::Data:
    return "<" + std::to_string(value.data().length()) + " bytes>";
  case ns::Value::Kind::Date:
    return utf8(value.description());
  case ns::Value::Kind::Object:
    break;
  }
  if (auto dictionary = value.dictionary()) {
    json object = json::object();
    for (const auto &[key, item] : *dictionary)
      object[ns::toUTF8(key)] = jsonForValue(item);
    return object;
  }
  if (auto array = value.array()) {
    json list = json::array();
    for (const ns::Value &item : *array)
      list.push_back(jsonForValue(item));
    return list;
  }
  // Descriptions of other objects may hold addresses; the class name is stable.
  return std::string("<") + value.object()->className() + ">";
}

json documentJSON(const vl::VLDocumentPair &document) {
  static const ns::MutableAttributedString empty;
  const ns::AttributedString &text = document.attributedString ? *document.attributedString : empty;
  const ns::DictionaryPtr &attributes = document.documentAttributes;
  auto value = [&](std::u16string_view key) {
    return attributes ? attributes->objectForKey(key) : ns::Value();
  };

  json keys = json::array();
  if (attributes)
    for (const std::u16string &key : attributes->allKeys())
      keys.push_back(utf8(key));

  return {{"length", text.length()},
          {"paragraphs", paragraphsJSON(text)},
          {"outline", outlineJSON(text)},
          {"markers", markersJSON(text, attributes)},
          {"stylesheet",
           stylesheetJSON(value(vl::VLStylesheetDocumentAttribute).as<vl::VLStylesheet>())},
          {"masterPages", masterPagesJSON(value(vl::VLMasterPagesKey))},
          {"settings", jsonForValue(value(vl::VLSettingsDocumentAttribute))},
          {"documentAttributes", std::move(keys)}};
}

ns::Data jsonDataForDocument(const vl::VLDocumentPair &document) {
  std::string text = documentJSON(document).dump(2, ' ', false, json::error_handler_t::replace);
  text.push_back('\n');
  return ns::Data(text.data(), text.size());
}

} // namespace vlconvert
