// XMLNode: a handle on one node of a libxml2 tree (the platform's NSXMLNode), its kinds, options
// and the walks, queries and printing every node shares.
#pragma once

#include "ns/Data.h"
#include "ns/Error.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

struct _xmlNode;

namespace vl::ns {

namespace detail {
class XMLOwner;
} // namespace detail

class XMLElement;
class XMLDocument;

/// The domain of parse and path query errors; the code is libxml2's error number.
inline constexpr std::u16string_view XMLParserErrorDomain = u"NSXMLParserErrorDomain";

/// Node kinds, numbered as the platform numbers them.
enum XMLNodeKind : uint32_t {
  XMLInvalidKind = 0,
  XMLDocumentKind = 1,
  XMLElementKind = 2,
  XMLAttributeKind = 3,
  XMLNamespaceKind = 4,
  XMLProcessingInstructionKind = 5,
  XMLCommentKind = 6,
  /// Text, CDATA sections (see isCDATA) and entity references.
  XMLTextKind = 7,
  XMLDTDKind = 8,
  XMLEntityDeclarationKind = 9,
  XMLAttributeDeclarationKind = 10,
  XMLElementDeclarationKind = 11,
  XMLNotationDeclarationKind = 12,
};

/// Option bits for making, parsing and printing nodes, with the platform's values. Bits this
/// layer does not act on are accepted and ignored; the one bit of its own is marked.
enum XMLNodeOptions : uint64_t {
  XMLNodeOptionsNone = 0,
  /// A text node made with createWithKind is a CDATA section.
  XMLNodeIsCDATA = 1u << 0,
  /// Empty elements print as <a></a> (the default).
  XMLNodeExpandEmptyElement = 1u << 1,
  /// Empty elements print as <a/>.
  XMLNodeCompactEmptyElement = 1u << 2,
  XMLNodeUseSingleQuotes = 1u << 3,
  XMLNodeUseDoubleQuotes = 1u << 4,
  /// External entities are never loaded, with or without this bit.
  XMLNodeLoadExternalEntitiesNever = 1u << 19,
  /// Print with line breaks and four blanks of indentation where an element holds only elements.
  XMLNodePrettyPrint = 1u << 17,
  /// Parsing keeps blank text nodes between elements, which it drops otherwise.
  XMLNodePreserveWhitespace = 1u << 25,
  /// This layer's own: a document prints without its XML declaration.
  XMLNodeOmitXMLDeclaration = uint64_t{1} << 32,
};

/// Prefix to namespace URI bindings for path queries.
using XMLNamespaceBindings = std::vector<std::pair<std::u16string, std::u16string>>;

/// A handle on one node of an XML tree. Handles share ownership: a document is freed when the
/// last handle on it or on any node it holds goes (a node moved from one document into another
/// ties the two together), and a subtree that hangs in no document (made on its own, or
/// detached) is freed as soon as no handle points into it. Copies are cheap and refer to the
/// same node; == compares nodes.
///
/// The empty handle is valid, and every query on it answers nothing: "" for strings, 0 for
/// counts, empty handles and vectors, XMLInvalidKind. Changes applied to an empty handle do
/// nothing, so chains through absent parts never crash. Changing a tree through the raw libxml2
/// pointers (xmlNode) is allowed, but freeing nodes that handles still refer to is not.
///
/// Not thread safe: one tree is used from one thread at a time. Printing sets libxml2's
/// process-wide indentation for its length (see XMLGlobalsGuard), so no other thread may parse
/// or print XML meanwhile.
class XMLNode {
public:
  XMLNode() noexcept = default;
  XMLNode(const XMLNode &other);
  XMLNode(XMLNode &&other) noexcept;
  XMLNode &operator=(const XMLNode &other);
  XMLNode &operator=(XMLNode &&other) noexcept;
  ~XMLNode();

  // Making free-standing nodes. Each answers a node in no document, until it is added to one.

  /// A text node.
  static XMLNode textWithStringValue(std::u16string_view text);
  /// A CDATA section (kind XMLTextKind, isCDATA true).
  static XMLNode CDATAWithStringValue(std::u16string_view text);
  static XMLNode commentWithStringValue(std::u16string_view text);
  static XMLNode processingInstructionWithName(std::u16string_view name,
                                               std::u16string_view stringValue);
  /// An attribute, to be given to XMLElement::addAttribute. A "prefix:" in the name is bound
  /// when the attribute is added to an element where the prefix is declared.
  static XMLNode attributeWithName(std::u16string_view name, std::u16string_view stringValue);
  /// A node of `kind`: text (a CDATA section with XMLNodeIsCDATA), comment, processing
  /// instruction, element or attribute (these three with an empty name), DTD or document.
  /// Other kinds answer the empty handle.
  static XMLNode createWithKind(XMLNodeKind kind, uint64_t options = XMLNodeOptionsNone);

  // Identity and names.

  bool empty() const noexcept { return node_ == nullptr; }
  explicit operator bool() const noexcept { return node_ != nullptr; }
  /// Handles on the same node are equal; all empty handles are equal.
  bool operator==(const XMLNode &other) const noexcept { return node_ == other.node_; }

  XMLNodeKind kind() const;
  /// True for a CDATA section.
  bool isCDATA() const;
  /// The qualified name ("dc:title") of an element or attribute, the target of a processing
  /// instruction, the name of a DTD; "" for other kinds.
  std::u16string name() const;
  /// Renames an element, attribute, processing instruction or DTD; a "prefix:" in the name
  /// binds it to that namespace where declared in scope.
  void setName(std::u16string_view name);
  /// The name without its prefix.
  std::u16string localName() const;
  /// The namespace prefix, or "".
  std::u16string prefix() const;
  /// The namespace URI of an element or attribute, or "".
  std::u16string URI() const;

  // Content.

  /// The text: of a text, comment or processing instruction itself, of an attribute its value,
  /// of an element or document all the text below it in document order.
  std::u16string stringValue() const;
  /// Replaces the text. An element's children are replaced by one text node (none for "").
  /// Entities are not interpreted: the text is stored as given and escaped when printed.
  void setStringValue(std::u16string_view value);

  // Walks. Only elements and documents have children; attributes answer their element as parent.

  /// The parent element or document, or empty.
  XMLNode parent() const;
  XMLNode firstChild() const;
  XMLNode lastChild() const;
  XMLNode nextSibling() const;
  XMLNode previousSibling() const;
  /// The next node in document order (first child, else next sibling, else an ancestor's next
  /// sibling), or empty at the end.
  XMLNode nextNode() const;
  /// O(number of children).
  size_t childCount() const;
  /// The child at `index`, or empty when there is none. O(index).
  XMLNode childAtIndex(size_t index) const;
  std::vector<XMLNode> children() const;
  /// The position among its parent's children; 0 without a parent. O(index).
  size_t index() const;
  /// The document that holds the node, or empty for a node in no document.
  XMLDocument rootDocument() const;

  // Changes.

  /// Unlinks the node from its parent; it lives on while handles refer to it.
  void detach();
  /// Links `node` in front of this node (after it, for addNextSibling), moving it from where it
  /// was. Only for nodes that have a parent; O(1) where insertChild at an index walks.
  void addPreviousSibling(const XMLNode &node);
  void addNextSibling(const XMLNode &node);
  /// A deep copy that hangs in no tree (a DTD's copy has no declarations). It shares the
  /// original's document, which it keeps alive, so entity references keep their entities.
  XMLNode copy() const;

  // Path queries.

  /// The nodes an XPath 1.0 expression selects, with this node as the context node (use a
  /// relative path to search below it). Prefixes in the expression resolve to the namespaces
  /// declared in scope at the context node (at the root element for a document, at the parent
  /// element for an attribute or text), overridden by
  /// `namespaces`. A bad expression, or one that selects no nodes (a number, a string), answers
  /// empty and an error in XMLParserErrorDomain; pass `error` to tell such a failure from a query
  /// that matched nothing. Namespace nodes are left out.
  std::vector<XMLNode> nodesForXPath(std::u16string_view path, ErrorPtr *error = nullptr) const;
  std::vector<XMLNode> nodesForXPath(std::u16string_view path,
                                     const XMLNamespaceBindings &namespaces,
                                     ErrorPtr *error = nullptr) const;

  // Printing.

  /// The node as XML text, UTF-8. XMLNodePrettyPrint indents, XMLNodeCompactEmptyElement writes
  /// <a/> for empty elements (the default is <a></a>). A document starts with its XML
  /// declaration unless XMLNodeOmitXMLDeclaration is given, and ends with a line break.
  /// Linear in the size of the tree.
  std::string XMLUTF8WithOptions(uint64_t options) const;
  /// The same in UTF-16.
  std::u16string XMLStringWithOptions(uint64_t options) const;
  std::u16string XMLString() const { return XMLStringWithOptions(XMLNodeOptionsNone); }
  /// The same as bytes.
  Data XMLDataWithOptions(uint64_t options) const;
  Data XMLData() const { return XMLDataWithOptions(XMLNodeOptionsNone); }

  // The way down to libxml2, for code that needs it directly.

  /// The libxml2 node (an xmlNodePtr; for a document the xmlDocPtr, for an attribute the
  /// xmlAttrPtr, for a DTD the xmlDtdPtr), or null. Valid while a handle refers to it.
  _xmlNode *xmlNode() const noexcept { return node_; }

protected:
  friend class XMLElement;
  friend class XMLDocument;
  friend class XMLDTD;

  XMLNode(std::shared_ptr<detail::XMLOwner> owner, _xmlNode *node);
  /// A handle on `node`, which belongs to this handle's owner; empty for null.
  XMLNode handleOn(_xmlNode *node) const;
  /// A new owner holding the free-standing `node`, and a handle on it.
  static XMLNode adoptFreeStanding(_xmlNode *node);
  detail::XMLOwner &owner() const;

  /// Links `child` under `parent` in front of `before` (at the end for null), moving it from
  /// where it was. Checks that the link makes sense.
  void linkChild(const XMLNode &child, _xmlNode *parent, _xmlNode *before) const;
  /// Unlinks `node`, which belongs to this handle's owner, from its parent.
  void unlinkNode(_xmlNode *node) const;
  /// The shared children editing of elements and documents.
  void insertChildAt(const XMLNode &child, size_t index) const;
  void removeChildAt(size_t index) const;
  void replaceChildAt(size_t index, const XMLNode &node) const;

  mutable std::shared_ptr<detail::XMLOwner> owner_;
  _xmlNode *node_ = nullptr;
};

} // namespace vl::ns

template <> struct std::hash<vl::ns::XMLNode> {
  size_t operator()(const vl::ns::XMLNode &node) const noexcept {
    return std::hash<const void *>()(node.xmlNode());
  }
};
