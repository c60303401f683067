#include "tools/tovrin/CProgress.h"

#include <gtest/gtest.h>

namespace RefHost {
namespace {

TEST(CProgress, DrawsTheShareThatIsDone) {
  EXPECT_EQ(CProgress::Render(0.0, 0, 2, 80),
            "[                                        ]   0 %  0 lines, 0 lines/s");
  EXPECT_EQ(CProgress::Render(0.5, 1000, 2, 80),
            "[####################                    ]  50 %  1000 lines, 500 lines/s");
  EXPECT_EQ(CProgress::Render(1.0, 1000, 2, 80),
            "[########################################] 100 %  1000 lines, 500 lines/s");
}

TEST(CProgress, TellsWhatItKnowsOfAnEndlessInput) {
  EXPECT_EQ(CProgress::Render(std::nullopt, 12, 3, 80), "12 lines, 4 lines/s");
}

TEST(CProgress, NeverGoesPastTheWidth) {
  for (std::size_t width = 0; width < 120; ++width) {
    EXPECT_LE(CProgress::Render(0.7, 123'456'789, 3, width).size(), width);
    EXPECT_LE(CProgress::Render(std::nullopt, 123'456'789, 3, width).size(), width);
  }
}

TEST(CProgress, IsSilentWithoutATerminal) {
  ::testing::internal::CaptureStderr();
  CProgress progress(false, 100);
  progress.Show(50, 10);
  progress.Hide();
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace RefHost
