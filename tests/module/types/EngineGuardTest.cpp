#include "module/types/EngineGuard.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>

#include "Common/CException.h"
#include "Common/CRegexException.h"

namespace {

// What leaves the guard, in words.
template <class Thrown>
std::string Leaving(const Thrown& thrown) {
  try {
    Tovrin::Guarded([&] { throw thrown; });
  } catch (const CException&) {
    return "an exception of the library";
  } catch (const std::runtime_error& failure) {
    return std::string("runtime_error: ") + failure.what();
  } catch (const std::exception& failure) {
    return std::string("exception: ") + failure.what();
  } catch (int number) {
    return "number " + std::to_string(number);
  }
  return "nothing";
}

TEST(EngineGuard, HandsTheAnswerThrough) {
  EXPECT_EQ(Tovrin::Guarded([] { return 7; }), 7);
}

TEST(EngineGuard, TurnsTheLibrarysOwnExceptionsIntoRuntimeErrorsWithTheSameText) {
  EXPECT_EQ(Leaving(CRegexException("Runtime error in regex matching: 'x'")),
            "runtime_error: Runtime error in regex matching: 'x'");
  EXPECT_EQ(Leaving(CRunTimeError("y")), "runtime_error: y");
  EXPECT_EQ(Leaving(CException("")), "runtime_error: ");
}

TEST(EngineGuard, LetsEverythingElsePassAsItIs) {
  EXPECT_EQ(Leaving(std::runtime_error("r")), "runtime_error: r");
  EXPECT_EQ(Leaving(std::logic_error("l")), "exception: l");
  EXPECT_EQ(Leaving(std::bad_alloc()), std::string("exception: ") + std::bad_alloc().what());
  EXPECT_EQ(Leaving(7), "number 7");
}

}  // namespace
