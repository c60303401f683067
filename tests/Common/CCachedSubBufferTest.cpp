#include "Common/CCachedSubBuffer.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

std::string Read(const CCachedSubBuffer& view, std::uint64_t offset, std::uint64_t length) {
  std::string bytes(length, '\0');
  bytes.resize(view.Read(offset, bytes.data(), length));
  return bytes;
}

TEST(CCachedSubBuffer, ViewsAWholeBuffer) {
  const auto buffer = MakeUseCounted<CBuffer>("0123456789", 10);
  const CCachedSubBuffer view(buffer);
  EXPECT_TRUE(view.IsWhole());
  EXPECT_EQ(view.Range().Start(), 0U);
  EXPECT_EQ(view.Range().End(), 10U) << "the present size";
  EXPECT_EQ(Read(view, 0, 100), "0123456789");
  EXPECT_EQ(Read(view, 10, 1), "");
  EXPECT_EQ(CCachedSubBuffer(CUsePtr<CBuffer>()).GetSize(), 0U) << "of no buffer";
}

TEST(CCachedSubBuffer, ViewsPartsOfParts) {
  const auto buffer = MakeUseCounted<CBuffer>("0123456789", 10);
  CCachedSubBuffer whole(buffer);
  CCachedSubBuffer part(whole, 2, 8);
  EXPECT_FALSE(whole.IsWhole());
  EXPECT_FALSE(part.IsWhole());
  const CCachedSubBuffer inner(part, 1, 3);
  EXPECT_EQ(Read(part, 0, 100), "234567");
  EXPECT_EQ(Read(inner, 0, 100), "34");
  EXPECT_EQ(inner.Range().Mutex().Get(), whole.Range().Mutex().Get()) << "one lock";
  EXPECT_EQ(&inner.Cache(), &whole.Cache()) << "one cache";
  EXPECT_EQ(Read(CCachedSubBuffer(part, 4, CBuffer::kNone), 0, 100), "67")
      << "as far as it reaches";
  EXPECT_EQ(CCachedSubBuffer(part, 9, 3).GetSize(), 0U);
}

TEST(CCachedSubBuffer, ReadsFromManyThreads) {
  std::string text;
  for (int i = 0; i < 5000; ++i) text += static_cast<char>('a' + i % 7);
  const auto buffer = MakeUseCounted<CBuffer>(text.data(), text.size());
  ASSERT_TRUE(buffer->SwapOut());
  CCachedSubBuffer whole(buffer);
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < 4; ++t) {
    threads.emplace_back([view = CCachedSubBuffer(whole, t * 1000, (t + 1) * 1000), &text, t] {
      for (std::size_t i = 0; i < 900; ++i) {
        ASSERT_EQ(Read(view, i, 50), text.substr(t * 1000 + i, 50));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
