#include "Libs/Platform/ErrorTexts.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <clocale>

namespace {

struct Row {
  int code;
  const char* os;
  const char* errnoText;
};

constexpr Row kRows[] = {
    {0, "os error: 0 - 'Success'", "errno: 0 - 'Success'"},
    {ENOENT, "os error: 2 - 'No such file or directory'", "errno: 2 - 'No such file or directory'"},
    {EACCES, "os error: 13 - 'Permission denied'", "errno: 13 - 'Permission denied'"},
    // Codes without words keep their number.
    {99999, "os error: 99999 - !!! FormatMessage failed !!!",
     "errno: 99999 - !!! strerror_s failed !!!"},
    {-1, "os error: -1 - !!! FormatMessage failed !!!", "errno: -1 - !!! strerror_s failed !!!"},
    {INT_MIN, "os error: -2147483648 - !!! FormatMessage failed !!!",
     "errno: -2147483648 - !!! strerror_s failed !!!"},
};

}  // namespace

TEST(ErrorTexts, NameTheirFamilyTheCodeAndTheWords) {
  for (const Row& row : kRows) {
    EXPECT_EQ(OSErrorText(row.code), row.os);
    EXPECT_EQ(ErrnoText(row.code), row.errnoText);
  }
}

TEST(ErrorTexts, LeaveErrnoAsItWas) {
  errno = EAGAIN;
  (void)OSErrorText(99999);
  EXPECT_EQ(errno, EAGAIN);
}

TEST(ErrorTexts, AreEnglishWhateverTheLocale) {
  const std::string before = std::setlocale(LC_ALL, nullptr);
  for (const char* locale : {"C", "C.utf8", "de_DE.UTF-8"}) {
    std::setlocale(LC_ALL, locale);  // one that is not installed leaves the present one
    EXPECT_EQ(OSErrorText(ENOENT), "os error: 2 - 'No such file or directory'") << locale;
  }
  std::setlocale(LC_ALL, before.c_str());
}

TEST(ErrorTexts, LoseLineBreaksAndInsertMarks) {
  const std::pair<const char*, const char*> rows[] = {
      {"", ""},
      {"plain", "plain"},
      {"two\r\nlines\n", "twolines"},
      {"the file %1 is not %2.", "the file -N/A- is not -N/A-."},
      {"%1%2%3%4%5%6", "-N/A--N/A--N/A--N/A--N/A--N/A-"},
      // Only these six are marks.
      {"%0 %7 %", "%0 %7 %"},
      {"%%1", "%-N/A-"},
      // The line breaks go first, and what they parted is a mark then.
      {"%\n1", "-N/A-"},
      {"%12", "-N/A-2"},
  };
  for (const auto& [text, clean] : rows) EXPECT_EQ(CleanSystemText(text), clean);
}
