// XMLDocument: safe parsing, the declaration's fields, the DTD and the root element.
#include "ns/XMLDocument.h"

#include "ns/Assert.h"
#include "ns/String.h"
#include "ns/XMLOwner.h"
#include "ns/XMLTree.h"

#include <libxml/entities.h>
#include <libxml/hash.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>

#include <algorithm>
#include <climits>
#include <memory>
#include <unordered_map>

namespace vl::ns {

using detail::stringFrom;
using detail::walkSubtree;
using detail::xmlChars;
using detail::XMLOwner;

namespace {

/// The first error of a parse: the first fatal one when there is one, else the first error.
struct ParseErrors {
  bool seen = false;
  int level = 0;
  int code = 0;
  int line = 0;
  int column = 0;
  std::string message;
};

// The parser reports through a callback without a context of ours; the parse in progress on this
// thread is the one reporting.
thread_local ParseErrors *currentParseErrors = nullptr;

void captureParseError(void *, xmlErrorPtr error) noexcept {
  ParseErrors *errors = currentParseErrors;
  if (!errors || !error || error->level < XML_ERR_ERROR)
    return;
  if (errors->seen && (errors->level == XML_ERR_FATAL || error->level != XML_ERR_FATAL))
    return;
  errors->seen = true;
  errors->level = error->level;
  errors->code = error->code;
  errors->line = error->line;
  errors->column = error->int2;
  try {
    errors->message = error->message ? error->message : "";
  } catch (...) {
    errors->message.clear(); // out of memory: the code and line still tell what happened
  }
  while (!errors->message.empty() &&
         (errors->message.back() == '\n' || errors->message.back() == ' '))
    errors->message.pop_back();
}

ErrorPtr parseError(const ParseErrors &errors) {
  std::u16string description = u"Line " + u16(std::to_string(errors.line));
  if (errors.column > 0)
    description += u", column " + u16(std::to_string(errors.column));
  description += u": " + fromUTF8(errors.message);
  return Error::errorWithDescription(XMLParserErrorDomain, errors.code, description);
}

uint64_t weigh(xmlNodePtr root, bool countText, uint64_t limit,
               std::unordered_map<xmlEntityPtr, uint64_t> &sizes);

/// The bytes of text an internal entity stands for, its own references expanded.
uint64_t entitySize(xmlEntityPtr entity, uint64_t limit,
                    std::unordered_map<xmlEntityPtr, uint64_t> &sizes) {
  auto known = sizes.find(entity);
  if (known != sizes.end())
    return known->second;
  sizes[entity] = limit + 1; // a reference back into itself counts as too much
  uint64_t size = 0;
  if (!entity->children)
    size = entity->length > 0 ? static_cast<uint64_t>(entity->length) : 0;
  for (xmlNodePtr node = entity->children; node && size <= limit; node = node->next)
    size += weigh(node, true, limit, sizes);
  sizes[entity] = size;
  return size;
}

/// The bytes entity references in the subtree of `root` (attribute values included) stand for,
/// plus its text when `countText`; stops once past `limit`.
uint64_t weigh(xmlNodePtr root, bool countText, uint64_t limit,
               std::unordered_map<xmlEntityPtr, uint64_t> &sizes) {
  uint64_t total = 0;
  auto add = [&](xmlNodePtr node) {
    if (node->type == XML_ENTITY_REF_NODE) {
      xmlEntityPtr entity = xmlGetDocEntity(node->doc, node->name);
      if (entity && entity->etype == XML_INTERNAL_GENERAL_ENTITY)
        total += entitySize(entity, limit, sizes);
    } else if (countText && (node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE)) {
      total += node->content ? static_cast<uint64_t>(xmlStrlen(node->content)) : 0;
    }
  };
  walkSubtree(root, [&](xmlNodePtr node) {
    add(node);
    if (node->type == XML_ELEMENT_NODE)
      for (xmlAttrPtr attr = node->properties; attr; attr = attr->next)
        for (xmlNodePtr part = attr->children; part; part = part->next)
          add(part);
    return total <= limit;
  });
  return total;
}

/// Entity references stay references in the tree, so a document of a few kilobytes can stand
/// for gigabytes of text that stringValue would build. Such documents are refused up front, by
/// libxml2's own rule for substituted entities: at most ten times the input.
bool entityExpansionWithinLimits(xmlDocPtr doc, size_t inputLength) {
  if (!doc->intSubset || !doc->intSubset->entities ||
      xmlHashSize(static_cast<xmlHashTablePtr>(doc->intSubset->entities)) <= 0)
    return true;
  const uint64_t limit = std::max<uint64_t>(uint64_t{10} * inputLength, uint64_t{1} << 20);
  std::unordered_map<xmlEntityPtr, uint64_t> sizes;
  uint64_t total = 0;
  for (xmlNodePtr child = doc->children; child && total <= limit; child = child->next)
    if (child->type == XML_ELEMENT_NODE)
      total += weigh(child, false, limit, sizes);
  return total <= limit;
}

struct ParserContextDeleter {
  void operator()(xmlParserCtxtPtr context) const { xmlFreeParserCtxt(context); }
};

/// Parses with external loading off and libxml2's expansion limits on; null with `error` filled
/// on failure.
xmlDocPtr parse(std::string_view bytes, uint64_t options, bool bytesAreUTF8, ErrorPtr *error) {
  static const bool initialized = (xmlInitParser(), true);
  (void)initialized;
  ParseErrors errors;
  if (bytes.empty() || bytes.size() > static_cast<size_t>(INT_MAX)) {
    errors.code = bytes.empty() ? XML_ERR_DOCUMENT_EMPTY : XML_ERR_INTERNAL_ERROR;
    errors.line = 1;
    errors.message = bytes.empty() ? "Document is empty" : "Document is too large";
    setError(error, parseError(errors));
    return nullptr;
  }
  std::unique_ptr<xmlParserCtxt, ParserContextDeleter> context(
      xmlCreateMemoryParserCtxt(bytes.data(), static_cast<int>(bytes.size())));
  if (!context) {
    errors.code = XML_ERR_NO_MEMORY;
    errors.message = "Out of memory";
    setError(error, parseError(errors));
    return nullptr;
  }
  // Never XML_PARSE_NOENT, XML_PARSE_DTDLOAD or XML_PARSE_HUGE: those load external entities or
  // lift the limits that stop entity bombs.
  int parseOptions = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;
  bool keepBlanks = (options & XMLNodePreserveWhitespace) != 0;
  if (!keepBlanks)
    parseOptions |= XML_PARSE_NOBLANKS;
  if (bytesAreUTF8)
    parseOptions |= XML_PARSE_IGNORE_ENC;
  xmlCtxtUseOptions(context.get(), parseOptions);
  // Process-wide defaults other code may have changed feed these fields; pin them.
  context->replaceEntities = 0;
  context->loadsubset = 0;
  context->validate = 0;
  if (keepBlanks) {
    context->keepBlanks = 1;
    context->sax->ignorableWhitespace = context->sax->characters;
  }
  context->sax->serror = captureParseError;
  if (bytesAreUTF8)
    xmlSwitchEncoding(context.get(), XML_CHAR_ENCODING_UTF8);

  ParseErrors *outer = currentParseErrors;
  currentParseErrors = &errors;
  xmlParseDocument(context.get());
  currentParseErrors = outer;

  xmlDocPtr doc = context->myDoc;
  context->myDoc = nullptr;
  if (doc && context->wellFormed) {
    if (entityExpansionWithinLimits(doc, bytes.size()))
      return doc;
    errors.seen = true;
    errors.code = XML_ERR_ENTITY_LOOP;
    errors.line = 1;
    errors.column = 0;
    errors.message = "Entity references expand to more than ten times the document";
  }
  xmlFreeDoc(doc);
  if (!errors.seen) {
    errors.code = XML_ERR_INTERNAL_ERROR;
    errors.line = context->input ? context->input->line : 0;
    errors.message = "The document could not be parsed";
  }
  setError(error, parseError(errors));
  return nullptr;
}

} // namespace

XMLDocument::XMLDocument(const XMLNode &node)
    : XMLNode(node.kind() == XMLDocumentKind ? node : XMLNode()) {}

XMLDocument XMLDocument::create() {
  return adoptXMLDoc(xmlNewDoc(BAD_CAST "1.0"));
}

XMLDocument XMLDocument::createWithRootElement(const XMLElement &root) {
  XMLDocument doc = create();
  doc.setRootElement(root);
  return doc;
}

XMLDocument XMLDocument::createWithData(const Data &data, uint64_t options, ErrorPtr *error) {
  return createWithData(data.view(), options, error);
}

XMLDocument XMLDocument::createWithData(std::string_view bytes, uint64_t options, ErrorPtr *error) {
  return adoptXMLDoc(parse(bytes, options, false, error));
}

XMLDocument XMLDocument::createWithXMLString(std::u16string_view xml, uint64_t options,
                                             ErrorPtr *error) {
  std::string bytes = toUTF8(xml);
  return adoptXMLDoc(parse(bytes, options, true, error));
}

XMLDocument XMLDocument::adoptXMLDoc(_xmlDoc *doc) {
  if (!doc)
    return {};
  return XMLDocument(XMLOwner::create(doc), reinterpret_cast<xmlNodePtr>(doc));
}

// The XML declaration.

std::u16string XMLDocument::version() const {
  if (!node_)
    return {};
  const xmlChar *version = xmlDoc()->version;
  return version ? stringFrom(version) : std::u16string(u"1.0");
}

void XMLDocument::setVersion(std::u16string_view version) {
  if (!node_)
    return;
  xmlFree(const_cast<xmlChar *>(xmlDoc()->version));
  xmlDoc()->version = version.empty() ? nullptr : xmlStrdup(xmlChars(toUTF8(version)));
}

std::u16string XMLDocument::characterEncoding() const {
  return node_ ? stringFrom(xmlDoc()->encoding) : std::u16string();
}

void XMLDocument::setCharacterEncoding(std::u16string_view encoding) {
  if (!node_)
    return;
  xmlFree(const_cast<xmlChar *>(xmlDoc()->encoding));
  xmlDoc()->encoding = encoding.empty() ? nullptr : xmlStrdup(xmlChars(toUTF8(encoding)));
}

bool XMLDocument::isStandalone() const {
  return node_ && xmlDoc()->standalone == 1;
}

void XMLDocument::setStandalone(bool standalone) {
  if (node_)
    xmlDoc()->standalone = standalone ? 1 : 0;
}

// Structure.

XMLDTD XMLDocument::DTD() const {
  if (!node_ || !xmlDoc()->intSubset)
    return {};
  return XMLDTD(owner_, reinterpret_cast<xmlNodePtr>(xmlDoc()->intSubset));
}

void XMLDocument::setDTD(const XMLDTD &dtd) {
  if (!node_)
    return;
  xmlNodePtr current = reinterpret_cast<xmlNodePtr>(xmlDoc()->intSubset);
  if (current && current == dtd.node_)
    return;
  if (current)
    unlinkNode(current);
  if (dtd.empty())
    return;
  // In front of the root element, where a parsed document has it.
  xmlNodePtr before = node_->children;
  while (before && before->type != XML_ELEMENT_NODE)
    before = before->next;
  linkChild(dtd, node_, before);
}

XMLElement XMLDocument::rootElement() const {
  if (!node_)
    return {};
  return XMLElement(owner_, xmlDocGetRootElement(xmlDoc()));
}

void XMLDocument::setRootElement(const XMLElement &root) {
  if (!node_ || root.empty())
    return;
  XMLElement old = rootElement();
  if (old == root)
    return;
  if (old.empty()) {
    linkChild(root, node_, nullptr);
    return;
  }
  // Detach the old root first so that the document never holds two.
  XMLNode place = old.nextSibling();
  unlinkNode(old.node_);
  linkChild(root, node_, place.node_);
}

void XMLDocument::addChild(const XMLNode &child) {
  if (node_)
    linkChild(child, node_, nullptr);
}

void XMLDocument::insertChild(const XMLNode &child, size_t index) {
  insertChildAt(child, index);
}

void XMLDocument::removeChildAtIndex(size_t index) {
  removeChildAt(index);
}

XMLNode XMLDocument::nodeForXMLNode(_xmlNode *node) const {
  if (!node_ || !node)
    return {};
  XMLNode handle = handleOn(node);
  // A subtree libxml2 made apart from the tree becomes the document's to free.
  xmlNodePtr top = detail::topOf(node);
  if (!detail::isDocumentNode(top) && !owner().tracksFreeStanding(top))
    owner().adoptFreeStanding(top);
  return handle;
}

} // namespace vl::ns
