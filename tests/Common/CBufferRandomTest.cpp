// Random operations on a buffer, wherever it keeps its bytes, and on a string beside it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>

#include "tests/Common/CBufferSupport.h"

namespace {

using testing::IsEmpty;

class CBufferRandomTest : public CBufferTest {};

// One buffer and what it should hold, through the same random steps.
class Differential {
public:
  explicit Differential(unsigned seed) : fRandom(seed) {}

  void Run(int steps) {
    for (int step = 0; step < steps && !testing::Test::HasFailure(); ++step) {
      const int operation = static_cast<int>(Below(16));
      Step(operation);
      ASSERT_EQ(fBuffer.GetSize(), fBytes.size()) << "step " << step << ", " << operation;
      ASSERT_EQ(fBuffer.GetReadPosition(), fRead) << "step " << step << ", " << operation;
      ASSERT_EQ(fBuffer.GetWritePosition(), fWrite) << "step " << step << ", " << operation;
      if (step % 16 == 0) {
        ASSERT_EQ(BytesOf(fBuffer), fBytes) << "step " << step;
      }
    }
    ASSERT_EQ(BytesOf(fBuffer), fBytes);
  }

private:
  std::size_t Below(std::size_t limit) { return limit == 0 ? 0 : fRandom() % limit; }
  std::string Text() {
    std::string text(Below(Below(8) == 0 ? 60000 : 50), '\0');
    for (char& c : text) c = static_cast<char>('a' + fRandom() % 3);
    return text;
  }
  void Cut() {
    fRead = std::min(fRead, static_cast<std::int64_t>(fBytes.size()));
    fWrite = std::min(fWrite, static_cast<std::int64_t>(fBytes.size()));
  }

  void Step(int operation) {
    const std::string text = Text();
    const std::size_t size = fBytes.size();
    const std::size_t place = Below(size + 1);
    const std::size_t length = Below(size - place + 1);
    switch (operation) {
      case 0:
      case 1:
        ASSERT_TRUE(fBuffer.Append(text.data(), text.size()));
        fBytes += text;
        break;
      case 2: {
        const std::size_t count = std::min(Below(size + 2), size);
        fBuffer.RemoveFront(count);
        fBytes.erase(0, count);
        for (std::int64_t* position : {&fRead, &fWrite}) {
          *position = std::max<std::int64_t>(*position - static_cast<std::int64_t>(count), 0);
        }
        break;
      }
      case 3:
        ASSERT_TRUE(fBuffer.Insert(place, text.data(), text.size()));
        fBytes.insert(place, text);
        break;
      case 4:
        ASSERT_EQ(fBuffer.Erase(place, length), length);
        fBytes.erase(place, length);
        if (place < size) Cut();
        break;
      case 5:
        if (Below(8) != 0) break;
        ASSERT_TRUE(fBuffer.Assign(text.data(), text.size()));
        fBytes = text;
        Cut();
        break;
      case 6:
        ASSERT_EQ(fBuffer.Overwrite(place, text.data(), text.size()), text.size() <= size - place);
        if (text.size() <= size - place) fBytes.replace(place, text.size(), text);
        break;
      case 7: {
        ASSERT_EQ(fBuffer.Write(text.data(), text.size()), text.size());
        const auto at = static_cast<std::size_t>(std::max<std::int64_t>(fWrite, 0));
        fBytes.replace(at, text.size(), text);
        fWrite = static_cast<std::int64_t>(at + text.size());
        break;
      }
      case 8: {
        std::string bytes(text.size(), '\0');
        bytes.resize(fBuffer.Read(bytes.data(), bytes.size()));
        const auto at = static_cast<std::size_t>(std::max<std::int64_t>(fRead, 0));
        ASSERT_EQ(bytes, fBytes.substr(at, text.size()));
        fRead = static_cast<std::int64_t>(at + bytes.size());
        break;
      }
      case 9:
        ASSERT_EQ(fBuffer.SeekRead(static_cast<std::int64_t>(place), 0), fRead = place);
        break;
      case 10:
        ASSERT_EQ(fBuffer.SeekWrite(static_cast<std::int64_t>(place), 0), fWrite = place);
        break;
      case 11: {
        std::size_t available = 0;
        void* space = fBuffer.GetWriteSpace(&available, text.size() + 1);
        ASSERT_GT(available, text.size());
        std::memcpy(space, text.data(), text.size());
        fBuffer.CommitWrite(text.size());
        fBytes += text;
        break;
      }
      case 12:
        ASSERT_TRUE(Below(2) == 0 ? fBuffer.SwapOut() : fBuffer.SwapIn());
        break;
      case 13:
        ASSERT_TRUE(fBuffer.Freeze() && fBuffer.Thaw());
        break;
      case 14:
        ReplaceAll();
        break;
      default:
        if (Below(20) != 0) break;
        fBuffer.Clear(Below(1000));
        fBytes.clear();
        fRead = fWrite = 0;
        break;
    }
  }

  void ReplaceAll() {
    const std::string pattern(1 + Below(3), static_cast<char>('a' + Below(3)));
    const std::string replacement(Below(5), 'b');
    std::string expected;
    std::size_t count = 0, from = 0;
    for (std::size_t hit = fBytes.find(pattern); hit != std::string::npos;
         hit = fBytes.find(pattern, from), ++count) {
      expected += fBytes.substr(from, hit - from) + replacement;
      from = hit + pattern.size();
    }
    expected += fBytes.substr(from);
    std::size_t replaced = 0;
    ASSERT_TRUE(fBuffer.Replace(pattern.data(), pattern.size(), replacement.data(),
                                replacement.size(), 0, kAll, &replaced));
    ASSERT_EQ(replaced, count);
    fBytes = expected;
    if (count > 0) Cut();
  }

  std::mt19937 fRandom;
  CBuffer fBuffer;
  std::string fBytes;
  std::int64_t fRead = -1;
  std::int64_t fWrite = -1;
};

TEST_F(CBufferRandomTest, HoldsWhatAStringHolds) {
  for (unsigned seed = 1; seed <= 30; ++seed) {
    SCOPED_TRACE(seed);
    Differential(seed).Run(300);
    ASSERT_FALSE(HasFailure());
    EXPECT_THAT(Names(), IsEmpty());
  }
}

}  // namespace
