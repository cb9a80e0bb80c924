// The regular-expression Fountain parser: seventeen rewrites of the text into tags, then the
// tags read out as elements; and its title page reader.
#pragma once

#include "converters/fountain/FNElement.h"
#include "ns/Array.h"

#include <optional>
#include <string>
#include <string_view>

namespace vl {

// The rewrites, in the order they run: each pattern's matches are replaced by its template.
inline constexpr std::u16string_view UNIVERSAL_LINE_BREAKS_PATTERN = uR"(\r\n|\r|\n)";
inline constexpr std::u16string_view UNIVERSAL_LINE_BREAKS_TEMPLATE = u"\n";
inline constexpr std::u16string_view BLOCK_COMMENT_PATTERN = uR"(\n\/\*([^<>]+?)\*\/\n)";
inline constexpr std::u16string_view BLOCK_COMMENT_TEMPLATE = u"\n<Boneyard>$1</Boneyard>\n";
inline constexpr std::u16string_view BRACKET_COMMENT_PATTERN = uR"(\n\[{2}([^<>]+?)\]{2}\n)";
inline constexpr std::u16string_view BRACKET_COMMENT_TEMPLATE = u"\n<Comment>$1</Comment>\n";
inline constexpr std::u16string_view SYNOPSIS_PATTERN = uR"(\n={1}([^<>=][^<>]+?)\n)";
inline constexpr std::u16string_view SYNOPSIS_TEMPLATE = u"\n<Synopsis>$1</Synopsis>\n";
inline constexpr std::u16string_view PAGE_BREAK_PATTERN = uR"((?<=\n)(\s*[\=\-\_]{3,8}\s*)\n{1})";
inline constexpr std::u16string_view PAGE_BREAK_TEMPLATE = u"\n<Page Break></Page Break>\n";
inline constexpr std::u16string_view FALSE_TRANSITION_PATTERN =
    uR"(\n((&gt;|>)\s*[^<>\n]+(&lt;\s*))\n)";
inline constexpr std::u16string_view FALSE_TRANSITION_TEMPLATE = u"\n<Action>$1</Action>";
inline constexpr std::u16string_view FORCED_TRANSITION_PATTERN = uR"(\n((&gt;|>)\s*[^<>\n]+)\n)";
inline constexpr std::u16string_view FORCED_TRANSITION_TEMPLATE = u"\n<Transition>$1</Transition>";
inline constexpr std::u16string_view SCENE_HEADER_PATTERN =
    uR"((?<=\n)(([iI][nN][tT]|[eE][xX][tT]|[^\w][eE][sS][tT]|\.|[iI]\.?\/[eE]\.?)([^\n]+))\n)";
inline constexpr std::u16string_view SCENE_HEADER_TEMPLATE = u"\n<SceneHeading>$1</SceneHeading>";
inline constexpr std::u16string_view FIRST_LINE_ACTION_PATTERN = uR"(^\n\n([^<>\n#]*?)\n)";
inline constexpr std::u16string_view FIRST_LINE_ACTION_TEMPLATE = u"<Action>$1</Action>\n";
inline constexpr std::u16string_view TRANSITION_PATTERN =
    uR"(\n([\*_]*([^<>\na-z]*TO:|FADE TO BLACK\.|FADE OUT\.|CUT TO BLACK\.)[\*_]*)\n)";
inline constexpr std::u16string_view TRANSITION_TEMPLATE = u"\n<Transition>$1</Transition>";
inline constexpr std::u16string_view CHARACTER_CUE_PATTERN =
    uR"((?<=\n)([ \t]*[^<>a-z\s\/\n][^<>a-z:!\?\n]*[^<>a-z\(!\?:,\n\.][ \t]?)\n{1}(?!\n))";
inline constexpr std::u16string_view CHARACTER_CUE_TEMPLATE = u"<Character>$1</Character>";
inline constexpr std::u16string_view PARENTHETICAL_PATTERN = uR"((\([^<>]*?\)[\s]?)\n)";
inline constexpr std::u16string_view PARENTHETICAL_TEMPLATE = u"<Parenthetical>$1</Parenthetical>";
inline constexpr std::u16string_view DIALOGUE_PATTERN =
    uR"((<(Character|Parenthetical)>[^<>\n]+<\/(Character|Parenthetical)>)([^<>]*?)(?=\n{2}|\n{1}<Parenthetical>))";
inline constexpr std::u16string_view DIALOGUE_TEMPLATE = u"$1<Dialogue>$4</Dialogue>";
inline constexpr std::u16string_view SECTION_HEADER_PATTERN = uR"(((#+)(\s*[^\n]*))\n?)";
inline constexpr std::u16string_view SECTION_HEADER_TEMPLATE =
    u"<SectionHeading>$1</SectionHeading>";
inline constexpr std::u16string_view ACTION_PATTERN = uR"(([^<>]*?)(\n{2}|\n<))";
inline constexpr std::u16string_view ACTION_TEMPLATE = u"<Action>$1</Action>$2";
inline constexpr std::u16string_view CLEANUP_PATTERN = uR"(<Action>\s*<\/Action>)";
inline constexpr std::u16string_view CLEANUP_TEMPLATE = u"";
inline constexpr std::u16string_view NEWLINE_REPLACEMENT = u"@@@@@";
inline constexpr std::u16string_view NEWLINE_RESTORE = u"\n";

// Title page, centred text, dual dialogue and scene numbers.
inline constexpr std::u16string_view TITLE_PAGE_PATTERN = uR"(^([^\n]+:(([ \t]*|\n)[^\n]+\n)+)+\n)";
inline constexpr std::u16string_view INLINE_DIRECTIVE_PATTERN =
    uR"(^([\w\s&]+):\s*([^\s][\w&,\.\?!:\(\)\/\s-©\*\_]+)$)";
inline constexpr std::u16string_view MULTI_LINE_DIRECTIVE_PATTERN = uR"(^([\w\s&]+):\s*$)";
inline constexpr std::u16string_view MULTI_LINE_DATA_PATTERN = uR"(^([ ]{2,8}|\t)([^<>]+)$)";
inline constexpr std::u16string_view DUAL_DIALOGUE_PATTERN = uR"(\^\s*$)";
inline constexpr std::u16string_view CENTERED_TEXT_PATTERN = uR"(^>[^<>\n]+<)";
inline constexpr std::u16string_view SCENE_NUMBER_PATTERN = uR"((\#([0-9A-Za-z\.\)-]+)\#))";

// Kept for callers; no rewrite uses them.
inline constexpr std::u16string_view MULTI_LINE_ACTION_PATTERN =
    uR"(\n{2}(([^a-z\n:]+?[\.\?,\s!\*_]*?)\n{2}){1,2})";
inline constexpr std::u16string_view MULTI_LINE_ACTION_TEMPLATE = u"\n<Action>$2</Action>";

// Emphasis: the readers handle emphasis marks literally. The templates name the style.
inline constexpr std::u16string_view BOLD_ITALIC_UNDERLINE_PATTERN =
    uR"((_\*{3}|\*{3}_)([^<>]+)(_\*{3}|\*{3}_))";
inline constexpr std::u16string_view BOLD_ITALIC_UNDERLINE_TEMPLATE = u"Bold+Italic+Underline";
inline constexpr std::u16string_view BOLD_ITALIC_PATTERN = uR"((\*{3})([^<>]+)(\*{3}))";
inline constexpr std::u16string_view BOLD_ITALIC_TEMPLATE = u"Bold+Italic";
inline constexpr std::u16string_view BOLD_UNDERLINE_PATTERN =
    uR"((_\*{2}|\*{2}_)([^<>]+)(_\*{2}|\*{2}_))";
inline constexpr std::u16string_view BOLD_UNDERLINE_TEMPLATE = u"Bold+Underline";
inline constexpr std::u16string_view ITALIC_UNDERLINE_PATTERN =
    uR"((_\*{1}|\*{1}_)([^<>]+)(_\*{1}|\*{1}_))";
inline constexpr std::u16string_view ITALIC_UNDERLINE_TEMPLATE = u"Italic+Underline";
inline constexpr std::u16string_view BOLD_PATTERN = uR"((\*{2})([^<>]+)(\*{2}))";
inline constexpr std::u16string_view BOLD_TEMPLATE = u"Bold";
inline constexpr std::u16string_view ITALIC_PATTERN = uR"((?<!\\)(\*{1})([^<>]+)(\*{1}))";
inline constexpr std::u16string_view ITALIC_TEMPLATE = u"Italic";
inline constexpr std::u16string_view UNDERLINE_PATTERN = uR"((_)([^<>_]+)(_))";
inline constexpr std::u16string_view UNDERLINE_TEMPLATE = u"Underline";

/// Parses Fountain text by rewriting it into tags with the patterns above and reading the tags
/// back. It has no state. It differs from FastFountainParser on purpose in several points:
/// scene headings and sections come out typed "SceneHeading" and "SectionHeading" (tag names,
/// not the spaced type constants) with the scene number and "#" marks left in the text; notes
/// and boneyards may span lines and keep all their text; page breaks are 3 to 8 of "=", "-" or
/// "_"; transitions are any capitals ending in "TO:" or ">" lines; and only indented lines are
/// title page data.
///
/// Each call runs every pattern over the whole text: it costs many passes, and some patterns
/// search far ahead from each position, so very large texts with few line breaks are slow.
class FountainParser {
public:
  FountainParser() = delete;

  /// The elements of the body of `string` (its title page left out). Never fails.
  static FNElementArray parseBodyOfString(std::u16string_view string);
  /// The same for a file read as UTF-8 (else the plain-text guess); empty optional when it
  /// cannot be read.
  static std::optional<FNElementArray> parseBodyOfFile(std::u16string_view path);
  /// The title page of `string`: one-entry dictionaries of a lower-case key ("author" and
  /// "author(s)" give "authors") and an array of lines. Never null; empty when there is none.
  static ns::ArrayPtr parseTitlePageOfString(std::u16string_view string);
  /// The same for a file; null when it cannot be read.
  static ns::ArrayPtr parseTitlePageOfFile(std::u16string_view path);

  /// The text without its title page, between two blank lines ("\n\n...\n\n").
  static std::u16string bodyOfString(std::u16string_view string);
  /// The title page block of the text without its surrounding line feeds; "" when the first
  /// block is not a title page.
  static std::u16string titlePageOfString(std::u16string_view string);
};

} // namespace vl
