// The settings tree of the document attributes: its keys, building it (completion lists,
// outline level settings) and reading it by key path with absent levels read as nil.
#pragma once

#include "ns/Array.h"
#include "ns/Dictionary.h"
#include "ns/Value.h"

#include <string>
#include <string_view>
#include <vector>

namespace vl {

class VLStylesheet;

// Keys of the tree under "settings" (VLSettingsDocumentAttribute).
inline constexpr std::u16string_view VLOutlineSettingsKey = u"outlineSettings";
inline constexpr std::u16string_view VLOutlineLevelSettingsKey = u"outlineLevelSettings";
inline constexpr std::u16string_view VLDocumentSettingsKey = u"documentSettings";
inline constexpr std::u16string_view VLCompletionsKey = u"completions";
inline constexpr std::u16string_view VLDefaultContentStyleKey = u"defaultContentStyle";
inline constexpr std::u16string_view VLSelectedRangeKey = u"selectedRange";
inline constexpr std::u16string_view VLIsScreenplayKey = u"isScreenplay";
inline constexpr std::u16string_view VLShouldHideBodyTextEntriesInOutlineKey =
    u"shouldHideBodyTextEntriesInOutline";

// The six completion lists under "completions", in their usual order.
inline constexpr std::u16string_view VLCharactersCompletionsKey = u"characters";
inline constexpr std::u16string_view VLExtensionsCompletionsKey = u"extensions";
inline constexpr std::u16string_view VLSceneIntrosCompletionsKey = u"sceneIntros";
inline constexpr std::u16string_view VLLocationsCompletionsKey = u"locations";
inline constexpr std::u16string_view VLTimesCompletionsKey = u"times";
inline constexpr std::u16string_view VLTransitionsCompletionsKey = u"transitions";
/// The one key of each completion entry, so that "characters.stringValue" reads a list.
inline constexpr std::u16string_view VLStringValueKey = u"stringValue";

// Keys of one outline level's dictionary.
inline constexpr std::u16string_view VLOutlineLevelDisplayNameKey = u"displayName";
inline constexpr std::u16string_view VLOutlineLevelDefaultStyleKey = u"defaultStyle";

// Full key paths from the document attribute dictionary.
inline constexpr std::u16string_view VLSelectedRangeKeyPath =
    u"settings.documentSettings.selectedRange";
inline constexpr std::u16string_view VLCompletionsKeyPath =
    u"settings.documentSettings.completions";
inline constexpr std::u16string_view VLIsScreenplayKeyPath =
    u"settings.documentSettings.isScreenplay";

/// The six completion lists as plain strings.
struct VLCompletionLists {
  std::vector<std::u16string> characters;
  std::vector<std::u16string> extensions;
  std::vector<std::u16string> sceneIntros;
  std::vector<std::u16string> locations;
  std::vector<std::u16string> times;
  std::vector<std::u16string> transitions;
};

/// A mutable array of mutable one-key dictionaries {"stringValue": string}, in order.
ns::ArrayPtr settingsDictionaryArrayWithStrings(const std::vector<std::u16string> &strings);
/// The strings of such an array, in order; entries without a string are skipped, and
/// anything that is not an array gives none.
std::vector<std::u16string> stringsFromSettingsDictionaryArray(const ns::Value &array);

/// A mutable dictionary of the six lists under their keys, each made by
/// settingsDictionaryArrayWithStrings (empty lists included).
ns::DictionaryPtr completionsDictionary(const VLCompletionLists &lists);
/// The lists of a completions dictionary; absent lists are empty.
VLCompletionLists completionListsFromDictionary(const ns::Value &completions);

/// A new settings tree {"documentSettings": {"completions": ...}} holding the six lists.
ns::DictionaryPtr settingsWithCompletions(const VLCompletionLists &lists);
/// {"outlineLevelSettings": levels}, to be stored under "outlineSettings".
ns::DictionaryPtr outlineSettingsWithLevelSettings(ns::ArrayPtr levels);

/// The value at the dotted `keyPath` of `dictionary`; nil when any level is absent or is
/// not a dictionary. A null dictionary answers nil.
ns::Value valueAtKeyPath(const ns::ConstDictionaryPtr &dictionary, std::u16string_view keyPath);
/// Stores `value` at the dotted `keyPath` of `dictionary`, making the missing levels as
/// mutable dictionaries and replacing a level that is not a dictionary. Nil removes the last
/// key.
void setValueAtKeyPath(ns::Dictionary &dictionary, ns::Value value, std::u16string_view keyPath);

/// The outline levels of a screenplay: a one-element mutable array of the mutable
/// dictionary {"displayName": localized "Scene", "defaultStyle": the style name} for the
/// style shown as "Scene Heading"; nil when the sheet (or its argument) has no such style.
ns::ArrayPtr outlineLevelSettingsForStylesheet(const VLStylesheet *stylesheet);

/// Whether the document is a screenplay: "settings.documentSettings.isScreenplay" when it is
/// there, else whether the stylesheet under VLStylesheetDocumentAttribute has a style named
/// "Scene_20_Heading".
bool isScreenplayDocument(const ns::ConstDictionaryPtr &documentAttributes);

} // namespace vl
