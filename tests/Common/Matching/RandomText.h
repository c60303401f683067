#pragma once

#include <cstddef>
#include <random>
#include <string>
#include <string_view>

// Up to so many bytes of an alphabet.
inline std::string RandomText(std::mt19937& random, std::size_t longest,
                              std::string_view alphabet) {
  std::string text(random() % (longest + 1), '\0');
  for (char& c : text) c = alphabet[random() % alphabet.size()];
  return text;
}
