// XMLNode: handles, walks, changes, path queries and printing over libxml2 trees.
#include "ns/XMLNode.h"

#include "ns/Assert.h"
#include "ns/String.h"
#include "ns/XMLDocument.h"
#include "ns/XMLGlobalsGuard.h"
#include "ns/XMLOwner.h"
#include "ns/XMLTree.h"

#include <libxml/xmlsave.h>
#include <libxml/xpath.h>
#include <libxml/xpathInternals.h>

#include <memory>

namespace vl::ns {

using detail::chars;
using detail::stringFrom;
using detail::xmlChars;
using detail::XMLOwner;

namespace {

bool isLinkableChild(const xmlNode *node) {
  switch (node->type) {
  case XML_ELEMENT_NODE:
  case XML_TEXT_NODE:
  case XML_CDATA_SECTION_NODE:
  case XML_COMMENT_NODE:
  case XML_PI_NODE:
  case XML_ENTITY_REF_NODE:
    return true;
  default:
    return false;
  }
}

struct XPathContextDeleter {
  void operator()(xmlXPathContextPtr context) const { xmlXPathFreeContext(context); }
};
struct XPathObjectDeleter {
  void operator()(xmlXPathObjectPtr object) const { xmlXPathFreeObject(object); }
};

/// The first error libxml2 reports during a query.
struct ErrorCapture {
  bool seen = false;
  int code = 0;
  std::string message;
};

void captureXPathError(void *data, xmlErrorPtr error) noexcept {
  auto *capture = static_cast<ErrorCapture *>(data);
  if (capture->seen || !error)
    return;
  capture->seen = true;
  capture->code = error->code;
  try {
    capture->message = error->message ? error->message : "";
  } catch (...) {
    capture->message.clear();
  }
  while (!capture->message.empty() &&
         (capture->message.back() == '\n' || capture->message.back() == ' '))
    capture->message.pop_back();
}

int appendToString(void *context, const char *buffer, int length) noexcept {
  try {
    static_cast<std::string *>(context)->append(buffer, static_cast<size_t>(length));
    return length;
  } catch (...) {
    return -1; // libxml2 stops writing
  }
}

/// The XML declaration in front of a printed document. The bytes are always UTF-8, so another
/// declared encoding is not repeated.
std::string declarationOf(xmlDocPtr doc) {
  std::string out = "<?xml version=\"";
  out += doc->version ? chars(doc->version) : "1.0";
  out += '"';
  if (doc->encoding) {
    std::string encoding = chars(doc->encoding);
    bool isUTF8 = xmlStrcasecmp(doc->encoding, BAD_CAST "UTF-8") == 0 ||
                  xmlStrcasecmp(doc->encoding, BAD_CAST "UTF8") == 0;
    out += " encoding=\"";
    out += isUTF8 ? encoding : std::string("UTF-8");
    out += '"';
  }
  if (doc->standalone == 1)
    out += " standalone=\"yes\"";
  else if (doc->standalone == 0)
    out += " standalone=\"no\"";
  out += "?>\n";
  return out;
}

} // namespace

// Handles.

XMLNode::XMLNode(std::shared_ptr<XMLOwner> owner, _xmlNode *node) {
  if (!node)
    return;
  owner_ = std::move(owner);
  node_ = node;
  XMLOwner::resolve(owner_).retain(node_);
}

XMLNode::XMLNode(const XMLNode &other) : owner_(other.owner_), node_(other.node_) {
  if (node_)
    XMLOwner::resolve(owner_).retain(node_);
}

XMLNode::XMLNode(XMLNode &&other) noexcept
    : owner_(std::move(other.owner_)), node_(std::exchange(other.node_, nullptr)) {}

XMLNode &XMLNode::operator=(const XMLNode &other) {
  if (this != &other) {
    XMLNode copy(other);
    *this = std::move(copy);
  }
  return *this;
}

XMLNode &XMLNode::operator=(XMLNode &&other) noexcept {
  if (this != &other) {
    if (node_)
      XMLOwner::resolve(owner_).release(node_);
    owner_ = std::move(other.owner_);
    node_ = std::exchange(other.node_, nullptr);
  }
  return *this;
}

XMLNode::~XMLNode() {
  if (node_)
    XMLOwner::resolve(owner_).release(node_);
}

XMLNode XMLNode::handleOn(_xmlNode *node) const {
  return node ? XMLNode(owner_, node) : XMLNode();
}

XMLNode XMLNode::adoptFreeStanding(_xmlNode *node) {
  if (!node)
    return {};
  auto owner = XMLOwner::create();
  XMLNode handle(owner, node);
  owner->adoptFreeStanding(node);
  return handle;
}

XMLOwner &XMLNode::owner() const {
  return XMLOwner::resolve(owner_);
}

// Making nodes.

XMLNode XMLNode::textWithStringValue(std::u16string_view text) {
  return adoptFreeStanding(xmlNewText(xmlChars(detail::xmlTextFrom(text))));
}

XMLNode XMLNode::CDATAWithStringValue(std::u16string_view text) {
  std::string content = detail::xmlTextFrom(text);
  return adoptFreeStanding(
      xmlNewCDataBlock(nullptr, xmlChars(content), static_cast<int>(content.size())));
}

XMLNode XMLNode::commentWithStringValue(std::u16string_view text) {
  return adoptFreeStanding(xmlNewComment(xmlChars(detail::xmlTextFrom(text))));
}

XMLNode XMLNode::processingInstructionWithName(std::u16string_view name,
                                               std::u16string_view stringValue) {
  std::string content = detail::xmlTextFrom(stringValue);
  return adoptFreeStanding(xmlNewDocPI(nullptr, xmlChars(detail::xmlNameFrom(name)),
                                       content.empty() ? nullptr : xmlChars(content)));
}

XMLNode XMLNode::attributeWithName(std::u16string_view name, std::u16string_view stringValue) {
  xmlAttrPtr attr = xmlNewProp(nullptr, xmlChars(detail::xmlNameFrom(name)),
                               xmlChars(detail::xmlTextFrom(stringValue)));
  return adoptFreeStanding(reinterpret_cast<xmlNodePtr>(attr));
}

XMLNode XMLNode::createWithKind(XMLNodeKind kind, uint64_t options) {
  switch (kind) {
  case XMLTextKind:
    return (options & XMLNodeIsCDATA) ? CDATAWithStringValue(u"") : textWithStringValue(u"");
  case XMLCommentKind:
    return commentWithStringValue(u"");
  case XMLProcessingInstructionKind:
    return processingInstructionWithName(u"", u"");
  case XMLElementKind:
    return XMLElement::create(u"");
  case XMLAttributeKind:
    return attributeWithName(u"", u"");
  case XMLDTDKind:
    return XMLDTD::create(u"");
  case XMLDocumentKind:
    return XMLDocument::create();
  default:
    return {};
  }
}

// Identity and names.

XMLNodeKind XMLNode::kind() const {
  if (!node_)
    return XMLInvalidKind;
  switch (node_->type) {
  case XML_DOCUMENT_NODE:
  case XML_HTML_DOCUMENT_NODE:
    return XMLDocumentKind;
  case XML_ELEMENT_NODE:
    return XMLElementKind;
  case XML_ATTRIBUTE_NODE:
    return XMLAttributeKind;
  case XML_NAMESPACE_DECL:
    return XMLNamespaceKind;
  case XML_PI_NODE:
    return XMLProcessingInstructionKind;
  case XML_COMMENT_NODE:
    return XMLCommentKind;
  case XML_TEXT_NODE:
  case XML_CDATA_SECTION_NODE:
  case XML_ENTITY_REF_NODE:
    return XMLTextKind;
  case XML_DTD_NODE:
    return XMLDTDKind;
  case XML_ENTITY_DECL:
    return XMLEntityDeclarationKind;
  case XML_ATTRIBUTE_DECL:
    return XMLAttributeDeclarationKind;
  case XML_ELEMENT_DECL:
    return XMLElementDeclarationKind;
  case XML_NOTATION_NODE:
    return XMLNotationDeclarationKind;
  default:
    return XMLInvalidKind;
  }
}

bool XMLNode::isCDATA() const {
  return node_ && node_->type == XML_CDATA_SECTION_NODE;
}

std::u16string XMLNode::name() const {
  if (!node_)
    return {};
  switch (node_->type) {
  case XML_ELEMENT_NODE:
  case XML_ATTRIBUTE_NODE:
    if (node_->ns && node_->ns->prefix)
      return stringFrom(node_->ns->prefix) + u":" + stringFrom(node_->name);
    return stringFrom(node_->name);
  case XML_PI_NODE:
  case XML_DTD_NODE:
  case XML_ENTITY_REF_NODE:
    return stringFrom(node_->name);
  default:
    return {};
  }
}

void XMLNode::setName(std::u16string_view name) {
  if (!node_)
    return;
  switch (node_->type) {
  case XML_ELEMENT_NODE:
  case XML_ATTRIBUTE_NODE: {
    // A prefix binds the new name to its namespace; a plain name keeps the namespace there is.
    std::string qualified = detail::xmlNameFrom(name);
    xmlNodeSetName(node_, xmlChars(qualified));
    if (qualified.find(':') == std::string::npos)
      break;
    if (node_->type == XML_ELEMENT_NODE)
      node_->ns = nullptr;
    else
      reinterpret_cast<xmlAttrPtr>(node_)->ns = nullptr;
    xmlNodePtr scope = node_->type == XML_ELEMENT_NODE ? node_ : node_->parent;
    if (scope)
      detail::bindPrefixedName(node_, scope);
    break;
  }
  case XML_PI_NODE:
  case XML_DTD_NODE:
    xmlNodeSetName(node_, xmlChars(detail::xmlNameFrom(name)));
    break;
  default:
    break;
  }
}

std::u16string XMLNode::localName() const {
  if (!node_ || (node_->type != XML_ELEMENT_NODE && node_->type != XML_ATTRIBUTE_NODE))
    return name();
  return fromUTF8(detail::localPart(node_));
}

std::u16string XMLNode::prefix() const {
  if (!node_ || (node_->type != XML_ELEMENT_NODE && node_->type != XML_ATTRIBUTE_NODE))
    return {};
  return fromUTF8(detail::prefixPart(node_));
}

std::u16string XMLNode::URI() const {
  if (!node_ || (node_->type != XML_ELEMENT_NODE && node_->type != XML_ATTRIBUTE_NODE))
    return {};
  return node_->ns ? stringFrom(node_->ns->href) : std::u16string();
}

// Content.

std::u16string XMLNode::stringValue() const {
  return node_ ? detail::contentOf(node_) : std::u16string();
}

void XMLNode::setStringValue(std::u16string_view value) {
  if (!node_)
    return;
  std::string text = detail::xmlTextFrom(value);
  switch (node_->type) {
  case XML_TEXT_NODE:
  case XML_CDATA_SECTION_NODE:
  case XML_COMMENT_NODE:
  case XML_PI_NODE:
    xmlNodeSetContent(node_, xmlChars(text));
    break;
  case XML_ATTRIBUTE_NODE:
    detail::setAttributeValue(reinterpret_cast<xmlAttrPtr>(node_), text);
    break;
  case XML_ELEMENT_NODE: {
    while (node_->children)
      unlinkNode(node_->children);
    if (!text.empty())
      linkChild(adoptFreeStanding(xmlNewText(xmlChars(text))), node_, nullptr);
    break;
  }
  default:
    break;
  }
}

// Walks.

XMLNode XMLNode::parent() const {
  return node_ ? handleOn(node_->parent) : XMLNode();
}

XMLNode XMLNode::firstChild() const {
  return node_ && detail::hasChildList(node_) ? handleOn(node_->children) : XMLNode();
}

XMLNode XMLNode::lastChild() const {
  return node_ && detail::hasChildList(node_) ? handleOn(node_->last) : XMLNode();
}

XMLNode XMLNode::nextSibling() const {
  if (!node_ || node_->type == XML_ATTRIBUTE_NODE || !node_->parent)
    return {};
  return handleOn(node_->next);
}

XMLNode XMLNode::previousSibling() const {
  if (!node_ || node_->type == XML_ATTRIBUTE_NODE || !node_->parent)
    return {};
  return handleOn(node_->prev);
}

XMLNode XMLNode::nextNode() const {
  if (!node_ || node_->type == XML_ATTRIBUTE_NODE)
    return {};
  if (detail::hasChildList(node_) && node_->children)
    return handleOn(node_->children);
  for (xmlNodePtr node = node_; node && node->parent; node = node->parent)
    if (node->next)
      return handleOn(node->next);
  return {};
}

size_t XMLNode::childCount() const {
  if (!node_ || !detail::hasChildList(node_))
    return 0;
  size_t count = 0;
  for (xmlNodePtr child = node_->children; child; child = child->next)
    ++count;
  return count;
}

XMLNode XMLNode::childAtIndex(size_t index) const {
  if (!node_ || !detail::hasChildList(node_))
    return {};
  xmlNodePtr child = node_->children;
  for (; child && index > 0; --index)
    child = child->next;
  return handleOn(child);
}

std::vector<XMLNode> XMLNode::children() const {
  std::vector<XMLNode> result;
  if (!node_ || !detail::hasChildList(node_))
    return result;
  for (xmlNodePtr child = node_->children; child; child = child->next)
    result.push_back(handleOn(child));
  return result;
}

size_t XMLNode::index() const {
  if (!node_ || !node_->parent || node_->type == XML_ATTRIBUTE_NODE)
    return 0;
  size_t position = 0;
  for (xmlNodePtr sibling = node_->prev; sibling; sibling = sibling->prev)
    ++position;
  return position;
}

XMLDocument XMLNode::rootDocument() const {
  if (!node_)
    return {};
  xmlNodePtr top = detail::topOf(node_);
  return detail::isDocumentNode(top) ? XMLDocument(owner_, top) : XMLDocument();
}

// Changes.

void XMLNode::detach() {
  if (node_)
    unlinkNode(node_);
}

void XMLNode::addPreviousSibling(const XMLNode &node) {
  if (node_ && node_->parent && node_->type != XML_ATTRIBUTE_NODE)
    linkChild(node, node_->parent, node_);
}

void XMLNode::addNextSibling(const XMLNode &node) {
  if (node_ && node_->parent && node_->type != XML_ATTRIBUTE_NODE && node.node_ != node_)
    linkChild(node, node_->parent, node_->next);
}

XMLNode XMLNode::copy() const {
  if (!node_)
    return {};
  xmlNodePtr copied = nullptr;
  switch (node_->type) {
  case XML_DOCUMENT_NODE:
  case XML_HTML_DOCUMENT_NODE:
    return XMLDocument::adoptXMLDoc(xmlCopyDoc(reinterpret_cast<xmlDocPtr>(node_), 1));
  case XML_DTD_NODE: {
    XMLDTD dtd(*this);
    return XMLDTD::create(dtd.name(), dtd.publicID(), dtd.systemID());
  }
  case XML_ATTRIBUTE_NODE: {
    auto *original = reinterpret_cast<xmlAttrPtr>(node_);
    xmlAttrPtr attr = xmlCopyProp(nullptr, original);
    // Without an element to declare it on, the copy spells its prefix out.
    if (attr && original->ns && original->ns->prefix)
      xmlNodeSetName(reinterpret_cast<xmlNodePtr>(attr), xmlChars(toUTF8(name())));
    copied = reinterpret_cast<xmlNodePtr>(attr);
    break;
  }
  default:
    // Copied within the document, so that entity references keep their entities.
    if (isLinkableChild(node_))
      copied = xmlDocCopyNode(node_, node_->doc, 1);
    break;
  }
  if (!copied)
    return {};
  XMLNode handle = handleOn(copied);
  owner().adoptFreeStanding(copied);
  return handle;
}

void XMLNode::linkChild(const XMLNode &child, _xmlNode *parent, _xmlNode *before) const {
  xmlNodePtr node = child.node_;
  if (!node || !parent || node == before)
    return;
  VL_ASSERT(detail::hasChildList(parent), "Only elements and documents have children");
  VL_ASSERT(isLinkableChild(node) || (node->type == XML_DTD_NODE && detail::isDocumentNode(parent)),
            "Only elements, text, comments and processing instructions can be children");
  for (xmlNodePtr ancestor = parent; ancestor; ancestor = ancestor->parent)
    VL_ASSERT(ancestor != node, "A node cannot be added below itself");
  xmlDocPtr doc = detail::documentOf(parent);
  if (node->type == XML_DTD_NODE) {
    VL_ASSERT(!node->children || node->doc == doc,
              "A DTD with declarations cannot move to another document");
    VL_ASSERT(!doc->intSubset || reinterpret_cast<xmlNodePtr>(doc->intSubset) == node,
              "A document holds one DTD");
  }
  if (detail::isDocumentNode(parent)) {
    VL_ASSERT(node->type != XML_TEXT_NODE && node->type != XML_CDATA_SECTION_NODE &&
                  node->type != XML_ENTITY_REF_NODE,
              "A document cannot hold text");
    if (node->type == XML_ELEMENT_NODE)
      for (xmlNodePtr other = parent->children; other; other = other->next)
        VL_ASSERT(other->type != XML_ELEMENT_NODE || other == node,
                  "A document holds one root element");
  }

  XMLOwner &united = XMLOwner::unite(owner(), child.owner());
  if (node->parent)
    unlinkNode(node);

  united.willLink(node, parent);
  if (node->doc != doc)
    detail::moveToDocument(node, doc);
  node->parent = parent;
  node->next = before;
  node->prev = before ? before->prev : parent->last;
  if (node->prev)
    node->prev->next = node;
  else
    parent->children = node;
  if (before)
    before->prev = node;
  else
    parent->last = node;
  if (node->type == XML_DTD_NODE)
    reinterpret_cast<xmlDocPtr>(parent)->intSubset = reinterpret_cast<xmlDtdPtr>(node);
  if (node->type == XML_ELEMENT_NODE)
    detail::reconcileNamespaces(node, parent->type == XML_ELEMENT_NODE ? parent : nullptr);
}

void XMLNode::unlinkNode(_xmlNode *node) const {
  if (!node || !node->parent)
    return;
  XMLOwner &mine = owner();
  xmlNodePtr formerTop = detail::topOf(node);
  xmlUnlinkNode(node);
  // The subtree must not point at declarations of the tree it left, which may go first.
  detail::reconcileNamespaces(node, nullptr);
  mine.didUnlink(node, formerTop);
}

void XMLNode::insertChildAt(const XMLNode &child, size_t index) const {
  if (!node_ || !child.node_)
    return;
  xmlNodePtr before = node_->children;
  for (size_t i = 0; i < index; ++i) {
    VL_ASSERT(before, "Child index beyond the children");
    before = before->next;
  }
  linkChild(child, node_, before);
}

void XMLNode::removeChildAt(size_t index) const {
  if (!node_)
    return;
  XMLNode child = childAtIndex(index);
  VL_ASSERT(child, "Child index beyond the children");
  unlinkNode(child.node_);
}

void XMLNode::replaceChildAt(size_t index, const XMLNode &node) const {
  if (!node_ || !node.node_)
    return;
  XMLNode old = childAtIndex(index);
  VL_ASSERT(old, "Child index beyond the children");
  if (old == node)
    return;
  linkChild(node, node_, old.node_);
  unlinkNode(old.node_);
}

// Path queries.

std::vector<XMLNode> XMLNode::nodesForXPath(std::u16string_view path, ErrorPtr *error) const {
  return nodesForXPath(path, {}, error);
}

std::vector<XMLNode> XMLNode::nodesForXPath(std::u16string_view path,
                                            const XMLNamespaceBindings &namespaces,
                                            ErrorPtr *error) const {
  std::vector<XMLNode> result;
  if (!node_)
    return result;
  xmlDocPtr doc = detail::documentOf(node_);
  std::unique_ptr<xmlXPathContext, XPathContextDeleter> context(xmlXPathNewContext(doc));
  if (!context) {
    setError(error, Error::errorWithDescription(XMLParserErrorDomain, XML_ERR_NO_MEMORY,
                                                u"Out of memory for a path query"));
    return result;
  }
  context->node = node_;

  xmlNodePtr scope = node_;
  if (detail::isDocumentNode(node_))
    scope = xmlDocGetRootElement(doc);
  else if (node_->type != XML_ELEMENT_NODE)
    scope = node_->parent;
  if (scope && scope->type == XML_ELEMENT_NODE) {
    if (xmlNsPtr *inScope = xmlGetNsList(doc, scope)) {
      for (xmlNsPtr *ns = inScope; *ns; ++ns)
        if ((*ns)->prefix)
          xmlXPathRegisterNs(context.get(), (*ns)->prefix, (*ns)->href);
      xmlFree(inScope);
    }
  }
  for (const auto &[prefix, URI] : namespaces)
    if (!prefix.empty())
      xmlXPathRegisterNs(context.get(), xmlChars(toUTF8(prefix)), xmlChars(toUTF8(URI)));

  ErrorCapture capture;
  context->error = captureXPathError;
  context->userData = &capture;
  std::string expression = toUTF8(path);
  std::unique_ptr<xmlXPathObject, XPathObjectDeleter> object(
      xmlXPathEvalExpression(xmlChars(expression), context.get()));
  if (!object || object->type != XPATH_NODESET) {
    int code = capture.seen ? capture.code : XPATH_INVALID_TYPE;
    std::u16string message = capture.seen ? fromUTF8(capture.message)
                                          : std::u16string(u"The expression selects no nodes");
    setError(error, Error::errorWithDescription(XMLParserErrorDomain, code,
                                                u"Path query \"" + std::u16string(path) +
                                                    u"\" failed: " + message));
    return result;
  }
  if (xmlNodeSetPtr nodes = object->nodesetval) {
    result.reserve(static_cast<size_t>(nodes->nodeNr));
    for (int i = 0; i < nodes->nodeNr; ++i) {
      // Namespace nodes are copies that die with the query's result.
      if (nodes->nodeTab[i]->type != XML_NAMESPACE_DECL)
        result.push_back(handleOn(nodes->nodeTab[i]));
    }
  }
  return result;
}

// Printing.

std::string XMLNode::XMLUTF8WithOptions(uint64_t options) const {
  std::string out;
  if (!node_)
    return out;
  int saveOptions = XML_SAVE_NO_DECL | XML_SAVE_NO_XHTML | XML_SAVE_AS_XML;
  if (options & XMLNodePrettyPrint)
    saveOptions |= XML_SAVE_FORMAT;
  if (!(options & XMLNodeCompactEmptyElement))
    saveOptions |= XML_SAVE_NO_EMPTY;
  bool isDocument = detail::isDocumentNode(node_);
  if (isDocument && !(options & XMLNodeOmitXMLDeclaration))
    out = declarationOf(reinterpret_cast<xmlDocPtr>(node_));

  // The indentation is process-wide in libxml2; pin it for this dump only.
  XMLGlobalsGuard guard;
  guard.setIndentTreeOutput(true);
  guard.setTreeIndentString("    ");
  guard.setSaveNoEmptyTags(false);
  xmlSaveCtxtPtr save = xmlSaveToIO(appendToString, nullptr, &out, "UTF-8", saveOptions);
  if (!save)
    return {};
  if (isDocument)
    xmlSaveDoc(save, reinterpret_cast<xmlDocPtr>(node_));
  else
    xmlSaveTree(save, node_);
  xmlSaveClose(save);
  if (node_->type == XML_ATTRIBUTE_NODE && !out.empty() && out.front() == ' ')
    out.erase(0, 1);
  return out;
}

std::u16string XMLNode::XMLStringWithOptions(uint64_t options) const {
  return fromUTF8(XMLUTF8WithOptions(options));
}

Data XMLNode::XMLDataWithOptions(uint64_t options) const {
  std::string bytes = XMLUTF8WithOptions(options);
  return Data(bytes.data(), bytes.size());
}

} // namespace vl::ns
