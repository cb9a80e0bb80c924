// Error: a domain, a code and a user-info dictionary (the platform's NSError).
#pragma once

#include "ns/Dictionary.h"
#include "ns/Object.h"

#include <string>
#include <string_view>

namespace vl::ns {

class Error;
using ErrorPtr = std::shared_ptr<Error>;

inline constexpr std::u16string_view LocalizedDescriptionKey = u"NSLocalizedDescription";
inline constexpr std::u16string_view LocalizedFailureReasonErrorKey = u"NSLocalizedFailureReason";
inline constexpr std::u16string_view UnderlyingErrorKey = u"NSUnderlyingError";
inline constexpr std::u16string_view FilePathErrorKey = u"NSFilePath";
inline constexpr std::u16string_view CocoaErrorDomain = u"NSCocoaErrorDomain";
inline constexpr std::u16string_view POSIXErrorDomain = u"NSPOSIXErrorDomain";

class Error : public Object {
public:
  Error(std::u16string domain, int64_t code, DictionaryPtr userInfo = nullptr);
  static ErrorPtr errorWithDomain(std::u16string_view domain, int64_t code,
                                  DictionaryPtr userInfo = nullptr);
  /// An error whose user info holds `description` (and `reason`, when not empty).
  static ErrorPtr errorWithDescription(std::u16string_view domain, int64_t code,
                                       std::u16string_view description,
                                       std::u16string_view reason = {});

  const char *className() const override { return "NSError"; }

  const std::u16string &domain() const { return domain_; }
  int64_t code() const { return code_; }
  /// Never null; empty when none was given.
  const DictionaryPtr &userInfo() const { return userInfo_; }

  /// The user info's description, or "The operation couldn’t be completed. (<domain> error
  /// <code>.)".
  std::u16string localizedDescription() const;
  /// The user info's failure reason, or "".
  std::u16string localizedFailureReason() const;

  bool isEqual(const Object &other) const override;
  std::u16string description() const override;

private:
  std::u16string domain_;
  int64_t code_;
  DictionaryPtr userInfo_;
};

/// Stores `error` through an out argument that may be null.
inline void setError(ErrorPtr *out, ErrorPtr error) {
  if (out)
    *out = std::move(error);
}

} // namespace vl::ns
