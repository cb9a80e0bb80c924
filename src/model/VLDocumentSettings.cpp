// The settings tree: completion lists, outline level settings and key path access.
#include "model/VLDocumentSettings.h"

#include "model/VLConstants.h"
#include "model/VLLocalization.h"
#include "model/VLStylesheet.h"

namespace vl {

namespace {

struct CompletionList {
  std::u16string_view key;
  std::vector<std::u16string> VLCompletionLists::*member;
};

constexpr CompletionList completionListsInOrder[] = {
    {VLCharactersCompletionsKey, &VLCompletionLists::characters},
    {VLExtensionsCompletionsKey, &VLCompletionLists::extensions},
    {VLSceneIntrosCompletionsKey, &VLCompletionLists::sceneIntros},
    {VLLocationsCompletionsKey, &VLCompletionLists::locations},
    {VLTimesCompletionsKey, &VLCompletionLists::times},
    {VLTransitionsCompletionsKey, &VLCompletionLists::transitions},
};

} // namespace

ns::ArrayPtr settingsDictionaryArrayWithStrings(const std::vector<std::u16string> &strings) {
  std::vector<ns::Value> entries;
  entries.reserve(strings.size());
  for (const std::u16string &string : strings)
    entries.emplace_back(ns::Dictionary::create({{std::u16string(VLStringValueKey), string}}));
  return ns::Array::create(std::move(entries));
}

std::vector<std::u16string> stringsFromSettingsDictionaryArray(const ns::Value &array) {
  std::vector<std::u16string> strings;
  if (ns::ArrayPtr entries = array.array())
    for (const ns::Value &entry : *entries)
      if (ns::DictionaryPtr dictionary = entry.dictionary())
        if (const ns::Value *string = dictionary->find(VLStringValueKey);
            string && string->isString())
          strings.push_back(string->string());
  return strings;
}

ns::DictionaryPtr completionsDictionary(const VLCompletionLists &lists) {
  auto completions = ns::Dictionary::create();
  for (const CompletionList &list : completionListsInOrder)
    completions->setObject(settingsDictionaryArrayWithStrings(lists.*list.member), list.key);
  return completions;
}

VLCompletionLists completionListsFromDictionary(const ns::Value &completions) {
  VLCompletionLists lists;
  if (ns::DictionaryPtr dictionary = completions.dictionary())
    for (const CompletionList &list : completionListsInOrder)
      lists.*list.member = stringsFromSettingsDictionaryArray(dictionary->objectForKey(list.key));
  return lists;
}

ns::DictionaryPtr settingsWithCompletions(const VLCompletionLists &lists) {
  auto documentSettings = ns::Dictionary::create();
  documentSettings->setObject(completionsDictionary(lists), VLCompletionsKey);
  auto settings = ns::Dictionary::create();
  settings->setObject(std::move(documentSettings), VLDocumentSettingsKey);
  return settings;
}

ns::DictionaryPtr outlineSettingsWithLevelSettings(ns::ArrayPtr levels) {
  auto outlineSettings = ns::Dictionary::create();
  outlineSettings->setObject(std::move(levels), VLOutlineLevelSettingsKey);
  return outlineSettings;
}

ns::Value valueAtKeyPath(const ns::ConstDictionaryPtr &dictionary, std::u16string_view keyPath) {
  const ns::Dictionary *level = dictionary.get();
  while (level) {
    size_t dot = keyPath.find(u'.');
    const ns::Value &value = level->objectForKey(keyPath.substr(0, dot));
    if (dot == std::u16string_view::npos)
      return value;
    keyPath.remove_prefix(dot + 1);
    level = dynamic_cast<const ns::Dictionary *>(value.object().get());
  }
  return {};
}

void setValueAtKeyPath(ns::Dictionary &dictionary, ns::Value value, std::u16string_view keyPath) {
  ns::Dictionary *level = &dictionary;
  for (size_t dot = keyPath.find(u'.'); dot != std::u16string_view::npos;
       dot = keyPath.find(u'.')) {
    std::u16string_view key = keyPath.substr(0, dot);
    ns::DictionaryPtr next = level->objectForKey(key).dictionary();
    if (!next) {
      next = ns::Dictionary::create();
      level->setObject(next, key);
    }
    level = next.get();
    keyPath.remove_prefix(dot + 1);
  }
  level->setObject(std::move(value), keyPath);
}

ns::ArrayPtr outlineLevelSettingsForStylesheet(const VLStylesheet *stylesheet) {
  if (!stylesheet)
    return nullptr;
  VLStylePtr sceneHeading = stylesheet->styleForDisplayName(u"Scene Heading");
  if (!sceneHeading)
    return nullptr;
  auto level = ns::Dictionary::create();
  level->setObject(localizedString(u"Scene"), VLOutlineLevelDisplayNameKey);
  if (sceneHeading->styleName())
    level->setObject(*sceneHeading->styleName(), VLOutlineLevelDefaultStyleKey);
  return ns::Array::create({level});
}

bool isScreenplayDocument(const ns::ConstDictionaryPtr &documentAttributes) {
  ns::Value flag = valueAtKeyPath(documentAttributes, VLIsScreenplayKeyPath);
  if (!flag.isNil())
    return flag.boolValue();
  if (!documentAttributes)
    return false;
  auto stylesheet =
      documentAttributes->objectForKey(VLStylesheetDocumentAttribute).as<VLStylesheet>();
  return stylesheet && stylesheet->styleForName(u"Scene_20_Heading");
}

} // namespace vl
