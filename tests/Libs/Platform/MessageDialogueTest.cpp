#include "Libs/Platform/MessageDialogue.h"

#include <gtest/gtest.h>

TEST(MessageDialogue, WritesToStandardErrorAndAnswersCancel) {
  testing::internal::CaptureStderr();
  const DialogueAnswer answer = ShowMessage("Out of rules", "Go on without?");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "libs_platform_tests: Out of rules\nGo on without?\n");
  EXPECT_EQ(static_cast<int>(answer), 2);
}

TEST(MessageDialogue, KnowsTheProgram) {
  EXPECT_EQ(ExecutableName(), "libs_platform_tests");
}
