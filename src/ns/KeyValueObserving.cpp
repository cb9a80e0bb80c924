// Key-value observing: registrations, change announcements, key paths and dependent keys.
// (Placeholder: registrations are accepted and no change is delivered yet.)
#include "ns/Object.h"

namespace vl::ns {

namespace detail {
struct ObservationInfo {};
} // namespace detail

Object::Object() = default;
Object::Object(const Object &) : std::enable_shared_from_this<Object>() {}
Object &Object::operator=(const Object &) {
  return *this;
}
Object::~Object() = default;

void Object::addObserver(Object *, std::u16string_view, uint32_t, const void *) {}
void Object::removeObserver(Object *, std::u16string_view, const void *) {}
void Object::willChangeValueForKey(std::u16string_view) {}
void Object::didChangeValueForKey(std::u16string_view) {}

} // namespace vl::ns
