// The functions of the rule language that take or give a list.
//
// All but Tessarin.Add leave their arguments alone: they build a new list, entry by entry from the
// stored texts, with the type id of their first list.

#include <algorithm>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_set>

#include "module/Exports.h"
#include "module/TypeIds.h"
#include "module/types/ArgumentCursor.h"
#include "module/types/ResultWriters.h"
#include "module/types/Tessarin.h"
#include "module/types/TessarinList.h"

using namespace Tovrin;

namespace {

using ListPtr = AutoRefPtr<TessarinList>;

ListPtr NewListLike(const TessarinList& list) {
  return ListPtr(new TessarinList(list.GetType()));
}

ListPtr CloneOf(const TessarinList& list) {
  return ListPtr(static_cast<TessarinList*>(list.Clone().release()));
}

// An index of the list that lies at or behind the one given.
std::int64_t ClampToList(std::int64_t index, const TessarinList& list) {
  return std::clamp<std::int64_t>(index, 0, static_cast<std::int64_t>(list.Size()));
}

// Entries from begin up to, not including, end; empty texts beyond the end of the list.
void CopyEntries(const TessarinList& from, std::int64_t begin, std::int64_t end, TessarinList& to) {
  for (std::int64_t i = begin; i < end; ++i) to.AddEntry(from.Text(static_cast<std::uint64_t>(i)));
}

void CopyRest(const TessarinList& from, std::int64_t begin, TessarinList& to) {
  CopyEntries(from, begin, static_cast<std::int64_t>(from.Size()), to);
}

ListPtr ToTessarinList(const IVectorGeneric& expressions) {
  ListPtr list(new TessarinList(TessarinListTypeId.load(std::memory_order_relaxed)));
  for (std::size_t i = 0; i < expressions.GetSize(); ++i) {
    const auto element = expressions.Get(i);
    const char* const text = element ? element->GetString() : nullptr;
    list->AddEntry(TessarinList::AnchoredEntry(text ? text : ""));
  }
  return list;
}

// Contract: the stored text is compiled as it stands, form included, so that in "regex(^x$)" the
// word is literal text.
AutoRefPtr<Tessarin> Get(const TessarinList& list, std::uint64_t index) {
  AutoRefPtr<Tessarin> object(new Tessarin(TessarinTypeId.load(std::memory_order_relaxed)));
  object->SetExpression(std::string(list.Text(index)));
  return object;
}

// Contract: compares with the stored text, so what Get gives is found, and what was added is not.
std::int64_t Find(const TessarinList& list, const Tessarin& object) {
  const auto& entries = list.Entries();
  const auto found = std::find(entries.begin(), entries.end(), object.Expression());
  return found == entries.end() ? -1 : found - entries.begin();
}

ListPtr GetRange(const TessarinList& list, std::int64_t start, std::int64_t end) {
  ListPtr range = NewListLike(list);
  CopyEntries(list, ClampToList(start, list), ClampToList(end, list), *range.get());
  return range;
}

// No list when the index is out of range.
ListPtr RemoveEntry(const TessarinList& list, std::uint64_t index) {
  if (index >= list.Size()) return {};
  const auto at = static_cast<std::int64_t>(index);
  ListPtr rest = NewListLike(list);
  CopyEntries(list, 0, at, *rest.get());
  CopyRest(list, at + 1, *rest.get());
  return rest;
}

// Contract: the end is included, unlike GetRange's; a start beyond the end pads with empty entries,
// and one behind the end takes what lies between them twice.
ListPtr RemoveEntries(const TessarinList& list, std::int64_t start, std::int64_t end) {
  constexpr std::int64_t kMostPadding = std::int64_t{1}
                                        << 24;  // a rule that asks for more is wrong
  const auto size = static_cast<std::int64_t>(list.Size());
  ListPtr rest = NewListLike(list);
  if (size == 0) return rest;
  if (start > size + kMostPadding) {
    throw std::length_error("Remove: the start lies too far behind the end of the list");
  }
  CopyEntries(list, 0, std::max<std::int64_t>(start, 0), *rest.get());
  const std::int64_t last = std::min(end, size);
  CopyRest(list, std::max<std::int64_t>(last + 1, 0), *rest.get());
  return rest;
}

ListPtr Reverse(const TessarinList& list) {
  ListPtr reversed = NewListLike(list);
  for (std::uint64_t i = list.Size(); i > 0; --i) reversed->AddEntry(list.Text(i - 1));
  return reversed;
}

// Contract: takes just as many entries of the second list as the first one has, empty texts where
// it is shorter.
ListPtr Join(const TessarinList& list, const TessarinList& other) {
  ListPtr joined = NewListLike(list);
  CopyRest(list, 0, *joined.get());
  CopyEntries(other, 0, static_cast<std::int64_t>(list.Size()), *joined.get());
  return joined;
}

// Contract: removing an empty list from a list gives an empty list.
ListPtr RemoveAll(const TessarinList& list, const TessarinList& other) {
  ListPtr rest = NewListLike(list);
  if (other.Size() == 0) return rest;
  const std::unordered_set<std::string_view> removed(other.Entries().begin(),
                                                     other.Entries().end());
  for (const std::string& entry : list.Entries()) {
    if (!removed.contains(entry)) rest->AddEntry(entry);
  }
  return rest;
}

// The list with the expression at the index, in place of so many of its entries. An index beyond
// the end appends.
ListPtr Splice(const TessarinList& list, std::int64_t index, const Tessarin& object,
               std::int64_t replaced) {
  const std::int64_t at = ClampToList(index, list);
  ListPtr spliced = NewListLike(list);
  CopyEntries(list, 0, at, *spliced.get());
  spliced->AddEntry(TessarinList::AnchoredEntry(object.Expression()));
  CopyRest(list, at + replaced, *spliced.get());
  return spliced;
}

ListPtr Append(const TessarinList& list, const std::string& entry) {
  ListPtr longer = CloneOf(list);
  longer->AddEntry(entry);
  return longer;
}

std::string JoinTexts(const TessarinList& list, std::string_view separator) {
  if (separator.empty()) separator = ", ";
  std::string text;
  for (const std::string& entry : list.Entries()) {
    if (&entry != &list.Entries().front()) text += separator;
    text += entry;
  }
  return text;
}

// Both names of the function that joins the texts.
FunctionStatus CallToString(ArgumentCursor& cursor, IVariant* result) {
  const auto list = cursor.ReadTessarinList();
  const auto separator = cursor.ReadText();
  if (cursor.Failed()) return cursor.Fail(result, nullptr);

  WriteText(result, JoinTexts(*list.get(), separator));
  return kSuccess;
}

}  // namespace

qxTypeFactory(tovrin_module_CreateTessarinList) {
  return new TessarinList(typeId);
}

// Tessarin.List ToTessarinList (VECTOR<STRING>)
qxModuleFunction(tovrin_module_StringListToRegExList) {
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  const auto expressions = cursor.ReadVector();
  if (cursor.Failed()) return cursor.Fail();

  WriteObject(result, ToTessarinList(*expressions.get()));
  return kSuccess;
}

qxModuleFunction(tovrin_module_MatchesInList) {  // BOOLEAN Tessarin.Matches (Tessarin.List,STRING)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  const auto list = cursor.ReadTessarinList();
  const auto text = cursor.ReadText();
  if (cursor.Failed()) return cursor.Fail(result, false);

  WriteBoolean(result, list->Matches(text));
  return kSuccess;
}

qxModuleFunction(tovrin_module_Size) {  // NUMBER Size (Tessarin.List)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  const auto list = cursor.ReadTessarinList();
  if (cursor.Failed()) return cursor.Fail(result, 0);

  WriteNumber(result, static_cast<std::uint64_t>(list->Size()));
  return kSuccess;
}

qxModuleFunction(tovrin_module_Get) {  // Tessarin Get (Tessarin.List,NUMBER)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  const auto list = cursor.ReadTessarinList();
  const auto index = cursor.ReadUnsigned();
  if (cursor.Failed()) return cursor.Fail();

  WriteObject(result, Get(*list.get(), index));
  return kSuccess;
}

qxModuleFunction(tovrin_module_GetElems) {  // Tessarin.List GetRange (Tessarin.List,NUMBER,NUMBER)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  const auto list = cursor.ReadTessarinList();
  const auto start = cursor.ReadSigned();
  const auto end = cursor.ReadSigned();
  if (cursor.Failed()) return cursor.Fail();

  WriteObject(result, GetRange(*list.get(), start, end));
  return kSuccess;
}

qxModuleFunction(tovrin_module_Find) {  // NUMBER Find (Tessarin.List,Tessarin)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  const auto list = cursor.ReadTessarinList();
  const auto object = cursor.ReadTessarin();
  if (cursor.Failed()) return cursor.Fail(result, 0);

  WriteNumber(result, Find(*list.get(), *object.get()));
  return kSuccess;
}

qxModuleFunction(tovrin_module_Contains) {  // BOOLEAN Contains (Tessarin.List,Tessarin)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  const auto list = cursor.ReadTessarinList();
  const auto object = cursor.ReadTessarin();
  if (cursor.Failed()) return cursor.Fail(result, false);

  WriteBoolean(result, Find(*list.get(), *object.get()) != -1);
  return kSuccess;
}

qxModuleFunction(tovrin_module_AddToRegExList) {  // PROCEDURE Tessarin.Add (Tessarin.List,STRING)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  const auto list = cursor.ReadTessarinList();
  const auto text = cursor.ReadZeroTerminatedText();
  if (cursor.Failed()) return cursor.Fail();

  list->AddEntry(text);
  return kSuccess;
}

// PROCEDURE Tessarin.Add (Tessarin.List,Tessarin)
qxModuleFunction(tovrin_module_AddToRegExListRE) {
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  const auto list = cursor.ReadTessarinList();
  const auto object = cursor.ReadTessarin();
  if (cursor.Failed()) return cursor.Fail();

  list->AddEntry(TessarinList::AnchoredEntry(object->Expression()));
  return kSuccess;
}

qxModuleFunction(tovrin_module_Remove) {  // Tessarin.List Remove (Tessarin.List,NUMBER)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  const auto list = cursor.ReadTessarinList();
  const auto index = cursor.ReadUnsigned();
  if (cursor.Failed()) return cursor.Fail();

  WriteObject(result, RemoveEntry(*list.get(), index));
  return kSuccess;
}

qxModuleFunction(tovrin_module_RemoveElems) {  // Tessarin.List Remove (Tessarin.List,NUMBER,NUMBER)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  const auto list = cursor.ReadTessarinList();
  const auto start = cursor.ReadSigned();
  const auto end = cursor.ReadSigned();
  if (cursor.Failed()) return cursor.Fail();

  WriteObject(result, RemoveEntries(*list.get(), start, end));
  return kSuccess;
}

qxModuleFunction(tovrin_module_Reverse) {  // Tessarin.List Reverse (Tessarin.List)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  const auto list = cursor.ReadTessarinList();
  if (cursor.Failed()) return cursor.Fail();

  WriteObject(result, Reverse(*list.get()));
  return kSuccess;
}

// Tessarin.List Tessarin.Append (Tessarin.List,STRING)
qxModuleFunction(tovrin_module_AppendToRegExList) {
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  const auto list = cursor.ReadTessarinList();
  const auto text = cursor.ReadText();
  if (cursor.Failed()) return cursor.Fail();

  WriteObject(result, Append(*list.get(), text));
  return kSuccess;
}

// Tessarin.List Tessarin.Append (Tessarin.List,Tessarin)
qxModuleFunction(tovrin_module_AppendRegExToRegExList) {
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  const auto list = cursor.ReadTessarinList();
  const auto object = cursor.ReadTessarin();
  if (cursor.Failed()) return cursor.Fail();

  WriteObject(result, Append(*list.get(), TessarinList::AnchoredEntry(object->Expression())));
  return kSuccess;
}

qxModuleFunction(tovrin_module_Join) {  // Tessarin.List Join (Tessarin.List,Tessarin.List)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  const auto list = cursor.ReadTessarinList();
  const auto other = cursor.ReadTessarinList();
  if (cursor.Failed()) return cursor.Fail();

  WriteObject(result, Join(*list.get(), *other.get()));
  return kSuccess;
}

// Tessarin.List Remove (Tessarin.List,Tessarin.List)
qxModuleFunction(tovrin_module_RemoveListFromList) {
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  const auto list = cursor.ReadTessarinList();
  const auto other = cursor.ReadTessarinList();
  if (cursor.Failed()) return cursor.Fail();

  WriteObject(result, RemoveAll(*list.get(), *other.get()));
  return kSuccess;
}

qxModuleFunction(tovrin_module_Insert) {  // Tessarin.List Insert (Tessarin.List,Tessarin,NUMBER)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  const auto list = cursor.ReadTessarinList();
  const auto object = cursor.ReadTessarin();
  const auto index = cursor.ReadSigned();
  if (cursor.Failed()) return cursor.Fail();

  WriteObject(result, Splice(*list.get(), index, *object.get(), 0));
  return kSuccess;
}

qxModuleFunction(tovrin_module_Set) {  // Tessarin.List Set (Tessarin.List,NUMBER,Tessarin)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  const auto list = cursor.ReadTessarinList();
  const auto index = cursor.ReadSigned();
  const auto object = cursor.ReadTessarin();
  if (cursor.Failed()) return cursor.Fail();

  WriteObject(result, Splice(*list.get(), index, *object.get(), 1));
  return kSuccess;
}

// Contract: gives the same object, so what is added to the result is in the argument too.
qxModuleFunction(tovrin_module_SetSorted) {  // Tessarin.List SetSorted (Tessarin.List,BOOLEAN)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  const auto list = cursor.ReadTessarinList();
  cursor.ReadBoolean();
  if (cursor.Failed()) return cursor.Fail();

  WriteObject(result, list);
  return kSuccess;
}

// STRING TessarinList.ToString (Tessarin.List,STRING)
qxModuleFunction(tovrin_module_RegExListToString) {
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  return CallToString(cursor, result);
}

// STRING TessarinListPtr.ToString (Tessarin.List,STRING)
qxModuleFunction(tovrin_module_RegExListToString_Deprecated) {
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  return CallToString(cursor, result);
}
