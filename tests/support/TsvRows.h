#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

// One record of a table of test data: fields by the names in the table's first line, percent coding
// undone.
class TsvRow {
public:
  using Names = std::vector<std::string>;

  TsvRow(std::shared_ptr<const Names> names, const std::string& line);

  bool Has(const std::string& name) const;
  const std::string& operator[](
      const std::string& name) const;  // "" for a field left out at the end

private:
  std::shared_ptr<const Names> fNames;
  std::vector<std::string> fFields;
};

// All records of a file whose fields are parted by tabs.
std::vector<TsvRow> ReadTsv(const std::filesystem::path& path);

// The bytes of a field that spells them in hexadecimal.
std::string FromHex(const std::string& digits);
