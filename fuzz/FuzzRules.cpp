// Fuzz target for the texts that the reference host reads: rules, statements, a module's definition
// text and version ranges. The first byte picks the reader, the rest is the text. A text is read or
// refused with its place, and what was read can be written and read again.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/Require.h"
#include "tools/tovrin/CVersion.h"
#include "tools/tovrin/Definition.h"
#include "tools/tovrin/Parser.h"
#include "tools/tovrin/SourceText.h"

namespace {

using namespace RefHost;

template <class Read>
void CheckSource(std::string_view text, Read read) {
  const std::string source = CleanSource(std::string(text));
  try {
    Require(!read(source).empty(), "what was read is not nothing");
  } catch (const CSourceError& error) {
    Require(error.Where().line >= 1 && error.Where().column >= 1, "a mistake has a place");
    Require(error.Where().line <= source.size() + 1, "which lies in the text");
  }
}

// " CONST_FUNCTION BOOLEAN Name (STRING) : export", as a module would have written it.
std::string Written(const DefinitionEntry& entry) {
  const char* keyword = entry.kind == EntryKind::Type            ? " TYPE "
                        : entry.kind == EntryKind::ConstFunction ? " CONST_FUNCTION "
                        : entry.kind == EntryKind::Function      ? " FUNCTION "
                                                                 : " PROCEDURE ";
  return keyword + entry.Signature() + " : " + entry.exportName;
}

std::string Written(const std::vector<DefinitionEntry>& entries) {
  std::string text;
  for (const DefinitionEntry& entry : entries) text += Written(entry);
  return text;
}

void CheckDefinition(std::string_view text) {
  try {
    const std::string once = Written(ParseDefinition(text));
    Require(Written(ParseDefinition(once)) == once, "a definition that is written reads the same");
  } catch (const CDefinitionError& error) {
    Require(*error.what() != '\0', "a refusal says why");
  }
}

void CheckVersions(std::string_view text) {
  const auto version = CVersion::Parse(text);
  if (version) Require(!(*version < *version), "no version lies before itself");
  const auto range = CVersionRange::Parse(text);
  if (range && version) range->Contains(*version);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1 || size > 16 * 1024) return 0;  // longer inputs reach no new code

  const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
  switch (data[0] % 4) {
    case 0:
      CheckSource(text, ParseRules);
      break;
    case 1:
      CheckSource(text, ParseStatements);
      break;
    case 2:
      CheckDefinition(text);
      break;
    default:
      CheckVersions(text);
  }
  return 0;
}
