// Reading Fountain: elements to styled paragraphs, mark-up to traits and comments, scenes and
// sections to outline entries, and the completion lists of the settings.
#include "converters/fountain/VLSFountainReader.h"

#include "model/VLConstants.h"
#include "model/VLLocalization.h"
#include "model/VLMasterPage.h"
#include "model/VLStringAdditions.h"
#include "ns/AttributeNames.h"
#include "ns/Font.h"
#include "ns/FontManager.h"
#include "ns/ParagraphStyle.h"
#include "ns/PrintInfo.h"
#include "ns/Scanner.h"
#include "ns/String.h"
#include "ns/TextStorage.h"
#include "objects/VLSTextMarker.h"

#include <unicode/utf16.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <unordered_map>

namespace vl {

namespace {

// Identifier counters, process-wide as the identifiers are: converters run one at a time.
uint64_t commentCounter = 1;
uint64_t sceneCounter = 1;

constexpr std::u16string_view FadeInParagraph = u"FADE IN:\n";
constexpr char16_t LineSeparator = u'\u2028';

// A completion list: an entry moves to the front when it is seen again. Each entry keeps the
// stamp of its last sighting, so the order is by stamp, newest first, and an update costs
// one hash look-up however long the list grows.
class RecentList {
public:
  /// `start` in list order, the first entry the most recent.
  explicit RecentList(std::initializer_list<std::u16string_view> start, uint64_t &clock)
      : clock_(clock) {
    for (auto it = std::rbegin(start); it != std::rend(start); ++it)
      touch(std::u16string(*it));
  }

  /// Puts `value` at the front; answers its new stamp.
  uint64_t touch(std::u16string value) {
    uint64_t stamp = ++clock_;
    stamps_[std::move(value)] = stamp;
    return stamp;
  }

  std::vector<std::u16string> strings() const {
    std::vector<std::pair<uint64_t, const std::u16string *>> ordered;
    ordered.reserve(stamps_.size());
    for (const auto &[value, stamp] : stamps_)
      ordered.emplace_back(stamp, &value);
    std::sort(ordered.begin(), ordered.end(),
              [](const auto &a, const auto &b) { return a.first > b.first; });
    std::vector<std::u16string> result;
    result.reserve(ordered.size());
    for (const auto &entry : ordered)
      result.push_back(*entry.second);
    return result;
  }

private:
  std::unordered_map<std::u16string, uint64_t> stamps_;
  uint64_t &clock_;
};

// The times of day, case-folded in a trie, so that a heading finds the most recently seen
// time that follows one of its dashes in one walk per dash, not one search per known time.
class TimeIndex {
public:
  TimeIndex() : stamps_(1, 0) {}

  void add(std::u16string_view time, uint64_t stamp) {
    if (time.empty())
      return;
    uint32_t node = 0;
    for (size_t i = 0; i < time.size();) {
      UChar32 c;
      U16_NEXT(time.data(), i, time.size(), c);
      char16_t folded[4];
      int n = ns::foldCodePoint(static_cast<char32_t>(c), folded);
      for (int k = 0; k < n; ++k) {
        auto [it, added] =
            children_.try_emplace(key(node, folded[k]), static_cast<uint32_t>(stamps_.size()));
        if (added)
          stamps_.push_back(0);
        node = it->second;
      }
    }
    stamps_[node] = std::max(stamps_[node], stamp);
  }

  /// The newest stamp of a time that matches `text` from `from` ignoring case, ending on a
  /// whole character; 0 when none does.
  uint64_t newestMatchAt(std::u16string_view text, size_t from) const {
    uint64_t best = 0;
    uint32_t node = 0;
    for (size_t i = from; i < text.size();) {
      UChar32 c;
      U16_NEXT(text.data(), i, text.size(), c);
      char16_t folded[4];
      int n = ns::foldCodePoint(static_cast<char32_t>(c), folded);
      for (int k = 0; k < n; ++k) {
        auto it = children_.find(key(node, folded[k]));
        if (it == children_.end())
          return best;
        node = it->second;
      }
      best = std::max(best, stamps_[node]);
    }
    return best;
  }

private:
  static uint64_t key(uint32_t node, char16_t unit) {
    return (static_cast<uint64_t>(node) << 16) | unit;
  }

  std::unordered_map<uint64_t, uint32_t> children_;
  std::vector<uint64_t> stamps_; // per node: the newest time that ends there, 0 for none
};

std::u16string upperTrimmed(std::u16string_view text) {
  return ns::trimmed(ns::uppercaseString(text));
}

std::u16string trimmedWhitespace(std::u16string_view text) {
  return ns::stringByTrimmingCharactersInSet(text, ns::CharacterSet::whitespaceCharacterSet());
}

// The first occurrence of `needle` in `string` at or after `from`, read unit by unit so that
// a paragraph being edited is never made contiguous again; ns::NotFound when there is none.
uint64_t find(const ns::AttributedString &string, std::u16string_view needle, uint64_t from) {
  uint64_t length = string.length();
  if (needle.empty() || length < needle.size())
    return ns::NotFound;
  for (uint64_t i = from; i + needle.size() <= length; ++i) {
    size_t k = 0;
    while (k < needle.size() && string.characterAtIndex(i + k) == needle[k])
      ++k;
    if (k == needle.size())
      return i;
  }
  return ns::NotFound;
}

// Removes the next pair of `mark` at or after `position` and answers the text that stood
// between them; `position` becomes the end of the opening mark as it stood. Nullopt at the
// end of the text or when no pair is left (an unpaired mark stays).
std::optional<ns::Range> removeMarkPair(ns::MutableAttributedString &string,
                                        std::u16string_view mark, uint64_t &position) {
  if (string.length() == 0 || position >= string.length())
    return std::nullopt;
  uint64_t open = find(string, mark, position);
  if (open == ns::NotFound)
    return std::nullopt;
  position = open + mark.size();
  uint64_t close = find(string, mark, position);
  if (close == ns::NotFound)
    return std::nullopt;
  string.deleteCharactersInRange(ns::Range{close, mark.size()});
  string.deleteCharactersInRange(ns::Range{open, mark.size()});
  return ns::Range{open, close - position};
}

// The text of one paragraph: the element's lines, each without leading blanks unless
// `keepLeadingBlanks`, joined by `lineEnd`, and a final line feed.
std::u16string paragraphText(std::u16string_view text, bool keepLeadingBlanks, char16_t lineEnd) {
  const ns::CharacterSet &blanks = ns::CharacterSet::whitespaceCharacterSet();
  std::u16string paragraph;
  paragraph.reserve(text.size() + 1);
  for (size_t i = 0, n = text.size(); i < n;) {
    size_t start = i;
    if (!keepLeadingBlanks)
      while (start < n && blanks.characterIsMember(text[start]))
        ++start;
    size_t end = start;
    while (end < n && !ns::isParagraphSeparator(text[end]))
      ++end;
    paragraph.append(text.substr(start, end - start));
    if (end == n)
      break;
    i = end + 1;
    if (text[end] == u'\r' && i < n && text[i] == u'\n')
      ++i;
    paragraph.push_back(lineEnd);
  }
  paragraph.push_back(u'\n');
  return paragraph;
}

// Whether any mark-up step could change the paragraph.
bool mayHoldMarkup(std::u16string_view paragraph) {
  return paragraph.find_first_of(u"*_") != std::u16string_view::npos ||
         paragraph.find(u"[[") != std::u16string_view::npos;
}

} // namespace

// The kind of a paragraph, which decides its attributes and the completions it feeds.
enum class VLSFountainReader::Kind {
  SceneHeading,
  Action,
  Character,
  Parenthetical,
  Dialogue,
  Transition,
  Section,
};

struct VLSFountainReader::Completions {
  uint64_t clock = 0;
  RecentList sceneIntros{{u"INT", u"EXT", u"I/E"}, clock};
  RecentList locations{{}, clock};
  RecentList times{{}, clock}; // filled with the index below
  RecentList characters{{}, clock};
  RecentList extensions{{u"(O.S.)", u"(CONT'D)", u"(V.O.)", u"(O.C.)", u"(SUBTITLE)"}, clock};
  RecentList transitions{{u"CUT TO:", u"FADE IN:", u"FADE OUT.", u"FADE TO:", u"DISSOLVE TO:",
                          u"BACK TO:", u"MATCH CUT TO:", u"JUMP CUT TO:", u"FADE TO BLACK."},
                         clock};
  TimeIndex timeIndex;

  Completions() {
    for (std::u16string_view time : {u"THE NEXT DAY", u"CONTINUOUS", u"MOMENTS LATER", u"LATER",
                                     u"EVENING", u"MORNING", u"AFTERNOON", u"NIGHT", u"DAY"})
      touchTime(std::u16string(time));
  }

  void touchTime(std::u16string time) {
    uint64_t stamp = times.touch(time);
    timeIndex.add(time, stamp);
  }
};

struct VLSFountainReader::WalkState {
  int64_t sectionDepth = std::numeric_limits<int64_t>::max();
  bool newSection = true;
  bool nextSection = false;
  bool commentLast = false;
  uint64_t sceneCount = 0;
};

VLSFountainReader::VLSFountainReader()
    : _references(ns::Dictionary::create()), _completions(std::make_unique<Completions>()),
      _baseFontFamily(u"Courier") {
  std::u16string title = localizedString(u"Introduction");
  _currentSceneOutline = VLOutline::entryWithRange(ns::Range{0, 0}, 0);
  _currentSceneOutline->setTitle(title);
  _currentSceneOutline->setIdentifier(uniqueSceneID());
  _currentSceneProperties = ns::Dictionary::create(
      {{u"title", title}, {u"resourceType", std::u16string(VLObjectResourceType)}});
}

VLSFountainReader::~VLSFountainReader() = default;

// Reading.

ns::MutableAttributedStringPtr VLSFountainReader::attributedStringWithData(
    const ns::Data &data, const ns::DictionaryPtr & /*options*/,
    ns::DictionaryPtr *documentAttributes, ns::ErrorPtr *error) {
  ns::StringEncoding usedEncoding = 0;
  std::optional<std::u16string> string = stringWithData(data, &usedEncoding, error);
  if (!string)
    return nullptr;
  FNScriptPtr script = FNScript::createWithString(*string);
  if (!script)
    return nullptr;
  string.reset();

  processTitlePageForScript(*script);
  ns::FontPtr font = ns::Font::fontWithName(_baseFontFamily, 12.0);
  _stylesheet = _isNovel ? VLStylesheet::defaultNovelStylesheetWithFont(font)
                         : VLStylesheet::defaultScreenplayStylesheetWithFont(font);
  if (!_attributedString)
    _attributedString = ns::TextStorage::create();
  prepareAttributes();

  WalkState state;
  ns::MutableAttributedString &text = *_attributedString;
  // One batch for the whole walk: a text storage then fixes and reports its text once.
  text.beginEditing();
  for (const FNElementPtr &element : script->elements())
    if (element)
      walkElement(*element, state);
  // A comment at the very end needs a character to sit on.
  if (state.commentLast)
    text.replaceCharactersInRange(ns::Range{text.length(), 0}, u"\n");
  text.endEditing();
  endOutlineEntryAtLocation(text.length());
  flushReferences();

  ns::DictionaryPtr attributes;
  if (documentAttributes)
    attributes = makeDocumentAttributes(state.sceneCount);
  applyReferences();
  if (documentAttributes)
    *documentAttributes = std::move(attributes);

  _kindAttributes.clear();
  _sectionAttributes.clear();
  _outlineAttributes.clear();
  _outlineOfAttributes.reset();
  _separatorAttributes.reset();
  return _attributedString;
}

void VLSFountainReader::prepareAttributes() {
  _kindAttributes.assign(static_cast<size_t>(Kind::Section), nullptr);
  _sectionAttributes.clear();
  _outlineAttributes.clear();
  _outlineOfAttributes.reset();
  if (_isNovel) {
    VLStylePtr textStyle = _stylesheet->styleForDisplayName(localizedString(u"Section Text"));
    if (!textStyle)
      textStyle = _stylesheet->defaultParagraphStyle();
    ns::ConstDictionaryPtr textAttributes = _internedAttributes.intern(textStyle->attributes());
    std::fill(_kindAttributes.begin(), _kindAttributes.end(), textAttributes);
    VLStylePtr separator = _stylesheet->styleForDisplayName(localizedString(u"Section Separator"));
    ns::DictionaryPtr separatorAttributes = separator ? separator->attributes() : nullptr;
    _separatorAttributes = separatorAttributes && !separatorAttributes->empty()
                               ? _internedAttributes.intern(separatorAttributes)
                               : textAttributes;
    return;
  }
  _separatorAttributes.reset();
  // The first style of a pagination class stands.
  constexpr std::pair<int64_t, Kind> kindsByPagination[] = {
      {VLSceneHeadingPagination, Kind::SceneHeading},
      {VLActionPagination, Kind::Action},
      {VLCharacterPagination, Kind::Character},
      {VLParentheticalPagination, Kind::Parenthetical},
      {VLDialoguePagination, Kind::Dialogue},
      {VLTransitionPagination, Kind::Transition}};
  for (const VLStylePtr &style : _stylesheet->styles())
    for (const auto &[pagination, kind] : kindsByPagination)
      if (style->paginationStyle() == pagination && !_kindAttributes[static_cast<size_t>(kind)])
        _kindAttributes[static_cast<size_t>(kind)] =
            _internedAttributes.intern(style->attributes());
}

ns::ConstDictionaryPtr VLSFountainReader::sectionAttributes(int64_t level) {
  VLStylePtr style = _stylesheet->styleForHeaderLevel(level);
  if (!style) {
    VLStylePtr action = _stylesheet->styleForDisplayName(localizedString(u"Action"));
    if (!action)
      return nullptr;
    style = std::dynamic_pointer_cast<VLStyle>(action->copy());
    style->setHeaderLevel(level);
    style->setParentStyle(action);
    style->setNextStyle(action);
    style->setDisplayName(ns::format(localizedString(u"Heading %d"), level));
    style->setStyleName(VLStyle::styleNameForDisplayName(style->displayName()));
    _stylesheet->addStyle(style);
  }
  for (const auto &[known, attributes] : _sectionAttributes)
    if (known == style.get())
      return attributes;
  ns::ConstDictionaryPtr attributes = _internedAttributes.intern(style->attributes());
  _sectionAttributes.emplace_back(style.get(), attributes);
  return attributes;
}

ns::ConstDictionaryPtr
VLSFountainReader::attributesWithOutline(const ns::ConstDictionaryPtr &attributes) {
  if (!attributes)
    return nullptr;
  if (_outlineOfAttributes != _currentSceneOutline) {
    _outlineAttributes.clear();
    _outlineOfAttributes = _currentSceneOutline;
  }
  for (const auto &[base, withOutline] : _outlineAttributes)
    if (base == attributes.get())
      return withOutline;
  auto withOutline = std::make_shared<ns::Dictionary>(*attributes);
  withOutline->setObject(_currentSceneOutline, VLOutlineElementAttributeName);
  ns::ConstDictionaryPtr frozen = _internedAttributes.intern(withOutline);
  _outlineAttributes.emplace_back(attributes.get(), frozen);
  return frozen;
}

void VLSFountainReader::walkElement(const FNElement &element, WalkState &state) {
  const std::u16string &type = element.elementType();
  std::u16string text = element.elementText();
  state.nextSection = false;
  std::optional<Kind> kind;
  ns::ConstDictionaryPtr attributes;

  if (type == FNElementTypeSceneHeading) {
    kind = Kind::SceneHeading;
    if (_isNovel && state.sectionDepth == 0 && !state.newSection)
      appendText(u"#\n", _separatorAttributes);
    startOutlineEntryWithTitle(text, 0);
    ++state.sceneCount;
    state.sectionDepth = 0;
    // In a novel the heading only titles its entry.
    if (!_isNovel)
      attributes = _kindAttributes[static_cast<size_t>(Kind::SceneHeading)];
  } else if (type == FNElementTypeSectionHeading) {
    kind = Kind::Section;
    state.sectionDepth = static_cast<int64_t>(std::min<uint64_t>(
        element.sectionDepth(), static_cast<uint64_t>(std::numeric_limits<int64_t>::max())));
    attributes = sectionAttributes(state.sectionDepth);
    text = trimmedWhitespace(text);
    startOutlineEntryWithTitle(text, state.sectionDepth);
    state.nextSection = true;
  } else if (type == FNElementTypeAction || type == FNElementTypeCharacter ||
             type == FNElementTypeDialogue || type == FNElementTypeParenthetical ||
             type == FNElementTypeTransition) {
    kind = type == FNElementTypeAction          ? Kind::Action
           : type == FNElementTypeCharacter     ? Kind::Character
           : type == FNElementTypeDialogue      ? Kind::Dialogue
           : type == FNElementTypeParenthetical ? Kind::Parenthetical
                                                : Kind::Transition;
    attributes = _kindAttributes[static_cast<size_t>(*kind)];
    state.sectionDepth = 0;
  } else if (type == FNElementTypeSynopsis) {
    // A later synopsis of the same entry replaces the earlier one.
    _currentSceneProperties->setObject(trimmedWhitespace(text), u"summary");
  } else if (type == FNElementTypeComment) {
    addComment(text, _attributedString->length());
    state.commentLast = true;
    state.sectionDepth = 0;
  } else {
    // Page breaks and boneyards leave nothing in the text.
    state.sectionDepth = 0;
  }

  if (kind && attributes)
    writeElement(std::move(text), *kind, attributes, element.isCentered(), state);
  state.newSection = state.nextSection;
}

void VLSFountainReader::writeElement(std::u16string text, Kind kind,
                                     const ns::ConstDictionaryPtr &attributes, bool centered,
                                     WalkState &state) {
  if (kind == Kind::Transition && !text.empty() && text.front() == u'>')
    text.erase(0, 1);
  if (_isNovel) {
    if (text == u"#")
      state.nextSection = true;
    if (state.newSection && state.sectionDepth == 0)
      startOutlineEntryWithTitle(localizedString(u"Untitled Section"), 0);
  }
  std::u16string paragraph =
      paragraphText(text, kind == Kind::Action, _isNovel ? u' ' : LineSeparator);
  uint64_t location = _attributedString->length();

  // Mark-up and centring work on a string of the paragraph alone; most paragraphs need
  // neither and go into the text as they are.
  ns::ConstDictionaryPtr paragraphAttributes = attributesWithOutline(attributes);
  ns::MutableAttributedStringPtr styled;
  auto style = [&](const ns::ConstDictionaryPtr &withOutline, bool center) {
    styled.reset();
    if (!center && !mayHoldMarkup(paragraph))
      return;
    styled = ns::MutableAttributedString::create(paragraph, withOutline);
    if (center)
      centerAttributedString(*styled);
    processMarkupInAttributedString(*styled, location);
  };
  style(paragraphAttributes, centered);
  std::u16string_view written = styled ? styled->string() : std::u16string_view(paragraph);

  // FADE IN: opens the script: it takes the scene heading style and counts as a heading.
  if (kind == Kind::Transition && written == FadeInParagraph) {
    kind = Kind::SceneHeading;
    paragraphAttributes =
        attributesWithOutline(_kindAttributes[static_cast<size_t>(Kind::SceneHeading)]);
    style(paragraphAttributes, false);
    written = styled ? styled->string() : std::u16string_view(paragraph);
  }

  if (kind == Kind::SceneHeading)
    updateCompletionsFromSceneHeading(written);
  else if (kind == Kind::Character)
    updateCompletionsFromCharacter(written);
  else if (kind == Kind::Transition)
    updateCompletionsFromTransition(written);

  if (styled)
    _attributedString->replaceCharactersInRange(ns::Range{location, 0}, *styled);
  else
    appendText(paragraph, paragraphAttributes);
  state.commentLast = false;
}

void VLSFountainReader::appendText(std::u16string_view text,
                                   const ns::ConstDictionaryPtr &attributes) {
  ns::MutableAttributedString &target = *_attributedString;
  uint64_t location = target.length();
  target.replaceCharactersInRange(ns::Range{location, 0}, text);
  target.setAttributes(attributes, ns::Range{location, text.size()});
}

// The title page.

void VLSFountainReader::processTitlePageForScript(const FNScript &script) {
  for (const ns::Value &entry : *script.titlePage()) {
    ns::DictionaryPtr directives = entry.dictionary();
    if (!directives)
      continue;
    for (const auto &[key, value] : *directives) {
      ns::ArrayPtr lines = value.array();
      if (!lines || lines->count() == 0)
        continue;
      const ns::Value &last = lines->objectAtIndex(lines->count() - 1);
      if (key == u"type") {
        if (ns::caseInsensitiveCompare(last.stringValue(), u"novel") == ns::OrderedSame)
          _isNovel = true;
      } else if (key == u"font") {
        _baseFontFamily = last.stringValue();
      }
    }
  }
}

// Completions.

bool VLSFountainReader::parseSceneHeading(std::u16string_view string,
                                          std::optional<std::u16string> *intro,
                                          std::optional<std::u16string> *location,
                                          std::optional<std::u16string> *time) const {
  size_t start = 0;
  if (size_t period = string.find(u'.'); period != std::u16string_view::npos) {
    if (intro)
      *intro = upperTrimmed(string.substr(0, period));
    start = period + 1;
  }
  // The dash before the most recently seen time that follows any dash; else the first dash.
  constexpr std::u16string_view dashMark = u"- ";
  size_t dash = std::u16string_view::npos;
  uint64_t newest = 0;
  for (size_t p = string.find(dashMark, start); p != std::u16string_view::npos;
       p = string.find(dashMark, p + 1)) {
    uint64_t stamp = _completions->timeIndex.newestMatchAt(string, p + dashMark.size());
    if (stamp > newest) {
      newest = stamp;
      dash = p;
    }
  }
  if (dash == std::u16string_view::npos)
    dash = string.find(dashMark, start);

  if (location)
    *location = upperTrimmed(string.substr(
        start, dash == std::u16string_view::npos ? std::u16string_view::npos : dash - start));
  if (time) {
    if (dash == std::u16string_view::npos) {
      time->reset();
    } else {
      size_t from = dash + dashMark.size();
      size_t next = string.find(u'-', from);
      *time = upperTrimmed(string.substr(
          from, next == std::u16string_view::npos ? std::u16string_view::npos : next - from));
    }
  }
  return true;
}

bool VLSFountainReader::parseCharacter(std::u16string_view string,
                                       std::optional<std::u16string> *name,
                                       std::optional<std::u16string> *extension) {
  ns::Scanner scanner{std::u16string(string)};
  bool found = false;
  std::u16string scanned;
  if (scanner.scanUpToString(u"(", &scanned)) {
    if (name)
      *name = ns::uppercaseString(ns::trimmed(scanned));
    found = true;
  } else if (name) {
    name->reset();
  }
  if (scanner.isAtEnd())
    return found;
  scanned.clear();
  if (scanner.scanUpToString(u")", &scanned)) {
    if (extension)
      *extension = ns::uppercaseString(scanned + u")");
    found = true;
  } else if (extension) {
    extension->reset();
  }
  return found;
}

void VLSFountainReader::updateCompletionsFromSceneHeading(std::u16string_view string) {
  std::optional<std::u16string> intro, location, time;
  parseSceneHeading(string, &intro, &location, &time);
  if (intro && !intro->empty())
    _completions->sceneIntros.touch(std::move(*intro));
  if (location && !location->empty())
    _completions->locations.touch(std::move(*location));
  if (time && !time->empty())
    _completions->touchTime(std::move(*time));
}

void VLSFountainReader::updateCompletionsFromCharacter(std::u16string_view string) {
  std::optional<std::u16string> name, extension;
  parseCharacter(string, &name, &extension);
  if (name)
    _completions->characters.touch(std::move(*name));
  if (extension)
    _completions->extensions.touch(std::move(*extension));
}

void VLSFountainReader::updateCompletionsFromTransition(std::u16string_view string) {
  _completions->transitions.touch(ns::uppercaseString(string));
}

VLCompletionLists VLSFountainReader::completionLists() const {
  VLCompletionLists lists;
  lists.characters = _completions->characters.strings();
  lists.extensions = _completions->extensions.strings();
  lists.sceneIntros = _completions->sceneIntros.strings();
  lists.locations = _completions->locations.strings();
  lists.times = _completions->times.strings();
  lists.transitions = _completions->transitions.strings();
  return lists;
}

ns::ArrayPtr
VLSFountainReader::settingsDictionaryArrayWithStrings(const std::vector<std::u16string> &strings) {
  return vl::settingsDictionaryArrayWithStrings(strings);
}

ns::ArrayPtr VLSFountainReader::outlineLevelSettingsForStylesheet(const VLStylesheet *stylesheet) {
  return vl::outlineLevelSettingsForStylesheet(stylesheet);
}

// Identifiers, comments and outline entries.

bool VLSFountainReader::containsReference(const std::u16string &identifier) const {
  return _references->containsKey(identifier) || _pendingReferences.count(identifier) != 0;
}

void VLSFountainReader::storeReference(const VLSTextMarkerPtr &marker) {
  if (marker->identifier())
    _pendingReferences[*marker->identifier()] = marker;
}

void VLSFountainReader::flushReferences() {
  for (auto &[identifier, marker] : _pendingReferences)
    _references->setObject(std::move(marker), identifier);
  _pendingReferences.clear();
}

std::u16string VLSFountainReader::uniqueCommentID() {
  std::u16string identifier = ns::format(u"comment%llu", commentCounter);
  while (containsReference(identifier))
    identifier = ns::format(u"comment%llu", ++commentCounter);
  return identifier;
}

std::u16string VLSFountainReader::uniqueSceneID() {
  std::u16string identifier = ns::format(u"scene%llu", sceneCounter);
  while (containsReference(identifier))
    identifier = ns::format(u"scene%llu", ++sceneCounter);
  return identifier;
}

void VLSFountainReader::addComment(std::u16string_view text, uint64_t location) {
  VLSTextMarkerPtr marker =
      VLSTextMarker::textMarkerWithIdentifier(uniqueCommentID(), ns::Range{location, 0});
  marker->setTextMarkerType(VLSTextMarkerTypeComment);
  marker->setRepresentedObject(std::u16string(text));
  storeReference(marker);
}

void VLSFountainReader::startOutlineEntryWithTitle(std::u16string_view title, int64_t level) {
  uint64_t location = _attributedString ? _attributedString->length() : 0;
  endOutlineEntryAtLocation(location);
  _currentSceneOutline = VLOutline::entryWithRange(ns::Range{location, 0}, level);
  _currentSceneOutline->setTitle(std::u16string(title));
  _currentSceneOutline->setIdentifier(uniqueSceneID());
  std::u16string_view resourceType = level == 0 ? VLObjectResourceType : VLSectionResourceType;
  _currentSceneProperties = ns::Dictionary::create(
      {{u"title", std::u16string(title)}, {u"resourceType", resourceType}, {u"level", level}});
}

void VLSFountainReader::endOutlineEntryAtLocation(uint64_t location) {
  if (!_currentSceneOutline)
    return;
  ns::Range range = _currentSceneOutline->range();
  range.length = location > range.location ? location - range.location : 0;
  _currentSceneOutline->setRange(range);
  // An empty entry leaves no marker, and its synopsis is lost with it.
  if (range.length == 0 || !_currentSceneProperties)
    return;
  VLSTextMarkerPtr marker =
      VLSTextMarker::textMarkerWithIdentifier(_currentSceneOutline->identifier(), range);
  marker->setRepresentedObject(_currentSceneProperties);
  marker->setTextMarkerType(VLSTextMarkerTypeOutlineEntry);
  storeReference(marker);
}

void VLSFountainReader::applyReferences() {
  if (!_attributedString || _attributedString->length() == 0)
    return;
  flushReferences();
  ns::MutableAttributedString &text = *_attributedString;
  uint64_t length = text.length();
  text.beginEditing();
  for (const auto &[identifier, value] : *_references) {
    auto marker = value.as<VLSTextMarker>();
    if (!marker || marker->textMarkerType() != VLSTextMarkerTypeComment)
      continue;
    ns::Range range = marker->range();
    // A point comment sits on the character before it, or on the first one.
    if (range.length == 0) {
      if (range.location > 0) {
        range = ns::Range{range.location - 1, 1};
        marker->setTextMarkerLocation(VLSTextMarkerLocationAfter);
      } else {
        range = ns::Range{0, 1};
        marker->setTextMarkerLocation(VLSTextMarkerLocationBefore);
      }
      marker->setRange(range);
    }
    if (range.location >= length || range.length > length - range.location)
      continue;
    text.addAttribute(VLSTextMarkerAttributeName, marker, range);
  }
  text.endEditing();
}

// Mark-up.

void VLSFountainReader::replaceMarkup(std::u16string_view mark, uint32_t fontTraits,
                                      ns::MutableAttributedString &attributedString) const {
  const ns::FontManagerPtr &fontManager = ns::FontManager::sharedFontManager();
  uint64_t position = 0;
  while (std::optional<ns::Range> marked = removeMarkPair(attributedString, mark, position)) {
    // The walk starts behind where the opening mark ended, so a text no longer than its
    // mark gets no trait.
    while (position < marked->max()) {
      ns::Range run;
      ns::Value value = attributedString.attribute(ns::FontAttributeName, position, &run, *marked);
      if (auto font = value.as<ns::Font>()) {
        ns::FontPtr converted = fontManager->convertFontToHaveTrait(font, fontTraits);
        if (converted && !converted->isEqual(*font))
          attributedString.addAttribute(ns::FontAttributeName, converted, run);
      }
      position = run.max();
    }
  }
}

void VLSFountainReader::replaceMarkup(std::u16string_view mark,
                                      ns::MutableAttributedString &attributedString) const {
  uint64_t position = 0;
  while (std::optional<ns::Range> marked = removeMarkPair(attributedString, mark, position)) {
    if (marked->length > 0)
      attributedString.addAttribute(ns::UnderlineStyleAttributeName, int64_t{1}, *marked);
    position = marked->max();
  }
}

void VLSFountainReader::replaceCommentMarkupInAttributedString(
    ns::MutableAttributedString &attributedString, uint64_t relativeOffset) {
  if (attributedString.length() == 0)
    return;
  uint64_t position = 0;
  do {
    uint64_t open = find(attributedString, u"[[", position);
    if (open == ns::NotFound)
      break;
    position = open + 2;
    uint64_t close = find(attributedString, u"]]", position);
    if (close == ns::NotFound)
      break;
    std::u16string note =
        attributedString.substringWithRange(ns::Range{position, close - position});
    attributedString.deleteCharactersInRange(ns::Range{open, close + 2 - open});
    addComment(note, open + relativeOffset);
    // The search goes on from where the note's text began, not from where the cut left off.
  } while (position < attributedString.length());
}

void VLSFountainReader::processMarkupInAttributedString(
    ns::MutableAttributedString &attributedString, uint64_t relativeOffset) {
  replaceMarkup(u"***", ns::BoldFontMask | ns::ItalicFontMask, attributedString);
  replaceMarkup(u"**", ns::BoldFontMask, attributedString);
  replaceMarkup(u"*", ns::ItalicFontMask, attributedString);
  replaceMarkup(u"_", attributedString);
  replaceCommentMarkupInAttributedString(attributedString, relativeOffset);
}

void VLSFountainReader::centerAttributedString(ns::MutableAttributedString &attributedString) {
  attributedString.enumerateAttribute(
      ns::ParagraphStyleAttributeName, ns::Range{0, attributedString.length()}, 0,
      [&](const ns::Value &value, ns::Range range, bool &) {
        auto paragraphStyle = value.as<ns::ParagraphStyle>();
        if (!paragraphStyle)
          return;
        ns::MutableParagraphStylePtr centered = paragraphStyle->mutableParagraphStyle();
        centered->setAlignment(ns::TextAlignmentCenter);
        centered->setFirstLineHeadIndent(0.0);
        centered->setHeadIndent(0.0);
        centered->setTailIndent(0.0);
        attributedString.addAttribute(ns::ParagraphStyleAttributeName, centered, range);
      });
}

// Document attributes.

const ns::DictionaryPtr &VLSFountainReader::settings() {
  if (!_settings)
    _settings = ns::Dictionary::create();
  return _settings;
}

const ns::DictionaryPtr &VLSFountainReader::references() {
  flushReferences();
  return _references;
}

const ns::DictionaryPtr &VLSFountainReader::masterPages() {
  if (!_masterPages) {
    VLMasterPagePtr page = VLMasterPage::masterPageWithPrintInfo(*ns::PrintInfo::sharedPrintInfo());
    page->setName(localizedString(u"Standard"));
    const VLPageLayoutPtr &layout = page->pageLayout();
    layout->setLeftMargin(108.0);
    layout->setRightMargin(72.0);
    layout->setHeaderSpacing(36.0);
    layout->setFooterSpacing(36.0);
    layout->setContentTopMargin(72.0);
    layout->setContentBottomMargin(72.0);
    _masterPages = ns::Dictionary::create({{std::u16string(VLStandardMasterPageKey), page}});
  }
  return _masterPages;
}

ns::DictionaryPtr VLSFountainReader::makeDocumentAttributes(uint64_t sceneCount) {
  const ns::DictionaryPtr &settings = this->settings();
  if (ns::ArrayPtr levels = outlineLevelSettingsForStylesheet(_stylesheet.get()))
    settings->setObject(outlineSettingsWithLevelSettings(std::move(levels)), VLOutlineSettingsKey);
  auto documentSettings = ns::Dictionary::create();
  documentSettings->setObject(completionsDictionary(completionLists()), VLCompletionsKey);
  if (sceneCount == 0 && _isNovel)
    documentSettings->setObject(true, VLShouldHideBodyTextEntriesInOutlineKey);
  settings->setObject(std::move(documentSettings), VLDocumentSettingsKey);
  return ns::Dictionary::create({{std::u16string(VLStylesheetDocumentAttribute), _stylesheet},
                                 {std::u16string(VLSettingsDocumentAttribute), settings},
                                 {std::u16string(VLMasterPagesKey), masterPages()},
                                 {std::u16string(VLReferencesDocumentAttribute), references()}});
}

} // namespace vl
