// Key-value observing: registrations, change announcements, key paths and dependent keys.
//
// A registration of "a.b.c" on X is kept by X's ObservationInfo and owns a small tree of
// forwarding nodes. Each node watches one key on one object through a hook listed in that
// object's ObservationInfo: the root watches "a" on X, its child "b" on the current X.a, and
// so on; a key's dependent key paths hang below its node as further nodes on the same object.
// When a watched key changes, the node moves its subtree to the new value and tells the
// registration, which counts nested announcements and delivers at the outermost pair. User
// observers only ever see the registration's own key path and object.
//
// Lifetimes: X's nodes point at X by raw pointer (X owns them through its info); nodes on
// intermediates hold weak_ptrs, so an intermediate that dies simply drops its hooks. Hooks
// are shared so that an announcement can walk a snapshot while callbacks add or remove
// registrations: a hook whose node is gone is skipped.
#include "ns/Dictionary.h"
#include "ns/Object.h"
#include "ns/Value.h"

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace vl::ns {

namespace detail {

struct Node;
struct Registration;

/// The entry an observed object lists under a key; `node` is null once the node is gone.
struct Hook {
  Node *node;
};

/// One forwarding node: watches `key` on `target` and tells its parent (or the registration).
struct Node {
  Node(Registration *registration, Node *parent, bool dependent, Object *target,
       std::weak_ptr<Object> targetRef, std::u16string_view path);
  ~Node();
  Node(const Node &) = delete;
  Node &operator=(const Node &) = delete;

  /// The target, or null once a target reached through a value has died.
  Object *liveTarget() const;
  /// Whether `key` is being expanded on this node's target by a chain of dependent keys.
  bool expanding(std::u16string_view key) const;
  /// Moves the rest of the path onto the current value of `key`.
  void rehook();
  void hookWill();
  void hookDid();

  Registration *registration;
  Node *parent;
  bool dependent; // reached from the parent through a dependent key path, not the path's rest
  Object *target;
  std::weak_ptr<Object> targetRef; // empty for nodes on the registration's own object
  bool viaRef;
  std::u16string key;
  std::u16string rest;
  std::shared_ptr<Hook> hook;
  std::vector<std::unique_ptr<Node>> dependents;
  std::unique_ptr<Node> next; // on the value of `key`, when `rest` is not empty
  int pending = 0;            // wills seen by this node's own hook and not yet balanced
};

/// A user's registration: delivers the outermost announcement of its key path.
struct Registration : std::enable_shared_from_this<Registration> {
  Registration(Object *object, Object *observer, std::u16string_view keyPath, uint32_t options,
               const void *context)
      : object(object), observer(observer), keyPath(keyPath), options(options), context(context) {}

  void will();
  void did();
  void deliver(const DictionaryPtr &change) {
    if (live)
      observer->observeValueForKeyPath(keyPath, object, change, context);
  }

  Object *object;
  Object *observer;
  std::u16string keyPath;
  uint32_t options;
  const void *context;
  bool live = true;
  int pending = 0;
  Value old;
  std::unique_ptr<Node> root;
};

/// What an observed object knows of its observation: the registrations made on it, and the
/// hooks (its own registrations' and other objects' forwarding nodes) listed by key.
struct ObservationInfo {
  ~ObservationInfo();

  static ObservationInfo *of(Object &object) { return object.observationInfo_.get(); }
  static ObservationInfo &ensure(Object &object) {
    if (!object.observationInfo_)
      object.observationInfo_ = std::make_unique<ObservationInfo>();
    return *object.observationInfo_;
  }
  /// Frees the info of an object that nothing observes any more.
  static void releaseIfEmpty(Object &object) {
    ObservationInfo *info = of(object);
    if (info && info->registrations.empty() && info->hooks.empty())
      object.observationInfo_.reset();
  }
  static void removeHook(Object &object, std::u16string_view key, const Hook *hook);
  static void announce(Object &object, std::u16string_view key, bool did);
  /// Takes the info away from a dying object, so that its own nodes find nothing to unhook.
  static std::unique_ptr<ObservationInfo> detach(Object &object) {
    return std::move(object.observationInfo_);
  }

  std::vector<std::shared_ptr<Registration>> registrations;
  std::map<std::u16string, std::vector<std::shared_ptr<Hook>>, std::less<>> hooks;
};

namespace {
// Deep enough for any real model; stops a dependent key cycle the expanding test misses.
constexpr int kMaxDependentDepth = 32;

std::u16string_view firstKey(std::u16string_view path) {
  return path.substr(0, path.find(u'.'));
}
} // namespace

Node::Node(Registration *registration, Node *parent, bool dependent, Object *target,
           std::weak_ptr<Object> targetRef, std::u16string_view path)
    : registration(registration), parent(parent), dependent(dependent), target(target),
      targetRef(std::move(targetRef)), viaRef(!this->targetRef.expired()),
      hook(std::make_shared<Hook>(Hook{this})) {
  size_t dot = path.find(u'.');
  key = path.substr(0, dot);
  if (dot != std::u16string_view::npos)
    rest = path.substr(dot + 1);
  ObservationInfo::ensure(*target).hooks[key].push_back(hook);

  int depth = 0;
  for (const Node *n = this; n && n->dependent; n = n->parent)
    ++depth;
  if (depth < kMaxDependentDepth)
    for (const std::u16string &affecting : target->keyPathsForValuesAffectingValueForKey(key))
      if (!affecting.empty() && !expanding(firstKey(affecting)))
        dependents.push_back(
            std::make_unique<Node>(registration, this, true, target, this->targetRef, affecting));
  if (!rest.empty())
    rehook();
}

Node::~Node() {
  next.reset();
  dependents.clear();
  hook->node = nullptr;
  if (Object *t = liveTarget())
    ObservationInfo::removeHook(*t, key, hook.get());
  registration->pending = std::max(0, registration->pending - pending);
}

Object *Node::liveTarget() const {
  return viaRef && targetRef.expired() ? nullptr : target;
}

bool Node::expanding(std::u16string_view k) const {
  for (const Node *n = this; n; n = n->dependent ? n->parent : nullptr)
    if (n->key == k)
      return true;
  return false;
}

void Node::rehook() {
  if (rest.empty())
    return;
  Object *t = liveTarget();
  Value value = t ? t->valueForKey(key) : Value();
  const ObjectPtr &object = value.object();
  if (next && next->target == object.get() && next->liveTarget())
    return;
  next.reset();
  if (object)
    next = std::make_unique<Node>(registration, this, false, object.get(), object, rest);
}

void Node::hookWill() {
  ++pending;
  registration->will();
}

void Node::hookDid() {
  // A did without its will still moves the path, but is not delivered.
  bool balanced = pending > 0;
  if (balanced)
    --pending;
  Registration *r = registration;
  rehook();
  // A dependent key's change is a change of the key it affects, whose subtree moves too.
  for (Node *n = this; r->live && n->parent; n = n->parent)
    if (n->dependent)
      n->parent->rehook();
  if (balanced)
    r->did();
}

void Registration::will() {
  if (pending++ > 0 || !live)
    return;
  old = options & KeyValueObservingOptionOld ? object->valueForKeyPath(keyPath) : Value();
  if (options & KeyValueObservingOptionPrior) {
    auto change = Dictionary::create(
        {{std::u16string(KeyValueChangeKindKey), Value(int64_t{KeyValueChangeSetting})},
         {std::u16string(KeyValueChangeNotificationIsPriorKey), Value(true)}});
    if (options & KeyValueObservingOptionOld)
      change->setObject(old, KeyValueChangeOldKey);
    deliver(change);
  }
}

void Registration::did() {
  if (pending == 0 || --pending > 0)
    return;
  Value oldValue = std::move(old);
  old = Value();
  if (!live)
    return;
  auto change = Dictionary::create(
      {{std::u16string(KeyValueChangeKindKey), Value(int64_t{KeyValueChangeSetting})}});
  if (options & KeyValueObservingOptionOld)
    change->setObject(std::move(oldValue), KeyValueChangeOldKey);
  if (options & KeyValueObservingOptionNew)
    change->setObject(object->valueForKeyPath(keyPath), KeyValueChangeNewKey);
  deliver(change);
}

ObservationInfo::~ObservationInfo() {
  // The object is dying: its registrations go, unhooking their nodes from intermediates.
  for (auto it = registrations.rbegin(); it != registrations.rend(); ++it) {
    (*it)->live = false;
    (*it)->root.reset();
  }
}

void ObservationInfo::removeHook(Object &object, std::u16string_view key, const Hook *hook) {
  ObservationInfo *info = of(object);
  if (!info)
    return;
  auto it = info->hooks.find(key);
  if (it == info->hooks.end())
    return;
  auto &list = it->second;
  auto found =
      std::find_if(list.begin(), list.end(), [&](const auto &h) { return h.get() == hook; });
  if (found == list.end())
    return;
  list.erase(found);
  if (list.empty())
    info->hooks.erase(it);
  releaseIfEmpty(object);
}

void ObservationInfo::announce(Object &object, std::u16string_view key, bool did) {
  ObservationInfo *info = of(object);
  auto it = info->hooks.find(key);
  if (it == info->hooks.end())
    return;
  // Callbacks may add and remove registrations, even free this info: walk a snapshot.
  std::vector<std::shared_ptr<Hook>> snapshot = it->second;
  std::shared_ptr<Object> keepObject = object.weak_from_this().lock();
  for (const auto &hook : snapshot) {
    Node *node = hook->node;
    if (!node)
      continue;
    std::shared_ptr<Registration> keepRegistration = node->registration->shared_from_this();
    if (did)
      node->hookDid();
    else
      node->hookWill();
  }
}

} // namespace detail

Object::Object() = default;

// A copy is a new object: it starts with no observers.
Object::Object(const Object &) : std::enable_shared_from_this<Object>() {}

Object &Object::operator=(const Object &) {
  return *this;
}

Object::~Object() {
  detail::ObservationInfo::detach(*this).reset();
}

void Object::addObserver(Object *observer, std::u16string_view keyPath, uint32_t options,
                         const void *context) {
  if (!observer || keyPath.empty())
    return;
  auto registration =
      std::make_shared<detail::Registration>(this, observer, keyPath, options, context);
  detail::ObservationInfo::ensure(*this).registrations.push_back(registration);
  registration->root = std::make_unique<detail::Node>(registration.get(), nullptr, false, this,
                                                      std::weak_ptr<Object>(), keyPath);
  if (options & KeyValueObservingOptionInitial) {
    auto change = Dictionary::create(
        {{std::u16string(KeyValueChangeKindKey), Value(int64_t{KeyValueChangeSetting})}});
    if (options & KeyValueObservingOptionNew)
      change->setObject(valueForKeyPath(keyPath), KeyValueChangeNewKey);
    registration->deliver(change);
  }
}

void Object::removeObserver(Object *observer, std::u16string_view keyPath, const void *context) {
  detail::ObservationInfo *info = detail::ObservationInfo::of(*this);
  if (!info)
    return;
  auto &list = info->registrations;
  for (auto it = list.rbegin(); it != list.rend(); ++it) {
    detail::Registration &r = **it;
    if (r.observer != observer || r.keyPath != keyPath || (context && r.context != context))
      continue;
    std::shared_ptr<detail::Registration> removed = *it;
    list.erase(std::next(it).base());
    removed->live = false;
    removed->root.reset();
    detail::ObservationInfo::releaseIfEmpty(*this);
    return;
  }
}

void Object::willChangeValueForKey(std::u16string_view key) {
  if (observationInfo_)
    detail::ObservationInfo::announce(*this, key, false);
}

void Object::didChangeValueForKey(std::u16string_view key) {
  if (observationInfo_)
    detail::ObservationInfo::announce(*this, key, true);
}

} // namespace vl::ns
