// A synthetic Fountain screenplay of a chosen length, for the screenplay benchmarks.
#pragma once

#include <cstdint>
#include <string>

namespace vl::bench {

/// Lines of Fountain text on one page of the generated script.
inline constexpr int ScreenplayLinesPerPage = 50;

/// A screenplay of about `pages` pages (ScreenplayLinesPerPage lines each), the same text for
/// the same arguments: a title page, then acts and sequences (sections with synopses) of
/// numbered scenes, with action (some of it emphasised or spread over several lines),
/// character cues with extensions, parentheticals, dialogue, dual dialogue, notes, forced and
/// listed transitions, page breaks, one boneyard in the middle and centred text at the end.
std::u16string fountainScreenplay(int pages, uint32_t seed = 20240601);

/// The same as UTF-8 bytes, as a file would hold them.
std::string fountainScreenplayUTF8(int pages, uint32_t seed = 20240601);

} // namespace vl::bench
