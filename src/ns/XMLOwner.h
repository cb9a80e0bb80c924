// Ownership of the libxml2 memory behind XML node handles (internal to the XML classes).
#pragma once

#include <libxml/tree.h>

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

namespace vl::ns::detail {

/// The top of the tree that holds `node`: a document, or the root of a free-standing subtree.
inline xmlNodePtr topOf(xmlNodePtr node) {
  while (node->parent)
    node = node->parent;
  return node;
}

/// One unit of ownership. Every handle holds a shared reference to the owner of its node, so the
/// documents an owner holds live as long as any handle into them. A subtree that hangs in no
/// document (made on its own, or detached) is freed as soon as no handle points into it.
///
/// When a node of one owner is linked into a tree of another, the owners merge: the first
/// forwards to the second, which takes over all it held. Merging, never splitting, keeps the
/// references acyclic and lets a node keep every document it ever touched alive.
class XMLOwner : public std::enable_shared_from_this<XMLOwner> {
public:
  XMLOwner() = default;
  XMLOwner(const XMLOwner &) = delete;
  XMLOwner &operator=(const XMLOwner &) = delete;
  /// Frees the free-standing subtrees, then the documents.
  ~XMLOwner();

  /// A new owner of `doc` (which may be null).
  static std::shared_ptr<XMLOwner> create(xmlDocPtr doc = nullptr);
  /// The owner `ref` stands for after merges; `ref` is shortened to point at it.
  static XMLOwner &resolve(std::shared_ptr<XMLOwner> &ref);

  /// Counts one more handle on `node`.
  void retain(xmlNodePtr node);
  /// Counts one handle less on `node`; frees its free-standing tree when no handle is left in it.
  void release(xmlNodePtr node);

  /// Takes `root`, a node without a parent, as a free-standing subtree of this owner; frees it at
  /// once when no handle points into it.
  void adoptFreeStanding(xmlNodePtr root);
  /// Whether `root` is known as the root of a free-standing subtree.
  bool tracksFreeStanding(xmlNodePtr root) const { return freeStanding_.count(root) != 0; }
  /// Books `root` as free-standing after it was unlinked from the tree whose top is `formerTop`;
  /// frees either part that no handle points into. O(size of the subtree) at worst.
  void didUnlink(xmlNodePtr root, xmlNodePtr formerTop);
  /// Books the free-standing `root` as part of the tree that holds `parent`, before it is linked.
  void willLink(xmlNodePtr root, xmlNodePtr parent);
  /// Takes over the documents, subtrees and handle counts of `other`, which forwards here after.
  void merge(XMLOwner &other);
  /// Merges the smaller of `a` and `b` into the larger one and answers the one that is left.
  static XMLOwner &unite(XMLOwner &a, XMLOwner &b);

private:
  uint64_t handlesInTree(xmlNodePtr root) const;

  std::vector<xmlDocPtr> docs_;
  std::unordered_map<xmlNodePtr, uint32_t> handles_;
  std::unordered_map<xmlNodePtr, uint64_t> freeStanding_; // root to handles inside its tree
  std::shared_ptr<XMLOwner> forward_;
};

} // namespace vl::ns::detail
