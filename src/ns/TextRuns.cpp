// The gap buffer, the blocked runs and the dictionary interning behind attributed strings.
#include "ns/TextRuns.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <iterator>
#include <typeinfo>
#include <unordered_set>

namespace vl::ns {

namespace {

// A run dictionary that an engine froze: never changed after it is made, so any engine may
// share it, and its hash is kept so interning it elsewhere costs no rehash.
class FrozenAttributes final : public Dictionary {
public:
  FrozenAttributes(const Dictionary &source, size_t hash) : Dictionary(source), internHash(hash) {}
  const size_t internHash;
};

const FrozenAttributes *asFrozen(const Dictionary *attributes) {
  return typeid(*attributes) == typeid(FrozenAttributes)
             ? static_cast<const FrozenAttributes *>(attributes)
             : nullptr;
}

size_t hashAttributes(const Dictionary &attributes) {
  size_t h = 0x9e3779b97f4a7c15ULL;
  auto mix = [&h](size_t v) { h ^= v + 0x9e3779b97f4a7c15ULL + (h << 6) + (h >> 2); };
  for (const auto &[key, value] : attributes) {
    mix(std::hash<std::u16string>()(key));
    mix(value.hash());
  }
  return h;
}

// Runs merge when their dictionaries are one object or equal by value. Run dictionaries are
// frozen, so their kept hashes rule out most unequal pairs without comparing entries.
bool sameAttributes(const ConstDictionaryPtr &a, const ConstDictionaryPtr &b) {
  if (a == b)
    return true;
  const FrozenAttributes *x = asFrozen(a.get()), *y = asFrozen(b.get());
  if (x && y && x->internHash != y->internHash)
    return false;
  return a->isEqual(*b);
}

// Splits the run that holds `offset` (counted from the start of `runs`) so that a run starts
// there, and answers its index (runs.size() at the end). The walk starts at run `from`, which
// starts at `fromOffset`, at or before `offset`.
size_t splitRunsAt(std::vector<TextRuns::Run> &runs, uint64_t offset, size_t from = 0,
                   uint64_t fromOffset = 0) {
  size_t k = from;
  offset -= fromOffset;
  while (k < runs.size() && offset >= runs[k].length) {
    offset -= runs[k].length;
    ++k;
  }
  if (offset == 0)
    return k;
  TextRuns::Run tail{runs[k].length - offset, runs[k].attributes};
  runs[k].length = offset;
  runs.insert(runs.begin() + static_cast<ptrdiff_t>(k) + 1, std::move(tail));
  return k + 1;
}

// Blocks cut from a long list of runs hold about this many, leaving room to grow.
constexpr size_t TargetRunsPerBlock = TextRuns::MaxRunsPerBlock * 3 / 4;
// A block left with fewer runs joins a neighbour.
constexpr size_t MinRunsPerBlock = TextRuns::MaxRunsPerBlock / 8;

} // namespace

const ConstDictionaryPtr &TextRuns::emptyAttributes() {
  static const ConstDictionaryPtr empty = std::make_shared<FrozenAttributes>(Dictionary(), 0);
  return empty;
}

TextRuns::TextRuns(std::u16string_view text, const ConstDictionaryPtr &attributes) {
  assignText(text);
  if (!text.empty())
    adoptRuns({Run{text.size(), intern(attributes)}});
}

TextRuns::TextRuns(std::u16string_view text, std::vector<Run> runs) {
  assignText(text);
  internRuns(runs);
  adoptRuns(std::move(runs));
}

TextRuns::TextRuns(const TextRuns &other)
    : blocks_(other.blocks_), starts_(other.starts_), interned_(other.interned_),
      sweepAt_(other.sweepAt_) {
  other.moveGap(other.length());
  assignText(std::u16string_view(other.buffer_.get(), other.length()));
}

TextRuns &TextRuns::operator=(const TextRuns &other) {
  if (this != &other) {
    TextRuns copy(other);
    *this = std::move(copy);
  }
  return *this;
}

TextRuns::TextRuns(TextRuns &&other) noexcept
    : buffer_(std::move(other.buffer_)), capacity_(other.capacity_), gapStart_(other.gapStart_),
      gapEnd_(other.gapEnd_), blocks_(std::move(other.blocks_)), starts_(std::move(other.starts_)),
      interned_(std::move(other.interned_)), sweepAt_(other.sweepAt_) {
  other.capacity_ = other.gapStart_ = other.gapEnd_ = 0;
  other.blocks_.clear();
  other.starts_.clear();
  ++other.version_;
}

TextRuns &TextRuns::operator=(TextRuns &&other) noexcept {
  if (this != &other) {
    buffer_ = std::move(other.buffer_);
    capacity_ = other.capacity_;
    gapStart_ = other.gapStart_;
    gapEnd_ = other.gapEnd_;
    blocks_ = std::move(other.blocks_);
    starts_ = std::move(other.starts_);
    interned_ = std::move(other.interned_);
    sweepAt_ = other.sweepAt_;
    ++version_;
    other.capacity_ = other.gapStart_ = other.gapEnd_ = 0;
    other.blocks_.clear();
    other.starts_.clear();
    ++other.version_;
  }
  return *this;
}

TextRuns::~TextRuns() = default;

// Interning.

ConstDictionaryPtr TextRuns::intern(const ConstDictionaryPtr &attributes) {
  if (!attributes || attributes->empty())
    return emptyAttributes();
  const FrozenAttributes *frozen = asFrozen(attributes.get());
  size_t hash = frozen ? frozen->internHash : hashAttributes(*attributes);
  auto [first, last] = interned_.equal_range(hash);
  for (auto it = first; it != last; ++it)
    if (it->second == attributes || it->second->isEqual(*attributes))
      return it->second;
  if (interned_.size() >= sweepAt_)
    sweepInterned();
  ConstDictionaryPtr stored =
      frozen ? attributes : std::make_shared<FrozenAttributes>(*attributes, hash);
  interned_.emplace(hash, stored);
  return stored;
}

// Drops the dictionaries no run holds any more; the threshold doubles with what is left, so
// sweeping costs O(1) amortized per interned dictionary.
void TextRuns::sweepInterned() {
  for (auto it = interned_.begin(); it != interned_.end();)
    it = it->second.use_count() == 1 ? interned_.erase(it) : std::next(it);
  sweepAt_ = std::max<size_t>(64, interned_.size() * 2);
}

void TextRuns::internRuns(std::vector<Run> &runs) {
  const Dictionary *lastSource = nullptr;
  ConstDictionaryPtr lastInterned;
  for (Run &run : runs) {
    if (!run.attributes || run.attributes.get() != lastSource) {
      lastSource = run.attributes.get();
      lastInterned = intern(run.attributes);
    }
    run.attributes = lastInterned;
  }
}

// Text.

void TextRuns::assignText(std::u16string_view text) {
  capacity_ = text.size() + text.size() / 8 + 16;
  buffer_ = std::make_unique_for_overwrite<char16_t[]>(capacity_);
  if (!text.empty())
    std::memcpy(buffer_.get(), text.data(), text.size() * sizeof(char16_t));
  gapStart_ = text.size();
  gapEnd_ = capacity_;
  ++version_;
}

void TextRuns::moveGap(uint64_t position) const {
  if (position < gapStart_) {
    size_t n = gapStart_ - position;
    std::memmove(&buffer_[gapEnd_ - n], &buffer_[position], n * sizeof(char16_t));
    gapStart_ = position;
    gapEnd_ -= n;
  } else if (position > gapStart_) {
    size_t n = position - gapStart_;
    std::memmove(&buffer_[gapStart_], &buffer_[gapEnd_], n * sizeof(char16_t));
    gapStart_ += n;
    gapEnd_ += n;
  }
}

void TextRuns::replaceText(Range range, std::u16string_view text) {
  std::less<const char16_t *> before;
  if (!text.empty() && buffer_ && !before(text.data(), buffer_.get()) &&
      before(text.data(), buffer_.get() + capacity_)) {
    // The new text is a view of this text, which the gap is about to move.
    std::u16string copy(text);
    replaceText(range, copy);
    return;
  }
  moveGap(range.location);
  gapEnd_ += range.length;
  size_t gap = gapEnd_ - gapStart_;
  size_t remaining = length();
  // Grow by half again when the gap is too small; give memory back after large deletions.
  bool grow = gap < text.size();
  bool shrink = gap - std::min(gap, text.size()) > std::max<size_t>(65536, 2 * remaining);
  if (grow || shrink) {
    size_t needed = remaining + text.size();
    size_t capacity = needed + needed / 2 + 32;
    auto fresh = std::make_unique_for_overwrite<char16_t[]>(capacity);
    size_t tail = capacity_ - gapEnd_;
    if (gapStart_)
      std::memcpy(fresh.get(), buffer_.get(), gapStart_ * sizeof(char16_t));
    if (tail)
      std::memcpy(fresh.get() + capacity - tail, buffer_.get() + gapEnd_, tail * sizeof(char16_t));
    buffer_ = std::move(fresh);
    capacity_ = capacity;
    gapEnd_ = capacity - tail;
  }
  if (!text.empty())
    std::memcpy(&buffer_[gapStart_], text.data(), text.size() * sizeof(char16_t));
  gapStart_ += text.size();
}

void TextRuns::copyCharacters(Range range, char16_t *out) const {
  if (range.length == 0)
    return;
  uint64_t end = range.max();
  if (range.location < gapStart_) {
    size_t n = std::min<uint64_t>(end, gapStart_) - range.location;
    std::memcpy(out, &buffer_[range.location], n * sizeof(char16_t));
    out += n;
  }
  if (end > gapStart_) {
    uint64_t from = std::max<uint64_t>(range.location, gapStart_);
    size_t n = end - from;
    std::memcpy(out, &buffer_[from + (gapEnd_ - gapStart_)], n * sizeof(char16_t));
  }
}

std::u16string TextRuns::substring(Range range) const {
  std::u16string out(range.length, u'\0');
  if (range.length)
    copyCharacters(range, out.data());
  return out;
}

std::u16string_view TextRuns::view() const {
  uint64_t n = length();
  if (n == 0)
    return {};
  moveGap(n);
  return std::u16string_view(buffer_.get(), n);
}

namespace {
bool isSeparator(char16_t c) {
  return c <= u'\r' ? (c == u'\n' || c == u'\r') : c == u'\u2029';
}
} // namespace

// The scans run over the two contiguous parts of the buffer, not unit by unit through the gap.
uint64_t TextRuns::nextSeparator(uint64_t from, uint64_t to) const {
  const size_t gap = gapEnd_ - gapStart_;
  for (uint64_t part = std::min<uint64_t>(to, gapStart_); from < part; ++from)
    if (isSeparator(buffer_[from]))
      return from;
  for (const char16_t *p = buffer_.get() + from + gap, *end = buffer_.get() + to + gap; p < end;
       ++p)
    if (isSeparator(*p))
      return static_cast<uint64_t>(p - buffer_.get()) - gap;
  return to;
}

uint64_t TextRuns::afterPreviousSeparator(uint64_t to) const {
  const size_t gap = gapEnd_ - gapStart_;
  for (; to > gapStart_; --to)
    if (isSeparator(buffer_[to - 1 + gap]))
      return to;
  for (; to > 0; --to)
    if (isSeparator(buffer_[to - 1]))
      return to;
  return 0;
}

Range TextRuns::paragraphRange(Range range) const {
  // The rules of detail::paragraphRange, with faster scans.
  const uint64_t n = length();
  uint64_t location = std::min(range.location, n);
  uint64_t rangeEnd = location + std::min(range.length, n - location);
  auto insideCRLF = [&](uint64_t i) {
    return i > 0 && i < n && characterAt(i) == u'\n' && characterAt(i - 1) == u'\r';
  };
  uint64_t start = afterPreviousSeparator(insideCRLF(location) ? location - 1 : location);
  uint64_t last = rangeEnd > location ? rangeEnd - 1 : location;
  uint64_t end;
  if (insideCRLF(last)) {
    end = last + 1;
  } else {
    end = nextSeparator(last, n);
    if (end < n)
      end += (characterAt(end) == u'\r' && end + 1 < n && characterAt(end + 1) == u'\n') ? 2 : 1;
  }
  return Range{start, end - start};
}

// Runs.

size_t TextRuns::blockOf(uint64_t index) const {
  return static_cast<size_t>(std::upper_bound(starts_.begin(), starts_.end(), index) -
                             starts_.begin()) -
         1;
}

TextRuns::Position TextRuns::locate(uint64_t index) const {
  if (cursorVersion_ == version_) {
    // Walking in order: the remembered run or one of its neighbours.
    const Position &c = cursor_;
    uint64_t end = c.start + blocks_[c.block].runs[c.run].length;
    if (index >= c.start && index < end)
      return c;
    Position n = c;
    if (index >= end) {
      if (n.run + 1 < blocks_[n.block].runs.size()) {
        ++n.run;
      } else if (n.block + 1 < blocks_.size()) {
        ++n.block;
        n.run = 0;
      }
      n.start = end;
      if ((n.block != c.block || n.run != c.run) &&
          index < end + blocks_[n.block].runs[n.run].length)
        return cursor_ = n;
    } else {
      if (n.run > 0) {
        --n.run;
      } else if (n.block > 0) {
        --n.block;
        n.run = blocks_[n.block].runs.size() - 1;
      }
      n.start = c.start - blocks_[n.block].runs[n.run].length;
      if ((n.block != c.block || n.run != c.run) && index >= n.start)
        return cursor_ = n;
    }
  }
  Position p;
  p.block = blockOf(index);
  p.start = starts_[p.block];
  const std::vector<Run> &runs = blocks_[p.block].runs;
  while (index >= p.start + runs[p.run].length)
    p.start += runs[p.run++].length;
  cursorVersion_ = version_;
  return cursor_ = p;
}

const ConstDictionaryPtr &TextRuns::attributesAt(uint64_t index, Range *runRange) const {
  Position p = locate(index);
  const Run &run = blocks_[p.block].runs[p.run];
  if (runRange)
    *runRange = Range{p.start, run.length};
  return run.attributes;
}

std::vector<TextRuns::Run> TextRuns::runsInRange(Range range) const {
  std::vector<Run> out;
  if (range.length == 0)
    return out;
  Position p = locate(range.location);
  uint64_t position = range.location;
  uint64_t end = range.max();
  while (position < end) {
    const Run &run = blocks_[p.block].runs[p.run];
    uint64_t runEnd = p.start + run.length;
    uint64_t pieceEnd = std::min(runEnd, end);
    out.push_back(Run{pieceEnd - position, run.attributes});
    position = pieceEnd;
    p.start = runEnd;
    if (++p.run == blocks_[p.block].runs.size()) {
      ++p.block;
      p.run = 0;
    }
  }
  return out;
}

void TextRuns::replaceCharacters(Range range, std::u16string_view text) {
  const uint64_t n = text.size();
  if (range.length == 0 && n == 0)
    return;
  if (blocks_.empty()) {
    replaceText(range, text);
    spliceRuns(0, 0, {Run{n, emptyAttributes()}});
    return;
  }
  // The run whose attributes the new text takes: the first replaced unit's, else the one
  // before, else the one after.
  uint64_t probe = range.length > 0 ? range.location : range.location > 0 ? range.location - 1 : 0;
  Position at = locate(probe);
  Block &block = blocks_[at.block];
  Run &run = block.runs[at.run];
  replaceText(range, text);
  if (range.max() <= at.start + run.length && run.length + n > range.length) {
    // The edit stays inside that run: only lengths change.
    uint64_t delta = n - range.length; // modular: may stand for a negative change
    run.length += delta;
    block.length += delta;
    for (size_t b = at.block + 1; b < starts_.size(); ++b)
      starts_[b] += delta;
    ++version_;
    cursor_ = at;
    cursorVersion_ = version_;
    return;
  }
  std::vector<Run> runs;
  if (n)
    runs.push_back(Run{n, run.attributes});
  spliceRuns(range.location, range.length, std::move(runs));
}

void TextRuns::replaceCharacters(Range range, std::u16string_view text, std::vector<Run> runs) {
  replaceText(range, text);
  internRuns(runs);
  spliceRuns(range.location, range.length, std::move(runs));
}

void TextRuns::setAttributes(const ConstDictionaryPtr &attributes, Range range) {
  if (range.length == 0)
    return;
  ConstDictionaryPtr interned = intern(attributes);
  Position at = locate(range.location);
  const Run &run = blocks_[at.block].runs[at.run];
  if (run.attributes == interned && range.max() <= at.start + run.length)
    return;
  spliceRuns(range.location, range.length, {Run{range.length, std::move(interned)}});
}

// Replaces the runs over [position, position + removeLength) by `runs`, whose dictionaries are
// interned already. The blocks that hold the run before and the run after the edit are
// gathered into one, edited in place, merged at the seams and cut again if they grew.
void TextRuns::spliceRuns(uint64_t position, uint64_t removeLength, std::vector<Run> runs) {
  std::erase_if(runs, [](const Run &r) { return r.length == 0; });
  if (blocks_.empty()) {
    adoptRuns(std::move(runs));
    return;
  }
  const uint64_t total = starts_.back() + blocks_.back().length;
  const uint64_t end = position + removeLength;
  // Where the edit starts, found before the blocks move (usually the remembered run).
  Position at{blocks_.size() - 1, blocks_.back().runs.size(), total};
  if (position < total)
    at = locate(position);
  ++version_;
  size_t first = position > 0 ? blockOf(position - 1) : 0;
  size_t last = end < total ? blockOf(end) : blocks_.size() - 1;
  size_t atIndex = at.run;
  for (size_t b = first; b < at.block; ++b)
    atIndex += blocks_[b].runs.size();
  Block &block = blocks_[first];
  if (last > first) {
    for (size_t b = first + 1; b <= last; ++b) {
      block.length += blocks_[b].length;
      std::move(blocks_[b].runs.begin(), blocks_[b].runs.end(), std::back_inserter(block.runs));
    }
    auto from = static_cast<ptrdiff_t>(first) + 1, to = static_cast<ptrdiff_t>(last) + 1;
    blocks_.erase(blocks_.begin() + from, blocks_.begin() + to);
    starts_.erase(starts_.begin() + from, starts_.begin() + to);
  }
  std::vector<Run> &list = blocks_[first].runs;
  const uint64_t base = starts_[first];
  const uint64_t offset = position - base;
  size_t i = splitRunsAt(list, offset, atIndex, at.start - base);
  size_t j = splitRunsAt(list, end - base, i, offset);
  list.erase(list.begin() + static_cast<ptrdiff_t>(i), list.begin() + static_cast<ptrdiff_t>(j));
  uint64_t inserted = 0;
  for (const Run &r : runs)
    inserted += r.length;
  size_t count = runs.size();
  list.insert(list.begin() + static_cast<ptrdiff_t>(i), std::make_move_iterator(runs.begin()),
              std::make_move_iterator(runs.end()));
  blocks_[first].length = blocks_[first].length - removeLength + inserted;

  // Merge equal neighbours from the run before the edit to the run after it.
  const uint64_t leftStart = i > 0 ? offset - list[i - 1].length : 0;
  size_t k = std::max<size_t>(i, 1);
  size_t after = i + count;
  while (k <= after && k < list.size()) {
    if (sameAttributes(list[k - 1].attributes, list[k].attributes)) {
      list[k - 1].length += list[k].length;
      list.erase(list.begin() + static_cast<ptrdiff_t>(k));
      --after;
    } else {
      ++k;
    }
  }
  // Remember the run that now holds the position, so that reads and edits nearby find it.
  Position hold{first, i, position};
  if (i > 0 && leftStart + list[i - 1].length > offset)
    hold = Position{first, i - 1, base + leftStart};
  bool holds = hold.run < list.size();
  if (!rebalance(first) && holds) {
    cursor_ = hold;
    cursorVersion_ = version_;
  }
}

bool TextRuns::rebalance(size_t b) {
  std::vector<Run> &runs = blocks_[b].runs;
  const size_t n = runs.size();
  if (n == 0) {
    blocks_.erase(blocks_.begin() + static_cast<ptrdiff_t>(b));
    starts_.erase(starts_.begin() + static_cast<ptrdiff_t>(b));
    recomputeStarts(b);
    return true;
  }
  if (n > MaxRunsPerBlock) {
    size_t parts = std::max<size_t>(2, (n + TargetRunsPerBlock - 1) / TargetRunsPerBlock);
    std::vector<Block> pieces(parts - 1);
    for (size_t p = 1; p < parts; ++p) {
      auto from = runs.begin() + static_cast<ptrdiff_t>(n * p / parts);
      auto to = runs.begin() + static_cast<ptrdiff_t>(n * (p + 1) / parts);
      Block &piece = pieces[p - 1];
      piece.runs.assign(std::make_move_iterator(from), std::make_move_iterator(to));
      for (const Run &r : piece.runs)
        piece.length += r.length;
      blocks_[b].length -= piece.length;
    }
    runs.resize(n / parts);
    auto at = static_cast<ptrdiff_t>(b) + 1;
    blocks_.insert(blocks_.begin() + at, std::make_move_iterator(pieces.begin()),
                   std::make_move_iterator(pieces.end()));
    starts_.insert(starts_.begin() + at, parts - 1, 0);
    recomputeStarts(b + 1);
    return true;
  }
  if (n < MinRunsPerBlock && blocks_.size() > 1) {
    // Join the smaller neighbour; the joined block is cut again if it is too long.
    size_t left = b;
    if (b + 1 == blocks_.size() ||
        (b > 0 && blocks_[b - 1].runs.size() <= blocks_[b + 1].runs.size()))
      left = b - 1;
    Block &into = blocks_[left];
    Block &from = blocks_[left + 1];
    into.length += from.length;
    std::move(from.runs.begin(), from.runs.end(), std::back_inserter(into.runs));
    blocks_.erase(blocks_.begin() + static_cast<ptrdiff_t>(left) + 1);
    starts_.erase(starts_.begin() + static_cast<ptrdiff_t>(left) + 1);
    recomputeStarts(left + 1);
    if (blocks_[left].runs.size() > MaxRunsPerBlock)
      rebalance(left);
    return true;
  }
  recomputeStarts(b + 1);
  return false;
}

void TextRuns::recomputeStarts(size_t fromBlock) {
  starts_.resize(blocks_.size());
  for (size_t k = std::max<size_t>(fromBlock, 1); k < blocks_.size(); ++k)
    starts_[k] = starts_[k - 1] + blocks_[k - 1].length;
  if (!starts_.empty())
    starts_[0] = 0;
}

// Replaces all blocks by `runs` (interned already), merged and cut into blocks.
void TextRuns::adoptRuns(std::vector<Run> runs) {
  ++version_;
  blocks_.clear();
  std::vector<Run> merged;
  merged.reserve(runs.size());
  for (Run &run : runs) {
    if (run.length == 0)
      continue;
    if (!merged.empty() && sameAttributes(merged.back().attributes, run.attributes))
      merged.back().length += run.length;
    else
      merged.push_back(std::move(run));
  }
  const size_t n = merged.size();
  size_t parts = n <= MaxRunsPerBlock ? 1 : (n + TargetRunsPerBlock - 1) / TargetRunsPerBlock;
  if (n == 0)
    parts = 0;
  blocks_.resize(parts);
  for (size_t p = 0; p < parts; ++p) {
    Block &block = blocks_[p];
    auto from = merged.begin() + static_cast<ptrdiff_t>(n * p / parts);
    auto to = merged.begin() + static_cast<ptrdiff_t>(n * (p + 1) / parts);
    block.runs.assign(std::make_move_iterator(from), std::make_move_iterator(to));
    for (const Run &r : block.runs)
      block.length += r.length;
  }
  recomputeStarts(0);
}

// Diagnostics.

size_t TextRuns::runCount() const {
  size_t n = 0;
  for (const Block &b : blocks_)
    n += b.runs.size();
  return n;
}

size_t TextRuns::distinctAttributeCount() const {
  std::unordered_set<const Dictionary *> seen;
  for (const Block &b : blocks_)
    for (const Run &r : b.runs)
      seen.insert(r.attributes.get());
  return seen.size();
}

size_t TextRuns::memoryUsage() const {
  size_t bytes = capacity_ * sizeof(char16_t);
  bytes += blocks_.capacity() * sizeof(Block) + starts_.capacity() * sizeof(uint64_t);
  for (const Block &b : blocks_)
    bytes += b.runs.capacity() * sizeof(Run);
  bytes += interned_.bucket_count() * sizeof(void *) +
           interned_.size() * (sizeof(ConstDictionaryPtr) + 3 * sizeof(void *));
  return bytes;
}

std::string TextRuns::checkInvariants() const {
  if (starts_.size() != blocks_.size())
    return "block starts and blocks differ in number";
  uint64_t position = 0;
  const Run *previous = nullptr;
  for (size_t b = 0; b < blocks_.size(); ++b) {
    const Block &block = blocks_[b];
    if (block.runs.empty())
      return "empty block " + std::to_string(b);
    if (block.runs.size() > MaxRunsPerBlock)
      return "overfull block " + std::to_string(b);
    if (starts_[b] != position)
      return "wrong start of block " + std::to_string(b);
    uint64_t sum = 0;
    for (const Run &run : block.runs) {
      if (run.length == 0)
        return "empty run in block " + std::to_string(b);
      if (!run.attributes || !asFrozen(run.attributes.get()))
        return "run dictionary not frozen in block " + std::to_string(b);
      if (previous && sameAttributes(previous->attributes, run.attributes))
        return "equal neighbour runs at " + std::to_string(position + sum);
      sum += run.length;
      previous = &run;
    }
    if (sum != block.length)
      return "wrong length of block " + std::to_string(b);
    position += sum;
  }
  if (position != length())
    return "runs cover " + std::to_string(position) + " units of " + std::to_string(length());
  return "";
}

} // namespace vl::ns
