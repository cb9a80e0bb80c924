// Ownership of the libxml2 memory behind XML node handles.
#include "ns/XMLOwner.h"

#include "ns/Assert.h"
#include "ns/XMLTree.h"

namespace vl::ns::detail {

XMLOwner::~XMLOwner() {
  // Subtrees first: a detached node still reads its document's dictionary when it is freed.
  for (auto &[root, count] : freeStanding_)
    xmlFreeNode(root);
  for (xmlDocPtr doc : docs_)
    xmlFreeDoc(doc);
}

std::shared_ptr<XMLOwner> XMLOwner::create(xmlDocPtr doc) {
  auto owner = std::make_shared<XMLOwner>();
  if (doc)
    owner->docs_.push_back(doc);
  return owner;
}

XMLOwner &XMLOwner::resolve(std::shared_ptr<XMLOwner> &ref) {
  if (!ref->forward_)
    return *ref;
  std::shared_ptr<XMLOwner> root = ref->forward_;
  while (root->forward_)
    root = root->forward_;
  ref = std::move(root);
  return *ref;
}

void XMLOwner::retain(xmlNodePtr node) {
  ++handles_[node];
  if (!freeStanding_.empty()) {
    auto it = freeStanding_.find(topOf(node));
    if (it != freeStanding_.end())
      ++it->second;
  }
}

void XMLOwner::release(xmlNodePtr node) {
  auto counted = handles_.find(node);
  VL_ASSERT(counted != handles_.end(), "XML handle released twice");
  if (--counted->second == 0)
    handles_.erase(counted);
  if (freeStanding_.empty())
    return;
  xmlNodePtr top = topOf(node);
  auto it = freeStanding_.find(top);
  if (it != freeStanding_.end() && --it->second == 0) {
    freeStanding_.erase(it);
    xmlFreeNode(top);
  }
}

void XMLOwner::adoptFreeStanding(xmlNodePtr root) {
  uint64_t count = handlesInTree(root);
  if (count == 0)
    xmlFreeNode(root);
  else
    freeStanding_[root] = count;
}

void XMLOwner::didUnlink(xmlNodePtr root, xmlNodePtr formerTop) {
  uint64_t count = handlesInTree(root);
  auto former = freeStanding_.find(formerTop);
  if (former != freeStanding_.end()) {
    former->second -= count;
    if (former->second == 0) {
      freeStanding_.erase(former);
      xmlFreeNode(formerTop);
    }
  }
  if (count == 0)
    xmlFreeNode(root);
  else
    freeStanding_[root] = count;
}

void XMLOwner::willLink(xmlNodePtr root, xmlNodePtr parent) {
  uint64_t count;
  auto it = freeStanding_.find(root);
  if (it != freeStanding_.end()) {
    count = it->second;
    freeStanding_.erase(it);
  } else {
    count = handlesInTree(root);
  }
  auto target = freeStanding_.find(topOf(parent));
  if (target != freeStanding_.end())
    target->second += count;
}

void XMLOwner::merge(XMLOwner &other) {
  if (&other == this)
    return;
  docs_.insert(docs_.end(), other.docs_.begin(), other.docs_.end());
  other.docs_.clear();
  for (auto &[node, count] : other.handles_)
    handles_[node] += count;
  other.handles_.clear();
  for (auto &[root, count] : other.freeStanding_)
    freeStanding_[root] += count;
  other.freeStanding_.clear();
  other.forward_ = shared_from_this();
}

XMLOwner &XMLOwner::unite(XMLOwner &a, XMLOwner &b) {
  if (&a == &b)
    return a;
  auto weight = [](const XMLOwner &owner) {
    return owner.docs_.size() + owner.handles_.size() + owner.freeStanding_.size();
  };
  XMLOwner &kept = weight(a) >= weight(b) ? a : b;
  kept.merge(&kept == &a ? b : a);
  return kept;
}

uint64_t XMLOwner::handlesInTree(xmlNodePtr root) const {
  if (handles_.empty())
    return 0;
  // Walk the subtree while that is cheaper than looking at every handle; a big subtree with few
  // handles is then answered from the handles instead.
  const size_t budget = handles_.size() * 4 + 16;
  size_t visited = 0;
  uint64_t count = 0;
  auto visit = [&](xmlNodePtr node) {
    auto it = handles_.find(node);
    if (it != handles_.end())
      count += it->second;
    ++visited;
  };
  auto visitWithAttributes = [&](xmlNodePtr node) {
    visit(node);
    if (node->type == XML_ELEMENT_NODE)
      for (xmlAttrPtr attr = node->properties; attr; attr = attr->next)
        visit(reinterpret_cast<xmlNodePtr>(attr));
    return visited <= budget;
  };
  if (walkSubtree(root, visitWithAttributes))
    return count;
  count = 0;
  for (auto &[handled, handleCount] : handles_)
    if (topOf(handled) == root)
      count += handleCount;
  return count;
}

} // namespace vl::ns::detail
