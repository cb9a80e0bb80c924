// Loading a Fountain script through either parser, and printing it back.
#include "converters/fountain/FNScript.h"

#include "converters/fountain/FastFountainParser.h"
#include "converters/fountain/FountainParser.h"
#include "converters/fountain/FountainWriter.h"
#include "ns/FileManager.h"
#include "ns/Path.h"
#include "ns/String.h"

namespace vl {

namespace {
// The parser argument that asks for FountainParser; any other value means FastFountainParser.
constexpr int32_t RegexParser = 1;
} // namespace

FNScript::FNScript() : titlePage_(ns::Array::create()) {}

FNScriptPtr FNScript::createWithFile(std::u16string_view path) {
  auto script = std::make_shared<FNScript>();
  script->loadFile(path);
  return script;
}

FNScriptPtr FNScript::createWithString(std::u16string_view string) {
  auto script = std::make_shared<FNScript>();
  script->loadString(string);
  return script;
}

FNScriptPtr FNScript::createWithFile(std::u16string_view path, int32_t parser) {
  auto script = std::make_shared<FNScript>();
  script->loadFile(path, parser);
  return script;
}

FNScriptPtr FNScript::createWithString(std::u16string_view string, int32_t parser) {
  auto script = std::make_shared<FNScript>();
  script->loadString(string, parser);
  return script;
}

void FNScript::setTitlePage(ns::ArrayPtr titlePage) {
  titlePage_ = titlePage ? std::move(titlePage) : ns::Array::create();
}

void FNScript::loadFile(std::u16string_view path) {
  filename_ = ns::lastPathComponent(path);
  FastFountainParserPtr parser = FastFountainParser::createWithFile(path);
  elements_ = std::move(parser->elements());
  titlePage_ = parser->titlePage();
}

void FNScript::loadString(std::u16string_view string) {
  filename_.reset();
  FastFountainParserPtr parser = FastFountainParser::createWithString(string);
  elements_ = std::move(parser->elements());
  titlePage_ = parser->titlePage();
}

void FNScript::loadFile(std::u16string_view path, int32_t parser) {
  if (parser != RegexParser) {
    loadFile(path);
    return;
  }
  filename_ = ns::lastPathComponent(path);
  elements_ = FountainParser::parseBodyOfFile(path).value_or(FNElementArray{});
  setTitlePage(FountainParser::parseTitlePageOfFile(path));
}

void FNScript::loadString(std::u16string_view string, int32_t parser) {
  if (parser != RegexParser) {
    loadString(string);
    return;
  }
  filename_.reset();
  elements_ = FountainParser::parseBodyOfString(string);
  titlePage_ = FountainParser::parseTitlePageOfString(string);
}

std::u16string FNScript::stringFromDocument() const {
  return FountainWriter::documentFromScript(*this);
}

std::u16string FNScript::stringFromTitlePage() const {
  return FountainWriter::titlePageFromScript(*this);
}

std::u16string FNScript::stringFromBody() const {
  return FountainWriter::bodyFromScript(*this);
}

std::u16string FNScript::description() const {
  return stringFromDocument();
}

bool FNScript::writeToFile(std::u16string_view path) const {
  ns::Data bytes = ns::Data::fromString(ns::toUTF8(stringFromDocument()));
  return ns::FileManager::defaultManager()->createFileAtPath(path, bytes);
}

bool FNScript::writeToURL(const ns::URLPtr &url) const {
  if (!url || !url->isFileURL())
    return false;
  std::u16string path = url->path();
  return !path.empty() && writeToFile(path);
}

} // namespace vl
