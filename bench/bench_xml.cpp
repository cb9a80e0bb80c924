// XML documents: building, pretty printing and parsing a screenplay-sized tree, to show each
// stays linear in the number of paragraphs.
#include "ns/XMLDocument.h"

#include <benchmark/benchmark.h>

#include <string>

using namespace vl::ns;

namespace {

/// An FDX-shaped document: one Paragraph with a Type and a Text run per paragraph, plus an
/// empty element after each twentieth so that empty-element printing is exercised.
XMLDocument screenplay(int64_t paragraphs) {
  XMLDocument doc = XMLDocument::create();
  doc.setCharacterEncoding(u"UTF-8");
  doc.setStandalone(false);
  XMLElement root = XMLElement::create(u"FinalDraft");
  root.setAttribute(u"DocumentType", u"Script");
  root.setAttribute(u"Version", u"1");
  doc.setRootElement(root);
  XMLElement content = XMLElement::create(u"Content");
  root.addChild(content);
  for (int64_t i = 0; i < paragraphs; ++i) {
    XMLElement paragraph = XMLElement::create(u"Paragraph");
    paragraph.setAttribute(u"Type", i % 3 ? u"Action" : u"Character");
    content.addChild(paragraph);
    XMLElement text = XMLElement::create(u"Text");
    text.setStringValue(u"She opens the door & steps into the <dark> hall, line " +
                        std::u16string(1, char16_t(u'a' + i % 26)));
    paragraph.addChild(text);
    if (i % 20 == 0)
      paragraph.addChild(XMLElement::create(u"Tabstops"));
  }
  return doc;
}

void BM_XMLBuild(benchmark::State &state) {
  for (auto _ : state) {
    XMLDocument doc = screenplay(state.range(0));
    benchmark::DoNotOptimize(doc.xmlDoc());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_XMLPrettyPrint(benchmark::State &state) {
  XMLDocument doc = screenplay(state.range(0));
  size_t bytes = 0;
  for (auto _ : state) {
    Data data = doc.XMLDataWithOptions(XMLNodePrettyPrint | XMLNodeCompactEmptyElement);
    bytes = data.length();
    benchmark::DoNotOptimize(data.bytes());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}

void BM_XMLParse(benchmark::State &state) {
  std::string bytes = screenplay(state.range(0)).XMLUTF8WithOptions(XMLNodePrettyPrint);
  for (auto _ : state) {
    XMLDocument doc = XMLDocument::createWithData(bytes);
    benchmark::DoNotOptimize(doc.xmlDoc());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes.size()));
}

} // namespace

BENCHMARK(BM_XMLBuild)->Arg(5000)->Arg(20000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_XMLPrettyPrint)->Arg(5000)->Arg(20000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_XMLParse)->Arg(5000)->Arg(20000)->Unit(benchmark::kMillisecond);
