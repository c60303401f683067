#include "Common/Matching/FormMatch.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <vector>

#include "Common/Matching/ByteFold.h"

namespace Matching {

namespace {

constexpr std::size_t kNone = std::string_view::npos;

template <class Byte>
unsigned char Folded(Byte byte) {
  return kFoldedByte[static_cast<unsigned char>(byte)];
}

// Where the piece begins in the text, in time linear in both (Knuth, Morris and Pratt). The piece
// is folded and not empty.
template <class Text, class Piece>
std::size_t FindByBorders(Text text, std::size_t size, Piece piece, std::size_t pieceSize) {
  const auto at = [&](std::size_t i) { return Folded(piece[static_cast<std::ptrdiff_t>(i)]); };
  // How much of the piece's beginning its first i + 1 bytes end with.
  std::vector<std::uint32_t> borders(pieceSize, 0);
  const auto advance = [&](std::size_t same, unsigned char byte) {
    while (same > 0 && at(same) != byte) same = borders[same - 1];
    return at(same) == byte ? same + 1 : same;
  };
  for (std::size_t i = 1; i < pieceSize; ++i) {
    borders[i] = static_cast<std::uint32_t>(advance(borders[i - 1], at(i)));
  }
  std::size_t same = 0;
  for (std::size_t i = 0; i < size; ++i) {
    same = advance(same, Folded(text[static_cast<std::ptrdiff_t>(i)]));
    if (same == pieceSize) return i + 1 - pieceSize;
  }
  return kNone;
}

// The same; compares at each place until more was compared in vain than was passed over.
template <class Text, class Piece>
std::size_t Find(Text text, std::size_t size, Piece piece, std::size_t pieceSize) {
  constexpr std::size_t kFree = 256;
  const auto folded = [&](std::size_t i) { return Folded(text[static_cast<std::ptrdiff_t>(i)]); };
  const auto wanted = [&](std::size_t i) { return Folded(piece[static_cast<std::ptrdiff_t>(i)]); };
  const unsigned char first = wanted(0);
  std::size_t inVain = 0;
  for (std::size_t at = 0; at + pieceSize <= size; ++at) {
    if (folded(at) != first) continue;
    std::size_t same = 1;
    while (same < pieceSize && folded(at + same) == wanted(same)) ++same;
    if (same == pieceSize) return at;
    inVain += same;
    if (inVain <= at + kFree) continue;
    const auto rest = text + static_cast<std::ptrdiff_t>(at);
    const std::size_t found = FindByBorders(rest, size - at, piece, pieceSize);
    return found == kNone ? kNone : at + found;
  }
  return kNone;
}

}  // namespace

std::size_t FindPiece(std::string_view text, std::string_view piece) {
  return Find(text.begin(), text.size(), piece.begin(), piece.size());
}

void LineEnds::Find() {
  fKnown = true;
  fFirst = fText.size();
  for (const char end : {'\n', '\r'}) {
    const std::size_t first = fText.find(end);
    if (first == std::string_view::npos) continue;
    fFirst = std::min(fFirst, first);
    fBehindLast = std::max(fBehindLast, fText.rfind(end) + 1);
  }
}

bool MixesLineEnds(const LiteralForm& form) {
  return HasGap(form) && std::ranges::any_of(form.pieces, [](const std::string& piece) {
           return piece.find_first_of("\n\r") != std::string::npos;
         });
}

// The pieces in order, each at the first place where it can stand; what stands earlier leaves more
// room for the rest.
bool HasForm(std::string_view text, const LiteralForm& form) {
  auto first = form.pieces.begin();
  auto last = form.pieces.end();
  if (first == last) return form.gapBefore || text.empty();
  if (!form.gapBefore) {
    if (text.size() < first->size() || !EqualsFolded(text.data(), first->data(), first->size())) {
      return false;
    }
    text.remove_prefix(first->size());
    ++first;
  }
  if (first == last) return form.gapAfter || text.empty();
  if (!form.gapAfter) {
    --last;
    if (text.size() < last->size()) return false;
    text.remove_suffix(last->size());
    if (!EqualsFolded(text.data() + text.size(), last->data(), last->size())) return false;
  }
  for (; first != last; ++first) {
    const std::size_t at = FindPiece(text, *first);
    if (at == kNone) return false;
    text.remove_prefix(at + first->size());
  }
  return true;
}

// The pieces from the last to the first, each at the last place where it can stand.
std::size_t LatestStart(std::string_view text, const LiteralForm& form) {
  std::size_t end = text.size();
  for (auto piece = form.pieces.rbegin(); piece != form.pieces.rend(); ++piece) {
    const bool isFixed = piece == form.pieces.rbegin() && !form.gapAfter;
    const std::size_t behind =
        isFixed ? 0
                : Find(std::make_reverse_iterator(text.begin() + static_cast<std::ptrdiff_t>(end)),
                       end, piece->rbegin(), piece->size());
    end -= behind + piece->size();
  }
  return end;
}

}  // namespace Matching
