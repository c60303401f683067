#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <system_error>

namespace RefHost {

// A place in a text, as an editor shows it: both count from 1, columns count bytes.
struct Position {
  std::size_t line = 1;
  std::size_t column = 1;
};

// A text that cannot be read, or that names what does not exist. what() is the reason alone; who
// knows where the text came from puts the place in front.
class CSourceError : public std::runtime_error {
public:
  CSourceError(Position where, const std::string& reason)
      : std::runtime_error(reason), fWhere(where) {}

  Position Where() const { return fWhere; }

private:
  Position fWhere;
};

// What rules and lists drop of a text before it is read: a byte order mark in front, and the
// carriage return of each line end.
std::string CleanSource(std::string text);

// The sentence for an input that cannot be opened or read.
std::string CannotRead(const std::string& path, const std::system_error& error);

// All bytes of a file, "-" for standard input; throws std::runtime_error that names the file.
std::string ReadSource(const std::string& path);

}  // namespace RefHost
