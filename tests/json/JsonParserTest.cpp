#include "json/JsonParser.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <locale>
#include <string>
#include <vector>

#include "tests/json/JsonSupport.h"

using namespace Tovrin::JSON;
using namespace std::string_literals;

namespace {

struct FailureRow {
  std::string text;
  std::string message;
  std::uint64_t position;
  std::uint64_t line = 0;
  std::uint64_t lineStart = 0;
};

void ExpectFailures(const std::vector<FailureRow>& rows, const JsonCompiledSchema* schema = nullptr,
                    JsonParseContext context = {}) {
  for (const FailureRow& row : rows) {
    SCOPED_TRACE(row.text);
    const Node root(Parse(row.text, &context, schema));
    EXPECT_FALSE(root);
    EXPECT_EQ(context.ErrorMessage, row.message);
    EXPECT_EQ(context.Position, row.position);
    EXPECT_EQ(context.Line, row.line);
    EXPECT_EQ(context.LineStart, row.lineStart);
    EXPECT_FALSE(context.ParseSucceeded);
  }
}

TEST(JsonParser, TellsWhatIsWrongWithAValue) {
  ExpectFailures({
      {"", "unexpected end of input", 0},
      {" \t", "unexpected end of input", 2},
      {"\xEF\xBB\xBF", "unexpected end of input", 3},
      {"\xEF\xBB\xBF\xEF\xBB\xBF", "not a JSON value", 3},
      {"\xEF\xBB", "not a JSON value", 0},
      {"nul", "not a JSON value", 0},
      {"nulL", "not a JSON value", 0},
      {"x", "not a JSON value", 0},
      {"'a'", "not a JSON value", 0},
      {"+1", "not a JSON value", 0},
      {".5", "not a JSON value", 0},
      {"truex", "illegal trailing characters after value", 4},
      {"1 2", "illegal trailing characters after value", 2},
      {"01", "illegal trailing characters after value", 1},
      {"00", "illegal trailing characters after value", 1},
      {"{} {}", "illegal trailing characters after value", 3},
      {"1\0"s, "illegal trailing characters after value", 1},
      // Four bytes are white space, and no others.
      {"\v1", "not a JSON value", 0},
      {"\f1", "not a JSON value", 0},
      {"\xC2\xA0"
       "1",
       "not a JSON value", 0},
      {"1\x1F", "illegal trailing characters after value", 1},
  });
}

TEST(JsonParser, TellsWhatIsWrongWithAnArray) {
  ExpectFailures({
      {"[", "illegal array", 1},
      {"[ ", "illegal array", 2},
      {"[1", "illegal array", 2},
      {"[1,", "illegal array", 3},
      {"[1,]", "array must not end with comma", 3},
      {"[,1]", "expected value in front before comma", 1},
      {"[1,,2]", "expected value in front before comma", 3},
      {"[1 2]", "comma separator expected between values", 3},
      {"[1[2]]", "comma separator expected between values", 2},
      {"[x]", "not a JSON value", 1},
      {"[[x]]", "not a JSON value", 2},
      {"[1}", "comma separator expected between values", 2},
      {"]", "not a JSON value", 0},
      // Arrays of numbers are read in one go, and what is wrong with them all the same.
      {"[1,2,01]", "comma separator expected between values", 6},
      {"[1,2,-]", "not a number", 5},
      {"[1.5,2.,3]", "minimum one digit after decimal dot required", 5},
      {"[1.5,2e]", "minimum one digit after exponent required", 5},
      {"[1.5,1e400]", "real number out of double range", 5},
      {"[1,\n2\n,\n]", "array must not end with comma", 8, 3, 8},
      {"[1,\n2\n ] x", "illegal trailing characters after value", 9, 2, 6},
      {"[[1,\n2]\n\n 3]", "comma separator expected between values", 10, 3, 9},
  });
}

TEST(JsonParser, TellsWhatIsWrongWithAnObject) {
  ExpectFailures({
      {"{", "illegal object", 1},
      {R"({"a":1)", "illegal object", 6},
      {R"({"a":1,)", "illegal object", 7},
      {R"({"a":1,})", "object list must not end with a comma", 7},
      {R"({,"a":1})", "expected key value pair in front before comma", 1},
      {R"({"a":1,,"b":2})", "expected key value pair in front before comma", 7},
      {R"({"a":1 "b":2})", "comma separator expected between key value pairs", 7},
      {R"({"a" 1})", "colon expected", 5},
      {R"({"a")", "colon expected", 4},
      {"{1:2}", "string quote sign expected while parsing a key", 1},
      {R"({"a\x":2})", "illegally quoted character while parsing a key", 5},
      {R"({"a":})", "not a JSON value while parsing a value", 5},
      {R"({"a":)", "unexpected end of input while parsing a value", 5},
      {R"({"a":{"b":}})", "not a JSON value while parsing a value while parsing a value", 10},
      {R"({"a":[{"b":,}]})", "not a JSON value while parsing a value while parsing a value", 11},
      {R"({"a":[1 2]})", "comma separator expected between values while parsing a value", 8},
      {R"({"a":{"b" 1}})", "colon expected while parsing a value", 10},
      {R"({"a":{1:1}})", "string quote sign expected while parsing a key while parsing a value", 6},
      {R"([{"a":1,}])", "object list must not end with a comma", 8},
  });
}

TEST(JsonParser, TellsWhatIsWrongWithAString) {
  ExpectFailures({
      {"\"abc", "string quote sign expected", 4},
      {"\"", "string quote sign expected", 1},
      {"\"a\\", "string quote sign expected", 3},
      {"\"a\\n", "string quote sign expected", 4},
      {"\"a\nb\"", "control character must be quoted", 2},
      {"\"a\\tb\x01\"", "control character must be quoted", 5},
      {"\"a\\x\"", "illegally quoted character", 4},
      {"\"\\U0041\"", "illegally quoted character", 3},
      {"\"\\u0041", "incorrect utf16 char quoting", 7},
      {"\"\\u00", "incorrect utf16 char quoting", 5},
      {"\"\\u00g1\"", "incorrect utf16 char quoting", 7},
      {"\"\\u12\"", "incorrect utf16 char quoting", 6},
      // Too short for a partner, so the escape is one of its own.
      {"\"\\ud83d\\u12\"", "incorrect utf16 char quoting", 12},
      {"\"\\ud83d\\u12x4\"", "incorrect utf32 char quoting", 13},
      {"\"\\ud83d\\u1234", "incorrect utf16 char quoting", 13},
  });
}

TEST(JsonParser, RefusesEveryControlByteInAString) {
  for (int byte = 0; byte < 0x20; ++byte) {
    JsonParseContext context;
    EXPECT_EQ(Parse("\"0123456789" + std::string(1, static_cast<char>(byte)) + "\"", &context),
              nullptr);
    EXPECT_EQ(context.ErrorMessage, "control character must be quoted") << byte;
    EXPECT_EQ(context.Position, 11U);
  }
  const Node del(Parse("\"\x7F\""));
  EXPECT_EQ(Compact(*del), "\"\x7F\"");
}

TEST(JsonParser, TellsWhatIsWrongWithANumber) {
  ExpectFailures({
      {"-", "not a number", 0},
      {"-a", "not a number", 0},
      {"--1", "not a number", 0},
      {"1.", "minimum one digit after decimal dot required", 0},
      {"1.x", "minimum one digit after decimal dot required", 0},
      {"[1.e1]", "minimum one digit after decimal dot required", 1},
      {"1e", "minimum one digit after exponent required", 0},
      {"1e+", "minimum one digit after exponent required", 0},
      {"1ex", "minimum one digit after exponent required", 0},
      {"1e-400", "real number out of double range", 0},
      {"2.4e-324", "real number out of double range", 0},
      {"1e309", "real number out of double range", 0},
      {"[ -1e400]", "real number out of double range", 2},
  });
}

TEST(JsonParser, QuotesTheBeginningOfBadUtf8) {
  const std::string tail = "0123456789012345678901234";
  const std::string start = "illegal UTF8 character found at position ";
  ExpectFailures({
      {"\"\xFFzz\"", start + "0", 5},
      {"\"abcde\xFF\"", start + "5 in string which starts with \"abcde\"", 13},
      {"\"" + tail + "\xC3\"", start + "25 in string which starts with \"01234567890123456789\"",
       53},
      {"[\"a\\tb\x80\"]", start + "3 in string which starts with \"a\tb\"", 11},
      {"{\"a\xFF\":1}", start + "1 in string which starts with \"a\" while parsing a key", 6},
  });
  JsonParseContext each;
  each.ValidateInputOnce = false;
  ExpectFailures({{"\"abcde\xFF\"", start + "5 in string which starts with \"abcde\"", 13}},
                 nullptr, each);
  JsonParseContext trusting;
  trusting.AssumeValidUtf8 = true;
  const Node root(Parse("{\"k\xFF\":\"abcde\xFF\"}", &trusting));
  EXPECT_EQ(CompactOrNone(root.Get()), "{\"k\xFF\":\"abcde\xFF\"}");
  EXPECT_FALSE(trusting.InputIsValidUtf8);
}

TEST(JsonParser, TellsWhetherItsOneCheckOfTheInputPassed) {
  for (const bool assume : {false, true}) {
    for (const bool once : {false, true}) {
      JsonParseContext context;
      context.AssumeValidUtf8 = assume;
      context.ValidateInputOnce = once;
      EXPECT_TRUE(Node(Parse("[\"\xC3\xA9\"]", &context)));
      EXPECT_EQ(context.InputIsValidUtf8, once && !assume);
    }
  }
}

TEST(JsonParser, CountsLineEnds) {
  const struct {
    std::string blanks;
    std::uint64_t line, lineStart;
  } rows[] = {{"\r\n\r\n", 2, 4}, {"\n\r", 1, 2}, {"\n\r\n", 2, 3},
              {"\n\n", 2, 2},     {"\r\r", 2, 2}, {"\n  \n", 2, 4},
              {"", 0, 0},         {" ", 0, 0},    {"\n                  ", 1, 1},
              {"\r\n\n\r", 2, 4}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.blanks);
    ExpectFailures({{"[" + row.blanks + "x]", "not a JSON value", row.blanks.size() + 1, row.line,
                     row.line ? row.lineStart + 1 : 0}});
  }
}

// --- What is read ---

TEST(JsonParser, ReadsAndKeepsWhatItReads) {
  for (const char* text : {R"({"a":1,"b":[true,null]})",
                           "[]",
                           "{}",
                           R"([[],[{}],""])",
                           "1.50",
                           "1e5",
                           "-0.0",
                           "1E+5",
                           "100000.0",
                           "123456789012345678901234",
                           "-9223372036854775808",
                           "18446744073709551616",
                           "9223372036854775807",
                           "18446744073709551615",
                           "0.12345678901234567",
                           R"("\u001F\"\\")",
                           "4.9e-9",
                           "\"\xC3\xBC\"",
                           "-123",
                           "[1.5,2]"}) {
    JsonParseContext context;
    context.KeepKeyOrder = true;
    const Node root(Parse(text, &context));
    EXPECT_EQ(CompactOrNone(root.Get()), text);
    EXPECT_TRUE(context.ParseSucceeded);
    EXPECT_EQ(context.ErrorMessage, "");
    EXPECT_EQ(context.Position, std::string(text).size());
  }
}

TEST(JsonParser, SkipsBlanksAroundEverything) {
  const Node root(
      Parse("\xEF\xBB\xBF \t\r\n{ \"a\" : [ 1 , 2 ] , \"b\" : { } "
            ", \"c\" : [ ] }\n"));
  EXPECT_EQ(CompactOrNone(root.Get()), R"({"a":[1,2],"b":{},"c":[]})");
}

TEST(JsonParser, ReadsEscapes) {
  const struct {
    const char* escaped;
    std::string text;
  } rows[] = {
      {R"(\"\\\/\b\f\n\r\t)", "\"\\/\b\f\n\r\t"},
      {R"(a\u0041b)", "aAb"},
      {R"(\u0000)", "\0"s},
      {R"(\u00e9\u00E9)", "\xC3\xA9\xC3\xA9"},
      {R"(\u07ff\u0800\uffff)", "\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF"},
      {R"(\uD83D\uDE00)", "\xF0\x9F\x98\x80"},
      // Contract: the plane is put in by OR.
      {R"(\uD800\uDC00)", "\xF0\x90\x80\x80"},
      {R"(\uD840\uDC00)", "\xF0\x90\x80\x80"},
      {R"(\uDBFF\uDFFF)", "\xF3\xBF\xBF\xBF"},
      {R"(\uD8C0\uDC00)", "\xF0\xB0\x80\x80"},
      // Contract: halves without a partner are written as they are.
      {R"(\uD83Dx)", "\xED\xA0\xBDx"},
      {R"(\uDE00)", "\xED\xB8\x80"},
      {R"(\uD83D)", "\xED\xA0\xBD"},
      {R"(\uD83D\n)", "\xED\xA0\xBD\n"},
      {R"(\uD83D\u0041)",
       "\xED\xA0\xBD"
       "A"},
      {R"(\uD83D\uD83D\uDE00)", "\xED\xA0\xBD\xED\xA0\xBD\xED\xB8\x80"},
      {R"(\uD83D\uE000)", "\xED\xA0\xBD\xEE\x80\x80"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.escaped);
    const Node root(Parse("\""s + row.escaped + "\""));
    ASSERT_TRUE(root);
    std::string text;
    root->AsString(text);
    EXPECT_EQ(text, row.text);
    const Node object(Parse("{\""s + row.escaped + "\":1}"));
    EXPECT_TRUE(ToObject(object.Get())->Has(row.text));
  }
}

// Runs of every length around the step of the search, with the end at every
// place.
TEST(JsonParser, FindsTheEndOfEveryRun) {
  for (std::size_t size = 0; size < 40; ++size) {
    const std::string run(size, '~');
    for (const char* ending : {"", "\\n", "\\u0041!", "\xC3\xA9", "\\\""}) {
      const std::string inner = run + ending + run;
      const Node root(Parse("[\"" + inner + "\"]"));
      ASSERT_TRUE(root);
      std::string escaped;
      WriteEscaped(ToArray(root.Get())->ChildAsString(0), escaped);
      std::string expected = inner;
      if (ending == "\\u0041!"s) expected = run + "A!" + run;
      EXPECT_EQ(escaped, expected);
    }
  }
}

TEST(JsonParser, ClassifiesNumbers) {
  const struct {
    const char* text;
    JsonValue::Type type;
    std::string kept;  // the text of a real that is not converted
    std::int32_t precision;
    std::string printed;
  } rows[] = {
      {"-0", JsonValue::TypeInteger, "", 0, "0"},
      {"0", JsonValue::TypeInteger, "", 0, "0"},
      {"9223372036854775808", JsonValue::TypeInteger, "", 0, "9223372036854775808"},
      {"-9223372036854775807", JsonValue::TypeInteger, "", 0, "-9223372036854775807"},
      {"-9223372036854775808", JsonValue::TypeReal, "-9223372036854775808", 19,
       "-9223372036854775808.0"},
      {"18446744073709551616", JsonValue::TypeReal, "18446744073709551616", 19,
       "1.844674407370955162e+19"},
      // A digit that fits behind one that did not is counted.
      {"184467440737095516160", JsonValue::TypeReal, "184467440737095516160", 20,
       "1.8446744073709551616e+20"},
      {"-0.0", JsonValue::TypeReal, "-0.0", 2, "-0.0"},
      {"1.50", JsonValue::TypeReal, "1.50", 3, "1.5"},
      {"1e5", JsonValue::TypeReal, "1e5", 1, "1e+05"},
      {"1E-5", JsonValue::TypeReal, "1E-5", 1, "1e-05"},
      {"100000.0", JsonValue::TypeReal, "100000.0", 7, "100000.0"},
      {"1e05", JsonValue::TypeReal, "", 1, "1e+05"},
      {"1e10", JsonValue::TypeReal, "", 1, "1e+10"},
      {"0e-400", JsonValue::TypeReal, "", 1, "0.0"},
      {"1e-310", JsonValue::TypeReal, "", 1, "1e-310"},
      {"4.9e-324", JsonValue::TypeReal, "", 2, "4.9e-324"},
      {"0.12345678901234567", JsonValue::TypeReal, "0.12345678901234567", 18,
       "0.123456789012345663"},
      {"0.123456789012345678", JsonValue::TypeReal, "", 19, "0.1234567890123456774"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    const Node root(Parse(row.text));
    ASSERT_TRUE(root);
    EXPECT_EQ(root->GetType(), row.type);
    if (row.type == JsonValue::TypeReal) {
      const auto& real = static_cast<const JsonReal&>(*root);
      EXPECT_EQ(real.Text(), row.kept);
      EXPECT_EQ(real.Precision(), row.precision);
      real.Value();
    }
    EXPECT_EQ(Compact(*root), row.printed);
  }
}

TEST(JsonParser, ALongWholeNumberIsInfiniteOnceItIsAskedFor) {
  for (const std::string sign : {"", "-"}) {
    const std::string text = sign + "1" + std::string(400, '0');
    const Node root(Parse(text));
    EXPECT_EQ(Compact(*root), text);
    double value = 0;
    EXPECT_TRUE(root->AsDouble(value));
    EXPECT_EQ(value, std::numeric_limits<double>::infinity());
    EXPECT_EQ(Compact(*root), "inf.0");
  }
}

TEST(JsonParser, TheLastOfRepeatedKeysStandsAtTheFirstPlace) {
  for (const bool reject : {false, true}) {
    JsonParseContext context;
    context.KeepKeyOrder = true;
    context.RejectDuplicateKeys = reject;
    const Node root(Parse(R"({"a":1,"b":2,"a":[3],"\u0061":4})", &context));
    EXPECT_EQ(CompactOrNone(root.Get()), R"({"a":4,"b":2})");
    EXPECT_EQ(ToObject(root.Get())->NextSequence(), 2U);
  }
}

TEST(JsonParser, ManyKeysAreToldApart) {
  std::string text = "{", expected = "{";
  for (int round = 0; round < 2; ++round) {
    for (int i = 0; i < 500; ++i) {
      const std::string key = "\"key" + std::to_string(i) + "\":";
      text += (text.size() > 1 ? "," : "") + key + std::to_string(round);
      if (round == 1) expected += (i ? "," : "") + key + "1";
    }
  }
  const Node root(Parse(text + "}"));
  EXPECT_EQ(CompactOrNone(root.Get()), expected + "}");
  EXPECT_EQ(ToObject(root.Get())->ChildAsInteger("key499"), 1);
}

TEST(JsonParser, AContextCanBeUsedAgain) {
  JsonParseContext context;
  context.KeepKeyOrder = true;
  context.RejectDuplicateKeys = true;
  EXPECT_EQ(Parse("\n[", &context), nullptr);
  EXPECT_EQ(context.Line, 1U);
  const Node root(Parse("[]", &context));
  EXPECT_TRUE(root);
  EXPECT_EQ(context.ErrorMessage, "");
  EXPECT_EQ(context.Line, 0U);
  EXPECT_TRUE(context.ParseSucceeded && context.InputIsValidUtf8);
  context.Reset();
  EXPECT_FALSE(context.ParseSucceeded || context.InputIsValidUtf8);
  EXPECT_EQ(context.Position, 0U);
  EXPECT_TRUE(context.KeepKeyOrder && context.RejectDuplicateKeys && context.ValidateInputOnce);
}

// Contract: no message, and the parse has succeeded.
TEST(JsonParser, ATypedParseOfAnotherTypeIsNothing) {
  JsonParseContext context;
  EXPECT_EQ(ParseArray("{}", &context), nullptr);
  EXPECT_EQ(context.ErrorMessage, "");
  EXPECT_TRUE(context.ParseSucceeded);
  EXPECT_EQ(ParseObject("[]", &context), nullptr);
  EXPECT_EQ(ParseCompiledObject("{}", &context), nullptr);
  EXPECT_EQ(ParseArray("[", &context), nullptr);
  EXPECT_EQ(context.ErrorMessage, "illegal array");
  EXPECT_TRUE(CUsePtr(ParseArray("[]")));
  EXPECT_TRUE(CUsePtr(ParseObject("{}")));
  JsonCompiledSchema schema;
  EXPECT_TRUE(CUsePtr(ParseCompiledObject("{}", nullptr, &schema)));
}

TEST(JsonParser, NeedsNoContext) {
  EXPECT_EQ(CompactOrNone(Node(Parse("[1]")).Get()), "[1]");
  EXPECT_EQ(Parse("["), nullptr);
}

TEST(JsonParser, TakesMsgPackByItsFirstByte) {
  for (int first = 0; first < 256; ++first) {
    JsonParseContext context;
    context.DetectMsgPack = true;
    const Node root(Parse(std::string(1, static_cast<char>(first)) + "~~", &context));
    const bool isMsgPack = (first >= 0x80 && first <= 0x9F) || (first >= 0xDC && first <= 0xDF);
    const std::string& message = context.ErrorMessage;
    const bool saysMsgPack = message == "string expected" || message == "unexpected end of input" ||
                             message == "illegal trailing characters after value" || root;
    JsonParseContext asText;
    EXPECT_EQ(Parse(std::string(1, static_cast<char>(first)) + "~~", &asText), nullptr);
    if (isMsgPack) {
      EXPECT_TRUE(saysMsgPack) << first << message;
    } else {
      EXPECT_FALSE(root);
      EXPECT_EQ(message, asText.ErrorMessage) << first;
      EXPECT_EQ(context.Position, asText.Position) << first;
    }
  }
  JsonParseContext context;
  context.DetectMsgPack = true;
  EXPECT_EQ(CompactOrNone(Node(Parse("\x92\x01\x02", &context)).Get()), "[1,2]");
  EXPECT_EQ(CompactOrNone(Node(Parse("[1]", &context)).Get()), "[1]");
  EXPECT_EQ(Parse("", &context), nullptr);
  EXPECT_EQ(context.ErrorMessage, "unexpected end of input");
}

// --- Compiled objects ---

struct Schemas {
  JsonCompiledSchema child, root;
  Schemas() {
    child.AddKey("x", KeyNumber);
    root.AddKey("name", KeyString);
    root.AddKey("child", KeyCompiledObject, &child);
    root.AddKey("plain", KeyObject);
    root.AddKey("plainWithChild", KeyObject, &child);
    root.AddKey("list", KeyArray);
    root.AddKey("children", KeyArray, &child);
    root.AddKey("lone", KeyCompiledObject);
    root.AddKey("some", 0x0010);  // one bit of the four
  }
};

TEST(JsonParser, ReadsCompiledObjectsByTheirSchema) {
  const Schemas schemas;
  const struct {
    const char* text;
    const char* printed;
  } rows[] = {
      {"{}", "{}"},
      {R"({"name":1})", R"({"name":1})"},  // scalars are not checked
      {R"({"unknown":[{"a":1}],"name":"n"})", R"({"name":"n"})"},
      {R"({"list":[1,{"x":2}],"name":"a","name":"b"})", R"({"name":"b","list":[1,{"x":2}]})"},
      {"{\xEF\xBB\xBF \"name\":\"n\"}", R"({"name":"n"})"},
      {R"([{"name":"a"},{}])", R"([{"name":"a"},{}])"},
      {"5", "5"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    JsonParseContext context;
    const Node root(Parse(row.text, &context, &schemas.root));
    EXPECT_EQ(CompactOrNone(root.Get()), row.printed) << context.ErrorMessage;
  }
  const Node root(Parse(R"({"child":{"x":1},"plain":{"x":1},"plainWithChild":{"x":1},
                            "children":[{"x":1}],"lone":{"x":1},"list":[{"x":1}],"list":[{}]})",
                        nullptr, &schemas.root));
  const JsonCompiledObject* object = ToCompiledObject(root.Get());
  ASSERT_TRUE(object);
  EXPECT_EQ(object->Count(), 6U);
  EXPECT_EQ(object->FindChild("child")->GetType(), JsonValue::TypeCompiledObject);
  EXPECT_EQ(object->FindChild("plain")->GetType(), JsonValue::TypeObject);
  EXPECT_EQ(object->FindChild("plainWithChild")->GetType(), JsonValue::TypeObject);
  EXPECT_EQ(object->FindChild("children")->FindChild("0")->GetType(),
            JsonValue::TypeCompiledObject);
  EXPECT_EQ(object->FindChild("lone")->GetType(), JsonValue::TypeObject);
  EXPECT_EQ(object->FindChild("list")->FindChild("0")->GetType(), JsonValue::TypeObject);
}

TEST(JsonParser, TellsWhatIsWrongWithACompiledObject) {
  const Schemas schemas;
  ExpectFailures(
      {
          {"{", "illegal compiled object", 1},
          {"[1]", "illegal compiled object", 1},
          {R"({"name":1,})", "object list must not end with comma", 10},
          {R"({,"name":1})", "expected key value pair in front before comma", 1},
          {R"({"name":1,,})", "expected key value pair in front before comma", 10},
          {R"({"name":1 "a":2})", "comma separator expected between key value pairs", 10},
          {"{1:2}", "string quote sign expected while parsing a key while parsing value", 1},
          {R"({"name" 1})", "colon expected while parsing value", 8},
          {R"({"":1})", "colon expected while parsing value", 3},
          {R"({"name":})", "not a JSON value while parsing value", 8},
          {R"({"unknown":})", "not a JSON value while parsing value", 11},
          {R"({"child":5})", "illegal compiled object while parsing value", 9},
          {R"({"child":)", "illegal compiled object while parsing value", 9},
          {R"({"plain":5})", "illegal object while parsing value", 9},
          {R"({"list":5})", "illegal array while parsing value", 8},
          {R"({"some":5})", "illegal array while parsing value", 8},
          {R"({"children":[5]})", "illegal compiled object while parsing value", 13},
          {R"({"child":{"x":}})", "not a JSON value while parsing value while parsing value", 14},
          {R"({"plain":{"x":}})", "not a JSON value while parsing a value while parsing value", 14},
          {"{ \xEF\xBB\xBF\"name\":1}",
           "string quote sign expected while parsing a key while parsing value", 2},
      },
      &schemas.root);
}

TEST(JsonParser, RejectingMakesUnknownKeysAnError) {
  const Schemas schemas;
  JsonParseContext rejecting;
  rejecting.RejectDuplicateKeys = true;
  ExpectFailures({{R"({"unknown":1})", "duplicate key", 12},
                  {R"({"child":{"unknown":1}})", "duplicate key while parsing value", 21},
                  // The blanks behind a container belong to it.
                  {"{\"unknown\":[1] \n }", "duplicate key", 17, 1, 16},
                  {"{\"unknown\":{} }", "duplicate key", 14},
                  {"{\"unknown\":\"s\" }", "duplicate key", 14}},
                 &schemas.root, rejecting);
  const Node repeated(Parse(R"({"name":1,"name":2})", &rejecting, &schemas.root));
  EXPECT_EQ(CompactOrNone(repeated.Get()), R"({"name":2})");
}

// --- The parts that stand alone ---

TEST(JsonParser, ReadNumberStopsBehindTheNumber) {
  JsonParseContext context;
  context.Position = 2;
  EXPECT_EQ(CompactOrNone(Node(ReadNumber("x,12.5abc", context)).Get()), "12.5");
  EXPECT_EQ(context.Position, 6U);
  EXPECT_EQ(ReadNumber("x,12.5abc", context), nullptr);
  EXPECT_EQ(context.ErrorMessage, "not a number");
  EXPECT_EQ(context.Position, 6U);
  context.Position = 1;
  EXPECT_EQ(ReadNumber("1", context), nullptr);
  EXPECT_EQ(context.ErrorMessage, "unexpected end of input");
}

TEST(ParseReal, ReadsAsTheLibraryInTheClassicLocale) {
  const double infinity = std::numeric_limits<double>::infinity();
  const struct {
    const char* text;
    double value;
  } rows[] = {{"1.5", 1.5},
              {"", 0.0},
              {"x", 0.0},
              {" 12abc", 12.0},
              {"0x10", 16.0},
              {"inf", infinity},
              {"-inf", -infinity},
              {"1e400", infinity},
              {"-1e400", infinity},
              {"1e-400", infinity},
              {"-1e-400", infinity},
              {"0e-400", 0.0},
              {"1e-310", 1e-310},
              {"4.9e-324", 4.9e-324},
              {"2.4e-324", infinity},
              {"1.7976931348623157e308", 1.7976931348623157e308},
              {"+2", 2.0},
              {"1,5", 1.0}};
  struct Comma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
  };
  const std::locale before = std::locale::global(std::locale(std::locale(), new Comma));
  for (const auto& row : rows) EXPECT_EQ(ParseReal(row.text), row.value) << row.text;
  std::locale::global(before);
  EXPECT_TRUE(std::isnan(ParseReal("nan")));
  EXPECT_TRUE(std::signbit(ParseReal("-0.0")));
}

TEST(IsValidUtf8, LooksAtTheStructureAlone) {
  const struct {
    std::string bytes;
    std::size_t bad;  // the size when valid
  } rows[] = {{"", 0},
              {"a\0b"s, 3},
              {"\xC3\xA9", 2},
              {"\xC0\x80", 2},          // overlong
              {"\xED\xA0\x80", 3},      // a surrogate
              {"\xF7\xBF\xBF\xBF", 4},  // beyond the last
              {"ab\x80", 2},            // no lead
              {"ab\xC3", 2},            // cut off
              {"ab\xE2\x82", 2},
              {"ab\xE2\x82x", 2},
              {"\xF8\x88\x80\x80\x80", 0},  // five bytes
              {"\xFF", 0},
              {"\xC3\xA9\xC3\xC3", 2}};
  for (const auto& row : rows) {
    for (std::size_t lead = 0; lead < 70; ++lead) {  // over all steps of the search
      const std::string text = std::string(lead, 'a') + row.bytes;
      std::size_t bad = 99;
      EXPECT_EQ(IsValidUtf8(text, &bad), row.bad == row.bytes.size());
      EXPECT_EQ(bad, lead + row.bad);
    }
  }
  EXPECT_TRUE(IsValidUtf8("a"));
  std::size_t bad = 9;
  EXPECT_FALSE(IsValidUtf8(std::string_view("\xC3\xA9", 1), &bad));
  EXPECT_EQ(bad, 0U) << "whatever stands behind the end";
}

}  // namespace
