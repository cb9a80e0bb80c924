// The platform's run attribute names, document attribute names and document types.
#pragma once

#include <cstdint>
#include <string_view>

namespace vl::ns {

// Run attributes.
inline constexpr std::u16string_view FontAttributeName = u"NSFont";
inline constexpr std::u16string_view ParagraphStyleAttributeName = u"NSParagraphStyle";
inline constexpr std::u16string_view ForegroundColorAttributeName = u"NSColor";
inline constexpr std::u16string_view BackgroundColorAttributeName = u"NSBackgroundColor";
inline constexpr std::u16string_view UnderlineStyleAttributeName = u"NSUnderline";
inline constexpr std::u16string_view UnderlineColorAttributeName = u"NSUnderlineColor";
inline constexpr std::u16string_view StrikethroughStyleAttributeName = u"NSStrikethrough";
inline constexpr std::u16string_view StrikethroughColorAttributeName = u"NSStrikethroughColor";
inline constexpr std::u16string_view SuperscriptAttributeName = u"NSSuperScript";
inline constexpr std::u16string_view BaselineOffsetAttributeName = u"NSBaselineOffset";
inline constexpr std::u16string_view LigatureAttributeName = u"NSLigature";
inline constexpr std::u16string_view KernAttributeName = u"NSKern";
inline constexpr std::u16string_view LinkAttributeName = u"NSLink";
inline constexpr std::u16string_view AttachmentAttributeName = u"NSAttachment";
inline constexpr std::u16string_view ShadowAttributeName = u"NSShadow";
inline constexpr std::u16string_view ObliquenessAttributeName = u"NSObliqueness";
inline constexpr std::u16string_view ExpansionAttributeName = u"NSExpansion";
inline constexpr std::u16string_view ToolTipAttributeName = u"NSToolTip";

// Underline and strikethrough words.
inline constexpr int64_t UnderlineStyleNone = 0x00;
inline constexpr int64_t UnderlineStyleSingle = 0x01;
inline constexpr int64_t UnderlineStyleThick = 0x02;
inline constexpr int64_t UnderlineStyleDouble = 0x09;
inline constexpr int64_t UnderlinePatternSolid = 0x0000;
inline constexpr int64_t UnderlinePatternDot = 0x0100;
inline constexpr int64_t UnderlinePatternDash = 0x0200;
inline constexpr int64_t UnderlinePatternDashDot = 0x0300;
inline constexpr int64_t UnderlinePatternDashDotDot = 0x0400;
inline constexpr int64_t UnderlineByWordMask = 0x8000;

/// The character that stands for an attachment in the text.
inline constexpr char16_t AttachmentCharacter = u'\uFFFC';

// Document attributes.
inline constexpr std::u16string_view LeftMarginDocumentAttribute = u"LeftMargin";
inline constexpr std::u16string_view RightMarginDocumentAttribute = u"RightMargin";
inline constexpr std::u16string_view TopMarginDocumentAttribute = u"TopMargin";
inline constexpr std::u16string_view BottomMarginDocumentAttribute = u"BottomMargin";
inline constexpr std::u16string_view PaperSizeDocumentAttribute = u"PaperSize";
inline constexpr std::u16string_view ViewSizeDocumentAttribute = u"ViewSize";
inline constexpr std::u16string_view ViewZoomDocumentAttribute = u"ViewZoom";
inline constexpr std::u16string_view ViewModeDocumentAttribute = u"ViewMode";
inline constexpr std::u16string_view HyphenationFactorDocumentAttribute = u"HyphenationFactor";
inline constexpr std::u16string_view DefaultTabIntervalDocumentAttribute = u"DefaultTabInterval";
inline constexpr std::u16string_view CharacterEncodingDocumentAttribute = u"CharacterEncoding";
inline constexpr std::u16string_view TitleDocumentAttribute = u"Title";
inline constexpr std::u16string_view AuthorDocumentAttribute = u"Author";
inline constexpr std::u16string_view SubjectDocumentAttribute = u"Subject";
inline constexpr std::u16string_view KeywordsDocumentAttribute = u"Keywords";
inline constexpr std::u16string_view CommentDocumentAttribute = u"Comment";
inline constexpr std::u16string_view CompanyDocumentAttribute = u"Company";
inline constexpr std::u16string_view EditorDocumentAttribute = u"Editor";
inline constexpr std::u16string_view CreationTimeDocumentAttribute = u"CreationTime";
inline constexpr std::u16string_view ModificationTimeDocumentAttribute = u"ModificationTime";
inline constexpr std::u16string_view DocumentTypeDocumentAttribute = u"DocumentType";
inline constexpr std::u16string_view PrefixSpacesDocumentAttribute = u"PrefixSpaces";

// Document options and types.
inline constexpr std::u16string_view BaseURLDocumentOption = u"BaseURL";
inline constexpr std::u16string_view DocumentTypeDocumentOption = u"DocumentType";
inline constexpr std::u16string_view CharacterEncodingDocumentOption = u"CharacterEncoding";
inline constexpr std::u16string_view PlainTextDocumentType = u"NSPlainText";
inline constexpr std::u16string_view RTFTextDocumentType = u"NSRTF";
inline constexpr std::u16string_view RTFDTextDocumentType = u"NSRTFD";
inline constexpr std::u16string_view HTMLTextDocumentType = u"NSHTML";

} // namespace vl::ns
