// One element of a parsed Fountain screenplay: its type, text and layout marks.
#pragma once

#include "ns/Object.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vl {

class FNElement;
using FNElementPtr = std::shared_ptr<FNElement>;

/// The element types a Fountain parser gives. "Boneyard" has no constant: the parsers use the
/// bare literal, and the regex pipeline may give tag names of its own ("SceneHeading").
inline constexpr std::u16string_view FNElementTypeSceneHeading = u"Scene Heading";
inline constexpr std::u16string_view FNElementTypeAction = u"Action";
inline constexpr std::u16string_view FNElementTypeCharacter = u"Character";
inline constexpr std::u16string_view FNElementTypeParenthetical = u"Parenthetical";
inline constexpr std::u16string_view FNElementTypeDialogue = u"Dialogue";
inline constexpr std::u16string_view FNElementTypeTransition = u"Transition";
inline constexpr std::u16string_view FNElementTypeSectionHeading = u"Section Heading";
inline constexpr std::u16string_view FNElementTypeSynopsis = u"Synopsis";
inline constexpr std::u16string_view FNElementTypeComment = u"Comment";
inline constexpr std::u16string_view FNElementTypePageBreak = u"Page Break";

/// One block of a screenplay: a scene heading, an action paragraph, a cue, a line of dialogue,
/// a note... A plain value holder: nothing here checks that the type is a known one.
class FNElement : public ns::Object {
public:
  VL_OBJECT(FNElement)

  /// An element with no type, no text, no marks, no scene number and depth 0.
  FNElement() = default;
  FNElement(std::u16string_view type, std::u16string_view text)
      : elementType_(type), elementText_(text) {}

  /// elementOfType:text: a new element with those two fields set.
  static FNElementPtr elementOfType(std::u16string_view type, std::u16string_view text) {
    return std::make_shared<FNElement>(type, text);
  }

  const std::u16string &elementType() const { return elementType_; }
  void setElementType(std::u16string type) { elementType_ = std::move(type); }
  const std::u16string &elementText() const { return elementText_; }
  void setElementText(std::u16string text) { elementText_ = std::move(text); }
  /// Appends to the text in place (amortised constant per character, unlike a set).
  void appendElementText(std::u16string_view text) { elementText_ += text; }

  /// An action shown between ">" and "<".
  bool isCentered() const { return isCentered_; }
  void setIsCentered(bool centered) { isCentered_ = centered; }
  /// The number between "#" marks of a scene heading; empty optional when there was none
  /// (an empty string is a number written as "##").
  const std::optional<std::u16string> &sceneNumber() const { return sceneNumber_; }
  void setSceneNumber(std::optional<std::u16string> number) { sceneNumber_ = std::move(number); }
  /// A cue that is one of a pair spoken side by side.
  bool isDualDialogue() const { return isDualDialogue_; }
  void setIsDualDialogue(bool dual) { isDualDialogue_ = dual; }
  /// The number of "#" marks (and leading blanks) of a section heading; 0 otherwise.
  uint64_t sectionDepth() const { return sectionDepth_; }
  void setSectionDepth(uint64_t depth) { sectionDepth_ = depth; }

  /// "Type: text", the type followed by one of " (centered)", " (dual dialogue)" or
  /// " (depth)" when that applies, tested in that order.
  std::u16string description() const override;

private:
  std::u16string elementType_;
  std::u16string elementText_;
  bool isCentered_ = false;
  std::optional<std::u16string> sceneNumber_;
  bool isDualDialogue_ = false;
  uint64_t sectionDepth_ = 0;
};

/// The elements of a script, in document order.
using FNElementArray = std::vector<FNElementPtr>;

} // namespace vl
