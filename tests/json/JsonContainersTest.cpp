#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <vector>

#include "json/JsonItemErrors.h"
#include "json/JsonParser.h"
#include "tests/json/JsonSupport.h"

using namespace Tovrin::JSON;

namespace {

CUsePtr<JsonArray> Numbers(int count) {
  CUsePtr<JsonArray> array(new JsonArray);
  for (int i = 0; i < count; ++i) array->AppendUnsigned(static_cast<std::uint64_t>(i));
  return array;
}

// --- Arrays ---

TEST(JsonArray, AppendsEveryKind) {
  const CUsePtr<JsonArray> array(new JsonArray);
  array->AppendBool(true);
  array->AppendUnsigned(UINT64_MAX);
  array->AppendNull();
  array->AppendDouble(2.5);
  EXPECT_TRUE(array->AppendString("t"));
  EXPECT_FALSE(array->AppendString("\xFF"));
  EXPECT_TRUE(array->AppendString("\xFF", true));
  const Node value(new JsonInteger(5));
  array->AppendCopy(value.Get());
  array->AppendShared(value.Get());
  EXPECT_EQ(value->UseCount(), 2);
  EXPECT_EQ(Compact(*array), "[true,18446744073709551615,null,2.5,\"t\",\"\xFF\",5,5]");
}

TEST(JsonArray, IgnoresNullPointers) {
  const auto array = Numbers(1);
  array->Append(nullptr);
  array->AppendShared(nullptr);
  array->AppendCopy(nullptr);
  array->Insert(0, nullptr);
  EXPECT_EQ(array->Size(), 1U);
  EXPECT_EQ(Compact(*array), "[0]");
}

TEST(JsonArray, InsertsAheadOfItemsOnly) {
  const auto array = Numbers(2);
  array->Insert(0, new JsonTrue);
  array->Insert(2, new JsonFalse);
  EXPECT_EQ(Compact(*array), "[true,0,false,1]");
  const Node refused(new JsonNull);
  refused->AddRef();
  array->Insert(4, refused.Get());
  EXPECT_EQ(refused->UseCount(), 1);
  EXPECT_EQ(array->Size(), 4U);
}

TEST(JsonArray, RemovesRunsUpToTheEnd) {
  const auto array = Numbers(6);
  EXPECT_TRUE(array->Remove(0));
  EXPECT_EQ(array->Remove(1, 2), 2U);
  EXPECT_EQ(Compact(*array), "[1,4,5]");
  EXPECT_EQ(array->Remove(1, SIZE_MAX), 2U);
  EXPECT_EQ(array->Remove(1, 1), 0U);
  EXPECT_EQ(array->Remove(SIZE_MAX, 1), 0U);
  EXPECT_EQ(array->Remove(0, 0), 0U);
  EXPECT_EQ(Compact(*array), "[1]");
}

TEST(JsonArray, ReplacesWithoutMovingLaterItems) {
  const auto array = Numbers(3);
  array->Replace(1, new JsonTrue);
  EXPECT_EQ(Compact(*array), "[0,true,2]");
  array->Replace(2, nullptr);
  EXPECT_EQ(Compact(*array), "[0,true]");
  array->Replace(0, nullptr);
  EXPECT_EQ(Compact(*array), "[null,true]");
  const Node refused(new JsonNull);
  refused->AddRef();
  array->Replace(2, refused.Get());
  EXPECT_EQ(refused->UseCount(), 1);
  array->Replace(1, nullptr);
  array->Replace(0, nullptr);
  array->Replace(0, nullptr);
  EXPECT_EQ(array->Size(), 0U);
}

TEST(JsonArray, ReleasesWhatItGivesUp) {
  const Node item(new JsonTrue);
  const CUsePtr<JsonArray> array(new JsonArray);
  for (int i = 0; i < 4; ++i) array->AppendShared(item.Get());
  ASSERT_EQ(item->UseCount(), 5);
  array->Replace(0, nullptr);
  EXPECT_EQ(item->UseCount(), 4);
  array->Replace(1, new JsonFalse);
  EXPECT_EQ(item->UseCount(), 3);
  array->Replace(3, nullptr);
  EXPECT_EQ(item->UseCount(), 2);
  EXPECT_TRUE(array->Remove(2));
  EXPECT_EQ(item->UseCount(), 1);
}

TEST(JsonArray, WalksOverNullItemsToo) {
  const Node one(new JsonInteger(1));
  const CUsePtr<JsonArray> array(new JsonArray({one.Get(), nullptr}));
  std::string seen;
  array->ForEach([&](std::size_t index, JsonValue* child) {
    seen += std::to_string(index) + CompactOrNone(child) + ";";
    if (child) {
      EXPECT_EQ(child->UseCount(), 3);  // the test's, the array's and the walk's
    }
  });
  EXPECT_EQ(seen, "01;1(none);");
  array->ForEach({});
}

TEST(JsonArray, AParsedArrayGrowsAndShrinksLikeAnother) {
  const Node root(Parse("[1,2,[3]]"));
  JsonArray* array = ToArray(root.Get());
  for (int i = 0; i < 40; ++i) array->Insert(0, new JsonNull);
  EXPECT_EQ(array->Size(), 43U);
  EXPECT_EQ(array->Remove(0, 40), 40U);
  EXPECT_EQ(Compact(*array), "[1,2,[3]]");
}

// --- Arrays of numbers, which stay text ---

TEST(JsonArray, OfPlainNumbersIsTextUntilAnItemIsAskedFor) {
  const struct {
    const char* text;
    const char* packed;  // empty when the items are there at once
  } rows[] = {
      {"[1]", "1"},
      {"[0,-1,20]", "0,-1,20"},
      {" [ 1 ,\n\t-2.50e1\r\n, 3E+5 ] ", "1,-2.50e1,3E+5"},
      {"[1.5,-0.0,0.12345678901234567]", "1.5,-0.0,0.12345678901234567"},
      {"[99999999999999]", "99999999999999"},
      {"[123456789012345678901234.5]", "123456789012345678901234.5"},
      // These print otherwise than they are written.
      {"[-0]", ""},
      {"[1,999999999999999]", ""},
      {"[1e10]", ""},
      {"[1,1e05]", ""},
      {"[0.123456789012345678]", ""},
      {"[]", ""},
      {"[1,\"a\"]", ""},
      {"[1,[2]]", ""},
      {"[1,null]", ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    const Node root(Parse(row.text));
    const JsonArray* array = ToArray(root.Get());
    ASSERT_TRUE(array);
    EXPECT_EQ(array->PackedText(), row.packed);
    const std::string compact = Compact(*root);
    std::string pretty;
    WriteText(*root, pretty, " ");
    const std::size_t size = array->Size();
    EXPECT_EQ(array->PackedText(), row.packed);

    EXPECT_EQ(array->Items().size(), size);
    EXPECT_EQ(array->PackedText(), "");
    EXPECT_EQ(Compact(*root), compact);
    std::string again;
    WriteText(*root, again, " ");
    EXPECT_EQ(again, pretty);
  }
}

TEST(JsonArray, ItemsOfATextAreWhatTheNumbersAreAlone) {
  const char* const numbers[] = {"1", "-20", "1.50", "-0.0", "1e5", "123456789012345678901234.5"};
  std::string text;
  for (const char* number : numbers) text += (text.empty() ? "[" : ", ") + std::string(number);
  const Node root(Parse(text + "]"));
  const auto items = ToArray(root.Get())->Items();
  ASSERT_EQ(items.size(), std::size(numbers));
  for (std::size_t i = 0; i < items.size(); ++i) {
    const Node alone(Parse(numbers[i]));
    EXPECT_EQ(items[i]->GetType(), alone->GetType());
    EXPECT_EQ(Compact(*items[i]), numbers[i]);
    EXPECT_EQ(items[i]->UseCount(), 1);
    if (items[i]->GetType() != JsonValue::TypeReal) continue;
    EXPECT_EQ(static_cast<JsonReal*>(items[i])->Precision(),
              static_cast<JsonReal&>(*alone).Precision());
  }
  EXPECT_TRUE(*root == *Node(Parse(text + "]")));
  EXPECT_EQ(Compact(*items[2]), "1.5");  // the comparison has asked for it
}

// The twin of each has been asked for its items before.
TEST(JsonArray, OfNumbersTakesEveryChangeAsItsTwinDoes) {
  using Change = void (*)(JsonArray&);
  const Change changes[] = {
      [](JsonArray& array) { array.AppendBool(true); },
      [](JsonArray& array) { array.Insert(1, new JsonNull); },
      [](JsonArray& array) { array.Insert(3, new JsonNull); },
      [](JsonArray& array) { array.Remove(0); },
      [](JsonArray& array) { array.Remove(1, 5); },
      [](JsonArray& array) { array.Remove(0, 3); },
      [](JsonArray& array) { array.Remove(3, 1); },
      [](JsonArray& array) { array.Replace(0, nullptr); },
      [](JsonArray& array) { array.Replace(2, nullptr); },
      [](JsonArray& array) { array.Replace(1, new JsonTrue); },
      [](JsonArray& array) { array.Replace(9, new JsonTrue); },
      [](JsonArray& array) { array.AppendCopy(&array); },
  };
  for (const Change change : changes) {
    const Node root(Parse("[1,2.50,3]")), twin(Parse("[1,2.50,3]")), cloned(root->Clone());
    EXPECT_EQ(ToArray(cloned.Get())->PackedText(), "1,2.50,3");
    ToArray(twin.Get())->Items();
    for (const Node* node : {&root, &twin, &cloned}) change(*ToArray(node->Get()));
    EXPECT_EQ(Compact(*root), Compact(*twin));
    EXPECT_EQ(Compact(*cloned), Compact(*twin));
    EXPECT_EQ(ToArray(root.Get())->Size(), ToArray(twin.Get())->Size());
  }
}

TEST(JsonArray, OfNumbersIsReadByIndexPathAndWalk) {
  const Node root(Parse("[1,2.50,3]"));
  EXPECT_EQ(ToArray(Node(root->Clone()).Get())->ChildAsInteger(2), 3);
  EXPECT_EQ(CompactOrNone(Node(Node(root->Clone())->FindPath("1")).Get()), "2.50");
  EXPECT_EQ(Node(root->Clone())->FindPath("3"), nullptr);
  std::string seen;
  ToArray(root.Get())->ForEach([&](std::size_t index, JsonValue* child) {
    seen += std::to_string(index) + "=" + Compact(*child) + ";";
  });
  EXPECT_EQ(seen, "0=1;1=2.50;2=3;");
}

TEST(JsonArray, OfManyNumbersStaysTextToo) {
  std::string text = "[0";
  for (int i = 1; i < 50000; ++i) text += "," + std::to_string(i) + ".25";
  const Node root(Parse(text + "]"));
  EXPECT_EQ(Compact(*root), text + "]");
  EXPECT_EQ(ToArray(root.Get())->Size(), 50000U);
  EXPECT_EQ(ToArray(root.Get())->ChildAsReal(49999), 49999.25);
  EXPECT_EQ(Compact(*root).size(), text.size() + 1);
}

// An item outlives its array, and the text that it came from.
TEST(JsonArray, AnItemOfATextMayOutliveIt) {
  Node root(Parse("[[1.25,2.5],[3]]"));
  const Node item(root->FindPath("0/1"));
  root.Reset();
  EXPECT_EQ(item->UseCount(), 1);
  EXPECT_EQ(Compact(*item), "2.5");
}

TEST(JsonArray, TheCheckedWalkGathersErrors) {
  const auto array = Numbers(25);
  std::string errors;
  int calls = 0;
  const bool ok = array->ForEachChecked(
      [](std::size_t index, JsonValue*, void* user, bool& isFine, std::string& error) {
        ++*static_cast<int*>(user);
        if (index < 3) return;
        isFine = false;
        error = "bad";
      },
      &calls, errors);
  EXPECT_FALSE(ok);
  EXPECT_EQ(calls, 25);
  EXPECT_TRUE(errors.starts_with("Item '4' has error 'bad', Item '5' has error 'bad'"));
  EXPECT_TRUE(errors.ends_with("Item '23' has error 'bad'"));  // twenty, and no more
}

TEST(JsonItemErrors, LeavesOutWhatDoesNotFit) {
  std::string text;
  JsonItemErrors errors(text, 50);
  errors.Add(0, "a");
  errors.Add(1, std::string(40, 'x'));
  errors.Add(2, "");
  errors.Add(3, "c");
  EXPECT_EQ(text, "Item '1' has error 'a', Item '4' has error 'c'");
}

// --- Objects ---

TEST(JsonObject, SetsEveryKind) {
  const CUsePtr<JsonObject> object(new JsonObject(true));
  EXPECT_TRUE(object->SetBool("b", false));
  EXPECT_TRUE(object->SetInteger("i", -3));
  EXPECT_TRUE(object->SetUnsigned("u", UINT64_MAX));
  EXPECT_TRUE(object->SetDouble("d", 0.5));
  EXPECT_TRUE(object->SetString("s", "t"));
  EXPECT_TRUE(object->SetNull("n"));
  const Node value(new JsonTrue);
  EXPECT_TRUE(object->SetShared("r", value.Get()));
  EXPECT_TRUE(object->SetCopy("c", value.Get()));
  EXPECT_EQ(value->UseCount(), 2);
  EXPECT_EQ(
      Compact(*object),
      R"({"b":false,"i":-3,"u":18446744073709551615,"d":0.5,"s":"t","n":null,"r":true,"c":true})");
}

TEST(JsonObject, RefusesInvalidKeysAndTexts) {
  const CUsePtr<JsonObject> object(new JsonObject);
  const Node value(new JsonTrue);
  EXPECT_FALSE(object->SetShared("\xFF", value.Get()));
  EXPECT_EQ(value->UseCount(), 1);
  EXPECT_FALSE(object->SetString("k", "\xFF"));
  EXPECT_FALSE(object->Set("\xFF", nullptr));
  EXPECT_EQ(object->Size(), 0U);
  EXPECT_TRUE(object->SetShared("\xFF", value.Get(), true));
  EXPECT_TRUE(object->Has("\xFF"));
}

TEST(JsonObject, SettingNullRemoves) {
  const CUsePtr<JsonObject> object(new JsonObject);
  object->SetNull("a");
  EXPECT_TRUE(object->Set("a", nullptr));
  EXPECT_TRUE(object->Set("absent", nullptr));
  EXPECT_EQ(object->Size(), 0U);
}

TEST(JsonObject, AKeySetAgainKeepsItsPlace) {
  const CUsePtr<JsonObject> object(new JsonObject(true));
  object->SetInteger("a", 1);
  object->SetInteger("b", 2);
  object->SetInteger("a", 3);
  object->SetInteger("a", 4);
  EXPECT_EQ(Compact(*object), R"({"a":4,"b":2})");
  EXPECT_EQ(object->NextSequence(), 2U);
  EXPECT_TRUE(object->Remove("a"));
  EXPECT_FALSE(object->Remove("a"));
  object->SetInteger("a", 5);
  EXPECT_EQ(Compact(*object), R"({"b":2,"a":5})");
  EXPECT_EQ(object->NextSequence(), 3U);
}

TEST(JsonObject, KeepsItsOrderOverManyRemovals) {
  for (const bool keepOrder : {true, false}) {
    const CUsePtr<JsonObject> object(new JsonObject(keepOrder));
    for (int i = 0; i < 200; ++i) object->SetInteger("k" + std::to_string(i), i);
    for (int i = 0; i < 200; ++i) {
      if (i % 50 != 7) {
        EXPECT_TRUE(object->Remove("k" + std::to_string(i)));
      }
    }
    EXPECT_EQ(object->NextSequence(), 200U);
    EXPECT_EQ(Compact(*object), R"({"k7":7,"k57":57,"k107":107,"k157":157})");
    object->SetInteger("new", 200);
    for (const JsonObject::Entry& entry : object->Entries()) {
      if (!entry.IsLive()) continue;
      const CUsePtr<JsonInteger> number(static_cast<JsonInteger*>(object->Child(entry.Key())));
      EXPECT_EQ(entry.Sequence(), static_cast<std::uint64_t>(number->Value()));
    }
  }
}

TEST(JsonObject, TheEmptyKeyIsAKey) {
  const CUsePtr<JsonObject> object(new JsonObject);
  EXPECT_FALSE(object->Has(""));
  object->SetNull("");
  EXPECT_TRUE(object->Has(""));
  EXPECT_TRUE(object->Remove(""));
  EXPECT_FALSE(object->Has(""));
}

// The published test values of 64-bit FNV-1a.
TEST(JsonObject, HashesKeysAsPublished) {
  EXPECT_EQ(HashJsonKey(""), 0xCBF29CE484222325U);
  EXPECT_EQ(HashJsonKey("a"), 0xAF63DC4C8601EC8CU);
  EXPECT_EQ(HashJsonKey("foobar"), 0x85944171F73967E8U);
  EXPECT_NE(HashJsonKey("\xFF"), HashJsonKey("\x7F"));
}

// The oracle is a map and a count of how often a key was new.
TEST(JsonObject, AgreesWithAMap) {
  std::mt19937 random(11);
  for (const int keys : {5, 60, 70, 300}) {
    std::map<std::string, std::int64_t> expected;
    // One that began in a parser's slab, and one that did not.
    const Node parsed(Parse(R"({"k1":-1,"k2":-2,"other":-3})"));
    JsonObject* object = ToObject(parsed.Get());
    expected = {{"k1", -1}, {"k2", -2}, {"other", -3}};
    std::uint64_t sequence = 3;
    for (int step = 0; step < 4000; ++step) {
      const std::string key = "k" + std::to_string(random() % static_cast<unsigned>(keys));
      if (random() % 2 == 0) {
        EXPECT_EQ(object->Remove(key), expected.erase(key) == 1);
      } else {
        sequence += expected.count(key) == 0;
        expected[key] = step;
        EXPECT_TRUE(object->SetInteger(key, step));
      }
      ASSERT_EQ(object->Size(), expected.size());
      ASSERT_EQ(object->NextSequence(), sequence);
      const std::string asked = "k" + std::to_string(random() % static_cast<unsigned>(keys));
      const auto found = expected.find(asked);
      ASSERT_EQ(object->ChildAsInteger(asked), found == expected.end() ? 0 : found->second);
      ASSERT_EQ(object->Has(asked), found != expected.end());
    }
  }
}

TEST(JsonObject, AWalkMayRemoveWhatItWalksOver) {
  const CUsePtr<JsonObject> object(new JsonObject(true));
  for (const char* key : {"a", "b", "c"}) object->SetInteger(key, 1);
  std::string seen;
  object->ForEach([&](const std::string& key, JsonValue* child) {
    seen += key;
    object->Remove(key);
    EXPECT_EQ(child->UseCount(), 1);  // the walk's own
  });
  EXPECT_EQ(seen, "abc");
  EXPECT_EQ(object->Size(), 0U);
  object->ForEach({});
}

// --- Compiled objects ---

TEST(JsonCompiledSchema, AKeyIsAddedOnce) {
  JsonCompiledSchema schema, child;
  EXPECT_EQ(schema.AddKey("a", KeyString), 0U);
  EXPECT_EQ(schema.AddKey("b", KeyCompiledObject | KeyRequired), 1U);
  EXPECT_EQ(schema.AddKey("a", KeyNumber, &child), 0U);
  EXPECT_EQ(schema.AddKey("c", KeyCompiledObject, &child), 2U);
  EXPECT_EQ(schema.Flags, (std::vector<std::uint16_t>{0x0001, 0x0500, 0x0200}));
  EXPECT_EQ(schema.Children[0], nullptr);
  EXPECT_EQ(schema.Children[2], &child);
  EXPECT_EQ(schema.Find("c"), 2U);
  EXPECT_EQ(schema.Find("d"), JsonCompiledSchema::kNone);
}

TEST(JsonCompiledObject, CountsItsValues) {
  JsonCompiledSchema schema;
  for (const char* key : {"a", "b", "c"}) schema.AddKey(key, 0);
  const CUsePtr<JsonCompiledObject> object(new JsonCompiledObject(&schema));
  EXPECT_EQ(object->Values().size(), 3U);
  EXPECT_EQ(object->Count(), 0U);
  EXPECT_TRUE(object->SetInteger(std::size_t{1}, 5));
  EXPECT_TRUE(object->SetInteger(std::size_t{1}, 6));
  EXPECT_EQ(object->Count(), 1U);
  object->Clear(0);
  object->Clear(9);
  EXPECT_EQ(object->Count(), 1U);
  EXPECT_TRUE(object->Set(1, nullptr));
  EXPECT_EQ(object->Count(), 0U);
  EXPECT_TRUE(object->Set(1, nullptr));
  EXPECT_EQ(object->Count(), 0U);

  const Node refused(new JsonNull);
  EXPECT_FALSE(object->SetShared(std::size_t{3}, refused.Get()));
  EXPECT_EQ(refused->UseCount(), 1);
  EXPECT_FALSE(object->SetString(std::size_t{0}, "\xFF"));
  EXPECT_EQ(object->Count(), 0U);
}

TEST(JsonCompiledObject, WalksOverValuesAlone) {
  JsonCompiledSchema schema;
  for (const char* key : {"a", "b", "c"}) schema.AddKey(key, 0);
  const Node root(Parse(R"({"c":3,"a":1})", nullptr, &schema));
  std::string seen;
  ToCompiledObject(root.Get())->ForEach([&](std::size_t index, JsonValue* child) {
    seen += std::to_string(index) + "=" + Compact(*child) + ";";
  });
  EXPECT_EQ(seen, "0=1;2=3;");
  ToCompiledObject(root.Get())->ForEach({});
}

TEST(JsonCompiledObject, KnowsWhetherItIsComplete) {
  JsonCompiledSchema schema, empty;
  schema.AddKey("a", KeyRequired | KeyNumber);
  schema.AddKey("b", KeyNumber);
  const auto isComplete = [](const JsonCompiledSchema* s, const char* text) {
    const Node root(Parse(text, nullptr, s));
    return ToCompiledObject(root.Get())->IsRequiredComplete();
  };
  EXPECT_TRUE(isComplete(&schema, R"({"a":1})"));
  EXPECT_FALSE(isComplete(&schema, R"({"b":1})"));
  EXPECT_TRUE(isComplete(&empty, "{}"));
  EXPECT_TRUE(CUsePtr<JsonCompiledObject>(new JsonCompiledObject(nullptr))->IsRequiredComplete());
}

// --- Typed reads ---

TEST(JsonChildReads, AnswerMissesWithNothing) {
  JsonCompiledSchema schema;
  schema.AddKey("c", 0);
  const CUsePtr<JsonArray> array(new JsonArray);
  array->Append(new JsonCompiledObject(&schema));
  array->Append(new JsonObject);
  array->Append(new JsonArray);
  array->AppendBool(true);
  array->AppendString("2.5x");

  EXPECT_EQ(CUsePtr(array->Child(0))->UseCount(), 2);
  EXPECT_TRUE(CUsePtr(array->ChildAsCompiledObject(0)));
  EXPECT_TRUE(CUsePtr(array->ChildAsObject(1)));
  EXPECT_TRUE(CUsePtr(array->ChildAsArray(2)));
  EXPECT_EQ(array->ChildAsArray(0), nullptr);
  EXPECT_EQ(array->ChildAsObject(2), nullptr);
  EXPECT_EQ(array->ChildAsCompiledObject(1), nullptr);
  EXPECT_TRUE(array->ChildAsBool(3));
  EXPECT_EQ(array->ChildAsInteger(4), 2);
  EXPECT_EQ(array->ChildAsReal(4), 2.5);
  EXPECT_EQ(array->ChildAsString(4), "2.5x");
  EXPECT_EQ(array->Child(5), nullptr);
  EXPECT_FALSE(array->ChildAsBool(5));
  EXPECT_EQ(array->ChildAsInteger(5), 0);
  EXPECT_EQ(array->ChildAsReal(5), 0.0);
  EXPECT_EQ(array->ChildAsString(5), "");

  const CUsePtr<JsonObject> object(new JsonObject);
  object->SetCopy("a", array.Get());
  EXPECT_TRUE(CUsePtr(object->ChildAsArray("a")));
  EXPECT_EQ(object->ChildAsInteger("b"), 0);

  const CUsePtr<JsonCompiledObject> compiled(new JsonCompiledObject(&schema));
  compiled->SetInteger(std::size_t{0}, 7);
  EXPECT_EQ(compiled->ChildAsInteger("c"), 7);
  EXPECT_EQ(compiled->ChildAsInteger(std::size_t{0}), 7);
  EXPECT_EQ(compiled->Child("d"), nullptr);
}

}  // namespace
