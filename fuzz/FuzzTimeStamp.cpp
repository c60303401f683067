// Fuzz target for the reader of time stamps and the check of UTF-8. The first byte picks the form
// of the stamp, the rest is the text.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Common/CText.h"
#include "Common/TextDetection.h"
#include "Common/TimeStamp.h"
#include "Common/Utf8Report.h"
#include "fuzz/Require.h"

namespace {

// What is read is a time that can be written, and the writing reads as the same time, as long as
// every part of it has its usual width. A zone of less than an hour west of UTC loses its sign in
// writing.
void CheckStamp(const std::string& text, bool tFormat, bool fileNameForm) {
  const ZonedTime untouched{1, 2, 3};
  ZonedTime time = untouched;
  if (!ParseTimestamp(text, tFormat, fileNameForm, time)) {
    Require(time == untouched, "what cannot be read changes nothing");
    return;
  }
  const CText written = FormatTimestamp(time, tFormat, fileNameForm);
  const std::size_t usualSize = tFormat || fileNameForm ? 29 : 30;
  if (written.Utf8().size() != usualSize || (time.zone > 0 && time.zone < 60)) return;
  ZonedTime again = untouched;
  Require(ParseTimestamp(std::string(written.Utf8()), tFormat, fileNameForm, again),
          "what is written can be read");
  Require(again == time, "and is the same time");
}

void CheckReport(std::string_view text) {
  std::string message;
  const bool isForm = CheckUtf8(text, message);
  Require(isForm == message.empty(), "there is a message where there is a fault");
  // The detection passes longer sequences too, and no zero byte.
  if (isForm && text.find('\0') == std::string_view::npos) {
    Require(IsValidUtf8(text.data(), text.size()), "what passes here passes there");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1 || size > 4 * 1024) return 0;  // longer inputs reach no new code

  const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
  CheckStamp(std::string(text), (data[0] & 1) != 0, (data[0] & 2) != 0);
  CheckReport(text);
  return 0;
}
