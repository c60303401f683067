#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Common/CUseCounted.h"
#include "Common/EncodingRegistry.h"
#include "Common/TextCompare.h"
#include "Libs/Threads/CCriticalSection.h"

// A text that knows its encoding, keeps the bytes that it was given and converts on demand.
//
// Use-counted. Everything const may be called from any number of threads at once: the length and
// the wide and UTF-8 forms are made at the first demand, under the object's lock, and published by
// one atomic each. Whoever changes a text is its only holder (CText sees to that), and what was
// handed out as a pointer or a view lives until that change.
//
// A text that cannot be converted (RAW, or a name that no converter knows) stays readable as the
// bytes that it is: its wide form has one unit a byte, its UTF-8 form is those bytes.
class CStringImpl : public CUseCounted {
public:
  static constexpr std::size_t kInlineBytes = 32;  // longest text that needs no block of its own
  static constexpr std::uint64_t kUnknownLength = ~std::uint64_t{0};

  CStringImpl() = default;  // empty, ASCII
  CStringImpl(std::string_view bytes, std::uint32_t encoding);
  ~CStringImpl() override;

  // ---- reading; any thread

  std::uint32_t Encoding() const { return fEncoding; }
  std::string_view Bytes() const;  // in Encoding(), with a zero character behind the last
  std::u32string_view Wide() const;
  std::string_view Utf8() const;  // with a zero byte behind the last
  // Characters. Bytes where HasByteCharacters, else what the wide form holds.
  std::uint64_t Length() const;
  // Every byte counts as a character, whatever it is: ASCII, ISO-8859-1, and what has no characters
  // that anybody knows.
  bool HasByteCharacters() const;
  // No bytes, or none that make a character.
  bool IsEmpty() const { return Bytes().empty() || Length() == 0; }
  // The bytes of characters, with unreadable ones in front of each; nothing where the encoding does
  // not tell characters apart in place. What lies beyond the end is not there.
  std::optional<std::string_view> PartInPlace(std::uint64_t position, std::uint64_t count) const;
  // To compare it in place, by what IsReadInPlace allows.
  TextView View() const;
  // The text in another encoding; the bytes as they are where there is no conversion.
  std::string ToNarrow(std::uint32_t encoding) const;
  bool IsInline() const { return fNarrow.IsInline(); }

  // ---- changing; the only holder

  // Bytes behind the last whole unit of a UTF-32LE text are dropped. The bytes may be this text's.
  void Assign(const void* bytes, std::size_t size, std::uint32_t encoding);
  // Converts the addition to this text's encoding; what cannot be read of it is dropped. Where a
  // character would be lost, the text becomes UTF-8 first; where there is no conversion, the bytes
  // are added as they are.
  void Append(const void* bytes, std::size_t size, std::uint32_t encoding);
  // Positions are characters; what lies beyond the end is not there.
  void Erase(std::uint64_t position, std::uint64_t count);
  void Reserve(std::uint64_t characters);

  // ---- deleters of shared handles on bytes

  struct NullDeleter {  // the bytes belong to something that lives longer
    void operator()(const char*) const {}
  };
  struct FreeDeleter {  // the bytes were allocated for the handle, by operator new
    void operator()(const char* bytes) const { ::operator delete(const_cast<char*>(bytes)); }
  };
  class CStringImplDeleter {  // the bytes are a text's, which the handle keeps
  public:
    explicit CStringImplDeleter(CUsePtr<const CStringImpl> text) : fText(std::move(text)) {}
    void operator()(const char*) { fText.Reset(); }

  private:
    CUsePtr<const CStringImpl> fText;
  };
  // The text's bytes, kept alive by the handle.
  std::shared_ptr<const char> ShareBytes() const;

private:
  // Growing bytes with a zero byte behind them; the first kInlineBytes of them take no block.
  class ByteStore {
  public:
    ~ByteStore() { DropBlock(); }
    ByteStore() = default;
    ByteStore(const ByteStore&) = delete;
    ByteStore& operator=(const ByteStore&) = delete;

    std::string_view View() const { return {fData, fSize}; }
    bool IsInline() const { return fData == fInline; }
    void Assign(std::string_view bytes);  // may be a part of the own ones
    void Append(std::string_view bytes);  // the same
    void Erase(std::size_t position, std::size_t count);
    void Reserve(std::size_t size);  // keeps the bytes
    void Drop();                     // empty, and no block

  private:
    void DropBlock();
    char* NewBlock(std::size_t size) const { return new char[size + 1]; }

    char fInline[kInlineBytes + 1] = {};
    char* fData = fInline;  // fInline, or a block that this object owns
    std::size_t fSize = 0;
    std::size_t fCapacity = kInlineBytes;  // bytes that fit, the closing zero not counted
  };

  void AppendBytes(std::string_view bytes);
  void DropCaches();
  void DropStores();
  std::u32string MakeWide() const;
  std::uint64_t CountLength() const;
  void AssignWide(const void* bytes, std::size_t size);
  std::u32string& OwnWide();  // of a UTF-32LE text

  // Written by changes alone.
  std::uint32_t fEncoding = Charset::Ascii;
  ByteStore fNarrow;  // the text in fEncoding; nothing for UTF-32LE
  // Null until the first demand. Written under fLock with release, so that a reader's acquire makes
  // what it points to visible. fWide is a UTF-32LE text itself.
  mutable std::atomic<std::u32string*> fWide{nullptr};
  mutable std::atomic<std::string*> fUtf8{nullptr};
  mutable std::atomic<std::uint64_t> fLength{0};  // characters; kUnknownLength until counted
  mutable CCriticalSection fLock;                 // one thread at a time makes a form
};
