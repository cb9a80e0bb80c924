// Benchmarks of writing styled screenplays of 120 and 600 pages back to Fountain.
#include "converters/fountain/FNScript.h"
#include "converters/fountain/VLSFountainWriter.h"
#include "model/VLConstants.h"
#include "model/VLMemoryRDFModel.h"
#include "model/VLOutline.h"
#include "model/VLStyle.h"
#include "model/VLStylesheet.h"
#include "ns/AttributeNames.h"
#include "ns/Font.h"
#include "ns/FontManager.h"
#include "ns/MutableAttributedString.h"
#include "ns/String.h"
#include "support/Screenplay.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>
#include <string>

namespace {

using namespace vl;

struct StyledScreenplay {
  ns::MutableAttributedStringPtr text;
  ns::DictionaryPtr attributes;
};

// Appends `line` with its emphasis marks turned into fonts and underlining, as a reader does.
void appendMarkedUp(ns::MutableAttributedString &text, std::u16string_view line,
                    const ns::DictionaryPtr &attributes) {
  auto &fonts = *ns::FontManager::sharedFontManager();
  auto base = attributes->objectForKey(ns::FontAttributeName).as<ns::Font>();
  uint32_t traits = 0;
  bool underlined = false;
  std::u16string run;
  auto flush = [&] {
    if (run.empty())
      return;
    auto runAttributes = std::static_pointer_cast<ns::Dictionary>(attributes->copy());
    if (traits)
      runAttributes->setObject(fonts.convertFontToHaveTrait(base, traits), ns::FontAttributeName);
    if (underlined)
      runAttributes->setObject(1, ns::UnderlineStyleAttributeName);
    text.appendAttributedString(ns::AttributedString(run, runAttributes));
    run.clear();
  };
  for (size_t i = 0; i < line.size(); ++i) {
    if (line[i] == u'*') {
      size_t stars = 1;
      while (i + stars < line.size() && line[i + stars] == u'*' && stars < 3)
        ++stars;
      flush();
      traits ^= stars == 3 ? 3 : stars == 2 ? 2 : 1;
      i += stars - 1;
    } else if (line[i] == u'_') {
      flush();
      underlined = !underlined;
    } else {
      run.push_back(line[i]);
    }
  }
  flush();
}

// The generated screenplay as styled text in the default screenplay stylesheet: one
// paragraph an element, emphasis as fonts, an outline entry a scene with its synopsis in a
// metadata model.
StyledScreenplay styledScreenplay(int pages) {
  auto script = FNScript::createWithString(bench::fountainScreenplay(pages));
  auto sheet = VLStylesheet::defaultScreenplayStylesheet();
  std::map<std::u16string, ns::DictionaryPtr, std::less<>> attributesByType;
  for (std::u16string_view type :
       {FNElementTypeSceneHeading, FNElementTypeAction, FNElementTypeCharacter,
        FNElementTypeParenthetical, FNElementTypeDialogue, FNElementTypeTransition})
    attributesByType.emplace(std::u16string(type), sheet->styleForDisplayName(type)->attributes());

  auto text = ns::MutableAttributedString::create();
  auto model = VLMemoryRDFModel::create();
  VLOutlinePtr scene;
  int scenes = 0;
  auto closeScene = [&] {
    if (scene) {
      ns::Range range{scene->range().location, text->length() - scene->range().location};
      scene->setRange(range);
      text->addAttribute(VLOutlineElementAttributeName, scene, range);
    }
  };
  for (const FNElementPtr &element : script->elements()) {
    auto found = attributesByType.find(element->elementType());
    if (found == attributesByType.end()) {
      if (element->elementType() == FNElementTypeSynopsis && scene)
        model->resourceForURI(u"#" + *scene->identifier())
            ->setValueForKey(ns::Value(element->elementText()), u"summary");
      continue;
    }
    if (element->elementType() == FNElementTypeSceneHeading) {
      closeScene();
      scene = VLOutline::entryWithRange({text->length(), 0}, 0);
      scene->setIdentifier(u"scene" + ns::u16(std::to_string(++scenes)));
    }
    std::u16string line = element->elementText();
    std::replace(line.begin(), line.end(), u'\n', u'\u2028');
    line.push_back(u'\n');
    appendMarkedUp(*text, line, found->second);
  }
  closeScene();
  auto attributes =
      ns::Dictionary::create({{std::u16string(VLStylesheetDocumentAttribute), sheet},
                              {std::u16string(VLRDFMetadataDocumentAttribute), model}});
  return {text, attributes};
}

void BM_FountainWrite(benchmark::State &state) {
  StyledScreenplay screenplay = styledScreenplay(static_cast<int>(state.range(0)));
  size_t bytes = 0;
  for (auto _ : state) {
    auto writer = VLSFountainWriter::create(screenplay.text);
    auto data =
        writer->dataFromRange({0, screenplay.text->length()}, screenplay.attributes, nullptr);
    bytes = data->size();
    benchmark::DoNotOptimize(data);
  }
  state.counters["bytes"] = static_cast<double>(bytes);
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes));
}
BENCHMARK(BM_FountainWrite)->Arg(120)->Arg(600)->Unit(benchmark::kMillisecond);

} // namespace
