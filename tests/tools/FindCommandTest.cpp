// tovrin find as a user starts it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>

#include "tests/Common/FileSupport.h"
#include "tests/tools/TovrinProgram.h"

namespace {

using testing::IsEmpty;

// Runs in a folder of its own, where files have short names and temporary ones are seen, and swaps
// as early as it can.
class FindCommand : public testing::Test {
protected:
  ChildCall Call(const std::vector<std::string>& arguments) const {
    ChildCall call;
    call.command = {"/usr/bin/env", "QRX_CBUFFER_SWAP_SIZE=153600",
                    "TMPDIR=" + fFolder.Path().string(), (BinDir() / "tovrin").string(), "find"};
    call.command.insert(call.command.end(), arguments.begin(), arguments.end());
    call.folder = fFolder.Path();
    return call;
  }
  ChildResult Find(const std::vector<std::string>& arguments, const std::string& input = {}) const {
    ChildCall call = Call(arguments);
    call.input = input;
    return RunChild(call);
  }
  std::string Bytes(const std::string& name) const { return ReadWholeFile(fFolder.Path() / name); }

  const CTemporaryFolder fFolder;
};

struct Row {
  std::vector<std::string> arguments;
  std::string output;
  int status;
  std::string errors;
};

TEST_F(FindCommand, HasTheHabitsOfGrep) {
  fFolder.Write("a", "abcabcabc");
  fFolder.Write("b", "xxabyyab");
  fFolder.Write("-x", "-ab");
  fFolder.Write("empty", "");
  std::filesystem::create_directory(fFolder.Path() / "folder");
  const std::string missing = "cannot read 'missing': No such file or directory\n";
  const Row rows[] = {
      {{"abc", "a"}, "a:0:0\na:3:0\na:6:0\n", 0, ""},
      {{"ab", "a", "b"}, "a:0:0\na:3:0\na:6:0\nb:2:0\nb:6:0\n", 0, ""},
      {{"zz", "a", "b", "empty"}, "", 1, ""},
      // More patterns: every other word is a file, wherever it stands.
      {{"-e", "ca", "-e", "y", "a", "b"}, "a:2:0\na:5:0\nb:4:1\nb:5:1\n", 0, ""},
      {{"a", "-e", "bc", "b"}, "a:1:0\na:4:0\na:7:0\n", 0, ""},
      {{"--pattern", "xx", "b"}, "b:0:0\n", 0, ""},
      {{"-exx", "b"}, "b:0:0\n", 0, ""},
      // Patterns that look like something else.
      {{"-e", "-a", "--", "-x"}, "-x:0:0\n", 0, ""},
      {{"--", "-a", "-x"}, "-x:0:0\n", 0, ""},
      {{"-e", "[a,b]", "-e", "%%", "a"}, "", 1, ""},
      {{"[a,b]", "a"}, "", 1, ""},
      // Standard input.
      {{"in"}, "(standard input):0:0\n", 0, ""},
      {{"-e", "put"}, "(standard input):2:0\n", 0, ""},
      {{"p", "-"}, "(standard input):2:0\n", 0, ""},
      // Counting: the file is named when there are several.
      {{"-c", "ab", "a"}, "3\n", 0, ""},
      {{"--count", "ab", "a", "b", "empty"}, "a:3\nb:2\nempty:0\n", 0, ""},
      {{"-c", "zz", "a"}, "0\n", 1, ""},
      {{"-c", "put"}, "1\n", 0, ""},
      // The exit status alone; a hit makes it good whatever else there is.
      {{"-q", "ab", "a", "missing"}, "", 0, ""},
      {{"-q", "ab", "missing", "a"}, "", 0, missing},
      {{"-qc", "ab", "a"}, "", 0, ""},
      {{"--quiet", "zz", "a"}, "", 1, ""},
      {{"-q", "zz", "missing"}, "", 2, missing},
      // What cannot be read does not keep from the rest.
      {{"ab", "missing", "b"}, "b:2:0\nb:6:0\n", 2, missing},
      {{"ab", "folder"}, "", 2, "cannot read 'folder': Is a directory\n"},
      {{"ab", "a/b"}, "", 2, "cannot read 'a/b': Not a directory\n"},
      {{"ab", ""}, "", 2, "cannot read '': No such file or directory\n"},
      {{}, "", 2, "a pattern is required\n"},
      {{""}, "", 2, "an empty pattern is everywhere\n"},
      {{"-e", "a", "-e", "", "a"}, "", 2, "an empty pattern is everywhere\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.arguments));
    const ChildResult result = Find(row.arguments, "input");
    EXPECT_EQ(result.output, row.output);
    EXPECT_EQ(result.status, row.status);
    EXPECT_EQ(result.errors, row.errors);
  }
  EXPECT_EQ(Find({"--colour", "a", "a"}).status, 2);
}

TEST_F(FindCommand, TakesBytesInHexadecimal) {
  fFolder.Write("a", std::string("a\0b\xFF\r\n", 6));
  const Row rows[] = {
      {{"--hex", "0062ff", "a"}, "a:1:0\n", 0, ""},
      {{"--hex", " 00 62  FF ", "a"}, "a:1:0\n", 0, ""},
      {{"--hex", "-e", "0D", "-e", "00", "a"}, "a:1:1\na:4:0\n", 0, ""},
      {{"--hex", "0", "a"}, "", 2, "'0' is not hexadecimal: two digits a byte\n"},
      {{"--hex", "0 0", "a"}, "", 2, "'0 0' is not hexadecimal: two digits a byte\n"},
      {{"--hex", "0g", "a"}, "", 2, "'0g' is not hexadecimal: two digits a byte\n"},
      {{"--hex", "\x10\x11", "a"}, "", 2, "'\x10\x11' is not hexadecimal: two digits a byte\n"},
      {{"--hex", "  ", "a"}, "", 2, "an empty pattern is everywhere\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.arguments));
    const ChildResult result = Find(row.arguments);
    EXPECT_EQ(result.output, row.output);
    EXPECT_EQ(result.status, row.status);
    EXPECT_EQ(result.errors, row.errors);
  }
  EXPECT_EQ(Find({"--hex", "--replace", "00ff", "62", "a"}).output, "a:2:0\n");
  EXPECT_EQ(Bytes("a"), std::string("a\0\0\xFF\xFF\r\n", 7));
  EXPECT_EQ(Find({"--hex", "--replace", "x", "62", "a"}).status, 2);
}

// Hits in random bytes, also over the borders of the pieces that a large file is read in.
std::string RandomText(std::size_t size) {
  std::mt19937 random(7);
  std::string text(size, '\0');
  for (char& c : text) c = static_cast<char>('a' + random() % 4);
  const std::string mark = "MARK";
  for (const std::size_t border : {std::size_t{1} << 20, std::size_t{2} << 20}) {
    if (border + 2 < size) text.replace(border - 2, mark.size(), mark);
  }
  return text;
}

// What is printed for one pattern, and the text with it replaced.
std::pair<std::string, std::string> Expected(const std::string& name, const std::string& text,
                                             const std::string& pattern,
                                             const std::string& replacement) {
  std::string output, changed;
  std::size_t from = 0;
  for (std::size_t hit = text.find(pattern); hit != std::string::npos;
       hit = text.find(pattern, from)) {
    output += name + ":" + std::to_string(hit) + ":0\n";
    changed.append(text, from, hit - from).append(replacement);
    from = hit + pattern.size();
  }
  changed.append(text, from);
  return {output, changed};
}

TEST_F(FindCommand, FindsAndReplacesInWhatIsLargerThanTheSwapSize) {
  const std::string text = RandomText(2'500'000);
  for (const std::string pattern : {"MARK", "abcdabcd", "abca", "aa", "x"}) {
    for (const std::string replacement : {"", "#", "MARK", "a longer text than before"}) {
      SCOPED_TRACE(pattern + " to '" + replacement + "'");
      fFolder.Write("body", text);
      const auto [output, changed] = Expected("body", text, pattern, replacement);
      const ChildResult result = Find({"--replace", replacement, pattern, "body"});
      EXPECT_EQ(result.status, output.empty() ? 1 : 0) << result.errors;
      EXPECT_EQ(result.output, output);
      EXPECT_EQ(Bytes("body"), changed);
    }
  }
  const ChildResult piped = Find({"abcdabcd"}, text);
  EXPECT_EQ(piped.output, Expected("(standard input)", text, "abcdabcd", "").first);
  EXPECT_EQ(NamesIn(fFolder.Path()), std::set<std::string>{"body"}) << "no temporary file is left";
}

TEST_F(FindCommand, ReplacesWhatItPrints) {
  fFolder.Write("a", "one two one");
  fFolder.Write("b", "three");
  std::filesystem::permissions(fFolder.Path() / "a", std::filesystem::perms(0640));
  const auto untouched = std::filesystem::last_write_time(fFolder.Path() / "b");
  // What is put in is not searched again, be it by another pattern.
  const ChildResult result = Find({"-e", "one", "-e", "two", "--replace", "two!", "a", "b"});
  EXPECT_EQ(result.output, "a:0:0\na:4:1\na:8:0\n");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(Bytes("a"), "two! two! two!");
  EXPECT_EQ(PermissionsOf(fFolder.Path() / "a"), 0640u);
  EXPECT_EQ(std::filesystem::last_write_time(fFolder.Path() / "b"), untouched);
  EXPECT_EQ(Find({"-c", "--replace", "", " two!", "a"}).output, "2\n");
  EXPECT_EQ(Bytes("a"), "two!");
  EXPECT_THAT(Find({"-q", "--replace", "2", "two", "a"}).output, IsEmpty());
  EXPECT_EQ(Bytes("a"), "2!");
  std::filesystem::create_symlink("a", fFolder.Path() / "link");
  EXPECT_EQ(Find({"--replace", "3", "2", "link"}).output, "link:0:0\n");
  EXPECT_TRUE(std::filesystem::is_symlink(fFolder.Path() / "link"));
  EXPECT_EQ(Bytes("a"), "3!");
}

TEST_F(FindCommand, SaysWhatItCannotChange) {
  fFolder.Write("back\\slash", "ab");
  EXPECT_EQ(Find({"--replace", "x", "ab"}, "ab").errors, "cannot change '-': not a regular file\n");
  const ChildResult device = Find({"--replace", "x", "ab", "/dev/null"});
  EXPECT_EQ(device.errors, "cannot change '/dev/null': not a regular file\n");
  EXPECT_EQ(device.status, 2);
  const ChildResult slash = Find({"--replace", "x", "ab", "back\\slash"});
  EXPECT_EQ(slash.errors, "cannot change 'back\\slash': there is a backslash in its name\n");
  EXPECT_EQ(slash.status, 2);
  EXPECT_EQ(Bytes("back\\slash"), "ab");
  // The sibling that the bytes are collected in is in the way.
  fFolder.Write("a", "ab");
  std::filesystem::create_directory(fFolder.Path() / "a.write_temp");
  const ChildResult blocked = Find({"--replace", "x", "ab", "a"});
  EXPECT_EQ(blocked.errors, "cannot change 'a': Is a directory\n");
  EXPECT_EQ(blocked.status, 2);
  EXPECT_EQ(Bytes("a"), "ab");
}

TEST_F(FindCommand, ReadsFilesThatTellAWrongSize) {
  const std::string file = "/sys/kernel/mm/transparent_hugepage/enabled";
  if (!std::filesystem::exists(file)) GTEST_SKIP() << "no such file here";
  const ChildResult result = Find({"-c", "never", file});
  EXPECT_EQ(result.output, "1\n");
  EXPECT_EQ(result.errors, "");
}

// The file is cut once the search is well under way.
TEST_F(FindCommand, SaysWhenItCouldNotReadAFileToItsEnd) {
  fFolder.Write("large", "");
  std::filesystem::resize_file(fFolder.Path() / "large", std::uintmax_t{1} << 40);
  ChildCall call = Call({"-c", "x", "large"});
  std::string command;
  for (const std::string& word : call.command) command += "'" + word + "' ";
  call.command = {"/bin/sh", "-c",
                  command +
                      "& find=$!; until grep -qs 'pos:.*[0-9]\\{9\\}' /proc/$find/fdinfo/*; "
                      "do kill -0 $find || break; done; truncate -s 200000 large; wait $find"};
  const ChildResult result = RunChild(call);
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "cannot read 'large': it has become shorter, or its disk fails\n");
}

TEST_F(FindCommand, EndsWhenNobodyReads) {
  const std::string many(200'000, 'a');
  fFolder.Write("a", many);
  ChildCall call = Call({"a", "a", "missing"});
  call.isOutputClosed = true;
  const ChildResult closed = RunChild(call);
  EXPECT_EQ(closed.status, 0);
  EXPECT_THAT(closed.errors, IsEmpty());
  // What was to be changed is changed all the same.
  call.command.insert(call.command.end(), {"--replace", "b"});
  EXPECT_EQ(RunChild(call).status, 2) << "and the missing file was asked for";
  EXPECT_EQ(Bytes("a"), std::string(200'000, 'b'));
}

TEST_F(FindCommand, NamesTheOutputThatFails) {
  fFolder.Write("a", "ab");
  for (const std::string options : {"", "-c "}) {
    ChildCall call;
    call.command = {
        "/bin/sh", "-c",
        "'" + (BinDir() / "tovrin").string() + "' find " + options + "ab a > /dev/full"};
    call.folder = fFolder.Path();
    const ChildResult result = RunChild(call);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors, "cannot write 'standard output': No space left on device\n");
  }
}

}  // namespace
