#include "Common/CSTDXMLTag.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <stdexcept>
#include <utility>

namespace {

constexpr std::string_view kTagOpen = "<";
constexpr std::string_view kClosingTagOpen = "</";
constexpr std::string_view kTagEnd = ">";
constexpr std::string_view kEmptyTagEnd = "/>";
constexpr std::string_view kAttributeEnd = "\"";
constexpr std::string_view kAttributeStart = " ";
constexpr std::string_view kAssignment = "=\"";
constexpr std::string_view kLineEnd = "\r\n";
constexpr char kIndentation = '\t';
constexpr std::string_view kWhiteSpace = "\t\n\r ";
constexpr std::string_view kEndsName = "\t\n\r =<>/\"";
constexpr std::string_view kSizeName = "size";

// ---- reading

// Takes pieces from the front of a text; what cannot be taken stays.
class Scanner {
public:
  explicit Scanner(std::string_view text) : fText(text) {}

  std::size_t Left() const { return fText.size(); }
  bool Take(std::string_view literal) {
    if (!fText.starts_with(literal)) return false;
    fText.remove_prefix(literal.size());
    return true;
  }
  std::string_view TakeBytes(std::size_t size) {
    const auto bytes = fText.substr(0, size);
    fText.remove_prefix(bytes.size());
    return bytes;
  }
  std::string_view TakeTo(std::string_view ends) {
    return TakeBytes(std::min(fText.find_first_of(ends), fText.size()));
  }
  bool SkipWhiteSpace() {  // whether there was any
    return !TakeBytes(std::min(fText.find_first_not_of(kWhiteSpace), fText.size())).empty();
  }
  bool StartsWith(std::string_view literal) const { return fText.starts_with(literal); }

private:
  std::string_view fText;
};

// Reads one tag with all that is in it. The open ones are a list: depth takes no stack.
class TagReader {
public:
  explicit TagReader(std::string_view text) : fScanner(text) {}

  bool Read(CSTDXMLTag& root) {
    fScanner.SkipWhiteSpace();
    if (!fScanner.Take(kTagOpen) || !ReadHead(root)) return false;
    while (!fOpen.empty()) {
      if (!ReadContent()) return false;
    }
    return true;
  }
  std::size_t Left() const { return fScanner.Left(); }

private:
  // From behind "<" to behind ">"; leaves the tag open unless all of it has been read.
  bool ReadHead(CSTDXMLTag& tag) {
    tag.Name = fScanner.TakeTo(kEndsName);
    if (tag.Name.empty()) return false;

    std::optional<std::uint64_t> size;
    while (fScanner.SkipWhiteSpace() && !AtHeadEnd()) {
      if (!ReadAttribute(tag, size)) return false;
    }
    if (fScanner.Take(kEmptyTagEnd)) {
      tag.IsEmptyInForm = true;
      return size.value_or(0) == 0;
    }
    if (!fScanner.Take(kTagEnd)) return false;
    if (size) return ReadSized(tag, *size);
    fOpen.push_back(&tag);
    return true;
  }

  bool AtHeadEnd() const {
    return fScanner.StartsWith(kTagEnd) || fScanner.StartsWith(kEmptyTagEnd);
  }

  bool ReadAttribute(CSTDXMLTag& tag, std::optional<std::uint64_t>& size) {
    const auto name = fScanner.TakeTo(kEndsName);
    if (name.empty() || !fScanner.Take(kAssignment)) return false;
    const auto value = fScanner.TakeTo(kAttributeEnd);
    if (!fScanner.Take(kAttributeEnd)) return false;
    if (name != kSizeName) {
      return tag.Attributes.emplace(name, CSTDXMLString(CSTDXMLString::Decode(value))).second;
    }
    if (size) return false;
    std::uint64_t number = 0;
    const char* const end = value.data() + value.size();
    const auto [at, error] = std::from_chars(value.data(), end, number);
    if (error != std::errc() || at != end) return false;
    size = number;
    return true;
  }

  bool ReadSized(CSTDXMLTag& tag, std::uint64_t size) {
    if (size > fScanner.Left()) return false;
    tag.Value = CSTDXMLString(std::string(fScanner.TakeBytes(static_cast<std::size_t>(size))));
    tag.Value.SetSized(true);
    return TakeTail(tag);
  }

  bool TakeTail(const CSTDXMLTag& tag) {
    if (!fScanner.Take(kClosingTagOpen) || !fScanner.Take(tag.Name)) return false;
    fScanner.SkipWhiteSpace();
    return fScanner.Take(kTagEnd);
  }

  // What comes next in the innermost open tag: its text, its end or a nested tag.
  bool ReadContent() {
    CSTDXMLTag& open = *fOpen.back();
    const auto text = fScanner.TakeTo(kTagOpen);
    if (open.Tags.empty() && fScanner.StartsWith(kClosingTagOpen)) {
      open.Value = CSTDXMLString(CSTDXMLString::Decode(text));
      return ReadEnd();
    }
    if (text.find_first_not_of(kWhiteSpace) != std::string_view::npos) return false;

    const bool hasLineEnd = text.find('\n') != std::string_view::npos;
    (open.Tags.empty() ? open.HasLineEndInside : open.Tags.back()->HasLineEndBehind) = hasLineEnd;
    if (fScanner.StartsWith(kClosingTagOpen)) return ReadEnd();
    if (!fScanner.Take(kTagOpen)) return false;
    open.Tags.push_back(CSTDXMLTag::Pointer(new CSTDXMLTag));
    return ReadHead(*open.Tags.back());
  }

  bool ReadEnd() {
    const CSTDXMLTag& closed = *fOpen.back();
    fOpen.pop_back();
    return TakeTail(closed);
  }

  Scanner fScanner;
  // From the root to the innermost; each is owned by the one before.
  std::vector<CSTDXMLTag*> fOpen;
};

// ---- writing

void AppendAttribute(std::string& out, std::string_view name, std::string_view value) {
  std::string encoded;
  CSTDXMLString::EncodeKeepingReferences(value, encoded);
  out += kAttributeStart;
  out += name;
  out += kAssignment;
  out += encoded;
  out += kAttributeEnd;
}

// Writes heads and tails, each line of them behind its tabs.
class TagWriter {
public:
  explicit TagWriter(std::string& out) : fOut(out) {}

  // A tag with nested ones: its head and its tail. A tag without: all of it.
  void Enter(const CSTDXMLTag& tag, std::size_t level) {
    Indent(level);
    WriteHead(tag);
    if (tag.Tags.empty()) return WriteValue(tag);
    fOut += kTagEnd;
    EndLine(tag.HasLineEndInside);
  }
  void Leave(const CSTDXMLTag& tag, std::size_t level) {
    Indent(level);
    WriteTail(tag);
  }

private:
  void Indent(std::size_t level) {
    if (fIsAtLineStart) fOut.append(std::min(level, CSTDXMLTag::kDeepestIndentation), kIndentation);
    fIsAtLineStart = false;
  }
  void EndLine(bool isWanted) {
    if (isWanted) fOut += kLineEnd;
    fIsAtLineStart = isWanted;
  }

  void WriteHead(const CSTDXMLTag& tag) {
    fOut += kTagOpen;
    fOut += tag.Name;
    for (const auto& [name, value] : tag.Attributes) {
      if (name != kSizeName) AppendAttribute(fOut, name, value.Bytes());  // read as length, else
    }
  }

  void WriteTail(const CSTDXMLTag& tag) {
    fOut += kClosingTagOpen;
    fOut += tag.Name;
    fOut += kTagEnd;
    EndLine(tag.HasLineEndBehind);
  }

  void WriteValue(const CSTDXMLTag& tag) {
    const auto value = tag.Value.Bytes();
    if (tag.Value.IsSized()) {
      AppendAttribute(fOut, kSizeName, std::to_string(value.size()));
      fOut += kTagEnd;
      fOut += value;
    } else if (tag.IsEmptyInForm && value.empty()) {
      fOut += kEmptyTagEnd;
      return EndLine(tag.HasLineEndBehind);
    } else {
      std::string encoded;
      CSTDXMLString::EncodeKeepingReferences(value, encoded);
      fOut += kTagEnd;
      fOut += encoded;
    }
    WriteTail(tag);
  }

  std::string& fOut;
  bool fIsAtLineStart = true;
};

// ---- walking

// Calls enter(tag, level) on the way down and leave(tag, level) on the way up, for tags with nested
// ones; enter alone for the others. Takes no stack.
template <class Enter, class Leave>
void Walk(const CSTDXMLTag& root, Enter enter, Leave leave) {
  struct Step {
    const CSTDXMLTag* tag;
    std::size_t next;  // nested tag to go to
  };
  std::vector<Step> path;
  enter(root, 0);
  if (!root.Tags.empty()) path.push_back({&root, 0});
  while (!path.empty()) {
    Step& step = path.back();
    if (step.next == step.tag->Tags.size()) {
      const CSTDXMLTag& left = *step.tag;
      path.pop_back();
      leave(left, path.size());
      continue;
    }
    const CSTDXMLTag& nested = *step.tag->Tags[step.next++];
    enter(nested, path.size());
    if (!nested.Tags.empty()) path.push_back({&nested, 0});
  }
}

void AppendDumpLine(std::string& out, const CSTDXMLTag& tag, std::size_t level) {
  out.append(std::min(level, CSTDXMLTag::kDeepestIndentation), kIndentation);
  out += tag.Name;
  for (const auto& [name, value] : tag.Attributes) AppendAttribute(out, name, value.Bytes());
  if (tag.Value.IsSet()) {
    out += ": ";
    out += tag.Value.Bytes();
  }
  out += '\n';
}

// The references that the outermost destructor on this thread still has to drop; null when none
// runs. Tags that die under it leave theirs here: a chain of destructors would take stack.
constinit thread_local std::vector<CSTDXMLTag::Pointer>* tPending = nullptr;

}  // namespace

CSTDXMLTag::~CSTDXMLTag() {
  if (Tags.empty()) return;
  if (tPending) {
    for (Pointer& tag : Tags) tPending->push_back(std::move(tag));
    return;
  }
  std::vector<Pointer> pending = std::move(Tags);
  tPending = &pending;
  while (!pending.empty()) {
    const Pointer tag = std::move(pending.back());
    pending.pop_back();
  }
  tPending = nullptr;
}

CSTDXMLTag& CSTDXMLTag::operator=(CSTDXMLTag other) noexcept {
  Name.swap(other.Name);
  Attributes.swap(other.Attributes);
  std::swap(Value, other.Value);
  Tags.swap(other.Tags);
  IsEmptyInForm = other.IsEmptyInForm;
  HasLineEndInside = other.HasLineEndInside;
  HasLineEndBehind = other.HasLineEndBehind;
  return *this;
}

bool CSTDXMLTag::Read(std::string_view text, std::uint64_t& position) {
  if (position > text.size()) return false;
  TagReader reader(text.substr(static_cast<std::size_t>(position)));
  CSTDXMLTag read;
  if (!reader.Read(read)) return false;
  *this = std::move(read);
  position = text.size() - reader.Left();
  return true;
}

bool CSTDXMLTag::Read(Selvane::IBuffer* buffer, std::uint64_t& position) {
  if (!buffer) return false;
  const auto size = static_cast<std::size_t>(buffer->GetSize());
  const auto* bytes = static_cast<const char*>(buffer->GetBufferPtr());
  return bytes && Read(std::string_view(bytes, size), position);
}

void CSTDXMLTag::Write(std::string& out) const {
  TagWriter writer(out);
  Walk(
      *this, [&](const CSTDXMLTag& tag, std::size_t level) { writer.Enter(tag, level); },
      [&](const CSTDXMLTag& tag, std::size_t level) { writer.Leave(tag, level); });
}

bool CSTDXMLTag::Write(Selvane::IBuffer* buffer) const {
  if (!buffer) return false;
  std::string text;
  Write(text);
  return buffer->Append(text.data(), text.size());
}

const CSTDXMLString& CSTDXMLTag::Attribute(const std::string& name) const {
  const auto found = Attributes.find(name);
  // Told in these words whatever the standard library at hand says.
  if (found == Attributes.end()) throw std::out_of_range("invalid map<K, T> key");
  return found->second;
}

std::string CSTDXMLTag::DumpList() const {
  std::string out = "\nList:\n";
  for (const Pointer& tag : Tags) AppendDumpLine(out, *tag, 0);
  return out;
}

std::string CSTDXMLTag::DumpTree() const {
  std::string out = "\n\nTree:\n";
  Walk(
      *this, [&](const CSTDXMLTag& tag, std::size_t level) { AppendDumpLine(out, tag, level); },
      [](const CSTDXMLTag&, std::size_t) {});
  return out;
}
