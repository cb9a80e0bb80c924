// Errors.
#include "ns/Error.h"

#include "ns/String.h"

namespace vl::ns {

Error::Error(std::u16string domain, int64_t code, DictionaryPtr userInfo)
    : domain_(std::move(domain)), code_(code),
      userInfo_(userInfo ? std::move(userInfo) : Dictionary::create()) {}

ErrorPtr Error::errorWithDomain(std::u16string_view domain, int64_t code, DictionaryPtr userInfo) {
  return std::make_shared<Error>(std::u16string(domain), code, std::move(userInfo));
}

ErrorPtr Error::errorWithDescription(std::u16string_view domain, int64_t code,
                                     std::u16string_view description, std::u16string_view reason) {
  auto info = Dictionary::create();
  info->setObject(Value(description), LocalizedDescriptionKey);
  if (!reason.empty())
    info->setObject(Value(reason), LocalizedFailureReasonErrorKey);
  return errorWithDomain(domain, code, info);
}

std::u16string Error::localizedDescription() const {
  const Value &d = userInfo_->objectForKey(LocalizedDescriptionKey);
  if (d.isString())
    return d.string();
  return u"The operation couldn\u2019t be completed. (" + domain_ + u" error " +
         u16(std::to_string(code_)) + u".)";
}

std::u16string Error::localizedFailureReason() const {
  return userInfo_->objectForKey(LocalizedFailureReasonErrorKey).string();
}

bool Error::isEqual(const Object &other) const {
  auto *o = dynamic_cast<const Error *>(&other);
  return o && o->domain_ == domain_ && o->code_ == code_ && o->userInfo_->isEqual(*userInfo_);
}

std::u16string Error::description() const {
  return u"Error Domain=" + domain_ + u" Code=" + u16(std::to_string(code_)) + u" \"" +
         localizedDescription() + u"\"";
}

} // namespace vl::ns
