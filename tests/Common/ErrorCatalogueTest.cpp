#include "Common/ErrorCatalogue.h"

#include <gtest/gtest.h>

#include <locale>
#include <utility>

namespace {

struct Row {
  const CErrorId* object;
  const char* id;
  const char* text;
};

// Word for word, apart from the list that the catalogue itself is made of.
const Row kRows[] = {
    {&ErrorId::Unknown, "Unknown", "!! UNKNOWN ERROR CONDITION '$code$'!!"},
    {&ErrorId::OS, "OS", "OS error while calling '$function$'. Errorcode: '$code$' - '$string$'."},
    {&ErrorId::OS_NBT, "OS_NBT",
     "OS error while calling '$function$'. Errorcode: '$code$' - '$string$'."},
    {&ErrorId::OS_WSA, "OS_WSA",
     "OS/Socket error while calling '$function$'. Errorcode: '$code$' - '$string$'."},
    {&ErrorId::Errno, "Errno",
     "Error while calling '$function$'. Errorcode: '$code$' - '$string$'."},
    {&ErrorId::ErrnoDetail, "ErrnoDetail",
     "Error while calling '$function$'. Errorcode: '$code$' - '$string$' - '$detail$'."},
    {&ErrorId::OutOfMemory, "OutOfMemory", "Out of memory."},
    {&ErrorId::OutOfDiskSpace, "OutOfDiskSpace", "Out of disk space."},
    {&ErrorId::InternalError, "InternalError", "'$msg$'"},
    {&ErrorId::Info, "Info", "'$msg$'"},
    {&ErrorId::InternalWarning, "InternalWarning", "'$msg$'"},
    {&ErrorId::PropertyError, "PropertyError", "'$msg$'"},
    {&ErrorId::GenericCVariantError, "GenericCVariantError", "'$onPosition$': '$reason$'"},
    {&ErrorId::FormatError, "FormatError",
     "'$onPosition$': '$action$' failed. Type of '$property$' is '$typeName$', but it has to be "
     "'$formatType$'."},
    {&ErrorId::ObjNotInitialized, "ObjNotInitialized", "'$onPosition$': No initialized $objName$."},
    {&ErrorId::ErrorDuringOperation, "ErrorDuringOperation",
     "'$onPosition$': Error while '$operation$' the '$objName$'. Reason: '$reason$'."},
    {&ErrorId::ErrorDuringOperationWithURL, "ErrorDuringOperationWithURL",
     "'$onPosition$': Error while '$operation$' the '$objName$'. Reason: '$reason$' (URL "
     "'$url$')."},
    {&ErrorId::IndexOutOfBounds, "IndexOutOfBounds",
     "'$onPosition$': Could not access '$objName$' at position '$pos$'. Index is out of bounds."},
    {&ErrorId::UnknownType, "UnknownType",
     "'$onPosition$': Unknown type '$typeName$' for object '$objName$'. Details: '$reason$'"},
    {&ErrorId::UnknownTypeId, "UnknownTypeId",
     "'$onPosition$': Unknown type '$typeId$' for object '$objName$'. Details: '$reason$'"},
    {&ErrorId::CorruptConfig, "CorruptConfig",
     "Configuration with javaID '$javaID$' is corrupt. Reason: '$reason$'."},
    {&ErrorId::CorruptGlobalConfig, "CorruptGlobalConfig",
     "Configuration '$name$' is corrupt. Reason: '$reason$'."},
    {&ErrorId::ParsingError, "ParsingError", "'$onPosition$': Error while parsing: '$reason$'."},
    {&ErrorId::ListError, "ListError", "'$onPosition$': Error while getting List: '$reason$'."},
    {&ErrorId::CannotReadFileFullPath, "CannotReadFileFullPath",
     "'$onPosition$': Could not read file '$fileName$'."},
    {&ErrorId::InitializeFailed, "InitializeFailed",
     "'$onPosition$': Could not initialize/create '$objName$'! Reason: $reason$."},
    {&ErrorId::SaveToDiscError, "SaveToDiscError",
     "'$onPosition$': Could not save '$fileToSave$' to path '$pathName$'. Reason: '$reason$'."},
    {&ErrorId::OperationOnDiscError, "OperationOnDiscError",
     "'$onPosition$': Could not rename, move or delete file '$fileName$' on path '$pathName$'."},
    {&ErrorId::OperationOnDiscError2, "OperationOnDiscError2",
     "Could not rename, move or delete file '$fileName$'. Reason: '$reason$'"},
    {&ErrorId::ArithmeticError, "ArithmeticError",
     "'$onPosition$': Arithmetic operation '$operation$' failed. Details: '$reason$'"},
    {&ErrorId::CannotOpenFile, "CannotOpenFile",
     "Cannot open file '$name$' in mode '$mode$'. Error code: '$errno$'."},
    {&ErrorId::DirectoryCannotCreate, "DirectoryCannotCreate", "Cannot create directory '$path$'."},
    {&ErrorId::DirectoryCannotDelete, "DirectoryCannotDelete", "Cannot delete directory '$path$'."},
    {&ErrorId::DirectoryCannotRename, "DirectoryCannotRename",
     "Cannot rename directory '$from$' to '$to$'. Error: $code$ - $string$."},
    {&ErrorId::DirectoryCannotGetListing, "DirectoryCannotGetListing",
     "Cannot get directory listing for '$path$'."},
    {&ErrorId::FileMissing, "FileMissing", "No such file or directory: $path$."},
    {&ErrorId::FileCannotOpenRead, "FileCannotOpenRead", "Cannot open file '$path$' for reading."},
    {&ErrorId::FileCannotOpenReadDetailed, "FileCannotOpenReadDetailed",
     "Cannot open file '$path$' for reading. ($detail$)"},
    {&ErrorId::FileCannotOpenWrite, "FileCannotOpenWrite",
     "Cannot open file '$path$' for writing."},
    {&ErrorId::FileCannotOpenWriteDetailed, "FileCannotOpenWriteDetailed",
     "Cannot open file '$path$' for writing. ($detail$)"},
    {&ErrorId::FileCannotCopy, "FileCannotCopy", "Cannot copy file from: '$from$' to '$to$'."},
    {&ErrorId::FileCannotCopyDetailed, "FileCannotCopyDetailed",
     "Cannot copy file from: '$from$' to '$to$' ($details$)."},
    {&ErrorId::FileCannotRename, "FileCannotRename",
     "Cannot rename file from: '$from$' to '$to$'."},
    {&ErrorId::FileCannotDelete, "FileCannotDelete", "Cannot delete file: '$path$'."},
    {&ErrorId::FileCannotWrite, "FileCannotWrite", "Failure while writing to file: '$path$'."},
    {&ErrorId::FileCannotRead, "FileCannotRead", "Failure while reading from file: '$path$'."},
    {&ErrorId::FileSizeZero, "FileSizeZero", "Filesize from file: '$path$' is zero."},
    {&ErrorId::FSPathEx, "FSPathEx",
     "Exception '$exception$' thrown during path operation. Current: '$current$'. Argument(s): "
     "'$argument$'."},
};

std::string Render(const std::string& id, const CErrorParameters& parameters = {}) {
  return Resolve("en", id, parameters);
}

// Puts rows of its own into the catalogue, and takes the change back.
class CatalogueChange {
public:
  CatalogueChange() : fBefore(ErrorCatalogueMap()) {}
  ~CatalogueChange() { ErrorCatalogueMap() = fBefore; }
  CatalogueChange(const CatalogueChange&) = delete;
  CatalogueChange& operator=(const CatalogueChange&) = delete;

private:
  const CErrorCatalogueMap fBefore;
};

// Renders while the rows may still be coming into being.
struct EarlyReader {
  EarlyReader() : text(Render("OutOfMemory")) {}
  std::string text;
};
[[gnu::init_priority(301)]] const EarlyReader earlyReader;

struct GroupingByThree : std::numpunct<char> {
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
  char do_decimal_point() const override { return ','; }
};

enum class Streamed { One };
std::ostream& operator<<(std::ostream& out, Streamed) {
  return out << "streamed";
}

}  // namespace

TEST(ErrorCatalogue, HoldsEveryRowWordForWord) {
  EXPECT_EQ(ErrorCatalogueMap().size(), std::size(kRows));
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.id);
    EXPECT_EQ(row.object->Id(), row.id);
    EXPECT_EQ(Render(row.id), row.text);
  }
}

TEST(ErrorCatalogue, IsThereBeforeTheDefaultPriority) {
  EXPECT_EQ(earlyReader.text, "Out of memory.");
}

TEST(ErrorCatalogue, TakesTheLaterOfTwoRowsOfOneId) {
  const CatalogueChange change;
  const CErrorId first("Twice", "one");
  const CErrorId second("Twice", "two");
  EXPECT_EQ(Render(first.Id()), "two");
}

TEST(ErrorCatalogue, KnowsOneLanguage) {
  EXPECT_STREQ(GetDefaultLanguage(), "en");
}

TEST(Resolve, PutsValuesInThePlaceOfTheirKeys) {
  EXPECT_EQ(Render("ObjNotInitialized", {{"onPosition", "CVariant: find"}, {"objName", "Variant"}}),
            "'CVariant: find': No initialized Variant.");
}

TEST(Resolve, FollowsTheRulesOfSubstitution) {
  const CatalogueChange change;
  const CErrorId row("Probe", "$a$ and $b$ and $a$, $two words$ $$ 5$");
  const struct {
    CErrorParameters parameters;
    const char* text;
  } rows[] = {
      // What is missing stays, dollar signs and all.
      {{}, "$a$ and $b$ and $a$, $two words$ $$ 5$"},
      {{{"unknown", "x"}}, "$a$ and $b$ and $a$, $two words$ $$ 5$"},
      // Every occurrence is replaced, or erased.
      {{{"a", "1"}}, "1 and $b$ and 1, $two words$ $$ 5$"},
      {{{"a", ""}, {"b", ""}}, " and  and , $two words$ $$ 5$"},
      {{{"two words", "x"}}, "$a$ and $b$ and $a$, x $$ 5$"},
      // A value may hold a later row's key, which is replaced in turn, but not an earlier one's.
      {{{"a", "<$b$>"}, {"b", "2"}}, "<2> and 2 and <2>, $two words$ $$ 5$"},
      {{{"b", "<$a$>"}, {"a", "1"}}, "1 and <1> and 1, $two words$ $$ 5$"},
      {{{"b", "2"}, {"a", "<$b$>"}}, "<$b$> and 2 and <$b$>, $two words$ $$ 5$"},
      // A value that holds its own key is no loop.
      {{{"b", "$b$"}}, "$a$ and $b$ and $a$, $two words$ $$ 5$"},
      // The first of two rows with one key has replaced them all.
      {{{"b", "first"}, {"b", "second"}}, "$a$ and first and $a$, $two words$ $$ 5$"},
      // A row with an empty key ends the list wherever it stands.
      {{{"b", "2"}, {"", "x"}, {"a", "1"}}, "$a$ and 2 and $a$, $two words$ $$ 5$"},
      {{{"", "x"}}, "$a$ and $b$ and $a$, $two words$ $$ 5$"},
      // A mark may begin with the dollar sign that a value ends with.
      {{{"two words", "$"}, {"b", "$"}}, "$a$ and $ and $a$, $ $$ 5$"},
      // Keys are told apart by case.
      {{{"A", "1"}}, "$a$ and $b$ and $a$, $two words$ $$ 5$"},
  };
  for (const auto& each : rows) EXPECT_EQ(Render(row.Id(), each.parameters), each.text);
}

TEST(Resolve, LeavesTheRowAsItIs) {
  EXPECT_EQ(Render("InternalError", {{"msg", "x"}}), "'x'");
  EXPECT_EQ(Render("InternalError", {{"msg", "y"}}), "'y'");
}

TEST(Resolve, ErasesAnEmptyValueAndKeepsTheQuotes) {
  EXPECT_EQ(Render("InternalError", {{"msg", ""}}), "''");
}

TEST(Resolve, NamesAnIdThatIsNotThere) {
  EXPECT_EQ(Render("NoSuchRow", {{"code", "x"}}), "!! UNKNOWN ERROR CONDITION 'NoSuchRow'!!");
  EXPECT_EQ(Render(""), "!! UNKNOWN ERROR CONDITION ''!!");
  EXPECT_EQ(Render("internalerror"), "!! UNKNOWN ERROR CONDITION 'internalerror'!!");
}

TEST(Resolve, FallsBackToEnglish) {
  EXPECT_EQ(Resolve("de", "InternalError", {{"msg", "x"}}), "'x'");
  EXPECT_EQ(Resolve("", "InternalError", {{"msg", "x"}}), "'x'");
  EXPECT_EQ(Resolve("de", "NoSuchRow", {}), "!! UNKNOWN ERROR CONDITION 'NoSuchRow'!!");
}

TEST(Resolve, SaysThatTheCatalogueIsDamaged) {
  const CatalogueChange change;
  ErrorCatalogueMap().erase("Unknown");
  EXPECT_EQ(Render("NoSuchRow"), "!! ERRORCODE MAP IS INVALID !!");
  EXPECT_EQ(Resolve("de", "Unknown", {}), "!! ERRORCODE MAP IS INVALID !!");
  EXPECT_EQ(Render("OutOfMemory"), "Out of memory.");

  ErrorCatalogueMap().clear();
  EXPECT_EQ(Render("OutOfMemory"), "!! ERRORCODE MAP IS EMPTY !!");
  EXPECT_EQ(Resolve("de", "Unknown", {}), "!! ERRORCODE MAP IS EMPTY !!");
}

TEST(Resolve, IsLinearInAValueFullOfKeys) {
  std::string value;
  for (int i = 0; i < 200'000; ++i) value += "$b$";
  const std::string text = Render("InternalError", {{"msg", value}, {"b", "12345"}});
  EXPECT_EQ(text.size(), 200'000 * 5 + 2U);
}

TEST(ResolveWithPrefix, PutsBracketsInFront) {
  const struct {
    const char* className;
    const char* function;
    const char* brackets;
  } rows[] = {
      {"", "", "[OutOfMemory] "},
      {"CVariant", "", "[OutOfMemory] [CVariant] "},
      {"", "GetLong", "[OutOfMemory] [GetLong] "},
      {"CVariant", "GetLong", "[OutOfMemory] [CVariant::GetLong] "},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(ResolveWithPrefix("P", "en", "OutOfMemory", {}, row.className, row.function),
              std::string("[P] ") + row.brackets + "Out of memory.");
    std::string text = "before ";
    AppendCodeAndCaller(text, "OutOfMemory", row.className, row.function);
    EXPECT_EQ(text, std::string("before ") + row.brackets);
  }
}

TEST(AppendCodeAndCaller, TakesTheTextItselfForAName) {
  std::string text = "not longer than";
  AppendCodeAndCaller(text, text, text, text);
  EXPECT_EQ(text, "not longer than[not longer than] [not longer than::not longer than] ");
}

TEST(ResolveWithPrefix, KeepsAnEmptyPrefixAndAnUnknownId) {
  EXPECT_EQ(ResolveWithPrefix("", "de", "No", {}, "", ""),
            "[] [No] !! UNKNOWN ERROR CONDITION 'No'!!");
}

TEST(CErrorParameter, HoldsWhatTheArgumentWritesToAStream) {
  const char* const null = nullptr;
  const std::pair<CErrorParameter, const char*> rows[] = {
      {{"k", "literal"}, "literal"},
      {{"k", std::string("text")}, "text"},
      {{"k", std::string_view("view")}, "view"},
      {{"k", 'c'}, "c"},
      {{"k", 42}, "42"},
      {{"k", -7L}, "-7"},
      {{"k", 18446744073709551615ULL}, "18446744073709551615"},
      {{"k", 0.5}, "0.5"},
      {{"k", true}, "1"},
      {{"k", Streamed::One}, "streamed"},
      {{"k", null}, ""},
  };
  for (const auto& [parameter, value] : rows) {
    EXPECT_EQ(parameter.key, "k");
    EXPECT_EQ(parameter.value, value);
  }
}

TEST(CErrorParameter, KeepsZeroBytes) {
  using namespace std::string_literals;
  EXPECT_EQ(CErrorParameter("k", "a\0b"s).value, "a\0b"s);
}

TEST(CErrorParameter, WritesNumbersTheSameInEveryLocale) {
  const std::locale before = std::locale::global(std::locale({}, new GroupingByThree));
  const CErrorParameter whole("k", 1234567);
  const CErrorParameter fraction("k", 0.5);
  std::locale::global(before);
  EXPECT_EQ(whole.value, "1234567");
  EXPECT_EQ(fraction.value, "0.5");
}
