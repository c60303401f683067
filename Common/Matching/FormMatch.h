#pragma once

#include <cstddef>
#include <string_view>

#include "Common/Matching/LiteralForms.h"

namespace Matching {

// What literals and gaps say of a text, answered by comparing: in time that grows with the text and
// the pieces and no faster, whatever they are.

// Where line ends stand in a text, looked for once it matters: gaps do not go over them.
class LineEnds {
public:
  explicit LineEnds(std::string_view text) : fText(text) {}
  bool NoneBefore(std::size_t to) {
    if (!fKnown) Find();
    return to <= fFirst;
  }
  bool NoneFrom(std::size_t from) {
    if (!fKnown) Find();
    return from >= fBehindLast;
  }
  bool None() { return NoneBefore(fText.size()); }

private:
  void Find();

  std::string_view fText;
  bool fKnown = false;
  std::size_t fFirst = 0;       // the text's size when there is none
  std::size_t fBehindLast = 0;  // 0 when there is none
};

// Where a piece, which is folded and not empty, first stands in the text; npos for nowhere.
std::size_t FindPiece(std::string_view text, std::string_view piece);

inline bool HasGap(const LiteralForm& form) {
  return form.gapBefore || form.gapAfter || form.pieces.size() > 1;
}

// A gap stops at a line end and a piece may hold one: then the order of the two matters, which the
// functions below do not look at.
bool MixesLineEnds(const LiteralForm& form);

// Whether the text has the pieces where the form wants them. Its gaps are taken to be free of line
// ends, which LineEnds tells.
bool HasForm(std::string_view text, const LiteralForm& form);

// Where the first piece of a form that begins with a gap stands when all of them stand as late as
// they can; the text has it.
std::size_t LatestStart(std::string_view text, const LiteralForm& form);

}  // namespace Matching
