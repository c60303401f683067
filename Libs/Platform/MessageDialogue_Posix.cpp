#include "Libs/Platform/MessageDialogue.h"

#include <unistd.h>

#include <cstddef>

#include "Libs/Platform/ErrorStream.h"

DialogueAnswer ShowMessage(const std::string& title, const std::string& text) {
  ErrorStream() << ExecutableName() << ": " << title << '\n' << text << std::endl;
  return DialogueAnswer::Cancel;
}

std::string ExecutableName() {
  char path[4096];
  const ssize_t size = readlink("/proc/self/exe", path, sizeof path);
  if (size <= 0) return "-UNKNOWN-";

  const std::string whole(path, static_cast<std::size_t>(size));
  return whole.substr(whole.rfind('/') + 1);
}
