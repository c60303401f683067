// Hosts that behave as no host should: appends that lead nowhere, callbacks that call back, one
// variant for everything, sizes that no text has, JSON that contradicts itself. The module answers,
// or lets a standard exception out, and drops what it held.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/module/DefinitionEntries.h"
#include "tests/module/ModuleCalls.h"
#include "tests/support/HostJSON.h"

using namespace Tovrin;

namespace {

using Texts = std::vector<std::string>;

constexpr const char* kVectorFunctions[] = {
    "tovrin_module_FindAll", "tovrin_module_SearchAllMatches", "tovrin_module_WildcardMatch"};

// ---- appends

class FadingContext final : public NeutralContext {
public:
  explicit FadingContext(int rest) : fRest(rest) {}

private:
  IVariant* Interface_CreateInstance(TypeId type) override {
    if (type == kTypeString) return new TestVariant(type);
    const AutoRefPtr<const IVectorGeneric> vector(new FadingVector(fRest));
    return TestVariant::Vector(type, vector).release();
  }

  const int fRest;
};

TEST(HostileHosts, WhoseAppendGivesNothingGetNothing) {
  for (const int rest : {0, 1, 2}) {
    const AutoRefPtr<IContext> context(new FadingContext(rest));
    for (const char* function : kVectorFunctions) {
      const Answer answer = CallIn(context.get(), function, {Expression("(a)(b)(c)"), Text("abc")});
      EXPECT_EQ(answer.status, 0u) << function;
      const bool isEnough = rest >= (std::string(function) == kVectorFunctions[1] ? 1 : 3);
      EXPECT_EQ(answer.Changes(), Texts{isEnough ? "AssignVector" : "AssignVector null"})
          << function << " after " << rest;
    }
  }
}

// ---- calls within calls

// Asks the module about the very object that it works on, whenever it is asked for a value.
class CallingContext final : public NeutralContext {
public:
  CallingContext(AutoRefPtr<TestVariant> object, int depth)
      : fObject(std::move(object)), fDepth(depth) {}

  int answers = 0;  // of the calls within, that were right

private:
  IVariant* Interface_CreateInstance(TypeId type) override {
    if (fDepth > 0) {
      const AutoRefPtr<CallingContext> inner(new CallingContext(fObject, fDepth - 1));
      for (const char* function : kVectorFunctions) {
        const Answer answer = CallIn(inner.get(), function, {fObject, Text("ab")});
        answers +=
            answer.Texts() == Texts{std::string(function) == kVectorFunctions[1] ? "ab" : "b"};
      }
      answers += Call("tovrin_module_Search", {fObject, Text("xab")}).Boolean();
      answers += inner->answers;
    }
    if (type == kTypeString) return new TestVariant(type);
    return TestVariant::Vector(type, TestVector::Texts({})).release();
  }

  const AutoRefPtr<TestVariant> fObject;
  const int fDepth;
};

TEST(HostileHosts, ThatCallBackAreAnsweredWithinTheCall) {
  const auto object = Expression("a(b)");
  const AutoRefPtr<CallingContext> context(new CallingContext(object, 2));
  for (const char* function : kVectorFunctions) {
    EXPECT_EQ(CallIn(context.get(), function, {object, Text("ab")}).status, 0u) << function;
  }
  // Two values a call: three functions and a search in each, and once more within each of the
  // three.
  EXPECT_EQ(context->answers, 3 * 2 * (4 + 3 * 2 * 4));
  EXPECT_EQ(context->GetCount(), 1);
}

// ---- one variant for everything

TEST(HostileHosts, MayTakeTheAnswerInAnArgument) {
  const struct {
    const char* function;
    std::size_t place;  // of the argument that is the result as well
    const char* change;
  } rows[] = {
      {"tovrin_module_ReplaceAllMatches", 1, "AssignString 'xbx'"},
      {"tovrin_module_ReplaceAllMatches", 2, "AssignString 'xbx'"},
      {"tovrin_module_ReplaceFirstMatch", 1, "AssignString 'xba'"},
      {"tovrin_module_FindAll", 1, "AssignVector"},
      {"tovrin_module_SearchAllMatches", 1, "AssignVector"},
      {"tovrin_module_Search", 1, "AssignBoolean true"},
      {"tovrin_module_RegExToString", 0, "AssignString 'a'"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.function);
    const Values values = {Expression("a"), Text("aba"), Text("x")};
    IVariant* const arguments[] = {values[0].get(), values[1].get(), values[2].get()};
    const AutoRefPtr<TestContext> context(new TestContext);
    const auto function = ModuleSymbolAs<std::remove_pointer_t<ModuleFunction>>(row.function);
    EXPECT_EQ(function(3, arguments, arguments[row.place], nullptr, context.get()), 0u);
    EXPECT_EQ(values[row.place]->Changes(), Texts{row.change});
  }
}

TEST(HostileHosts, MayPassOneVariantForAllArguments) {
  const auto value = Text("a");
  IVariant* const arguments[] = {value.get(), value.get(), value.get()};
  const auto function = ModuleSymbolAs<std::remove_pointer_t<ModuleFunction>>(
      "tovrin_module_ReplaceAllMatchesString");
  EXPECT_EQ(function(3, arguments, value.get(), nullptr, nullptr), 0u);
  EXPECT_EQ(value->Changes(), Texts{"AssignString 'a'"});
  EXPECT_EQ(value->GetCount(), 1);
}

// ---- JSON

// An object whose member "value" is what the test says.
struct LyingMember {
  bool isString = true;
  bool isThere = true;
  bool gives = true;             // AsString
  std::size_t size = 2;          // that AsString tells, whatever the buffer
  const char* thrown = nullptr;  // by AsString
};

class LyingJson final : public NeutralJSON {
public:
  explicit LyingJson(const LyingMember& member) : fMember(member) {}

private:
  bool Interface_IsObject() const override { return true; }
  bool Interface_IsString() const override { return fMember.isString; }
  IJSON* Interface_Get(const char*) const override {
    return fMember.isThere ? new LyingJson(fMember) : nullptr;
  }
  std::size_t Interface_AsString(char* buffer, std::size_t size, bool* ok) const override {
    if (fMember.thrown) throw std::out_of_range(fMember.thrown);
    *ok = fMember.gives;
    if (fMember.gives && size >= 2) std::memcpy(buffer, "x", 2);
    return fMember.size;
  }

  const LyingMember fMember;
};

TEST(HostileHosts, WhoseJsonLiesChangeNothing) {
  const auto argument = Expression("old");
  const auto object = argument->GetUserDefined();
  const auto load = [&](const LyingMember& member) {
    const AutoRefPtr<IJSON> json(new LyingJson(member));
    const bool isLoaded = object->Deserialize(json.get());
    EXPECT_EQ(json->GetCount(), 1);
    return isLoaded;
  };
  const auto text = [&] { return Call("tovrin_module_RegExToString", {argument}).Text(); };

  EXPECT_FALSE(load({.isThere = false}));
  EXPECT_FALSE(load({.isString = false}));
  EXPECT_FALSE(load({.gives = false}));
  EXPECT_FALSE(load({.gives = false, .size = 2000}));
  EXPECT_THROW(load({.thrown = "the host's own"}), std::out_of_range);
  // No text has that many bytes, and one more byte than the most is none at all.
  EXPECT_THROW(load({.size = SIZE_MAX}), std::length_error);
  EXPECT_THROW(load({.size = SIZE_MAX - 1}), std::length_error);
  EXPECT_EQ(text(), "old");
  EXPECT_TRUE(Call("tovrin_module_Search", {argument, Text("old")}).Boolean());
  // More than the first buffer holds, and shorter when it is asked again.
  EXPECT_TRUE(load({.size = 1024}));
  EXPECT_EQ(text(), "x");
  EXPECT_TRUE(load({}));
}

// The saved form of a list, which is its own array of entries, with as many of them as it claims.
class LyingEntries final : public NeutralJSON {
public:
  LyingEntries(std::size_t claimed, std::vector<LyingMember> elements)
      : fClaimed(claimed), fElements(std::move(elements)) {}

private:
  IJSON* Interface_Get(const char*) const override { return new LyingEntries(fClaimed, fElements); }
  bool Interface_IsArray() const override { return true; }
  std::size_t Interface_Size() const override { return fClaimed; }
  IJSON* Interface_At(std::size_t index) const override {
    return index < fElements.size() ? new LyingJson(fElements[index]) : nullptr;
  }

  const std::size_t fClaimed;
  const std::vector<LyingMember> fElements;
};

TEST(HostileHosts, WhoseJsonLiesFillAListWithWhatIsThere) {
  const auto list = TestVariant::Object(
      kTestListId, Call("tovrin_module_StringListToRegExList",
                        {TestVariant::Vector(10, TestVector::Texts({"before"}))})
                       .Object());
  const auto load = [&](std::size_t claimed, const std::vector<LyingMember>& elements) {
    const AutoRefPtr<IJSON> json(new LyingEntries(claimed, elements));
    const bool isLoaded = list->GetUserDefined()->Deserialize(json.get());
    EXPECT_EQ(json->GetCount(), 1);
    return isLoaded;
  };
  const auto texts = [&] {
    return Call("tovrin_module_RegExListToString", {list, Text("|")}).Text();
  };

  EXPECT_TRUE(load(2, {{}, {}}));
  EXPECT_EQ(texts(), "x|x");
  EXPECT_TRUE(load(1, {{}, {}})) << "no more are asked for than there are said to be";
  EXPECT_EQ(texts(), "x");
  const LyingMember flaws[] = {
      {.isThere = false}, {.isString = false}, {.gives = false}, {.gives = false, .size = 2000}};
  for (const LyingMember& flaw : flaws) {
    EXPECT_FALSE(load(2, {flaw, {}}));
    EXPECT_EQ(texts(), "x");
  }
  EXPECT_FALSE(load(3, {{}, {}})) << "the third is none";
  EXPECT_EQ(texts(), "x|x");
  EXPECT_TRUE(load(0, {{.thrown = "never asked"}}));
  EXPECT_EQ(texts(), "");

  // No memory is taken on the word of a host.
  for (const std::size_t claimed : {SIZE_MAX, SIZE_MAX / 16, std::size_t{1} << 40}) {
    EXPECT_THROW(load(claimed, {{}, {.thrown = "the host's own"}}), std::out_of_range) << claimed;
    EXPECT_EQ(texts(), "x");
    EXPECT_TRUE(Call("tovrin_module_MatchesInList", {list, Text("x")}).Boolean());
  }
}

// ---- sizes

// A text that tells of more bytes than any text can have.
AutoRefPtr<TestVariant> EndlessText() {
  auto text = Text("a");
  text->ClaimSize(SIZE_MAX);
  return text;
}

AutoRefPtr<TestVariant> GoodArgument(const std::string& type) {
  if (type == "BOOLEAN") return Boolean(true);
  if (type == "NUMBER") return Number(0);
  if (type == "STRING") return Text("a");
  if (type == "Tessarin") return Expression("a");
  return {};
}

// Every function of the definition at each of its texts. Two read up to the zero byte and ask for
// no size.
TEST(HostileHosts, WhoseTextsHaveNoEndGetALengthError) {
  std::size_t refused = 0;
  for (const auto& entry : ReadDefinition(ModuleSymbolAs<const char*()>("GetModuleDefinition")())) {
    for (std::size_t place = 0; place < entry.arguments.size(); ++place) {
      if (entry.arguments[place] != "STRING") continue;
      SCOPED_TRACE(entry.function + ", argument " + std::to_string(place + 1));
      Values arguments;
      for (const auto& type : entry.arguments) arguments.push_back(GoodArgument(type));
      if (entry.arguments[0] == "Tessarin.List") {
        arguments[0] = TestVariant::Object(kTestListId,
                                           Call("tovrin_module_StringListToRegExList",
                                                {TestVariant::Vector(10, TestVector::Texts({"a"}))})
                                               .Object());
      }
      arguments[place] = EndlessText();
      const bool isCounted = entry.function != "tovrin_module_FindAll" &&
                             entry.function != "tovrin_module_AddToRegExList";
      if (isCounted) {
        EXPECT_THROW(Call(entry.function, arguments), std::length_error);
        ++refused;
      } else {
        EXPECT_EQ(Call(entry.function, arguments).status, 0u);
      }
      EXPECT_EQ(arguments[place]->GetCount(), 1);
    }
  }
  EXPECT_GE(refused, 18u);
}

}  // namespace
