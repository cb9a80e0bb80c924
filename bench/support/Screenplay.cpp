// A deterministic generator of Fountain screenplays.
#include "support/Screenplay.h"

#include "ns/String.h"

#include <array>
#include <string_view>

namespace vl::bench {

namespace {

// A fixed generator: std::mt19937 is fixed too, but its distributions are not.
class Random {
public:
  explicit Random(uint32_t seed) : state_(seed ? seed : 1) {}
  uint32_t next() {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 17;
    state_ ^= state_ << 5;
    return state_;
  }
  /// 0 <= result < bound.
  size_t below(size_t bound) { return next() % bound; }
  bool chance(unsigned percent) { return below(100) < percent; }
  template <class T, size_t N> const T &pick(const std::array<T, N> &items) {
    return items[below(N)];
  }

private:
  uint32_t state_;
};

using Words = std::array<std::string_view, 8>;

constexpr Words Intros = {"INT.", "EXT.", "INT.", "EXT.", "INT./EXT.", "I/E.", "INT.", "EST."};
constexpr Words Places = {"KITCHEN", "ROOFTOP",     "TRAIN STATION", "HOSPITAL CORRIDOR",
                          "CAR",     "OLD LIBRARY", "HARBOUR",       "MOTEL ROOM"};
constexpr Words Times = {"DAY",   "NIGHT",      "MORNING",       "EVENING",
                         "LATER", "CONTINUOUS", "MOMENTS LATER", "DUSK"};
constexpr Words Names = {"MARY", "JOHN", "DETECTIVE RUIZ", "ANNA", "OLD MAN",
                         "LENA", "SAM",  "DR. KOH"};
constexpr Words Extensions = {"", "", "", " (V.O.)", " (O.S.)", " (CONT'D)", "", " (O.C.)"};
constexpr Words Parentheticals = {"(quietly)",         "(beat)",       "(to Mary)",
                                  "(without looking)", "(laughing)",   "(into the phone)",
                                  "(sotto)",           "(re: the gun)"};
constexpr Words Actions = {
    "Rain hammers the window. A kettle screams somewhere down the hall.",
    "She stirs a pot that has long gone cold, and does not look up.",
    "The door swings open. Nobody is there, only the wind and a *torn* letter.",
    "He counts the money twice, then a third time, and pockets **all** of it.",
    "Headlights sweep across the ceiling. A dog barks, then stops.",
    "The phone rings. And rings. _Nobody_ moves to answer it.",
    "A train thunders past, shaking dust from the rafters.",
    "She pulls the photograph from her coat and lays it on the table."};
constexpr Words Speech = {"We should have left when the river rose. Nobody listens to me.",
                          "You don't get to decide that. Not tonight.",
                          "I kept every letter. Every single one.",
                          "It's not about the money. It was never about the money.",
                          "Tell me what you saw, and leave nothing out.",
                          "If we go now, we make the last ferry.",
                          "I'm not asking again.",
                          "Fine. Have it your way."};
constexpr Words Transitions = {"CUT TO:",       "DISSOLVE TO:", "> SMASH CUT TO:", "CUT TO:",
                               "MATCH CUT TO:", "FADE TO:",     "> JUMP CUT TO:",  "WIPE TO:"};
constexpr Words Notes = {"[[Check continuity with the opening.]]",
                         "[[Is this too long?]]",
                         "[[Music cue here.]]",
                         "[[Needs a stronger button.]]",
                         "[[Location to be confirmed.]]",
                         "[[Cut if we run long.]]",
                         "[[Name still a placeholder.]]",
                         "[[Ask about the permit.]]"};

class Writer {
public:
  explicit Writer(uint32_t seed) : random_(seed) {}

  void line(std::string_view text = {}) {
    text_ += text;
    text_ += '\n';
    ++lines_;
  }
  int lines() const { return lines_; }
  Random &random() { return random_; }
  std::string take() { return std::move(text_); }

private:
  Random random_;
  std::string text_;
  int lines_ = 0;
};

void titlePage(Writer &out) {
  out.line("Title: The Long Crossing");
  out.line("Credit: Written by");
  out.line("Author: A. N. Writer");
  out.line("Source: Based on the novel by Someone Else");
  out.line("Draft date: 1 June 2024");
  out.line("Contact:");
  out.line("    A. N. Writer");
  out.line("    12 Harbour Road");
  out.line();
}

void scene(Writer &out, int number) {
  Random &r = out.random();
  std::string heading;
  if (r.chance(5)) {
    heading = ".FLASHBACK - THE FERRY";
  } else {
    heading = std::string(r.pick(Intros)) + " " + std::string(r.pick(Places)) + " - " +
              std::string(r.pick(Times));
  }
  heading += " #" + std::to_string(number) + (r.chance(10) ? "A#" : "#");
  out.line(heading);
  out.line();

  out.line(r.pick(Actions));
  if (r.chance(40))
    out.line(r.pick(Actions)); // a paragraph of two lines
  out.line();
  if (r.chance(15)) {
    out.line(r.pick(Notes));
    out.line();
  }

  size_t exchanges = 2 + r.below(5);
  for (size_t i = 0; i < exchanges; ++i) {
    bool dual = i > 0 && r.chance(10);
    out.line(std::string(r.pick(Names)) + std::string(r.pick(Extensions)) + (dual ? " ^" : ""));
    if (r.chance(30))
      out.line(r.pick(Parentheticals));
    out.line(r.pick(Speech));
    if (r.chance(35)) {
      if (r.chance(50))
        out.line(r.pick(Parentheticals));
      out.line(r.pick(Speech));
    }
    out.line();
    if (r.chance(25)) {
      out.line(r.pick(Actions));
      out.line();
    }
  }
  if (r.chance(60)) {
    out.line(r.pick(Transitions));
    out.line();
  }
  if (r.chance(4)) {
    out.line("===");
    out.line();
  }
}

} // namespace

std::string fountainScreenplayUTF8(int pages, uint32_t seed) {
  Writer out(seed);
  const int target = pages * ScreenplayLinesPerPage;
  titlePage(out);
  out.line("FADE IN:");
  out.line();

  int number = 1;
  bool boneyardWritten = false;
  for (int act = 1; out.lines() < target; ++act) {
    out.line("# Act " + std::to_string(act));
    out.line("= The act in one line: someone wants something and cannot have it.");
    out.line();
    for (int sequence = 1; sequence <= 4 && out.lines() < target; ++sequence) {
      out.line("## Sequence " + std::to_string(sequence));
      out.line();
      for (int s = 0; s < 6 && out.lines() < target; ++s) {
        scene(out, number++);
        if (!boneyardWritten && out.lines() >= target / 2) {
          out.line("/*");
          out.line("INT. CUT SCENE - NIGHT");
          out.line();
          out.line("A scene that did not make the draft.");
          out.line("*/");
          out.line();
          boneyardWritten = true;
        }
      }
    }
  }
  out.line("> THE END <");
  return out.take();
}

std::u16string fountainScreenplay(int pages, uint32_t seed) {
  return ns::fromUTF8(fountainScreenplayUTF8(pages, seed));
}

} // namespace vl::bench
