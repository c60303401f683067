#include <gtest/gtest.h>

#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Common/CBuffer.h"
#include "Common/CSTDXMLString.h"
#include "Common/CSTDXMLTag.h"

using namespace std::string_view_literals;

namespace {

std::string Encoded(std::string_view bytes) {
  std::string target = "what stood here before";
  CSTDXMLString::Encode(bytes, target);
  return target;
}

std::string Kept(std::string_view bytes) {
  std::string target = "what stood here before";
  CSTDXMLString::EncodeKeepingReferences(bytes, target);
  return target;
}

std::string ExpectedOf(int byte) {
  switch (byte) {
    case 8:
      return "?";
    case 10:
      return "&#xa;";
    case 13:
      return "&#xd;";
    case '"':
      return "&quot;";
    case '&':
      return "&amp;";
    case '\'':
      return "&apos;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    default:
      return std::string(1, static_cast<char>(byte));
  }
}

TEST(CSTDXMLString, EncodesEveryByte) {
  for (int byte = 0; byte < 256; ++byte) {
    const std::string text(1, static_cast<char>(byte));
    EXPECT_EQ(Encoded(text), ExpectedOf(byte)) << byte;
    EXPECT_EQ(Kept(text), ExpectedOf(byte)) << byte;
    // Contract: a backspace does not come back.
    EXPECT_EQ(CSTDXMLString::Decode(Encoded(text)), byte == 8 ? "?" : text) << byte;
  }
  EXPECT_EQ(Encoded(""), "");
  EXPECT_EQ(Encoded("a<b"), "a&lt;b");
  EXPECT_EQ(CSTDXMLString::Decode("a&lt;b"), "a<b");
}

TEST(CSTDXMLString, KeepsNumericReferencesInItsSecondForm) {
  const std::pair<const char*, const char*> rows[] = {
      {"&#65;", "&#65;"},
      {"&#;", "&amp;#;"},
      // Every cut of a reference. Two bytes must be there from the first digit on.
      {"&", "&amp;"},
      {"&#", "&amp;#"},
      {"&#x", "&amp;#x"},
      {"&#xA", "&amp;#xA"},
      {"&#xAB", "&#xAB"},
      {"&#xAB;", "&#xAB;"},
      {"&#1", "&amp;#1"},
      {"&#12", "&#12"},
      {"&#12;", "&#12;"},
      {"a&#6", "a&amp;#6"},
      // The second byte may be anything.
      {"&#6<", "&#6&lt;"},
      {"&#xa;", "&#xa;"},
      {"&#xg0;", "&amp;#xg0;"},
      {"&#X41;", "&amp;#X41;"},
      {"&#-1;", "&amp;#-1;"},
      {"&amp;", "&amp;amp;"},
  };
  for (const auto& [text, encoded] : rows) {
    EXPECT_EQ(Kept(text), encoded);
    EXPECT_EQ(CSTDXMLString::Decode(Encoded(text)), text);
  }
  // Contract: what was a reference as a text comes back as the byte.
  EXPECT_EQ(CSTDXMLString::Decode(Kept("&#xa;")), "\n");
}

TEST(CSTDXMLString, DecodesOnceFromTheFront) {
  const std::pair<const char*, const char*> rows[] = {
      {"&amp;lt;", "&lt;"},
      {"&unknown;", "&unknown;"},
      {"&#65;", "&#65;"},
      {"&&lt;", "&<"},
      {"&lt", "&lt"},
      {"&#xA;", "&#xA;"},
      {"&quot;&apos;", "\"'"},
      {"&#xd;&#xa;", "\r\n"},
      {"&LT;", "&LT;"},
      {"&gt;&amp;", ">&"},
      {"&", "&"},
  };
  for (const auto& [text, decoded] : rows) EXPECT_EQ(CSTDXMLString::Decode(text), decoded);
}

TEST(CSTDXMLString, GivesATextInUtf8) {
  EXPECT_EQ(CSTDXMLString(CText("\xE9", Charset::Latin1)).Bytes(), "\xC3\xA9");
  EXPECT_FALSE(CSTDXMLString().IsSet());
  EXPECT_TRUE(CSTDXMLString("").IsSet());
}

std::string Written(const CSTDXMLTag& tag) {
  std::string out;
  tag.Write(out);
  return out;
}

CSTDXMLTag::Pointer Nest(CSTDXMLTag& parent, std::string name, const char* value = nullptr) {
  CSTDXMLTag::Pointer tag(new CSTDXMLTag(std::move(name)));
  if (value) tag->Value = CSTDXMLString(std::string(value));
  parent.Tags.push_back(tag);
  return tag;
}

CSTDXMLTag Sample() {
  CSTDXMLTag rule("rule");
  rule.Attributes["state"] = CSTDXMLString("on\r\n");
  rule.Attributes["name"] = CSTDXMLString("a \"b\" <c>");
  Nest(rule, "text", "one < two");
  const auto key = Nest(rule, "key", "a<b");
  key->Value.SetSized(true);
  key->Attributes["kind"] = CSTDXMLString("x");
  Nest(rule, "none")->IsEmptyInForm = true;
  const auto list = Nest(rule, "list");
  Nest(*list, "item", "");
  return rule;
}

constexpr auto kSample =
    "<rule name=\"a &quot;b&quot; &lt;c&gt;\" state=\"on&#xd;&#xa;\">\r\n"
    "\t<text>one &lt; two</text>\r\n"
    "\t<key kind=\"x\" size=\"3\">a<b</key>\r\n"
    "\t<none/>\r\n"
    "\t<list>\r\n"
    "\t\t<item></item>\r\n"
    "\t</list>\r\n"
    "</rule>\r\n"sv;

TEST(CSTDXMLTag, WritesNestedTagsAndSeveralAttributes) {
  EXPECT_EQ(Written(Sample()), kSample);
}

TEST(CSTDXMLTag, ReadsBackWhatItWrites) {
  CSTDXMLTag tag;
  std::uint64_t position = 0;
  ASSERT_TRUE(tag.Read(kSample, position));
  EXPECT_EQ(position, kSample.size() - 2);  // the line end is the next one's white space
  EXPECT_EQ(Written(tag), kSample);
  EXPECT_EQ(tag.Attribute("state").Bytes(), "on\r\n");
  EXPECT_EQ(tag.Attribute("name").Bytes(), "a \"b\" <c>");
  ASSERT_EQ(tag.Tags.size(), 4U);
  EXPECT_EQ(tag.Tags[0]->Value.Bytes(), "one < two");
  EXPECT_EQ(tag.Tags[1]->Value.Bytes(), "a<b");
  EXPECT_TRUE(tag.Tags[1]->Value.IsSized());
  EXPECT_EQ(tag.Tags[1]->Attributes.size(), 1U);
  EXPECT_TRUE(tag.Tags[2]->IsEmptyInForm);
  EXPECT_EQ(tag.Tags[3]->Tags.at(0)->Name, "item");
}

TEST(CSTDXMLTag, ReadsFromABufferAndWritesToOne) {
  const auto buffer = MakeUseCounted<CBuffer>();
  ASSERT_TRUE(buffer->Append("<first/>", 8));
  ASSERT_TRUE(Sample().Write(buffer.Get()));
  CSTDXMLTag tag;
  std::uint64_t position = 0;
  ASSERT_TRUE(tag.Read(buffer.Get(), position));
  EXPECT_EQ(tag.Name, "first");
  ASSERT_TRUE(tag.Read(buffer.Get(), position));
  EXPECT_EQ(Written(tag), kSample);
  EXPECT_FALSE(tag.Read(buffer.Get(), position));

  EXPECT_FALSE(tag.Read(static_cast<Selvane::IBuffer*>(nullptr), position));
  EXPECT_FALSE(tag.Write(static_cast<Selvane::IBuffer*>(nullptr)));
}

TEST(CSTDXMLTag, ReadsFromABufferThatHasGoneToDisk) {
  const std::string text = "<a size=\"300\">" + std::string(300, '<') + "</a>";
  const auto buffer = MakeUseCounted<CBuffer>(text.data(), text.size());
  ASSERT_TRUE(buffer->SwapOut());
  CSTDXMLTag tag;
  std::uint64_t position = 0;
  ASSERT_TRUE(tag.Read(buffer.Get(), position));
  EXPECT_EQ(tag.Value.Bytes(), std::string(300, '<'));

  // A frozen one shows no bytes and takes none.
  ASSERT_TRUE(buffer->Freeze());
  position = 0;
  EXPECT_FALSE(tag.Read(buffer.Get(), position));
  EXPECT_FALSE(tag.Write(buffer.Get()));
  EXPECT_EQ(position, 0U);
}

TEST(CSTDXMLTag, TakesSizedContentWithoutALook) {
  struct Row {
    std::string_view text, value;
  };
  const Row rows[] = {
      {"<a size=\"7\"></a>\0&l</a>"sv, "</a>\0&l"sv},
      {"<a size=\"6\"><b>\0\"&</a>"sv, "<b>\0\"&"sv},
      {"<a size=\"4\">&lt;</a>"sv, "&lt;"sv},
      {"<a size=\"0\"></a>"sv, ""sv},
      {"<a\tsize=\"1\" b=\"\">\n</a >"sv, "\n"sv},
      {"<a filesize=\"3\">x</a>"sv, "x"sv},
  };
  for (const Row& row : rows) {
    CSTDXMLTag tag;
    std::uint64_t position = 0;
    ASSERT_TRUE(tag.Read(row.text, position)) << row.text;
    EXPECT_EQ(tag.Value.Bytes(), row.value);
    EXPECT_EQ(position, row.text.size());
    EXPECT_FALSE(tag.Attributes.contains("size"));
  }
}

TEST(CSTDXMLTag, RefusesWhatIsMalformed) {
  for (const auto text : {
           ""sv,
           " "sv,
           "a"sv,
           "<"sv,
           "<>"sv,
           "<a"sv,
           "<a>"sv,
           "<a/"sv,
           "<a></b>"sv,
           "<a></ab>"sv,
           "<a></a"sv,
           "</a>"sv,
           "<a><b></a></b>"sv,
           "<a b></a>"sv,
           "<a b=c></a>"sv,
           "<a b=\"c></a>"sv,
           "<a b=\"1\"c=\"2\"></a>"sv,
           "<a b=\"1\" b=\"2\"></a>"sv,
           "<a =\"1\"></a>"sv,
           "<a>text<b/></a>"sv,
           "<a><b/>text</a>"sv,
           "<a / ></a>"sv,
           // Lengths.
           "<a size=\"4\">abc"sv,
           "<a size=\"8\">abc</a>"sv,
           "<a size=\"4\">abc</a>"sv,
           "<a size=\"2\">abc</a>"sv,
           "<a size=\"-1\"></a>"sv,
           "<a size=\"\"></a>"sv,
           "<a size=\"3x\">abc</a>"sv,
           "<a size=\" 3\">abc</a>"sv,
           "<a size=\"3\"/>"sv,
           "<a size=\"3\" size=\"3\">abc</a>"sv,
           "<a size=\"18446744073709551615\">abc</a>"sv,
           "<a size=\"123456789012345678901234567890\">abc</a>"sv,
       }) {
    CSTDXMLTag tag("kept");
    std::uint64_t position = 0;
    EXPECT_FALSE(tag.Read(text, position)) << text;
    EXPECT_EQ(position, 0U);
    EXPECT_EQ(tag.Name, "kept");
  }
  CSTDXMLTag tag;
  std::uint64_t beyond = 9;
  EXPECT_FALSE(tag.Read("<a/>", beyond));
  EXPECT_EQ(beyond, 9U);
}

TEST(CSTDXMLTag, RefusesEveryCut) {
  for (std::size_t size = 0; size + 2 < kSample.size(); ++size) {
    CSTDXMLTag tag;
    std::uint64_t position = 0;
    EXPECT_FALSE(tag.Read(kSample.substr(0, size), position)) << size;
  }
}

TEST(CSTDXMLTag, ReadsOneTagAfterTheOther) {
  constexpr auto text = " <a>1</a>\r\n<b/> "sv;
  CSTDXMLTag tag;
  std::uint64_t position = 0;
  ASSERT_TRUE(tag.Read(text, position));
  EXPECT_EQ(tag.Value.Bytes(), "1");
  EXPECT_EQ(position, 9U);
  ASSERT_TRUE(tag.Read(text, position));
  EXPECT_EQ(tag.Name, "b");
  EXPECT_EQ(tag.Value.Bytes(), "");
  EXPECT_FALSE(tag.Read(text, position));
}

// Tags in each other, with lines that end behind each head or not at all.
std::string NestedTags(std::size_t depth, std::string_view head) {
  std::string text;
  for (std::size_t i = 0; i < depth; ++i) text += head;
  for (std::size_t i = 0; i < depth; ++i) text += "</a>";
  return text;
}

TEST(CSTDXMLTag, TakesNoStackForDepth) {
  std::string text = NestedTags(200000, "<a>");
  CSTDXMLTag tag;
  std::uint64_t position = 0;
  ASSERT_TRUE(tag.Read(text, position));
  EXPECT_EQ(position, text.size());
  text.resize(text.size() - 4);  // a failed read is taken apart as well
  position = 0;
  EXPECT_FALSE(tag.Read(text, position));
}

TEST(CSTDXMLTag, KeepsWhereLinesEnd) {
  for (const auto text : {
           "<a><b></b><c/></a>\r\n"sv,
           "<a>\r\n\t<b></b><c/>\r\n</a>\r\n"sv,
           "<a><b></b>\r\n\t<c/></a>\r\n"sv,
           "<a><b>\r\n\t\t<c/>\r\n\t</b></a>\r\n"sv,
           "<a>\r\n\t<b><c/></b>\r\n</a>\r\n"sv,
           "<a><b size=\"1\">\n</b><c>&#xa;</c></a>\r\n"sv,
       }) {
    CSTDXMLTag tag;
    std::uint64_t position = 0;
    ASSERT_TRUE(tag.Read(text, position)) << text;
    EXPECT_EQ(Written(tag), text);
  }
  CSTDXMLTag tag("a");
  tag.HasLineEndBehind = false;
  EXPECT_EQ(Written(tag), "<a></a>");
}

// A file that is nothing but depth must not come out as the square of its size.
TEST(CSTDXMLTag, LimitsTheTabsOfALine) {
  CSTDXMLTag tag;
  std::uint64_t position = 0;
  ASSERT_TRUE(tag.Read(NestedTags(20000, "<a>\n"), position));
  const std::string tabs(CSTDXMLTag::kDeepestIndentation, '\t');
  const std::string written = Written(tag);
  EXPECT_NE(written.find('\n' + tabs + "<a>\r\n" + tabs + "<a>"), std::string::npos);
  EXPECT_EQ(written.find(tabs + '\t'), std::string::npos);
  EXPECT_EQ(tag.DumpTree().find(tabs + '\t'), std::string::npos);

  CSTDXMLTag back;
  position = 0;
  ASSERT_TRUE(back.Read(written, position));
  EXPECT_EQ(Written(back), written);
}

TEST(CSTDXMLTag, MayBecomeOneOfItsNestedTags) {
  CSTDXMLTag tag = Sample();
  tag = *tag.Tags[3];
  EXPECT_EQ(Written(tag), "<list>\r\n\t<item></item>\r\n</list>\r\n");
  tag = std::move(*tag.Tags[0]);
  EXPECT_EQ(Written(tag), "<item></item>\r\n");
}

TEST(CSTDXMLTag, SharesItsNestedTags) {
  CSTDXMLTag::Pointer kept;
  {
    CSTDXMLTag tag = Sample();
    kept = tag.Tags[3];
    const CSTDXMLTag copy = tag;
    EXPECT_EQ(copy.Tags[3].Get(), kept.Get());
  }
  EXPECT_EQ(kept->Tags.at(0)->Name, "item");
}

TEST(CSTDXMLTag, ThrowsForAnAttributeThatIsMissing) {
  try {
    Sample().Attribute("missing");
    FAIL() << "nothing was thrown";
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ(error.what(), "invalid map<K, T> key");
  }
}

TEST(CSTDXMLTag, LeavesOutAnAttributeThatWouldBeALength) {
  CSTDXMLTag tag("a");
  tag.Attributes["size"] = CSTDXMLString("9");
  EXPECT_EQ(Written(tag), "<a></a>\r\n");
}

TEST(CSTDXMLTag, DumpsAListAndATree) {
  CSTDXMLTag tag("a");
  const auto nested = Nest(tag, "b", "1");
  nested->Attributes["c"] = CSTDXMLString("2");
  EXPECT_EQ(tag.DumpList(), "\nList:\nb c=\"2\": 1\n");
  EXPECT_EQ(tag.DumpTree(), "\n\nTree:\na\n\tb c=\"2\": 1\n");
}

std::string RandomBytes(std::mt19937& random) {
  std::string bytes(random() % 12, '\0');
  for (char& byte : bytes) {
    byte = static_cast<char>(random());
    if (byte == 8 || byte == '#') byte = 'x';  // neither survives the tag's form
  }
  return bytes;
}

TEST(CSTDXMLTag, ReadsBackRandomTrees) {
  std::mt19937 random(5);  // fixed seed: a failure repeats
  for (int round = 0; round < 300; ++round) {
    CSTDXMLTag root("root");
    std::vector<CSTDXMLTag*> tags{&root};
    for (int i = 0; i < 10; ++i) {
      CSTDXMLTag& parent = *tags[random() % tags.size()];
      const auto tag = Nest(parent, "t" + std::to_string(i));
      tag->Value = CSTDXMLString(RandomBytes(random));
      tag->Value.SetSized(random() % 2 == 0);
      for (std::size_t n = random() % 4; n > 0; --n)
        tag->Attributes["n" + std::to_string(n)] = CSTDXMLString(RandomBytes(random));
      tags.push_back(tag.Get());
    }
    const std::string text = Written(root);
    CSTDXMLTag back;
    std::uint64_t position = 0;
    ASSERT_TRUE(back.Read(text, position)) << testing::PrintToString(text);
    ASSERT_EQ(Written(back), text);
  }
}

}  // namespace
