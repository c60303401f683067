#include "Common/CSTDXMLString.h"

#include <cstddef>

namespace {

struct Entity {
  char byte;
  std::string_view text;
};

// In the order in which they are looked for.
constexpr Entity kEntities[] = {{'&', "&amp;"},   {'<', "&lt;"},   {'>', "&gt;"},  {'"', "&quot;"},
                                {'\'', "&apos;"}, {'\r', "&#xd;"}, {'\n', "&#xa;"}};

constexpr std::size_t kLongestEntity = 6;
constexpr char kBackspace = 8;

bool IsDigit(char byte) {
  return byte >= '0' && byte <= '9';
}

bool IsHexDigit(char byte) {
  return IsDigit(byte) || (byte >= 'a' && byte <= 'f') || (byte >= 'A' && byte <= 'F');
}

// Whether the text, which begins with "&", begins a numeric reference: two bytes must be there from
// the first digit on, of which the second may be anything.
bool BeginsReference(std::string_view text) {
  if (text.starts_with("&#x")) return text.size() >= 5 && IsHexDigit(text[3]);
  return text.starts_with("&#") && text.size() >= 4 && IsDigit(text[2]);
}

void AppendEncoded(char byte, std::string& target) {
  if (byte == kBackspace) {
    target += '?';
    return;
  }
  for (const Entity& entity : kEntities) {
    if (entity.byte != byte) continue;
    target += entity.text;
    return;
  }
  target += byte;
}

// The entity that the text begins with, or null.
const Entity* EntityAt(std::string_view text) {
  for (const Entity& entity : kEntities) {
    if (text.starts_with(entity.text)) return &entity;
  }
  return nullptr;
}

}  // namespace

void CSTDXMLString::Encode(std::string_view bytes, std::string& target) {
  target.clear();
  target.reserve(bytes.size() * kLongestEntity);
  for (const char byte : bytes) AppendEncoded(byte, target);
}

void CSTDXMLString::EncodeKeepingReferences(std::string_view bytes, std::string& target) {
  target.clear();
  target.reserve(bytes.size() * kLongestEntity);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (bytes[i] == '&' && BeginsReference(bytes.substr(i)))
      target += '&';
    else
      AppendEncoded(bytes[i], target);
  }
}

std::string CSTDXMLString::Decode(std::string_view text) {
  std::string decoded;
  decoded.reserve(text.size());
  while (true) {
    const std::size_t at = text.find('&');
    decoded += text.substr(0, at);
    if (at == std::string_view::npos) return decoded;
    text.remove_prefix(at);
    const Entity* entity = EntityAt(text);
    decoded += entity ? entity->byte : '&';
    text.remove_prefix(entity ? entity->text.size() : 1);
  }
}
