// Literal replacement for the Fountain parsers, linear whatever the text.
#include "converters/fountain/FountainText.h"

#include <cstdint>
#include <vector>

namespace vl::detail {

void replaceAllOccurrences(std::u16string &text, std::u16string_view target,
                           std::u16string_view replacement) {
  const size_t m = target.size();
  if (m == 0 || text.size() < m)
    return;
  // Knuth-Morris-Pratt: a plain find restarts at every position and turns quadratic on
  // repetitive text with a long target.
  std::vector<size_t> border(m, 0);
  for (size_t i = 1, k = 0; i < m; ++i) {
    while (k > 0 && target[i] != target[k])
      k = border[k - 1];
    if (target[i] == target[k])
      ++k;
    border[i] = k;
  }
  std::u16string result;
  size_t copied = 0; // text before this has been moved to result
  bool found = false;
  for (size_t i = 0, k = 0; i < text.size(); ++i) {
    while (k > 0 && text[i] != target[k])
      k = border[k - 1];
    if (text[i] == target[k])
      ++k;
    if (k == m) {
      if (!found) {
        result.reserve(text.size());
        found = true;
      }
      size_t matchStart = i + 1 - m;
      result.append(text, copied, matchStart - copied);
      result.append(replacement);
      copied = i + 1;
      k = 0; // occurrences do not overlap
    }
  }
  if (!found)
    return;
  result.append(text, copied, std::u16string::npos);
  text = std::move(result);
}

} // namespace vl::detail
