// The settings tree: completion lists, key paths over absent levels, outline level settings,
// and the screenplay test.
#include "model/VLConstants.h"
#include "model/VLDocumentSettings.h"
#include "model/VLStylesheet.h"
#include "ns/Bundle.h"

#include <gtest/gtest.h>

using namespace vl;
using ns::Value;

TEST(VLDocumentSettings, CompletionListsAreOneKeyDictionariesReadByKeyPath) {
  VLCompletionLists lists;
  lists.characters = {u"ANNA", u"BEN"};
  lists.transitions = {u"CUT TO:"};
  auto settings = settingsWithCompletions(lists);
  auto attributes = ns::Dictionary::create({{u"settings", settings}});

  Value completions = valueAtKeyPath(attributes, VLCompletionsKeyPath);
  ASSERT_TRUE(completions.dictionary());
  EXPECT_EQ(completions.dictionary()->count(), 6u) << "every list is there, empty or not";
  EXPECT_EQ(completions.object()->valueForKeyPath(u"characters.stringValue"),
            Value(ns::Array::create({u"ANNA", u"BEN"})));
  EXPECT_EQ(completions.dictionary()->objectForKey(u"locations"), Value(ns::Array::create()));

  VLCompletionLists back = completionListsFromDictionary(completions);
  EXPECT_EQ(back.characters, lists.characters);
  EXPECT_EQ(back.transitions, lists.transitions);
  EXPECT_TRUE(back.times.empty());
  EXPECT_TRUE(completionListsFromDictionary(Value(u"not a dictionary")).characters.empty());
  EXPECT_EQ(stringsFromSettingsDictionaryArray(
                ns::Array::create({ns::Dictionary::create({{u"stringValue", 3}}),
                                   ns::Dictionary::create({{u"stringValue", u"x"}})})),
            std::vector<std::u16string>{u"x"});
}

TEST(VLDocumentSettings, AbsentLevelsReadAsNil) {
  auto attributes = ns::Dictionary::create({{u"settings", ns::Dictionary::create()}});
  EXPECT_TRUE(valueAtKeyPath(attributes, VLSelectedRangeKeyPath).isNil());
  EXPECT_TRUE(valueAtKeyPath(nullptr, VLSelectedRangeKeyPath).isNil());
  attributes->setObject(u"a string", u"settings");
  EXPECT_TRUE(valueAtKeyPath(attributes, VLIsScreenplayKeyPath).isNil());

  // Writing makes the missing levels and keeps those there; nil removes.
  auto settings = ns::Dictionary::create();
  auto tree = ns::Dictionary::create({{u"settings", settings}});
  setValueAtKeyPath(*settings, u"{3, 4}", u"documentSettings.selectedRange");
  setValueAtKeyPath(*settings, true, u"documentSettings.isScreenplay");
  EXPECT_EQ(valueAtKeyPath(tree, VLSelectedRangeKeyPath), Value(u"{3, 4}"));
  EXPECT_EQ(valueAtKeyPath(tree, VLIsScreenplayKeyPath), Value(true));
  setValueAtKeyPath(*settings, Value(), u"documentSettings.isScreenplay");
  EXPECT_TRUE(valueAtKeyPath(tree, VLIsScreenplayKeyPath).isNil());
}

TEST(VLDocumentSettings, OutlineLevelSettingsNeedASceneHeading) {
  EXPECT_EQ(outlineLevelSettingsForStylesheet(nullptr), nullptr);
  auto novel = VLStylesheet::defaultNovelStylesheet();
  EXPECT_EQ(outlineLevelSettingsForStylesheet(novel.get()), nullptr);

  ns::Bundle::mainBundle()->setStringsTable(
      u"", ns::Dictionary::create({{u"Scene", Value(u"Sc\u00e8ne")}}));
  auto screenplay = VLStylesheet::defaultScreenplayStylesheet();
  ns::ArrayPtr levels = outlineLevelSettingsForStylesheet(screenplay.get());
  ns::Bundle::resetMainBundle();
  ASSERT_TRUE(levels);
  ASSERT_EQ(levels->count(), 1u);
  auto level = levels->objectAtIndex(0).dictionary();
  EXPECT_EQ(level->objectForKey(u"displayName"), Value(u"Sc\u00e8ne"));
  EXPECT_EQ(level->objectForKey(u"defaultStyle"), Value(u"Scene_20_Heading"));

  auto settings = ns::Dictionary::create();
  settings->setObject(outlineSettingsWithLevelSettings(levels), VLOutlineSettingsKey);
  EXPECT_EQ(settings->valueForKeyPath(u"outlineSettings.outlineLevelSettings.defaultStyle"),
            Value(ns::Array::create({u"Scene_20_Heading"})));
}

TEST(VLDocumentSettings, ScreenplayFlagWinsOverTheStylesheet) {
  auto screenplay = VLStylesheet::defaultScreenplayStylesheet();
  auto attributes =
      ns::Dictionary::create({{std::u16string(VLStylesheetDocumentAttribute), screenplay}});
  EXPECT_TRUE(isScreenplayDocument(attributes));
  auto settings = ns::Dictionary::create();
  setValueAtKeyPath(*settings, false, u"documentSettings.isScreenplay");
  attributes->setObject(settings, VLSettingsDocumentAttribute);
  EXPECT_FALSE(isScreenplayDocument(attributes));
  attributes->setObject(VLStylesheet::defaultStylesheet(), VLStylesheetDocumentAttribute);
  setValueAtKeyPath(*settings, true, u"documentSettings.isScreenplay");
  EXPECT_TRUE(isScreenplayDocument(attributes));
  settings->removeAllObjects();
  EXPECT_FALSE(isScreenplayDocument(attributes));
  EXPECT_FALSE(isScreenplayDocument(nullptr));
}
