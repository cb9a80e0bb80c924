// VLSColorTable: the colour names of CSS and X11 ("aliceblue" to "yellowgreen") and their
// 0xRRGGBB values.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace vl {

/// One row of the colour name table.
struct VLSColorTableEntry {
  /// Lower case ASCII.
  std::string_view name;
  /// 0xRRGGBB.
  uint32_t color;
};

/// The row whose name is exactly the `length` bytes at `key` (UTF-8, compared as bytes, so
/// "Red" is not "red"), or null. Keys shorter than 3 or longer than 20 bytes are never
/// found. A binary search over 149 rows; no allocation.
const VLSColorTableEntry *VLSColorTable_Find(const char *key, size_t length);

/// Every row, sorted by name.
std::span<const VLSColorTableEntry> VLSColorTable_Entries();

} // namespace vl
