#pragma once

#include <string>

// What a person answered; the values are those of the desktop's message box.
enum class DialogueAnswer : int { Cancel = 2, Yes = 6, No = 7 };

// Shows a person a message under the title "PROGRAM: TITLE", with Yes, No and Cancel.
//
// A platform without a desktop writes title and text to standard error and answers Cancel.
DialogueAnswer ShowMessage(const std::string& title, const std::string& text);

// Base name of the running executable, "-UNKNOWN-" when the system does not tell.
[[nodiscard]] std::string ExecutableName();
