#include "json/JsonParser.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include "json/JsonMsgPack.h"
#include "json/JsonNumber.h"
#include "json/JsonStringReader.h"
#include "json/JsonTreeReader.h"

namespace Tovrin::JSON {

namespace {

struct TextFrame : JsonOpenContainer {
  enum class Previous : std::uint8_t { Opening, Comma, Child };

  Previous previous = Previous::Opening;  // what was read last
  bool keyIsPlain = false;                // without an escape
};

// Reads one JSON text.
//
// A failure sets fFailed and lets everything return null. What it says grows on its way out: each
// open container adds its words for a child that failed. A container that fails by itself is taken
// off the list first, and adds none.
class TextParser : private JsonTreeReader<TextParser, TextFrame> {
public:
  TextParser(std::string_view text, JsonParseContext& context)
      : JsonTreeReader(context),
        fBegin(text.data()),
        fCursor{text.data(), text.data() + text.size(), 0, text.data()},
        fStringsAreValid(context.AssumeValidUtf8 || context.InputIsValidUtf8) {}

  JsonValue* Parse(const JsonCompiledSchema* schema) {
    fCursor.SkipByteOrderMark();
    fCursor.SkipWhiteSpace();
    JsonValue* root = ReadTree(schema);
    if (root) {
      fCursor.SkipWhiteSpace();
      if (!fCursor.AtEnd()) {
        root->Release();
        root = Fail("illegal trailing characters after value");
      }
    }
    if (fFailed) AddFrameWords();
    fContext.Position = static_cast<std::uint64_t>(fCursor.at - fBegin) + fBeyond;
    fContext.Line = fCursor.line;
    fContext.LineStart = static_cast<std::uint64_t>(fCursor.lineStart - fBegin);
    fContext.ParseSucceeded = !fFailed;
    return root;
  }

private:
  friend class JsonTreeReader<TextParser, TextFrame>;
  using Previous = TextFrame::Previous;

  // --- Failing ---

  std::nullptr_t FailInFrame(std::string_view message) {
    PopFrame();
    return Fail(message);
  }
  void AddFrameWords() {
    for (auto frame = fFrames.rbegin(); frame != fFrames.rend(); ++frame) {
      switch (frame->kind) {
        case Kind::Array:
          break;
        case Kind::Object:
          fContext.ErrorMessage += " while parsing a value";
          break;
        case Kind::CompiledObject:
          fContext.ErrorMessage += " while parsing value";
          break;
      }
    }
  }

  // --- Values ---

  // Reads a value without children, or opens a container. Null when it opened one, or failed.
  JsonValue* Begin(const JsonCompiledSchema* schema) {
    if (fCursor.AtEnd()) return Fail("unexpected end of input");
    switch (*fCursor.at) {
      case '"': {
        std::string_view text;
        if (!ReadString(text)) return nullptr;
        return fBuilder.Arena().NewString(text, !fStrings.Holds(text));
      }
      case '{':
        return schema ? OpenCompiledObject(schema) : OpenObject();
      case '[':
        if (JsonValue* packed = schema ? nullptr : ReadPackedArray()) return packed;
        return OpenArray(schema);
      case 't':
        return ReadWord<JsonTrue>("true");
      case 'f':
        return ReadWord<JsonFalse>("false");
      case 'n':
        return ReadWord<JsonNull>("null");
      case '-':
      case '0':
      case '1':
      case '2':
      case '3':
      case '4':
      case '5':
      case '6':
      case '7':
      case '8':
      case '9':
        return ReadNumberValue();
      default:
        return Fail("not a JSON value");
    }
  }

  // Contract: what follows the word is not looked at here.
  template <class Node>
  JsonValue* ReadWord(std::string_view word) {
    if (!fCursor.StartsWith(word)) return Fail("not a JSON value");
    fCursor.at += word.size();
    return fBuilder.Arena().New<Node>();
  }

  JsonValue* ReadNumberValue() {
    std::size_t size = 0;
    const char* error = nullptr;
    JsonValue* value =
        ReadNumber(std::string_view(fCursor.at, fCursor.end), fBuilder.Arena(), size, error);
    if (!value) return Fail(error);
    fCursor.at += size;
    return value;
  }

  // An array of plain numbers alone, which stays text. Null where there is none, and nothing is
  // read then: what is wrong with the text is for the usual way to tell.
  //
  // Perf: such arrays are most of a document of coordinates (bench/json, parsing canada).
  JsonValue* ReadPackedArray() {
    JsonTextCursor cursor = fCursor;
    std::uint64_t count = 0, size = 0;
    const char* const begin = cursor.at + 1;
    do {
      ++cursor.at;
      cursor.SkipWhiteSpace();
      const char* end = FindPlainNumberEnd(cursor.at, cursor.end);
      if (!end) return nullptr;
      ++count;
      size += static_cast<std::uint64_t>(end - cursor.at) + 1;
      cursor.at = end;
      cursor.SkipWhiteSpace();
    } while (!cursor.AtEnd() && *cursor.at == ',');
    if (cursor.AtEnd() || *cursor.at != ']') return nullptr;
    if (size > std::numeric_limits<std::uint32_t>::max()) return nullptr;

    const std::string_view text(begin, cursor.at);
    ++cursor.at;
    cursor.SkipWhiteSpace();
    fCursor = cursor;
    return fBuilder.Arena().NewPackedArray(text, static_cast<std::uint32_t>(count),
                                           static_cast<std::uint32_t>(size - 1));
  }

  // The text stands until the next string is read, or in the input.
  bool ReadString(std::string_view& text) {
    const char* error = nullptr;
    if (!fStrings.Read(fCursor, text, error)) {
      Fail(error);
      return false;
    }
    std::size_t badOffset = 0;
    if (fStringsAreValid || IsValidUtf8(text, &badOffset)) return true;
    FailAtBadUtf8(text, badOffset);
    return false;
  }
  // Contract: the position moves on by an offset into the decoded string, wherever that leads.
  void FailAtBadUtf8(std::string_view text, std::size_t offset) {
    constexpr std::size_t kMaxQuoted = 20;
    std::string message = "illegal UTF8 character found at position " + std::to_string(offset);
    if (offset > 0) {
      message += " in string which starts with \"";
      message += text.substr(0, std::min(offset, kMaxQuoted));
      message += '"';
    }
    fBeyond = offset;
    Fail(message);
  }

  // --- Opening and closing ---

  std::nullptr_t OpenArray(const JsonCompiledSchema* schema) {
    if (!StepOver('[')) return Fail("illegal array");
    fFrames.push_back({{.kind = Kind::Array, .begin = fBuilder.ItemCount(), .schema = schema}});
    return nullptr;
  }
  std::nullptr_t OpenObject() {
    if (!StepOver('{')) return Fail("illegal object");
    fFrames.push_back({{.kind = Kind::Object, .begin = fBuilder.MemberCount()}});
    return nullptr;
  }
  std::nullptr_t OpenCompiledObject(const JsonCompiledSchema* schema) {
    if (!StepOver('{')) return Fail("illegal compiled object");
    fCursor.SkipByteOrderMark();
    fFrames.push_back({{.kind = Kind::CompiledObject, .schema = schema}});
    fFrames.back().compiled = new JsonCompiledObject(schema);
    return nullptr;
  }
  bool StepOver(char expected) {
    if (fCursor.AtEnd() || *fCursor.at != expected) return false;
    ++fCursor.at;
    return true;
  }

  // At the closing bracket: the value of the frame, which is taken off. The white space behind it
  // is the container's, so that a failure to store it stands behind that.
  JsonValue* Close() {
    ++fCursor.at;
    fCursor.SkipWhiteSpace();
    return CloseFrame();
  }

  // --- The rounds of a container ---

  struct Words {
    char closing;
    std::string_view inputEnded, closedBehindComma, commaTooEarly, commaMissing;
  };
  static const Words& WordsOf(Kind kind) {
    static constexpr Words kWords[] = {
        {']', "illegal array", "array must not end with comma",
         "expected value in front before comma", "comma separator expected between values"},
        {'}', "illegal object", "object list must not end with a comma",
         "expected key value pair in front before comma",
         "comma separator expected between key value pairs"},
        {'}', "illegal compiled object", "object list must not end with comma",
         "expected key value pair in front before comma",
         "comma separator expected between key value pairs"}};
    return kWords[static_cast<std::size_t>(kind)];
  }

  // Goes on with the innermost container until it is closed, and is the answer, or until another
  // one is opened in it.
  JsonValue* Continue() {
    while (true) {
      fCursor.SkipWhiteSpace();
      TextFrame& frame = fFrames.back();
      const Words& words = WordsOf(frame.kind);
      if (fCursor.AtEnd()) return FailInFrame(words.inputEnded);
      if (*fCursor.at == words.closing) {
        if (frame.previous == Previous::Comma) return FailInFrame(words.closedBehindComma);
        return Close();
      }
      if (*fCursor.at == ',') {
        if (frame.previous != Previous::Child) return FailInFrame(words.commaTooEarly);
        frame.previous = Previous::Comma;
        ++fCursor.at;
        continue;
      }
      if (frame.previous == Previous::Child) return FailInFrame(words.commaMissing);
      frame.previous = Previous::Child;
      JsonValue* child = BeginChild(frame);
      if (!child || !Store(child)) return nullptr;
    }
  }

  JsonValue* BeginChild(TextFrame& frame) {
    switch (frame.kind) {
      case Kind::Array:
        return frame.schema ? OpenCompiledObject(frame.schema) : Begin(nullptr);
      case Kind::Object:
        return BeginMember(frame);
      case Kind::CompiledObject:
        break;
    }
    return BeginCompiledMember(frame);
  }

  JsonValue* BeginMember(TextFrame& frame) {
    if (!ReadKey(frame.key)) {
      PopFrame();
      return nullptr;
    }
    frame.keyIsPlain = !fStrings.Holds(frame.key);
    if (!frame.keyIsPlain) frame.key = fBuilder.KeepKey(frame.key);
    fCursor.SkipWhiteSpace();
    if (!StepOver(':')) return FailInFrame("colon expected");
    fCursor.SkipWhiteSpace();
    return Begin(nullptr);
  }

  // Whatever fails here, the compiled object adds its words for a failed value.
  JsonValue* BeginCompiledMember(TextFrame& frame) {
    std::string_view key;
    if (!ReadKey(key)) return nullptr;
    const bool isEmpty = key.empty();
    frame.place = frame.schema->Find(key);
    fCursor.SkipWhiteSpace();
    if (isEmpty || !StepOver(':')) return Fail("colon expected");
    fCursor.SkipWhiteSpace();

    if (frame.place == JsonCompiledSchema::kNone) return Begin(nullptr);
    const unsigned flags = frame.schema->Flags[frame.place];
    const JsonCompiledSchema* child = frame.schema->Children[frame.place];
    if ((flags & KeyCompiledObject) && child) return OpenCompiledObject(child);
    if (flags & KeyObject) return OpenObject();
    if (flags & KeyArray) return OpenArray(child);
    return Begin(nullptr);  // Contract: whether it may be a string or a number is not looked at
  }

  bool ReadKey(std::string_view& key) {
    if (ReadString(key)) return true;
    fContext.ErrorMessage += " while parsing a key";
    return false;
  }

  // Puts a whole value into the innermost container; false when that fails.
  bool Store(JsonValue* value) {
    TextFrame& frame = fFrames.back();
    switch (frame.kind) {
      case Kind::Array:
        fBuilder.AddItem(value);
        return true;
      case Kind::Object:
        // The reader has refused such a key already; a store checks for itself all the same.
        if (!fStringsAreValid && !IsValidUtf8(frame.key)) return Drop(value);
        fBuilder.AddMember(frame.key, value, frame.keyIsPlain);
        return true;
      case Kind::CompiledObject:
        break;
    }
    if (frame.place == JsonCompiledSchema::kNone) return Drop(value);
    frame.compiled->Set(frame.place, value);
    return true;
  }
  bool Drop(JsonValue* value) {
    value->Release();
    if (fContext.RejectDuplicateKeys) FailInFrame("duplicate key");
    return !fFailed;
  }

  const char* const fBegin;
  JsonTextCursor fCursor;
  const bool fStringsAreValid;  // checked already, or not to be checked
  JsonStringReader fStrings;
  std::uint64_t fBeyond = 0;  // what the position at the end lies behind the cursor
};

// Heads of the shorter and longer maps and arrays.
bool BeginsAsMsgPack(const std::string& bytes) {
  if (bytes.empty()) return false;
  const auto first = static_cast<unsigned char>(bytes[0]);
  return (first >= 0x80 && first <= 0x9F) || (first >= 0xDC && first <= 0xDF);
}

}  // namespace

void JsonParseContext::Reset() {
  Position = Line = LineStart = 0;
  ErrorMessage.clear();
  ParseSucceeded = InputIsValidUtf8 = false;
}

JsonValue* Parse(const std::string& text, JsonParseContext* context,
                 const JsonCompiledSchema* schema) {
  JsonParseContext own;
  if (!context) context = &own;
  if (context->DetectMsgPack && BeginsAsMsgPack(text)) return ParseMsgPack(text, context, schema);

  context->Reset();
  if (!context->AssumeValidUtf8 && context->ValidateInputOnce) {
    context->InputIsValidUtf8 = IsValidUtf8(text);
  }
  return TextParser(text, *context).Parse(schema);
}

}  // namespace Tovrin::JSON
