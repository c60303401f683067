#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/support/SharedData.h"

namespace Oracle {

// Rows of one of the public files; fields are percent coded there and plain here.
using Row = std::vector<std::string>;

inline std::string Decode(std::string_view field) {
  std::string plain;
  for (std::size_t i = 0; i < field.size(); ++i) {
    if (field[i] == '%' && i + 2 < field.size()) {
      plain += static_cast<char>(std::stoi(std::string(field.substr(i + 1, 2)), nullptr, 16));
      i += 2;
    } else {
      plain += field[i];
    }
  }
  return plain;
}

// Empty when the file is not there.
inline std::vector<Row> ReadRows(const std::string& name) {
  std::vector<Row> rows;
  const auto path = SharedPath("testdata/regex/" + name);
  if (!path) return rows;
  for (const std::string& line : ReadLines(*path)) {
    if (line.empty() || line.front() == '#') continue;
    Row row;
    std::size_t begin = 0;
    for (;;) {
      const std::size_t end = line.find('\t', begin);
      row.push_back(Decode(std::string_view(line).substr(begin, end - begin)));
      if (end == std::string::npos) break;
      begin = end + 1;
    }
    rows.push_back(std::move(row));
  }
  return rows;
}

}  // namespace Oracle
