// XMLElement: an element of an XML tree with its attributes, namespaces and children (the
// platform's NSXMLElement).
#pragma once

#include "ns/XMLNode.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vl::ns {

/// A handle on an element. Everything an XMLNode answers, plus attributes in document order,
/// namespace declarations, children by name, and changes to the children.
///
/// Names may carry a prefix ("dc:title"). Such a name is bound to the namespace declared for the
/// prefix in scope, at once or when the element is added where the declaration is; until then it
/// prints as given and localName() and prefix() split it.
class XMLElement : public XMLNode {
public:
  XMLElement() noexcept = default;
  /// The element `node` is, or empty when it is no element.
  explicit XMLElement(const XMLNode &node);

  /// A free-standing element named `name`.
  static XMLElement create(std::u16string_view name);
  /// A free-standing element in the namespace `URI`, which it declares, with the prefix of
  /// `name` or as the default namespace when the name has none.
  static XMLElement create(std::u16string_view name, std::u16string_view URI);

  // Attributes. Names are qualified names; values are stored as given and escaped when printed.

  /// The attributes in document order (the order they were added in).
  std::vector<XMLNode> attributes() const;
  /// The attribute node, or empty.
  XMLNode attributeForName(std::u16string_view name) const;
  XMLNode attributeForLocalName(std::u16string_view localName, std::u16string_view URI) const;
  /// The attribute's value, or nullopt when the element has no such attribute.
  std::optional<std::u16string> attribute(std::u16string_view name) const;
  std::optional<std::u16string> attribute(std::u16string_view localName,
                                          std::u16string_view URI) const;
  /// Sets the attribute's value, adding it after the others when it is new. "xmlns" and
  /// "xmlns:p" declare namespaces instead (see addNamespace).
  void setAttribute(std::u16string_view name, std::u16string_view value);
  /// Adds an attribute node (see XMLNode::attributeWithName), moving it from where it was. An
  /// attribute of the same name that is already there is kept and `attribute` is not added.
  void addAttribute(const XMLNode &attribute);
  /// Removes the attribute; a handle on it keeps it alive, detached.
  void removeAttributeForName(std::u16string_view name);

  // Namespaces.

  /// Declares `prefix` ("" for the default namespace) for `URI` on this element, or changes the
  /// URI of the declaration that is there.
  void addNamespace(std::u16string_view prefix, std::u16string_view URI);
  /// The declarations on this element, as (prefix, URI) pairs; "" is the default namespace.
  std::vector<std::pair<std::u16string, std::u16string>> namespaces() const;
  /// The URI bound to `prefix` in scope here, or nullopt.
  std::optional<std::u16string> namespaceURIForPrefix(std::u16string_view prefix) const;

  // Children by name.

  /// The child elements, in order.
  std::vector<XMLElement> childElements() const;
  /// The child elements of that qualified name, in order.
  std::vector<XMLElement> elementsForName(std::u16string_view name) const;
  std::vector<XMLElement> elementsForLocalName(std::u16string_view localName,
                                               std::u16string_view URI) const;
  /// The first child element of that qualified name, or empty.
  XMLElement childNamed(std::u16string_view name) const;
  /// The first child element of that local name in any namespace, or empty.
  XMLElement childWithLocalName(std::u16string_view localName) const;

  // Changing the children. A node added is moved from where it was; adding an element below
  // itself, a document, or an attribute as a child fails an internal check.

  void addChild(const XMLNode &child);
  /// Inserts at `index` (at most childCount()). O(index).
  void insertChild(const XMLNode &child, size_t index);
  /// Unlinks the child at `index`, which must exist; a handle on it keeps it alive.
  void removeChildAtIndex(size_t index);
  void replaceChildAtIndex(size_t index, const XMLNode &node);
  /// Puts `newChild` where `oldChild`, a child of this element, is; nothing when it is not one.
  void replaceChild(const XMLNode &oldChild, const XMLNode &newChild);
  /// Replaces all children by `children` (none for an empty vector).
  void setChildren(const std::vector<XMLNode> &children);

protected:
  friend class XMLNode;
  friend class XMLDocument;
  XMLElement(std::shared_ptr<detail::XMLOwner> owner, _xmlNode *node)
      : XMLNode(std::move(owner), node) {}
};

} // namespace vl::ns
