// Saving and restoring libxml2's process-wide parse and print defaults.
#include "ns/XMLGlobalsGuard.h"

#include <libxml/globals.h>
#include <libxml/parser.h>

// Newer libxml2 marks these settings deprecated; guarding them is exactly what they are kept for.
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace vl::ns {

namespace {
template <class T, class Setter> T readThreadDefault(Setter setter, T probe) {
  T value = setter(probe);
  setter(value);
  return value;
}
} // namespace

XMLGlobalsGuard::XMLGlobalsGuard()
    : registerNode_(xmlRegisterNodeDefaultValue), deregisterNode_(xmlDeregisterNodeDefaultValue),
      threadRegisterNode_(
          readThreadDefault<xmlRegisterNodeFunc>(xmlThrDefRegisterNodeDefault, nullptr)),
      threadDeregisterNode_(
          readThreadDefault<xmlDeregisterNodeFunc>(xmlThrDefDeregisterNodeDefault, nullptr)),
      indentTreeOutput_(xmlIndentTreeOutput),
      threadIndentTreeOutput_(readThreadDefault<int>(xmlThrDefIndentTreeOutput, 0)),
      treeIndentString_(xmlTreeIndentString),
      threadTreeIndentString_(readThreadDefault<const char *>(xmlThrDefTreeIndentString, "")),
      keepBlanks_(xmlKeepBlanksDefaultValue),
      threadKeepBlanks_(readThreadDefault<int>(xmlThrDefKeepBlanksDefaultValue, 1)),
      saveNoEmptyTags_(xmlSaveNoEmptyTags),
      threadSaveNoEmptyTags_(readThreadDefault<int>(xmlThrDefSaveNoEmptyTags, 0)) {}

XMLGlobalsGuard::~XMLGlobalsGuard() {
  // Plain assignments: xmlKeepBlanksDefault would turn indentation on as a side effect.
  xmlRegisterNodeDefaultValue = registerNode_;
  xmlDeregisterNodeDefaultValue = deregisterNode_;
  xmlThrDefRegisterNodeDefault(threadRegisterNode_);
  xmlThrDefDeregisterNodeDefault(threadDeregisterNode_);
  xmlKeepBlanksDefaultValue = keepBlanks_;
  xmlThrDefKeepBlanksDefaultValue(threadKeepBlanks_);
  xmlIndentTreeOutput = indentTreeOutput_;
  xmlThrDefIndentTreeOutput(threadIndentTreeOutput_);
  xmlTreeIndentString = treeIndentString_;
  xmlThrDefTreeIndentString(threadTreeIndentString_);
  xmlSaveNoEmptyTags = saveNoEmptyTags_;
  xmlThrDefSaveNoEmptyTags(threadSaveNoEmptyTags_);
}

void XMLGlobalsGuard::setNodeCallbacks(NodeCallback registerNode, NodeCallback deregisterNode) {
  xmlRegisterNodeDefault(registerNode);
  xmlDeregisterNodeDefault(deregisterNode);
  xmlThrDefRegisterNodeDefault(registerNode);
  xmlThrDefDeregisterNodeDefault(deregisterNode);
}

void XMLGlobalsGuard::setIndentTreeOutput(bool indent) {
  xmlIndentTreeOutput = indent ? 1 : 0;
  xmlThrDefIndentTreeOutput(indent ? 1 : 0);
}

void XMLGlobalsGuard::setTreeIndentString(std::string_view indent) {
  indent_ = indent;
  xmlTreeIndentString = indent_.c_str();
  xmlThrDefTreeIndentString(indent_.c_str());
}

void XMLGlobalsGuard::setKeepBlanksDefault(bool keepBlanks) {
  xmlKeepBlanksDefault(keepBlanks ? 1 : 0);
  xmlThrDefKeepBlanksDefaultValue(keepBlanks ? 1 : 0);
}

void XMLGlobalsGuard::setSaveNoEmptyTags(bool noEmptyTags) {
  xmlSaveNoEmptyTags = noEmptyTags ? 1 : 0;
  xmlThrDefSaveNoEmptyTags(noEmptyTags ? 1 : 0);
}

} // namespace vl::ns
