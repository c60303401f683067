#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// Lists and the texts that they are asked about, from the public data beside the checkout. Without
// the data a workload has no texts.
namespace ListWorkloads {

using Strings = std::vector<std::string>;

struct Workload {
  Strings elements;
  Strings names;         // what a hash of names would hold; none for other kinds
  bool isExact = false;  // the names are whole texts
  Strings texts;
};

// Names of hosts, each between two texts and with its dots escaped if asked for. Beyond the names
// that there are, each gets made labels in front.
Workload OfNames(std::size_t count, const std::string& before, const std::string& after,
                 bool escapes);
// The first lines of a file that compile.
Workload OfFile(const std::string& list, std::size_t count, bool isRegex, const std::string& texts);
// Seven of ten are names behind a star, two exact names, one is an expression.
Workload OfAllKinds(std::size_t count);

// The ideal for names: one pass from the end, and a look into an open table at each dot.
class HashOfNames {
public:
  explicit HashOfNames(const Workload& workload);

  bool Matches(const std::string& text) const;

private:
  struct Slot {
    std::uint64_t hash = 0;
    std::uint32_t offset = 0;
    std::uint32_t size = 0;
  };

  bool Holds(std::uint64_t hash, const std::string& text, std::size_t from) const;

  const bool fIsExact;
  std::vector<Slot> fSlots;
  std::string fNames;
};

}  // namespace ListWorkloads
