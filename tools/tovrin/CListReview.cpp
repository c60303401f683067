#include "tools/tovrin/CListReview.h"

#include <fmt/core.h>

#include <algorithm>
#include <compare>
#include <map>
#include <optional>
#include <unordered_map>

#include "Common/CRegex.h"
#include "Common/CRegexShared.h"
#include "Common/Matching/AnchoredLiterals.h"
#include "Common/Matching/ByteFold.h"
#include "Common/Matching/FloatingLiterals.h"

namespace RefHost {
namespace {

using Matching::AnchoredLiterals;
using Matching::FloatingLiterals;

// A simple wildcard: its literal, folded, and where that may stand in a text. Two that are equal
// match the same texts.
struct SimpleWildcard {
  CRegexFastMode mode;
  std::string literal;
  auto operator<=>(const SimpleWildcard&) const = default;
};

// A list reads a wildcard as it stands; by itself it would lose its case marks, so one that has any
// is left out.
std::optional<SimpleWildcard> SimpleWildcardOf(const std::string& element) {
  if (!CRegex::IsWildcardForm(element) || WithoutCaseMarks(element) != element) return std::nullopt;
  const CRegexPtr regex = CRegex::Create(element, true);
  if (!regex || regex->FastMode() == CRegexFastMode::FastNone) return std::nullopt;
  return SimpleWildcard{regex->FastMode(), Matching::FoldText(regex->Literal())};
}

// The simple wildcards of a list by what they cover.
class Covers {
public:
  void Add(const SimpleWildcard& wildcard, std::uint32_t element) {
    switch (wildcard.mode) {
      case CRegexFastMode::FastAny:
        if (!fAny) fAny = element;
        break;
      case CRegexFastMode::FastSuffix:
        fEnds.AddAnchored(wildcard.literal, element);
        break;
      case CRegexFastMode::FastPrefix:
        fBeginnings.AddAnchored(wildcard.literal, element);
        break;
      case CRegexFastMode::FastContains:
        fParts.Add(wildcard.literal, element);
        break;
      default:
        break;
    }
  }
  void Freeze() {
    fEnds.Freeze();
    fBeginnings.Freeze();
    fParts.Freeze();
  }

  // An element other than the given one that matches whatever the wildcard matches.
  std::optional<std::uint32_t> CoverOf(const SimpleWildcard& wildcard,
                                       std::uint32_t element) const {
    std::optional<std::uint32_t> cover;
    const auto take = [&](std::uint32_t other, std::size_t) {
      if (other != element) cover = other;
      return cover.has_value();
    };
    if (fAny && *fAny != element) return fAny;
    const bool isExact = wildcard.mode == CRegexFastMode::FastExact;
    if (isExact || wildcard.mode == CRegexFastMode::FastSuffix) fEnds.Visit(wildcard.literal, take);
    if (!cover && (isExact || wildcard.mode == CRegexFastMode::FastPrefix)) {
      fBeginnings.Visit(wildcard.literal, take);
    }
    if (!cover && wildcard.mode != CRegexFastMode::FastAny) {
      fParts.Visit(wildcard.literal, [&](std::uint32_t literal, std::size_t at) {
        return std::ranges::any_of(fParts.IdsOf(literal),
                                   [&](std::uint32_t other) { return take(other, at); });
      });
    }
    return cover;
  }

private:
  std::optional<std::uint32_t> fAny;
  AnchoredLiterals fEnds{AnchoredLiterals::Side::Tail};
  AnchoredLiterals fBeginnings{AnchoredLiterals::Side::Head};
  FloatingLiterals fParts;
};

}  // namespace

CListReview::CListReview(const CListFile& list)
    : fList(list), fIsKnown(list.Elements().size(), false) {
  FindFaults();
  FindDuplicates();
  FindEqualAndCovered();
  std::stable_sort(fFindings.begin(), fFindings.end(),
                   [](const Finding& a, const Finding& b) { return a.element < b.element; });
}

void CListReview::FindFaults() {
  for (std::size_t i = 0; i < fList.Elements().size(); ++i) {
    const std::string fault = FaultOf(fList.Elements()[i].text);
    if (fault.empty()) continue;
    fIsKnown[i] = true;
    Add(i, fault);
  }
}

void CListReview::FindDuplicates() {
  std::unordered_map<std::string_view, std::size_t> first;
  for (std::size_t i = 0; i < fList.Elements().size(); ++i) {
    const auto [before, isNew] = first.emplace(fList.Elements()[i].text, i);
    if (isNew || fIsKnown[i]) continue;
    fIsKnown[i] = true;
    Add(i, fmt::format("stands in line {} already", fList.Elements()[before->second].line));
  }
}

void CListReview::FindEqualAndCovered() {
  std::vector<std::optional<SimpleWildcard>> wildcards;
  std::map<SimpleWildcard, std::size_t> first;
  Covers covers;
  for (std::uint32_t i = 0; i < fList.Elements().size(); ++i) {
    const std::string& text = fList.Elements()[i].text;
    wildcards.push_back(SimpleWildcardOf(text));
    if (!wildcards.back()) {
      ++(CRegex::IsWildcardForm(text) ? fKinds.wildcards : fKinds.expressions);
      continue;
    }
    ++fKinds.literals;
    if (fIsKnown[i]) continue;
    const auto [before, isNew] = first.emplace(*wildcards.back(), i);
    if (isNew) {
      covers.Add(*wildcards.back(), i);
    } else {
      fIsKnown[i] = true;
      Add(i, fmt::format("says the same as {}", Describe(before->second)));
    }
  }
  covers.Freeze();
  for (std::uint32_t i = 0; i < fList.Elements().size(); ++i) {
    if (fIsKnown[i] || !wildcards[i]) continue;
    const auto cover = covers.CoverOf(*wildcards[i], i);
    if (cover) Add(i, fmt::format("is covered by {}", Describe(*cover)));
  }
}

std::string CListReview::Describe(std::size_t element) const {
  return fmt::format("'{}' in line {}", fList.Elements()[element].text,
                     fList.Elements()[element].line);
}

}  // namespace RefHost
