// XMLDocument: a whole XML document: parsing from bytes, the declaration's fields, the DTD, the
// root element and printing (the platform's NSXMLDocument).
#pragma once

#include "ns/Data.h"
#include "ns/Error.h"
#include "ns/XMLDTD.h"
#include "ns/XMLElement.h"
#include "ns/XMLNode.h"

#include <string>
#include <string_view>

struct _xmlDoc;

namespace vl::ns {

/// A handle on a document. Handles on its nodes keep it alive; it is freed with the last one.
///
/// Parsing is safe for untrusted input: external entities and DTDs are never loaded (from the
/// network or from disk), and libxml2's limits on entity expansion and depth stay on, so an
/// entity bomb is refused at once with an error. Entity references are not replaced in the tree
/// (stringValue expands the internal ones), and a document whose references would expand to
/// more than ten times its size is refused too.
class XMLDocument : public XMLNode {
public:
  XMLDocument() noexcept = default;
  /// The document `node` is, or empty when it is no document.
  explicit XMLDocument(const XMLNode &node);

  /// A new empty document of XML version "1.0", with no encoding and no standalone field.
  static XMLDocument create();
  /// A new document holding `root` as its root element.
  static XMLDocument createWithRootElement(const XMLElement &root);
  /// Parses XML bytes in any encoding the bytes declare (UTF-8 by default). Blank text nodes
  /// between elements are dropped unless `options` has XMLNodePreserveWhitespace. Malformed
  /// input answers empty and, through `error`, an error in XMLParserErrorDomain with libxml2's
  /// code, message and line. Linear in the input.
  static XMLDocument createWithData(const Data &data, uint64_t options = XMLNodeOptionsNone,
                                    ErrorPtr *error = nullptr);
  static XMLDocument createWithData(std::string_view bytes, uint64_t options = XMLNodeOptionsNone,
                                    ErrorPtr *error = nullptr);
  /// Parses XML text; an encoding the text declares is ignored.
  static XMLDocument createWithXMLString(std::u16string_view xml,
                                         uint64_t options = XMLNodeOptionsNone,
                                         ErrorPtr *error = nullptr);
  /// Takes ownership of a document made by libxml2 directly; null answers empty.
  static XMLDocument adoptXMLDoc(_xmlDoc *doc);

  // The XML declaration.

  /// "1.0" unless set otherwise.
  std::u16string version() const;
  void setVersion(std::u16string_view version);
  /// The declared encoding ("" for none). Printing always writes UTF-8; it declares this
  /// encoding when it names UTF-8, else UTF-8.
  std::u16string characterEncoding() const;
  void setCharacterEncoding(std::u16string_view encoding);
  /// True when the declaration says standalone="yes". A parsed document without the field, and a
  /// new one, answer false and print no field until setStandalone is called.
  bool isStandalone() const;
  /// Writes standalone="yes" or standalone="no" in the declaration.
  void setStandalone(bool standalone);

  // Structure.

  /// The document type declaration, or empty.
  XMLDTD DTD() const;
  /// Puts `dtd` in front of the root element, replacing any DTD there; an empty handle removes it.
  void setDTD(const XMLDTD &dtd);
  /// The root element, or empty.
  XMLElement rootElement() const;
  /// Makes `root` the root element, in the place of the old one (which is detached).
  void setRootElement(const XMLElement &root);

  /// Adds a child of the document: the root element (when there is none yet), a comment or a
  /// processing instruction. A second root element fails an internal check.
  void addChild(const XMLNode &child);
  void insertChild(const XMLNode &child, size_t index);
  void removeChildAtIndex(size_t index);

  /// The libxml2 document, or null; see XMLNode::xmlNode.
  _xmlDoc *xmlDoc() const noexcept { return reinterpret_cast<_xmlDoc *>(node_); }
  /// A handle on a node of this document's tree, or of a subtree libxml2 made for it apart from
  /// the tree, which is then freed like any detached subtree. Empty for null.
  XMLNode nodeForXMLNode(_xmlNode *node) const;

protected:
  friend class XMLNode;
  XMLDocument(std::shared_ptr<detail::XMLOwner> owner, _xmlNode *node)
      : XMLNode(std::move(owner), node) {}
};

} // namespace vl::ns
