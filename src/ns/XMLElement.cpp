// XMLElement: attributes, namespaces, children by name and children editing.
#include "ns/XMLElement.h"

#include "ns/Assert.h"
#include "ns/String.h"
#include "ns/XMLOwner.h"
#include "ns/XMLTree.h"

namespace vl::ns {

using detail::stringFrom;
using detail::xmlChars;

namespace {

xmlAttrPtr findAttribute(xmlNodePtr element, std::string_view name) {
  for (xmlAttrPtr attr = element->properties; attr; attr = attr->next)
    if (detail::hasQualifiedName(reinterpret_cast<xmlNodePtr>(attr), name))
      return attr;
  return nullptr;
}

xmlAttrPtr findAttribute(xmlNodePtr element, std::string_view localName, std::string_view URI) {
  for (xmlAttrPtr attr = element->properties; attr; attr = attr->next)
    if (detail::hasLocalName(reinterpret_cast<xmlNodePtr>(attr), localName, URI))
      return attr;
  return nullptr;
}

const xmlChar *prefixOrNull(const std::string &prefix) {
  return prefix.empty() ? nullptr : xmlChars(prefix);
}

} // namespace

XMLElement::XMLElement(const XMLNode &node)
    : XMLNode(node.kind() == XMLElementKind ? node : XMLNode()) {}

XMLElement XMLElement::create(std::u16string_view name) {
  XMLNode node = adoptFreeStanding(xmlNewNode(nullptr, xmlChars(detail::xmlNameFrom(name))));
  return XMLElement(node);
}

XMLElement XMLElement::create(std::u16string_view name, std::u16string_view URI) {
  std::string qualified = detail::xmlNameFrom(name);
  size_t colon = qualified.find(':');
  std::string prefix = colon == std::string::npos ? std::string() : qualified.substr(0, colon);
  std::string local = colon == std::string::npos ? qualified : qualified.substr(colon + 1);
  xmlNodePtr node = xmlNewNode(nullptr, xmlChars(local));
  if (!node)
    return {};
  if (xmlNsPtr ns = xmlNewNs(node, xmlChars(toUTF8(URI)), prefixOrNull(prefix)))
    xmlSetNs(node, ns);
  else
    xmlNodeSetName(node, xmlChars(qualified));
  return XMLElement(adoptFreeStanding(node));
}

// Attributes.

std::vector<XMLNode> XMLElement::attributes() const {
  std::vector<XMLNode> result;
  if (!node_)
    return result;
  for (xmlAttrPtr attr = node_->properties; attr; attr = attr->next)
    result.push_back(handleOn(reinterpret_cast<xmlNodePtr>(attr)));
  return result;
}

XMLNode XMLElement::attributeForName(std::u16string_view name) const {
  if (!node_)
    return {};
  return handleOn(reinterpret_cast<xmlNodePtr>(findAttribute(node_, toUTF8(name))));
}

XMLNode XMLElement::attributeForLocalName(std::u16string_view localName,
                                          std::u16string_view URI) const {
  if (!node_)
    return {};
  return handleOn(
      reinterpret_cast<xmlNodePtr>(findAttribute(node_, toUTF8(localName), toUTF8(URI))));
}

std::optional<std::u16string> XMLElement::attribute(std::u16string_view name) const {
  if (!node_)
    return std::nullopt;
  xmlAttrPtr attr = findAttribute(node_, toUTF8(name));
  if (!attr)
    return std::nullopt;
  return detail::contentOf(reinterpret_cast<xmlNodePtr>(attr));
}

std::optional<std::u16string> XMLElement::attribute(std::u16string_view localName,
                                                    std::u16string_view URI) const {
  if (!node_)
    return std::nullopt;
  xmlAttrPtr attr = findAttribute(node_, toUTF8(localName), toUTF8(URI));
  if (!attr)
    return std::nullopt;
  return detail::contentOf(reinterpret_cast<xmlNodePtr>(attr));
}

void XMLElement::setAttribute(std::u16string_view name, std::u16string_view value) {
  if (!node_)
    return;
  std::string qualified = detail::xmlNameFrom(name);
  if (qualified == "xmlns") {
    addNamespace(u"", value);
    return;
  }
  if (qualified.rfind("xmlns:", 0) == 0) {
    addNamespace(name.substr(6), value);
    return;
  }
  std::string text = detail::xmlTextFrom(value);
  if (xmlAttrPtr attr = findAttribute(node_, qualified)) {
    detail::setAttributeValue(attr, text);
    return;
  }
  // Appended after the others: libxml2 keeps attributes in the order they were added.
  xmlAttrPtr attr = xmlNewProp(node_, xmlChars(qualified), xmlChars(text));
  if (attr && qualified.find(':') != std::string::npos)
    detail::bindPrefixedName(reinterpret_cast<xmlNodePtr>(attr), node_);
}

void XMLElement::addAttribute(const XMLNode &attribute) {
  xmlNodePtr attrNode = attribute.node_;
  if (!node_ || !attrNode)
    return;
  VL_ASSERT(attrNode->type == XML_ATTRIBUTE_NODE, "Only attributes can be added as attributes");
  if (attrNode->parent == node_)
    return;
  std::string qualified = toUTF8(attribute.name());
  if (findAttribute(node_, qualified))
    return;
  detail::XMLOwner &united = detail::XMLOwner::unite(owner(), attribute.owner());
  if (attrNode->parent)
    unlinkNode(attrNode);
  united.willLink(attrNode, node_);
  if (attrNode->doc != node_->doc)
    detail::moveToDocument(attrNode, node_->doc);
  auto *attr = reinterpret_cast<xmlAttrPtr>(attrNode);
  attr->parent = node_;
  attr->next = nullptr;
  attr->prev = nullptr;
  if (!node_->properties) {
    node_->properties = attr;
  } else {
    xmlAttrPtr last = node_->properties;
    while (last->next)
      last = last->next;
    last->next = attr;
    attr->prev = last;
  }
  detail::reconcileNamespaces(attrNode, node_);
}

void XMLElement::removeAttributeForName(std::u16string_view name) {
  if (!node_)
    return;
  if (xmlAttrPtr attr = findAttribute(node_, toUTF8(name)))
    unlinkNode(reinterpret_cast<xmlNodePtr>(attr));
}

// Namespaces.

void XMLElement::addNamespace(std::u16string_view prefix, std::u16string_view URI) {
  if (!node_)
    return;
  std::string prefixText = toUTF8(prefix);
  std::string href = toUTF8(URI);
  for (xmlNsPtr decl = node_->nsDef; decl; decl = decl->next) {
    if (xmlStrEqual(decl->prefix, prefixOrNull(prefixText))) {
      xmlFree(const_cast<xmlChar *>(decl->href));
      decl->href = xmlStrdup(xmlChars(href));
      return;
    }
  }
  if (!xmlNewNs(node_, xmlChars(href), prefixOrNull(prefixText)))
    return;
  // Names written with this prefix before it was declared are bound now.
  detail::reconcileNamespaces(
      node_, node_->parent && node_->parent->type == XML_ELEMENT_NODE ? node_->parent : nullptr);
}

std::vector<std::pair<std::u16string, std::u16string>> XMLElement::namespaces() const {
  std::vector<std::pair<std::u16string, std::u16string>> result;
  if (!node_)
    return result;
  for (xmlNsPtr decl = node_->nsDef; decl; decl = decl->next)
    result.emplace_back(stringFrom(decl->prefix), stringFrom(decl->href));
  return result;
}

std::optional<std::u16string> XMLElement::namespaceURIForPrefix(std::u16string_view prefix) const {
  if (!node_)
    return std::nullopt;
  std::string prefixText = toUTF8(prefix);
  if (prefixText == "xml")
    return stringFrom(XML_XML_NAMESPACE);
  for (xmlNodePtr scope = node_; scope && scope->type == XML_ELEMENT_NODE; scope = scope->parent)
    for (xmlNsPtr decl = scope->nsDef; decl; decl = decl->next)
      if (xmlStrEqual(decl->prefix, prefixOrNull(prefixText)))
        return stringFrom(decl->href);
  return std::nullopt;
}

// Children by name.

std::vector<XMLElement> XMLElement::childElements() const {
  std::vector<XMLElement> result;
  if (!node_)
    return result;
  for (xmlNodePtr child = node_->children; child; child = child->next)
    if (child->type == XML_ELEMENT_NODE)
      result.push_back(XMLElement(owner_, child));
  return result;
}

std::vector<XMLElement> XMLElement::elementsForName(std::u16string_view name) const {
  std::vector<XMLElement> result;
  if (!node_)
    return result;
  std::string qualified = toUTF8(name);
  for (xmlNodePtr child = node_->children; child; child = child->next)
    if (child->type == XML_ELEMENT_NODE && detail::hasQualifiedName(child, qualified))
      result.push_back(XMLElement(owner_, child));
  return result;
}

std::vector<XMLElement> XMLElement::elementsForLocalName(std::u16string_view localName,
                                                         std::u16string_view URI) const {
  std::vector<XMLElement> result;
  if (!node_)
    return result;
  std::string local = toUTF8(localName);
  std::string href = toUTF8(URI);
  for (xmlNodePtr child = node_->children; child; child = child->next)
    if (child->type == XML_ELEMENT_NODE && detail::hasLocalName(child, local, href))
      result.push_back(XMLElement(owner_, child));
  return result;
}

XMLElement XMLElement::childNamed(std::u16string_view name) const {
  if (!node_)
    return {};
  std::string qualified = toUTF8(name);
  for (xmlNodePtr child = node_->children; child; child = child->next)
    if (child->type == XML_ELEMENT_NODE && detail::hasQualifiedName(child, qualified))
      return XMLElement(owner_, child);
  return {};
}

XMLElement XMLElement::childWithLocalName(std::u16string_view localName) const {
  if (!node_)
    return {};
  std::string local = toUTF8(localName);
  for (xmlNodePtr child = node_->children; child; child = child->next)
    if (child->type == XML_ELEMENT_NODE && detail::localPart(child) == local)
      return XMLElement(owner_, child);
  return {};
}

// Changing the children.

void XMLElement::addChild(const XMLNode &child) {
  if (node_)
    linkChild(child, node_, nullptr);
}

void XMLElement::insertChild(const XMLNode &child, size_t index) {
  insertChildAt(child, index);
}

void XMLElement::removeChildAtIndex(size_t index) {
  removeChildAt(index);
}

void XMLElement::replaceChildAtIndex(size_t index, const XMLNode &node) {
  replaceChildAt(index, node);
}

void XMLElement::replaceChild(const XMLNode &oldChild, const XMLNode &newChild) {
  if (!node_ || !oldChild.node_ || !newChild.node_ || oldChild.node_->parent != node_ ||
      oldChild.node_->type == XML_ATTRIBUTE_NODE || oldChild == newChild)
    return;
  linkChild(newChild, node_, oldChild.node_);
  unlinkNode(oldChild.node_);
}

void XMLElement::setChildren(const std::vector<XMLNode> &children) {
  if (!node_)
    return;
  while (node_->children)
    unlinkNode(node_->children);
  for (const XMLNode &child : children)
    linkChild(child, node_, nullptr);
}

} // namespace vl::ns
