// XMLDTD: the document type declaration's name and identifiers.
#include "ns/XMLDTD.h"

#include "ns/String.h"
#include "ns/XMLTree.h"

namespace vl::ns {

using detail::stringFrom;
using detail::xmlChars;

namespace {

xmlDtdPtr dtdOf(_xmlNode *node) {
  return reinterpret_cast<xmlDtdPtr>(node);
}

void replaceIdentifier(const xmlChar *&field, std::u16string_view value) {
  xmlFree(const_cast<xmlChar *>(field));
  field = value.empty() ? nullptr : xmlStrdup(xmlChars(toUTF8(value)));
}

} // namespace

XMLDTD::XMLDTD(const XMLNode &node) : XMLNode(node.kind() == XMLDTDKind ? node : XMLNode()) {}

XMLDTD XMLDTD::create(std::u16string_view name, std::u16string_view publicID,
                      std::u16string_view systemID) {
  std::string nameText = toUTF8(name);
  std::string publicText = toUTF8(publicID);
  std::string systemText = toUTF8(systemID);
  xmlDtdPtr dtd =
      xmlNewDtd(nullptr, xmlChars(nameText), publicText.empty() ? nullptr : xmlChars(publicText),
                systemText.empty() ? nullptr : xmlChars(systemText));
  return XMLDTD(adoptFreeStanding(reinterpret_cast<xmlNodePtr>(dtd)));
}

std::u16string XMLDTD::publicID() const {
  return node_ ? stringFrom(dtdOf(node_)->ExternalID) : std::u16string();
}

void XMLDTD::setPublicID(std::u16string_view publicID) {
  if (node_)
    replaceIdentifier(dtdOf(node_)->ExternalID, publicID);
}

std::u16string XMLDTD::systemID() const {
  return node_ ? stringFrom(dtdOf(node_)->SystemID) : std::u16string();
}

void XMLDTD::setSystemID(std::u16string_view systemID) {
  if (node_)
    replaceIdentifier(dtdOf(node_)->SystemID, systemID);
}

} // namespace vl::ns
