// What the built library shows: the version script's names, the host's forwarding members, nothing
// else.

#include <cxxabi.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/module/DefinitionEntries.h"
#include "tests/module/LoadedModule.h"
#include "tests/support/SharedData.h"

namespace {

using Names = std::set<std::string>;

std::string OutputOf(const std::string& command) {
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  if (!pipe) throw std::runtime_error("cannot run " + command);
  std::string output;
  std::array<char, 4096> piece;
  while (const std::size_t size = fread(piece.data(), 1, piece.size(), pipe.get())) {
    output.append(piece.data(), size);
  }
  return output;
}

// Empty for a name that is no C++ one.
std::string Demangled(const std::string& name) {
  int status = 0;
  const std::unique_ptr<char, void (*)(void*)> text(
      abi::__cxa_demangle(name.c_str(), nullptr, nullptr, &status), std::free);
  return status == 0 ? std::string(text.get()) : std::string();
}

struct Exports {
  Names plain;    // C names
  Names mangled;  // C++ names, demangled
};

Exports ShownByTheLibrary() {
  Exports exports;
  std::istringstream lines(OutputOf("nm -D --defined-only '" + LoadedModule::Path() + "'"));
  for (std::string address, kind, name; lines >> address >> kind >> name;) {
    const std::string demangled = Demangled(name);
    demangled.empty() ? exports.plain.insert(name) : exports.mangled.insert(demangled);
  }
  return exports;
}

TEST(ModuleExports, AreTheNamesOfTheVersionScript) {
  const Names listed = NamesOfTheVersionScript();
  EXPECT_EQ(listed.size(), 57u);
  EXPECT_EQ(ShownByTheLibrary().plain, listed);
}

// A host loads it by its path; a name of its own would bind who links it to that name.
TEST(ModuleExports, StandInALibraryWithoutANameOfItsOwn) {
  const std::string sections = OutputOf("readelf -d '" + LoadedModule::Path() + "'");
  EXPECT_NE(sections.find("NEEDED"), std::string::npos);
  EXPECT_EQ(sections.find("SONAME"), std::string::npos);
}

// The members of the interfaces as tests/host/interfaces.txt records them: "IVariant::GetType()
// const".
Names RecordedMembers() {
  static const std::regex kRow(R"( +[-\d]+  (\w+::.*) -> .*)");
  Names members;
  for (const std::string& line : ReadLines(SourceDir() / "tests/host/interfaces.txt")) {
    std::smatch match;
    if (std::regex_match(line, match, kRow)) members.insert(match[1]);
  }
  return members;
}

TEST(ModuleExports, AreBesidesOnlyTheForwardingMembersOfTheHostInterfaces) {
  static const std::regex kText("std::__cxx11::basic_string<char, [^>]*>, std::allocator<char> >");
  static const std::regex kLeftOut(R"(Tovrin::|\[abi:cxx11\])");
  Names shown;
  for (const std::string& name : ShownByTheLibrary().mangled) {
    shown.insert(std::regex_replace(std::regex_replace(name, kText, "std::string"), kLeftOut, ""));
  }
  const Names recorded = RecordedMembers();
  for (const auto& name : shown) {
    // Beside the members stand the few operations that have a body where a host leaves them out.
    const bool isDefaultBody = name.find("::Interface_") != std::string::npos;
    EXPECT_TRUE(isDefaultBody || recorded.contains(name)) << "not recorded: " << name;
  }
  for (const auto& name : recorded) EXPECT_TRUE(shown.contains(name)) << "not exported: " << name;
}

TEST(ModuleExports, HoldEveryEntryOfTheDefinitionText) {
  const LoadedModule module;
  Names bound;
  for (const auto& entry : ReadDefinition(module.Text("GetModuleDefinition"))) {
    EXPECT_NO_THROW(module.Function(entry.function)) << entry.function;
    bound.insert(entry.function);
  }
  EXPECT_EQ(bound.size(), 37u);
  // And the other way round: what is exported under such a name is bound.
  for (const std::string& name : ShownByTheLibrary().plain) {
    if (name.starts_with("tovrin_module_")) {
      EXPECT_TRUE(bound.contains(name)) << name;
    }
  }
}

#if TESSARIN_MODULE_OWNS_RUNTIME
// Of the shared C++ runtime only the exception half: with anything more, text or containers would
// be allocated on one side and freed on the other.
TEST(ModuleImports, OfTheCppRuntimeAreExceptionsAlone) {
  static const std::regex kMachinery(R"(__cxa_\w+|__gxx_personality_v0)");
  static const std::regex kClasses(
      R"(((typeinfo|vtable) for )?(std::(__throw_\w+|terminate|uncaught_exceptions?|bad_\w+|exception)"
      R"(|\w+_error|out_of_range|invalid_argument|ios_base::failure|rethrow_exception|current_exception)"
      R"(|__exception_ptr::\w+)|__cxxabiv1::\w+)((::|\(|\[).*)?)");
  std::istringstream lines(OutputOf("nm -D -u '" + LoadedModule::Path() + "'"));
  int imported = 0;
  for (std::string kind, symbol; lines >> kind >> symbol;) {
    const std::size_t version = symbol.find('@');
    if (version == std::string::npos || (symbol.compare(version, 8, "@GLIBCXX") != 0 &&
                                         symbol.compare(version, 7, "@CXXABI") != 0)) {
      continue;
    }
    const std::string name = symbol.substr(0, version);
    const std::string demangled = Demangled(name);
    EXPECT_TRUE(demangled.empty() ? std::regex_match(name, kMachinery)
                                  : std::regex_match(demangled, kClasses))
        << name << " " << demangled;
    ++imported;
  }
  EXPECT_GT(imported, 10) << "the exception half is not shared";
}
#endif

}  // namespace
