#include "Libs/Platform/ErrorStream.h"

#include <gtest/gtest.h>

#include <iostream>
#include <sstream>

namespace {

// Writes before the initialisers of the default priority, those of the streams among them, have
// run.
struct EarlyWriter {
  EarlyWriter() { wrote = ErrorStream().flush().good(); }
  bool wrote = false;
};
[[gnu::init_priority(200)]] const EarlyWriter earlyWriter;

}  // namespace

TEST(ErrorStream, WritesInAnEarlyInitialiser) {
  EXPECT_TRUE(earlyWriter.wrote);
}

TEST(ErrorStream, FollowsAReplacedStreamBuffer) {
  std::ostringstream caught;
  std::streambuf* const before = std::cerr.rdbuf(caught.rdbuf());
  ErrorStream() << "text";
  std::cerr.rdbuf(before);
  EXPECT_EQ(caught.str(), "text");
}
