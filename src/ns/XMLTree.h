// Text conversion, name matching and namespace repair on raw libxml2 trees (internal to the XML
// classes).
#pragma once

#include <libxml/tree.h>

#include <string>
#include <string_view>

namespace vl::ns::detail {

/// UTF-8 for libxml2, without the characters XML 1.0 cannot hold (C0 controls other than tab,
/// line feed and carriage return; U+FFFE, U+FFFF), which would make the output unreadable.
std::string xmlTextFrom(std::u16string_view text);
/// UTF-8 of a name, as given.
std::string xmlNameFrom(std::u16string_view name);
/// UTF-16 of libxml2 text; "" for null.
std::u16string stringFrom(const xmlChar *text);

inline const char *chars(const xmlChar *text) {
  return reinterpret_cast<const char *>(text);
}
inline const xmlChar *xmlChars(const std::string &text) {
  return reinterpret_cast<const xmlChar *>(text.c_str());
}

inline bool isDocumentNode(const xmlNode *node) {
  return node->type == XML_DOCUMENT_NODE || node->type == XML_HTML_DOCUMENT_NODE;
}
/// Whether the node may have element, text, comment and instruction children.
inline bool hasChildList(const xmlNode *node) {
  return node->type == XML_ELEMENT_NODE || isDocumentNode(node);
}
/// The document of a node, or the document itself.
inline xmlDocPtr documentOf(xmlNodePtr node) {
  return isDocumentNode(node) ? reinterpret_cast<xmlDocPtr>(node) : node->doc;
}

/// Calls `visit` on `root` and every node below it in document order, stopping early when it
/// answers false; answers whether the walk ran to the end. Only element children are walked
/// into: attributes and the children of entity references are left to the visitor. Iterative,
/// so deep trees cannot exhaust the stack.
template <class Visit> bool walkSubtree(xmlNodePtr root, Visit visit) {
  xmlNodePtr node = root;
  while (true) {
    if (!visit(node))
      return false;
    if (node->type == XML_ELEMENT_NODE && node->children) {
      node = node->children;
      continue;
    }
    while (node != root && !node->next)
      node = node->parent;
    if (node == root)
      return true;
    node = node->next;
  }
}

/// The local name of an element or attribute: the name itself when it is bound to a namespace,
/// else the part after a colon.
std::string_view localPart(const xmlNode *node);
/// The prefix: the namespace's, else the part before a colon; "" for none.
std::string_view prefixPart(const xmlNode *node);
/// Whether an element or attribute has the qualified name `name` ("p:local" or "local").
bool hasQualifiedName(const xmlNode *node, std::string_view name);
/// Whether an element or attribute has `localName` in the namespace `URI` ("" for none).
bool hasLocalName(const xmlNode *node, std::string_view localName, std::string_view URI);

/// The text of any node, entities expanded.
std::u16string contentOf(xmlNodePtr node);
/// Replaces an attribute's value by `value`, taken literally.
void setAttributeValue(xmlAttrPtr attr, const std::string &value);

/// Moves a subtree (an element, attribute, text or other leaf, or a DTD without declarations)
/// that left the document it was made in over to `doc`: strings held in the old document's
/// dictionary are copied out of it, since the node is freed against its new document's.
void moveToDocument(xmlNodePtr root, xmlDocPtr doc);

/// Binds the unbound "prefix:local" name of `node` (an element, or an attribute of the element
/// `scope`) to the namespace declared for the prefix in scope at `scope`; nothing when there is
/// no such declaration.
void bindPrefixedName(xmlNodePtr node, xmlNodePtr scope);

/// Makes the namespace references in the subtree of `root` (an element or attribute) safe for
/// its new place: references to declarations outside the subtree (which may be freed with the
/// tree they belong to) are repointed at the same binding in scope under `context`, the element
/// the subtree hangs under (null for none), or declared on `root`. Names with an unbound
/// "prefix:" are bound where the prefix is now in scope, and declarations on `root` that repeat
/// the binding in scope are dropped. O(size of the subtree).
void reconcileNamespaces(xmlNodePtr root, xmlNodePtr context);

} // namespace vl::ns::detail
