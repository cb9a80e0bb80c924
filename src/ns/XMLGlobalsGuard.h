// XMLGlobalsGuard: saves libxml2's process-wide defaults for parsing and printing and puts them
// back when the scope ends.
#pragma once

#include <string>
#include <string_view>

struct _xmlNode;

namespace vl::ns {

/// Guards the libxml2 settings that are process-wide rather than per call: the node
/// registration callbacks (xmlRegisterNodeDefault, xmlDeregisterNodeDefault), the indentation
/// of formatted output (xmlIndentTreeOutput, xmlTreeIndentString), blank handling
/// (xmlKeepBlanksDefault) and the empty-element style (xmlSaveNoEmptyTags), both for the calling
/// thread and as the defaults for new threads. The constructor saves them all; the setters change
/// them for the guard's lifetime; the destructor restores them, also when the scope is left by an
/// exception or after a failed parse.
///
/// The settings are shared, so nothing else may parse or print XML on another thread while a
/// guard changes them. Guards nest: an inner one restores what the outer one set.
class XMLGlobalsGuard {
public:
  using NodeCallback = void (*)(_xmlNode *);

  XMLGlobalsGuard();
  ~XMLGlobalsGuard();
  XMLGlobalsGuard(const XMLGlobalsGuard &) = delete;
  XMLGlobalsGuard &operator=(const XMLGlobalsGuard &) = delete;

  /// Sets the callbacks libxml2 calls for each node it makes and frees; null for none.
  void setNodeCallbacks(NodeCallback registerNode, NodeCallback deregisterNode);
  /// No node callbacks at all.
  void clearNodeCallbacks() { setNodeCallbacks(nullptr, nullptr); }
  /// Whether formatted output indents nested elements.
  void setIndentTreeOutput(bool indent);
  /// The indentation of one level of formatted output; the guard keeps the text alive.
  void setTreeIndentString(std::string_view indent);
  /// libxml2's default for keeping blank text nodes. Turning it off also turns indentation on,
  /// as libxml2 does.
  void setKeepBlanksDefault(bool keepBlanks);
  /// Whether output writes <a></a> rather than <a/> regardless of the options.
  void setSaveNoEmptyTags(bool noEmptyTags);

private:
  NodeCallback registerNode_, deregisterNode_, threadRegisterNode_, threadDeregisterNode_;
  int indentTreeOutput_, threadIndentTreeOutput_;
  const char *treeIndentString_, *threadTreeIndentString_;
  int keepBlanks_, threadKeepBlanks_;
  int saveNoEmptyTags_, threadSaveNoEmptyTags_;
  std::string indent_;
};

} // namespace vl::ns
