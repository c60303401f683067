#include "tools/tovrin/ValueText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "host/Data.h"

namespace RefHost {
namespace {

TEST(ValueText, WritesNumbersAsJsonDoes) {
  const struct {
    double number;
    const char* text;
  } rows[] = {{0, "0"},
              {-0.0, "0"},
              {1, "1"},
              {-17, "-17"},
              {0.1, "0.1"},
              {2.5, "2.5"},
              {9007199254740993.0, "9007199254740992"},
              {1e20, "100000000000000000000"},
              {-1e-7, "-1e-07"},
              {std::numeric_limits<double>::quiet_NaN(), "null"},
              {std::numeric_limits<double>::infinity(), "null"}};
  for (const auto& row : rows) {
    std::string text;
    AppendJsonNumber(text, row.number);
    EXPECT_EQ(text, row.text);
  }
}

TEST(ValueText, EscapesWhatJsonCannotHold) {
  std::string text;
  AppendJsonText(text, std::string_view("\"\\/\b\f\n\r\t\0\x1f\x7f\xC3\xA9", 13));
  EXPECT_EQ(text, "\"\\\"\\\\/\\b\\f\\n\\r\\t\\u0000\\u001F\x7f\xC3\xA9\"");
}

TEST(ValueText, ReplacesWhatIsNoUtf8) {
  const struct {
    const char* bytes;
    const char* text;
  } rows[] = {
      {"\xE9", "\"\xEF\xBF\xBD\""},
      {"a\xC3", "\"a\xEF\xBF\xBD\""},
      {"\xC3(\x22", "\"\xEF\xBF\xBD(\\\"\""},
      {"\xC3\xA9\xFF\xE2\x82\xAC", "\"\xC3\xA9\xEF\xBF\xBD\xE2\x82\xAC\""},
      {"\xED\xA0\x80", "\"\xEF\xBF\xBD\""},      // a surrogate
      {"\xF4\x90\x80\x80", "\"\xEF\xBF\xBD\""},  // beyond the last character
  };
  for (const auto& row : rows) {
    std::string text;
    AppendJsonText(text, row.bytes);
    EXPECT_EQ(text, row.text);
  }
}

TEST(ValueText, WritesContainersAndWhatHoldsNothing) {
  const CHost host;
  const CTransaction transaction = host.NewTransaction("test");
  const auto value = transaction.NewValue(Tovrin::kTypeString + Tovrin::kVectorOf);
  EXPECT_EQ(JsonOf(*value.get(), transaction), "[]");
  value->Reset(value->GetType());
  EXPECT_EQ(JsonOf(*value.get(), transaction), "null");

  const auto number = transaction.NewValue(Tovrin::kTypeNumber);
  const auto key = transaction.NewValue(Tovrin::kTypeString);
  key->SetText("k\"");
  const auto map = transaction.NewValue(Tovrin::kTypeNumber + Tovrin::kStringMapOf);
  map->AssignMap(map->GetMap()->Insert(Tovrin::Share<Tovrin::IVariant>(key.get()),
                                       Tovrin::Share<Tovrin::IVariant>(number.get())));
  EXPECT_EQ(JsonOf(*map.get(), transaction), "{\"k\\\"\":0}");

  const auto data = transaction.NewValue(Tovrin::kTypeDataRef);
  data->AssignData(Tovrin::AutoRefPtr<Tovrin::IDataRef>(new Tovrin::Data("ab")));
  EXPECT_EQ(JsonOf(*data.get(), transaction), "\"ab\"");
  data->AssignData(Tovrin::AutoRefPtr<Tovrin::IDataRef>(new Tovrin::Data("a\xFF")));
  EXPECT_EQ(JsonOf(*data.get(), transaction), "\"a\xEF\xBF\xBD\"");
}

}  // namespace
}  // namespace RefHost
