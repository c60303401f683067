#include "Libs/Platform/MessageDialogue.h"

#include "Libs/Platform/ErrorStream.h"
#include "Libs/Platform/Streams.h"

DialogueAnswer ShowMessage(const std::string& title, const std::string& text) {
  ErrorStream() << ExecutableName() << ": " << title << '\n' << text << std::endl;
  return DialogueAnswer::Cancel;
}

std::string ExecutableName() {
  const std::string name = ProgramPath().filename().string();
  return name.empty() ? "-UNKNOWN-" : name;
}
