#include "tests/support/TsvRows.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "tests/support/SharedData.h"

namespace {

std::string Decode(const std::string& field) {
  std::string text;
  for (std::size_t i = 0; i < field.size(); ++i) {
    if (field[i] != '%') {
      text += field[i];
      continue;
    }
    text += static_cast<char>(std::stoi(field.substr(i + 1, 2), nullptr, 16));
    i += 2;
  }
  return text;
}

std::vector<std::string> Split(const std::string& line) {
  std::vector<std::string> fields;
  std::size_t start = 0;
  for (;;) {
    const std::size_t end = line.find('\t', start);
    fields.push_back(Decode(line.substr(start, end - start)));
    if (end == std::string::npos) return fields;
    start = end + 1;
  }
}

}  // namespace

TsvRow::TsvRow(std::shared_ptr<const Names> names, const std::string& line)
    : fNames(std::move(names)), fFields(Split(line)) {
  fFields.resize(std::max(fFields.size(), fNames->size()));
}

bool TsvRow::Has(const std::string& name) const {
  return std::find(fNames->begin(), fNames->end(), name) != fNames->end();
}

const std::string& TsvRow::operator[](const std::string& name) const {
  const auto found = std::find(fNames->begin(), fNames->end(), name);
  if (found == fNames->end()) throw std::out_of_range("no column " + name);
  return fFields[static_cast<std::size_t>(found - fNames->begin())];
}

std::vector<TsvRow> ReadTsv(const std::filesystem::path& path) {
  std::vector<TsvRow> rows;
  std::shared_ptr<const TsvRow::Names> names;
  for (const std::string& line : ReadLines(path)) {
    if (names) {
      rows.emplace_back(names, line);
    } else {
      names = std::make_shared<const TsvRow::Names>(Split(line.substr(line.starts_with('#'))));
    }
  }
  return rows;
}

std::string FromHex(const std::string& digits) {
  std::string bytes;
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
  }
  return bytes;
}
