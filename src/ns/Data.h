// Immutable bytes with shared storage, the platform's NSData: copies are cheap.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vl::ns {

class Data {
public:
  Data() = default;
  explicit Data(std::vector<uint8_t> bytes)
      : bytes_(std::make_shared<const std::vector<uint8_t>>(std::move(bytes))) {}
  Data(const void *bytes, size_t length)
      : Data(std::vector<uint8_t>(static_cast<const uint8_t *>(bytes),
                                  static_cast<const uint8_t *>(bytes) + length)) {}
  /// The bytes of a UTF-8 (or any byte) string.
  static Data fromString(std::string_view bytes) { return Data(bytes.data(), bytes.size()); }

  const uint8_t *bytes() const { return bytes_ ? bytes_->data() : nullptr; }
  size_t length() const { return bytes_ ? bytes_->size() : 0; }
  size_t size() const { return length(); }
  bool empty() const { return length() == 0; }
  const uint8_t *begin() const { return bytes(); }
  const uint8_t *end() const { return bytes() + length(); }
  std::string_view view() const {
    return std::string_view(reinterpret_cast<const char *>(bytes()), length());
  }
  std::vector<uint8_t> toVector() const { return bytes_ ? *bytes_ : std::vector<uint8_t>{}; }

  bool operator==(const Data &other) const { return view() == other.view(); }

private:
  std::shared_ptr<const std::vector<uint8_t>> bytes_;
};

} // namespace vl::ns
