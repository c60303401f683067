#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "Common/Matching/CharacterClasses.h"
#include "Common/Matching/Program.h"

namespace Matching {

inline constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);  // no place of a text

// What stands around one place of a text, as far as an assertion asks for it.
struct Boundary {
  bool isBegin = false;  // "^" holds
  bool isEnd = false;    // "$" holds
  bool isWordLeft = false;
  bool isWordRight = false;
};

// The text of one operation and where it begins.
struct Subject {
  std::string_view text;
  std::size_t from = 0;      // the first place at which a match may begin
  bool hasPrevious = false;  // the byte before `from` counts: "^" does not hold there

  [[nodiscard]] unsigned char At(std::size_t pos) const {
    return static_cast<unsigned char>(text[pos]);
  }

  [[nodiscard]] Boundary BoundaryAt(std::size_t pos) const {
    return {.isBegin = pos == from && !hasPrevious,
            .isEnd = pos == text.size(),
            .isWordLeft = (pos > from || (hasPrevious && pos > 0)) && IsWordByte(At(pos - 1)),
            .isWordRight = pos < text.size() && IsWordByte(At(pos))};
  }
};

// Where each look-ahead of a program holds, one bit a place and look-ahead, from Subject::from on.
class LookAheadTable {
public:
  LookAheadTable(std::size_t lookAheads, std::size_t from, std::size_t size)
      : fFrom(from), fStride((size - from) / 64 + 1), fBits(lookAheads * fStride, 0) {}

  void Set(std::uint32_t number, std::size_t pos) {
    fBits[number * fStride + (pos - fFrom) / 64] |= std::uint64_t{1} << ((pos - fFrom) & 63);
  }
  [[nodiscard]] bool Holds(std::uint32_t number, std::size_t pos) const {
    return (fBits[number * fStride + (pos - fFrom) / 64] >> ((pos - fFrom) & 63) & 1) != 0;
  }

private:
  std::size_t fFrom;
  std::size_t fStride;  // words a look-ahead
  std::vector<std::uint64_t> fBits;
};

// Whether an assertion holds at pos. The table is asked for look-aheads alone; a program without
// them needs none.
inline bool Holds(const State& state, const Boundary& at, const LookAheadTable* table,
                  std::size_t pos) {
  switch (state.op) {
    case Op::LineBegin:
      return at.isBegin;
    case Op::LineEnd:
      return at.isEnd;
    case Op::WordBoundary:
      return at.isWordLeft != at.isWordRight;
    case Op::NotWordBoundary:
      return at.isWordLeft == at.isWordRight;
    case Op::LookAhead:
      return table->Holds(state.value, pos);
    default:
      return !table->Holds(state.value, pos);
  }
}

}  // namespace Matching
