// Text conversion, name matching and namespace repair on raw libxml2 trees.
#include "ns/XMLTree.h"

#include "ns/String.h"

#include <libxml/parserInternals.h>

#include <cstdio>
#include <unordered_map>
#include <vector>

namespace vl::ns::detail {

namespace {

bool isXMLCharacter(char16_t c) {
  if (c < 0x20)
    return c == u'\t' || c == u'\n' || c == u'\r';
  return c != 0xFFFE && c != 0xFFFF;
}

std::string_view view(const xmlChar *text) {
  return text ? std::string_view(chars(text)) : std::string_view();
}

bool isXMLPrefix(const xmlChar *prefix) {
  return prefix && xmlStrEqual(prefix, BAD_CAST "xml");
}

/// Whether `ns` is declared on `element` or an ancestor of it up to `root`.
bool declaredOnPath(xmlNsPtr ns, xmlNodePtr element, xmlNodePtr root) {
  for (xmlNodePtr node = element; node; node = node->parent) {
    for (xmlNsPtr decl = node->nsDef; decl; decl = decl->next)
      if (decl == ns)
        return true;
    if (node == root)
      break;
  }
  return false;
}

/// A declaration of `prefix` for `href` on `element`, reusing one that is there; a prefix bound
/// to another URI on the element is replaced by a fresh one.
xmlNsPtr declareOn(xmlNodePtr element, const xmlChar *href, const xmlChar *prefix) {
  bool clash = false;
  for (xmlNsPtr decl = element->nsDef; decl; decl = decl->next) {
    if (xmlStrEqual(decl->prefix, prefix)) {
      if (xmlStrEqual(decl->href, href))
        return decl;
      clash = true;
    }
  }
  if (!clash)
    return xmlNewNs(element, href, prefix);
  for (int i = 0;; ++i) {
    char fresh[24];
    std::snprintf(fresh, sizeof fresh, "ns%d", i);
    bool taken = false;
    for (xmlNsPtr decl = element->nsDef; decl && !taken; decl = decl->next)
      taken = xmlStrEqual(decl->prefix, BAD_CAST fresh);
    if (!taken)
      return xmlNewNs(element, href, BAD_CAST fresh);
  }
}

} // namespace

void bindPrefixedName(xmlNodePtr node, xmlNodePtr scope) {
  std::string_view name = view(node->name);
  size_t colon = name.find(':');
  if (colon == std::string_view::npos || colon == 0 || colon + 1 == name.size())
    return;
  std::string prefix(name.substr(0, colon));
  if (prefix == "xmlns")
    return;
  xmlNsPtr ns = xmlSearchNs(scope->doc, scope, xmlChars(prefix));
  if (!ns)
    return;
  std::string local(name.substr(colon + 1));
  xmlNodeSetName(node, xmlChars(local));
  node->ns = ns;
}

namespace {

/// Turns a bound attribute name back into a literal "prefix:local" one.
void unbindName(xmlAttrPtr attr) {
  std::string qualified = attr->ns->prefix ? std::string(chars(attr->ns->prefix)) + ":" : "";
  qualified += chars(attr->name);
  xmlNodeSetName(reinterpret_cast<xmlNodePtr>(attr), xmlChars(qualified));
  attr->ns = nullptr;
}

void reconcileAttribute(xmlAttrPtr attr, xmlNodePtr context) {
  xmlNodePtr node = reinterpret_cast<xmlNodePtr>(attr);
  xmlNsPtr ns = attr->ns;
  if (!ns) {
    if (context)
      bindPrefixedName(node, context);
    return;
  }
  if (isXMLPrefix(ns->prefix)) {
    xmlNsPtr xmlNamespace = xmlSearchNs(attr->doc, context ? context : node, ns->prefix);
    if (xmlNamespace)
      attr->ns = xmlNamespace;
    else
      unbindName(attr);
    return;
  }
  if (!context) {
    unbindName(attr);
    return;
  }
  xmlNsPtr inScope = xmlSearchNs(context->doc, context, ns->prefix);
  if (inScope && xmlStrEqual(inScope->href, ns->href))
    attr->ns = inScope;
  else if (ns->prefix)
    attr->ns = declareOn(context, ns->href, ns->prefix);
  else
    unbindName(attr); // an attribute cannot take the default namespace
}

} // namespace

std::string xmlTextFrom(std::u16string_view text) {
  for (size_t i = 0; i < text.size(); ++i) {
    if (!isXMLCharacter(text[i])) {
      std::u16string kept;
      kept.reserve(text.size());
      for (char16_t c : text)
        if (isXMLCharacter(c))
          kept.push_back(c);
      return toUTF8(kept);
    }
  }
  return toUTF8(text);
}

std::string xmlNameFrom(std::u16string_view name) {
  return toUTF8(name);
}

std::u16string stringFrom(const xmlChar *text) {
  return text ? fromUTF8(chars(text)) : std::u16string();
}

std::string_view localPart(const xmlNode *node) {
  std::string_view name = view(node->name);
  if (node->ns)
    return name;
  size_t colon = name.find(':');
  return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

std::string_view prefixPart(const xmlNode *node) {
  if (node->ns)
    return view(node->ns->prefix);
  std::string_view name = view(node->name);
  size_t colon = name.find(':');
  return colon == std::string_view::npos ? std::string_view() : name.substr(0, colon);
}

bool hasQualifiedName(const xmlNode *node, std::string_view name) {
  std::string_view own = view(node->name);
  if (!node->ns || !node->ns->prefix)
    return own == name;
  std::string_view prefix = view(node->ns->prefix);
  return name.size() == prefix.size() + 1 + own.size() && name.substr(0, prefix.size()) == prefix &&
         name[prefix.size()] == ':' && name.substr(prefix.size() + 1) == own;
}

bool hasLocalName(const xmlNode *node, std::string_view localName, std::string_view URI) {
  if (localPart(node) != localName)
    return false;
  return node->ns ? view(node->ns->href) == URI : URI.empty();
}

std::u16string contentOf(xmlNodePtr node) {
  switch (node->type) {
  case XML_TEXT_NODE:
  case XML_CDATA_SECTION_NODE:
  case XML_COMMENT_NODE:
  case XML_PI_NODE:
    return stringFrom(node->content);
  case XML_ATTRIBUTE_NODE:
    if (node->children && !node->children->next && node->children->type == XML_TEXT_NODE)
      return stringFrom(node->children->content);
    break;
  case XML_DTD_NODE:
    return {};
  default:
    break;
  }
  xmlChar *content = xmlNodeGetContent(node);
  std::u16string text = stringFrom(content);
  xmlFree(content);
  return text;
}

void setAttributeValue(xmlAttrPtr attr, const std::string &value) {
  if (attr->atype == XML_ATTRIBUTE_ID && attr->doc)
    xmlRemoveID(attr->doc, attr);
  xmlFreeNodeList(attr->children);
  xmlNodePtr text = xmlNewDocText(attr->doc, xmlChars(value));
  attr->children = attr->last = text;
  if (text)
    text->parent = reinterpret_cast<xmlNodePtr>(attr);
}

namespace {

const xmlChar *moveString(const xmlChar *text, xmlDictPtr from, xmlDictPtr to) {
  if (!text || !from || !xmlDictOwns(from, text))
    return text;
  return to ? xmlDictLookup(to, text, -1) : xmlStrdup(text);
}

void moveNode(xmlNodePtr node, xmlDocPtr doc) {
  if (node->doc == doc)
    return;
  xmlDictPtr from = node->doc ? node->doc->dict : nullptr;
  xmlDictPtr to = doc ? doc->dict : nullptr;
  if (node->type == XML_ENTITY_REF_NODE) {
    // The entity is declared in the document left behind; the reference becomes its text.
    xmlChar *text = xmlNodeGetContent(node);
    if (!from || !xmlDictOwns(from, node->name))
      xmlFree(const_cast<xmlChar *>(node->name));
    node->type = XML_TEXT_NODE;
    node->name = xmlStringText;
    node->children = node->last = nullptr;
    node->content = text ? text : xmlStrdup(BAD_CAST "");
    node->doc = doc;
    return;
  }
  node->name = moveString(node->name, from, to);
  switch (node->type) {
  case XML_TEXT_NODE:
  case XML_CDATA_SECTION_NODE:
  case XML_COMMENT_NODE:
  case XML_PI_NODE:
    // Compact storage keeps short text inside the node itself, which moves along.
    if (node->content != reinterpret_cast<xmlChar *>(&node->properties))
      node->content = const_cast<xmlChar *>(moveString(node->content, from, nullptr));
    break;
  case XML_ATTRIBUTE_NODE: {
    auto *attr = reinterpret_cast<xmlAttrPtr>(node);
    if (attr->atype == XML_ATTRIBUTE_ID && attr->doc)
      xmlRemoveID(attr->doc, attr);
    break;
  }
  default:
    break;
  }
  node->doc = doc;
}

} // namespace

void moveToDocument(xmlNodePtr root, xmlDocPtr doc) {
  auto moveWithAttributes = [doc](xmlNodePtr node) {
    moveNode(node, doc);
    if (node->type == XML_ELEMENT_NODE)
      for (xmlAttrPtr attr = node->properties; attr; attr = attr->next) {
        moveNode(reinterpret_cast<xmlNodePtr>(attr), doc);
        for (xmlNodePtr part = attr->children; part; part = part->next)
          moveNode(part, doc);
      }
    return true;
  };
  if (root->type == XML_ATTRIBUTE_NODE) {
    for (xmlNodePtr part = root->children; part; part = part->next)
      moveNode(part, doc);
    moveNode(root, doc);
  } else if (root->type == XML_DTD_NODE) {
    moveNode(root, doc);
  } else {
    walkSubtree(root, moveWithAttributes);
  }
}

void reconcileNamespaces(xmlNodePtr root, xmlNodePtr context) {
  if (root->type == XML_ATTRIBUTE_NODE) {
    reconcileAttribute(reinterpret_cast<xmlAttrPtr>(root), context);
    return;
  }
  if (root->type != XML_ELEMENT_NODE)
    return;
  xmlDocPtr doc = root->doc;
  std::unordered_map<xmlNsPtr, xmlNsPtr> remap;
  std::vector<xmlNsPtr> dropped;
  if (context) {
    for (xmlNsPtr *link = &root->nsDef; *link;) {
      xmlNsPtr decl = *link;
      xmlNsPtr inScope = xmlSearchNs(doc, context, decl->prefix);
      if (inScope && xmlStrEqual(inScope->href, decl->href)) {
        *link = decl->next;
        decl->next = nullptr;
        dropped.push_back(decl);
        remap[decl] = inScope;
      } else {
        link = &decl->next;
      }
    }
  }
  auto repoint = [&](xmlNsPtr ns, xmlNodePtr element) -> xmlNsPtr {
    if (declaredOnPath(ns, element, root))
      return ns;
    auto known = remap.find(ns);
    if (known != remap.end())
      return known->second;
    xmlNsPtr target = nullptr;
    if (isXMLPrefix(ns->prefix)) {
      target = xmlSearchNs(doc, root, ns->prefix);
    } else {
      if (context) {
        xmlNsPtr inScope = xmlSearchNs(doc, context, ns->prefix);
        if (inScope && xmlStrEqual(inScope->href, ns->href))
          target = inScope;
      }
      if (!target)
        target = declareOn(root, ns->href, ns->prefix);
    }
    remap[ns] = target;
    return target;
  };
  walkSubtree(root, [&](xmlNodePtr node) {
    if (node->type != XML_ELEMENT_NODE)
      return true;
    if (node->ns)
      node->ns = repoint(node->ns, node);
    else
      bindPrefixedName(node, node);
    for (xmlAttrPtr attr = node->properties; attr; attr = attr->next) {
      if (attr->ns)
        attr->ns = repoint(attr->ns, node);
      else
        bindPrefixedName(reinterpret_cast<xmlNodePtr>(attr), node);
    }
    return true;
  });
  for (xmlNsPtr decl : dropped)
    xmlFreeNs(decl);
}

} // namespace vl::ns::detail
