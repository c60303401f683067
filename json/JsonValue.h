#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

namespace Tovrin::JSON {

class JsonMsgPackWriter;
class JsonNodeArena;
class JsonNodeSlab;
class JsonTreeReleaser;

// Root of the use-counted objects of the JSON library. The creator holds the first reference. Any
// thread may take and drop references; nothing else about an object is safe for concurrent change.
class JsonUseCounted {
public:
  JsonUseCounted(const JsonUseCounted&) = delete;
  JsonUseCounted& operator=(const JsonUseCounted&) = delete;

  virtual void AddRef() { fUseCount.fetch_add(1, std::memory_order_relaxed); }
  // Takes one reference off. True when it was the last one, and the object is gone.
  virtual bool Release();

protected:
  JsonUseCounted() = default;
  virtual ~JsonUseCounted() = default;

public:
  std::int32_t UseCount() const { return fUseCount.load(std::memory_order_acquire); }

protected:
  // Takes one reference off, and is true when the caller now has to destroy the object.
  //
  // Perf: who reads 1 holds the only reference, so nobody can add one, and the count need not be
  // written at all (bench/json, parsing). The acquire pairs with the release half of the decrement
  // by which other threads gave up theirs.
  bool DropUse() {
    if (fUseCount.load(std::memory_order_acquire) == 1) return true;
    return fUseCount.fetch_sub(1, std::memory_order_acq_rel) == 1;
  }

private:
  std::atomic<std::int32_t> fUseCount{1};
};

// A node of a JSON tree: one of nine final classes, told apart by GetType.
//
// A node is made by `new` or by a parser (which puts many into one slab, see JsonNodeArena), and
// ends with its last Release; it is never deleted otherwise. Children are owned through their
// counts, and several parents may share one. Nothing detects cycles.
//
// No operation recurses with the depth of the tree: cloning, comparing, writing and destroying keep
// their own stack on the heap, or need none.
//
// A tree may be read by several threads at once as long as it holds no JsonReal that is still text:
// the first question for its number changes it.
class JsonValue : public JsonUseCounted {
public:
  // The values are fixed: tables and the host hang on them.
  enum Type : std::uint32_t {
    TypeString = 0,
    TypeInteger = 1,
    TypeReal = 2,
    TypeObject = 3,
    TypeCompiledObject = 4,
    TypeArray = 5,
    TypeTrue = 6,
    TypeFalse = 7,
    TypeNull = 8,
  };

  bool Release() final;

  // Appends the compact text form.
  virtual void ToCompactText(std::string& out) const = 0;
  // Appends the indented text form; containers override it, all others write their compact form.
  virtual void ToPrettyText(std::string& out, const std::string& indent,
                            const std::string& lineBreak, std::int32_t level) const;
  // Appends the MsgPack form.
  virtual void ToMsgPack(JsonMsgPackWriter& writer) const = 0;
  // The direct child for a key, borrowed, or null.
  virtual JsonValue* FindChild(const std::string& key) const;

  Type GetType() const { return static_cast<Type>(fType); }
  bool IsContainer() const {
    return fType == TypeObject || fType == TypeArray || fType == TypeCompiledObject;
  }

  // Conversions: each answers whether it succeeded, and writes false, 0 or 0.0 when it did not.
  bool AsBool(bool& out) const;
  bool AsInt64(std::int64_t& out) const;
  // Contract: refuses every number above 2^63-1, although the tree holds those exactly.
  bool AsUInt64(std::uint64_t& out) const;
  bool AsInt(std::int32_t& out) const;
  bool AsUInt(std::uint32_t& out) const;
  bool AsDouble(double& out) const;
  // The text of a string, the compact form of anything else; never fails.
  bool AsString(std::string& out) const;

  // Contract: an integer and a real are never equal. A node equals itself, even a NaN.
  bool operator==(const JsonValue& other) const;

  // A deep copy: every node is new, with one reference.
  JsonValue* Clone() const;

  // Follows the keys of a path that are parted by "/"; one leading "/" is dropped, and an empty
  // path is the node itself. Null where a piece finds nothing. The caller owns a reference.
  JsonValue* FindPath(const std::string& path);

protected:
  explicit JsonValue(Type type) : fType(type) {}
  ~JsonValue() override = default;

  // True when what the node points to (text, items, entries) stands right behind it, in its own
  // allocation, and is not to be freed apart.
  bool HasTail() const { return fHasTail; }
  void SetHasTail(bool has) const { fHasTail = has; }

  // Of a text: no byte of it needs an escape, so that it is written without a look at it. Known of
  // what a parser read without one.
  bool IsPlain() const { return fIsPlain; }
  void SetPlain(bool is) { fIsPlain = is; }

private:
  friend class JsonNodeArena;
  friend class JsonTreeReleaser;

  std::uint32_t fType : 5;
  mutable std::uint32_t fHasTail : 1 = 0;
  std::uint32_t fIsPlain : 1 = 0;
  // Distance to the head of the slab that the node stands in, in units of 8 bytes; 0 for a node
  // with an allocation of its own.
  std::uint32_t fSlabDistance : 25 = 0;
};

static_assert(sizeof(JsonValue) == 16);

// Names of the types as messages print them, by type.
inline constexpr std::array<std::string_view, 9> kJsonTypeNames = {
    "String", "Integer", "Real", "Object", "CompiledObject", "Array", "True", "False", "Null"};

// The library can be built to count live objects; this one is not, and says so on standard output.
void ReportObjectCounters();

}  // namespace Tovrin::JSON
