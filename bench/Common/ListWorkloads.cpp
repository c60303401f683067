#include "bench/Common/ListWorkloads.h"

#include <algorithm>
#include <optional>
#include <random>

#include "Common/CRegex.h"
#include "Common/Matching/ByteFold.h"
#include "tests/support/SharedData.h"

namespace ListWorkloads {

namespace {

Strings Lines(const std::string& file) {
  const auto path = file.empty() ? std::nullopt : SharedPath("data/" + file);
  return path ? ReadLines(*path) : Strings();
}

std::string Escaped(const std::string& name) {
  std::string text;
  for (const char c : name) text += c == '.' ? "\\." : std::string(1, c);
  return text;
}

// Texts in one piece of memory, in a fixed random order, none longer than a kilobyte.
Strings Shuffled(Strings texts) {
  std::mt19937 random(1);
  std::shuffle(texts.begin(), texts.end(), random);
  for (std::string& text : texts) {
    if (text.size() > 1000) text.resize(1000);
  }
  return {texts.begin(), texts.end()};
}

// Host names of which every twentieth is made a hit: a real first label and a listed name.
Strings HostTexts(const Strings& names, bool isExact) {
  std::mt19937 random(2);
  Strings texts = Lines("hostnames-100k.txt");
  for (std::size_t i = 0; i < texts.size(); i += 20) {
    const std::string& label = texts[random() % texts.size()];
    const std::string& name = names[random() % names.size()];
    texts[i] = isExact ? name : label.substr(0, label.find('.')) + "." + name;
  }
  return Shuffled(std::move(texts));
}

std::string MadeLabel(std::mt19937& random) {
  std::string label;
  for (std::size_t i = 3 + random() % 8; i > 0; --i) {
    label += static_cast<char>('a' + random() % 26);
  }
  return label;
}

Strings Names(std::size_t count) {
  const Strings hosts = Lines("hosts-100k.txt");
  Strings names;
  if (hosts.empty()) return names;
  std::mt19937 random(3);
  for (std::size_t i = 0; i < count; ++i) {
    const std::string& host = hosts[i % hosts.size()];
    names.push_back(count > hosts.size() ? MadeLabel(random) + "." + host : host);
  }
  return names;
}

}  // namespace

Workload OfNames(std::size_t count, const std::string& before, const std::string& after,
                 bool escapes) {
  Workload workload;
  workload.names = Names(count);
  if (workload.names.empty()) return workload;
  workload.isExact = before.empty();
  for (const std::string& name : workload.names) {
    workload.elements.push_back(before + (escapes ? Escaped(name) : name) + after);
  }
  workload.texts = HostTexts(workload.names, workload.isExact);
  return workload;
}

Workload OfFile(const std::string& list, std::size_t count, bool isRegex,
                const std::string& texts) {
  Workload workload;
  for (const std::string& line : Lines(list)) {
    if (workload.elements.size() == count) break;
    if (line.empty()) continue;
    const std::string element = isRegex ? "regex(" + line + ")" : line;
    if (CRegex::CreateFromValue(element)) workload.elements.push_back(element);
  }
  workload.texts = Shuffled(Lines(texts));
  return workload;
}

Workload OfAllKinds(std::size_t count) {
  Workload workload;
  const Strings names = Names(count);
  const Strings expressions = OfFile("regexes-whole.txt", count, true, "").elements;
  if (names.empty() || expressions.empty()) return workload;
  for (std::size_t i = 0; i < count; ++i) {
    if (i % 10 < 7) {
      workload.elements.push_back("*." + names[i]);
    } else {
      workload.elements.push_back(i % 10 < 9 ? names[i] : expressions[i / 10 % expressions.size()]);
    }
  }
  workload.texts = HostTexts(names, false);
  return workload;
}

namespace {

constexpr std::uint64_t kSeed = 0x1234567;

std::uint64_t Step(std::uint64_t hash, unsigned char c) {
  return (hash ^ c) * 0x9E3779B97F4A7C15U;
}

}  // namespace

HashOfNames::HashOfNames(const Workload& workload) : fIsExact(workload.isExact) {
  std::size_t slots = 64;
  while (slots < workload.names.size() * 2) slots *= 2;
  fSlots.resize(slots);
  for (const std::string& name : workload.names) {
    std::uint64_t hash = kSeed;
    for (auto c = name.rbegin(); c != name.rend(); ++c) hash = Step(hash, Matching::FoldByte(*c));
    std::size_t slot = (hash >> 20) & (slots - 1);
    while (fSlots[slot].size != 0) slot = (slot + 1) & (slots - 1);
    fSlots[slot] = {hash, static_cast<std::uint32_t>(fNames.size()),
                    static_cast<std::uint32_t>(name.size())};
    fNames += Matching::FoldText(name);
  }
}

bool HashOfNames::Matches(const std::string& text) const {
  std::uint64_t hash = kSeed;
  for (std::size_t i = text.size(); i-- > 0;) {
    const unsigned char c = Matching::FoldByte(text[i]);
    if (c == '.' && !fIsExact && Holds(hash, text, i + 1)) return true;
    hash = Step(hash, c);
  }
  return fIsExact && Holds(hash, text, 0);
}

bool HashOfNames::Holds(std::uint64_t hash, const std::string& text, std::size_t from) const {
  const std::size_t mask = fSlots.size() - 1;
  for (std::size_t i = (hash >> 20) & mask; fSlots[i].size != 0; i = (i + 1) & mask) {
    const Slot& slot = fSlots[i];
    if (slot.hash != hash || slot.size != text.size() - from) continue;
    if (Matching::EqualsFolded(text.data() + from, fNames.data() + slot.offset, slot.size)) {
      return true;
    }
  }
  return false;
}

}  // namespace ListWorkloads
