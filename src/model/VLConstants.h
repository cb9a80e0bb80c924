// The document frame's shared names: run attribute keys, document attribute keys, Dublin
// Core keys, publication roles, notification names, exported identifiers and underline masks.
#pragma once

#include <cstdint>
#include <string_view>

namespace vl {

// Run attribute keys.

/// `VLStyle` of style type paragraph: the style in force over the whole paragraph.
inline constexpr std::u16string_view VLParagraphStyleAttributeName = u"VLParagraphStyleAttribute";
/// `VLStyle` of style type text: a character style over a run.
inline constexpr std::u16string_view VLTextStyleAttributeName = u"VLTextStyleAttribute";
/// `VLListStyle`.
inline constexpr std::u16string_view VLListStyleAttributeName = u"VLListStyleAttribute";
/// Integer text transform overriding the style's for a run (0 none, 1 lower, 2 upper,
/// 3 capitalized).
inline constexpr std::u16string_view VLTextTransformAttributeName = u"VLTextTransformAttribute";
/// `VLOutline`: the outline entry that owns the range.
inline constexpr std::u16string_view VLOutlineElementAttributeName = u"VLOutlineElementAttribute";
/// `VLSTextMarker`. Unlike the others, the literal ends in "AttributeName".
inline constexpr std::u16string_view VLSTextMarkerAttributeName = u"VLSTextMarkerAttributeName";
/// `VLTextSpan`.
inline constexpr std::u16string_view VLTextSpanAttributeName = u"VLTextSpanAttribute";
/// Identifies a part of a list span.
inline constexpr std::u16string_view VLTextSpanPartAttributeName = u"VLTextSpanPartAttribute";
/// The list item span of a run.
inline constexpr std::u16string_view VLTextSpanListItemAttributeName =
    u"VLTextSpanListItemAttribute";
/// `VLSSheetObject`.
inline constexpr std::u16string_view VLSSheetObjectAttributeName = u"VLSSheetObjectAttributeName";

// The underline word of the underline style attribute: line style bits, dash pattern bits
// and the platform's by-word bit (ns::UnderlineByWordMask, 0x8000).
inline int64_t VLUnderlineStyleMask = 0xb;
inline int64_t VLUnderlinePatternMask = 0x700;

// Document attribute keys.

/// `VLStylesheet`.
inline constexpr std::u16string_view VLStylesheetDocumentAttribute = u"VLStylesheet";
/// Dictionary from master page key to `VLMasterPage`; "Standard" names the page writers use.
inline constexpr std::u16string_view VLMasterPagesKey = u"VLODFMasterPages";
/// Mutable dictionary from marker identifier to `VLSTextMarker`.
inline constexpr std::u16string_view VLReferencesDocumentAttribute = u"VLReferences";
/// The host's metadata model (see VLRDFModel).
inline constexpr std::u16string_view VLRDFMetadataDocumentAttribute =
    u"VLRDFMetadataDocumentAttribute";
/// Boolean for the RTFD writer.
inline constexpr std::u16string_view VLSScrivenerScriptHackDocumentAttribute =
    u"VLSScrivenerScriptHackDocumentAttribute";
/// One of the publication roles below.
inline constexpr std::u16string_view VLSPublicationRoleDocumentAttribute =
    u"VLSPublicationRoleDocumentAttribute";
/// Path of the style sheet an HTML page links.
inline constexpr std::u16string_view VLSHTMLStylesheetPath = u"VLSHTMLStylesheetPath";
/// Directory for the images of an HTML page.
inline constexpr std::u16string_view VLSHTMLImagesDirectory = u"VLSHTMLImagesDirectory";
/// Not read by the library; passed through.
inline constexpr std::u16string_view VLSHTMLEncodeStyleOverrides = u"VLSHTMLEncodeStyleOverrides";

/// The master page key writers use, whatever the page's name.
inline constexpr std::u16string_view VLStandardMasterPageKey = u"Standard";
/// The settings tree of the document attributes.
inline constexpr std::u16string_view VLSettingsDocumentAttribute = u"settings";
/// Boolean: the RTF held links.
inline constexpr std::u16string_view VLHasLinksDocumentAttribute = u"hasLinks";

// Dublin Core document attributes: the literal is the constant's own name.
inline constexpr std::u16string_view VLSDCDescriptionDocumentAttribute =
    u"VLSDCDescriptionDocumentAttribute";
inline constexpr std::u16string_view VLSDCPublisherDocumentAttribute =
    u"VLSDCPublisherDocumentAttribute";
inline constexpr std::u16string_view VLSDCTypeDocumentAttribute = u"VLSDCTypeDocumentAttribute";
inline constexpr std::u16string_view VLSDCFormatDocumentAttribute = u"VLSDCFormatDocumentAttribute";
inline constexpr std::u16string_view VLSDCSourceDocumentAttribute = u"VLSDCSourceDocumentAttribute";
inline constexpr std::u16string_view VLSDCRelationDocumentAttribute =
    u"VLSDCRelationDocumentAttribute";
inline constexpr std::u16string_view VLSDCRightsDocumentAttribute = u"VLSDCRightsDocumentAttribute";
inline constexpr std::u16string_view VLSDCSubjectsDocumentAttribute =
    u"VLSDCSubjectsDocumentAttribute";
inline constexpr std::u16string_view VLSDCLanguagesDocumentAttribute =
    u"VLSDCLanguagesDocumentAttribute";
inline constexpr std::u16string_view VLSAuthorsDocumentAttribute = u"VLSAuthorsDocumentAttribute";
inline constexpr std::u16string_view VLSDCCoverageDocumentAttribute =
    u"VLSDCCoverageDocumentAttribute";
inline constexpr std::u16string_view VLSDCTitleDocumentAttribute = u"VLSDCTitleDocumentAttribute";
inline constexpr std::u16string_view VLSDCCreatorsDocumentAttribute =
    u"VLSDCCreatorsDocumentAttribute";
inline constexpr std::u16string_view VLSDCContributorsDocumentAttribute =
    u"VLSDCContributorsDocumentAttribute";
inline constexpr std::u16string_view VLSDCIdentifiersDocumentAttribute =
    u"VLSDCIdentifiersDocumentAttribute";

// Publication roles, the values of VLSPublicationRoleDocumentAttribute.
inline constexpr std::u16string_view VLSCoverPublicationRole = u"cover";
inline constexpr std::u16string_view VLSTextPublicationRole = u"text";
inline constexpr std::u16string_view VLSTitlePagePublicationRole = u"title-page";
inline constexpr std::u16string_view VLSTOCPublicationRole = u"toc";
inline constexpr std::u16string_view VLSIndexPublicationRole = u"index";
inline constexpr std::u16string_view VLSGlossaryPublicationRole = u"glossary";
inline constexpr std::u16string_view VLSAcknowledgementsPublicationRole = u"acknowledgements";
inline constexpr std::u16string_view VLSBibliographyPublicationRole = u"bibliography";
inline constexpr std::u16string_view VLSColophonPublicationRole = u"colophon";
inline constexpr std::u16string_view VLSCopyrightPagePublicationRole = u"copyright-page";
inline constexpr std::u16string_view VLSDedicationPublicationRole = u"dedication";
inline constexpr std::u16string_view VLSForewordPublicationRole = u"foreword";
inline constexpr std::u16string_view VLSNotesPublicationRole = u"notes";
inline constexpr std::u16string_view VLSPrefacePublicationRole = u"preface";

// Notification names and other exported identifiers.

/// Observed by VLFocusedTextStorage on its base storage; posted by the host around an edit
/// with "range" and "changeInLength" in the user info. The spelling is part of the name.
inline constexpr std::u16string_view VLSTextStorageEditedNotificaton =
    u"VLSTextStorageEditedNotificaton";
inline constexpr std::u16string_view VLSFocusedTextStorageDidInvalidateNotification =
    u"VLSFocusedTextStorageDidInvalidateNotification";
inline constexpr std::u16string_view VLPageLayoutDidChangeNotification = u"VLPageLayoutDidChange";
/// The type identifier of the system's own content in conversion lookups.
inline constexpr std::u16string_view VLVelmoranContentUTI =
    u"com.velmoran.velmoran.styled-text-object";
/// Pasteboard type of a sheet object.
inline constexpr std::u16string_view VLSSheetObjectPasteboardType =
    u"com.velmoran.velmoran.pboard.sheet-object";
inline constexpr std::u16string_view VLSWorkspaceScrollPointKey = u"scrollPoint";
inline constexpr std::u16string_view VLSWorkspaceSelectedRangeKey = u"selectedRange";

} // namespace vl
