// XMLDTD: the document type declaration of an XML document (the platform's NSXMLDTD).
#pragma once

#include "ns/XMLNode.h"

#include <string>
#include <string_view>

namespace vl::ns {

/// A handle on a document type declaration: <!DOCTYPE name PUBLIC "publicID" "systemID">. Only the
/// name and the two identifiers are modelled; declarations of a parsed internal subset stay as
/// they were and print with it.
class XMLDTD : public XMLNode {
public:
  XMLDTD() noexcept = default;
  /// The DTD `node` is, or empty when it is no DTD.
  explicit XMLDTD(const XMLNode &node);

  /// A free-standing DTD, to be given to XMLDocument::setDTD. An empty identifier is left out.
  static XMLDTD create(std::u16string_view name, std::u16string_view publicID = {},
                       std::u16string_view systemID = {});

  /// The public identifier, or "".
  std::u16string publicID() const;
  void setPublicID(std::u16string_view publicID);
  /// The system identifier (a URI), or "".
  std::u16string systemID() const;
  void setSystemID(std::u16string_view systemID);

protected:
  friend class XMLNode;
  friend class XMLDocument;
  XMLDTD(std::shared_ptr<detail::XMLOwner> owner, _xmlNode *node)
      : XMLNode(std::move(owner), node) {}
};

} // namespace vl::ns
