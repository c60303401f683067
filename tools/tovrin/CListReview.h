#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tools/tovrin/CListFile.h"

namespace RefHost {

// What can be said of a list's elements without a text: which do not compile, which stand twice,
// and which match nothing that a simple wildcard of the list does not match already.
class CListReview {
public:
  explicit CListReview(const CListFile& list);

  struct Finding {
    std::size_t element;  // index in the list
    std::string words;
  };
  // In the order of the list.
  const std::vector<Finding>& Findings() const { return fFindings; }

  struct Kinds {
    std::size_t literals = 0;   // wildcards that are one literal, with stars around it or without
    std::size_t wildcards = 0;  // all others
    std::size_t expressions = 0;
  };
  const Kinds& Counts() const { return fKinds; }

private:
  void FindFaults();
  void FindDuplicates();
  void FindEqualAndCovered();
  std::string Describe(std::size_t element) const;
  void Add(std::size_t element, std::string words) {
    fFindings.push_back({element, std::move(words)});
  }

  const CListFile& fList;
  std::vector<bool> fIsKnown;  // elements that have a finding
  std::vector<Finding> fFindings;
  Kinds fKinds;
};

}  // namespace RefHost
