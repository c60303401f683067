#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/json/JSONWrapperSupport.h"
#include "tests/support/HostContext.h"

namespace Tovrin::JSON {
namespace {

using Lines = std::vector<std::string>;

struct Walked {
  Lines lines;
  std::size_t stopAt = SIZE_MAX;
};

bool NoteItem(const char* key, const IJSON* value, void* user) {
  auto& walked = *static_cast<Walked*>(user);
  walked.lines.push_back(std::string(key) + "=" + value->ToString());
  return walked.lines.size() <= walked.stopAt;
}

Lines LinesOf(const Wrapper& json) {
  Walked walked;
  EXPECT_TRUE(json->ForEach(&NoteItem, &walked));
  return walked.lines;
}

TEST(JSONWrapper, ForEachShowsChildrenInOrderUntilItIsToldToStop) {
  EXPECT_EQ(LinesOf(Of(R"({"b":1,"a":[2]})")), (Lines{"b=1", "a=[2]"}));
  EXPECT_EQ(LinesOf(ArrayWithHole()), (Lines{"0=null", "1=7"}));
  EXPECT_EQ(LinesOf(Compiled()), (Lines{"second=8"}));
  EXPECT_EQ(LinesOf(Of("[]")), Lines{});
  Walked none;
  EXPECT_FALSE(Of("1")->ForEach(&NoteItem, &none));
  EXPECT_FALSE(Of("1")->ForEach(&NoteItem, &none, nullptr));
  EXPECT_TRUE(none.lines.empty());

  Walked stopped{{}, 1};
  EXPECT_FALSE(Of("[1,2,3]")->ForEach(&NoteItem, &stopped));
  EXPECT_EQ(stopped.lines, (Lines{"0=1", "1=2"}));

  const Wrapper json = Of("[1]");
  json->At(4);
  Walked walked;
  json->ForEach(&NoteItem, &walked);
  ExpectError(*json.get(), kError, "Index is out of bounds");
}

TEST(JSONWrapper, ForEachMayChangeTheChildrenAndTheWrapper) {
  const Wrapper json = Of(R"({"a":1,"b":2})");
  const auto take = [](const char* key, const IJSON*, void* user) {
    static_cast<JSONWrapper*>(user)->Remove(key);
    return static_cast<JSONWrapper*>(user)->Parse("[1]");
  };
  EXPECT_TRUE(json->ForEach(take, json.get()));
  EXPECT_EQ(json->ToString(), "[1]");
}

bool Complain(const char* key, const IJSON*, void* user, char* error, std::size_t size) {
  EXPECT_EQ(size, 1024u);
  EXPECT_EQ(error[0], '\0');
  const std::string text = std::string("bad ") + key;
  if (text != "bad 1") text.copy(error, size);
  return text != *static_cast<const std::string*>(user);
}

TEST(JSONWrapper, ForEachGathersTheTextsThatItemsLeave) {
  const Wrapper json = Of("[0,0,0,0]");
  char errors[100];
  std::string stop = "never";
  EXPECT_TRUE(json->ForEach(&Complain, &stop, errors, sizeof errors));
  EXPECT_STREQ(
      errors, "Item '1' has error 'bad 0', Item '3' has error 'bad 2', Item '4' has error 'bad 3'");
  stop = "bad 2";
  EXPECT_FALSE(json->ForEach(&Complain, &stop, errors, sizeof errors));
  EXPECT_STREQ(errors, "Item '1' has error 'bad 0', Item '3' has error 'bad 2'");

  const std::string one = "Item '1' has error 'bad 0'";
  EXPECT_FALSE(json->ForEach(&Complain, &stop, errors, one.size() + 1));
  EXPECT_EQ(errors, one);
  EXPECT_FALSE(json->ForEach(&Complain, &stop, errors, one.size()));
  EXPECT_STREQ(errors, "");
  EXPECT_FALSE(json->ForEach(&Complain, &stop, nullptr, 0));
}

// Has the error that the callback gives it, as long as nobody clears it.
class FailingContext final : public NeutralContext {
public:
  std::string error;
  Lines raised;

private:
  bool Interface_HasError() const override { return !error.empty(); }
  const char* Interface_GetErrorMessage() const override { return error.c_str(); }
  void Interface_ClearError() override { ADD_FAILURE() << "nobody asked for that"; }
  void Interface_TriggerErrorHandler(ErrorSeverity severity, const char* moduleNamespace,
                                     const char* id, const char* message) override {
    EXPECT_EQ(severity, ErrorSeverity::Severity2);
    raised.push_back(std::string(moduleNamespace) + "|" + id + "|" + message);
  }
};

struct ContextWalk {
  AutoRefPtr<FailingContext> context{new FailingContext};
  std::size_t failFrom = 0;  // the context has an error from this item on
  std::string error = "e";
  std::size_t calls = 0;

  static bool Step(const char*, const IJSON*, void* user) {
    auto& walk = *static_cast<ContextWalk*>(user);
    if (walk.calls++ >= walk.failFrom) walk.context->error = walk.error;
    return false;
  }
};

Wrapper ArrayOf(std::size_t count) {
  const Wrapper json = JSONWrapper::CreateArray();
  for (std::size_t i = 0; i < count; ++i) json->PushBack(true);
  return json;
}

TEST(JSONWrapper, ForEachWithAContextGoesOnAndRaisesWhatItGathered) {
  ContextWalk walk;
  walk.failFrom = 1;
  EXPECT_FALSE(ArrayOf(3)->ForEach(&ContextWalk::Step, &walk, walk.context.get()));
  EXPECT_EQ(walk.calls, 3u);
  // Contract: the context's error is not cleared, so item 3 repeats that of item 2.
  EXPECT_EQ(walk.context->raised,
            (Lines{"Tovrin|Error.Tovrin.FunctionError|Item '2' has error 'e', "
                   "Item '3' has error 'e'"}));

  ContextWalk many;
  EXPECT_FALSE(ArrayOf(25)->ForEach(&ContextWalk::Step, &many, many.context.get()));
  EXPECT_EQ(many.calls, 20u);
  ASSERT_EQ(many.context->raised.size(), 1u);
  EXPECT_NE(many.context->raised[0].find("Item '20' has"), std::string::npos);

  ContextWalk large;
  large.error = std::string(4000, 'e');
  EXPECT_FALSE(ArrayOf(25)->ForEach(&ContextWalk::Step, &large, large.context.get()));
  EXPECT_EQ(large.calls, 20u);
  EXPECT_NE(large.context->raised.at(0).find("Item '2' has"), std::string::npos);
  EXPECT_EQ(large.context->raised.at(0).find("Item '3' has"), std::string::npos);

  ContextWalk plain;
  EXPECT_FALSE(ArrayOf(3)->ForEach(&ContextWalk::Step, &plain, nullptr));
  EXPECT_EQ(plain.calls, 3u);
}

}  // namespace
}  // namespace Tovrin::JSON
