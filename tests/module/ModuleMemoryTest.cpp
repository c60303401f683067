// The module's memory is its own: what the host's malloc sees of it, and who frees what.

#include <gtest/gtest.h>
#include <link.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/module/Answer.h"
#include "tests/module/LoadedModule.h"
#include "tests/module/MallocLog.h"
#include "tests/support/ChildProcess.h"

using namespace Tovrin;

namespace {

constexpr std::size_t kSlabBytes = 278'584;
constexpr std::size_t kSmallestLargeBlock = 265 + 16;  // with its header

// Where the library is mapped.
struct Range {
  std::uintptr_t begin = 0;
  std::uintptr_t end = 0;

  bool Holds(const void* address) const {
    const auto place = reinterpret_cast<std::uintptr_t>(address);
    return begin <= place && place < end;
  }
};

int TakeRangeOfModule(dl_phdr_info* library, std::size_t, void* result) {
  if (!std::string(library->dlpi_name).ends_with("/libtessarin.so")) return 0;
  Range& range = *static_cast<Range*>(result);
  range.begin = library->dlpi_addr;
  for (int index = 0; index < library->dlpi_phnum; ++index) {
    const auto& part = library->dlpi_phdr[index];
    if (part.p_type == PT_LOAD) {
      range.end = std::max(range.end, range.begin + part.p_vaddr + part.p_memsz);
    }
  }
  return 1;
}

Answer CallIn(const LoadedModule& module, const char* function, const Values& arguments) {
  const AutoRefPtr<TestContext> context(new TestContext);
  return CallFunction(module.Function(function), arguments, context.get());
}

// Values of both types made, used and dropped, and exceptions that cross to the host.
void UseTheModule(const LoadedModule& module) {
  std::vector<std::string> expressions;
  for (int index = 0; index < 500; ++index) {
    expressions.push_back("host" + std::to_string(index * 7919) + ".*[a-f]+(x|y)");
  }
  const Answer list = CallIn(module, "tovrin_module_StringListToRegExList",
                             {TestVariant::Vector(10, TestVector::Texts(expressions))});
  ASSERT_EQ(list.status, 0u);
  const auto listValue = TestVariant::Object(25, list.Object());
  EXPECT_TRUE(CallIn(module, "tovrin_module_MatchesInList",
                     {listValue, TestVariant::Text("HOST7919 and abcx")})
                  .Boolean());
  for (int index = 0; index < 500; ++index) {
    const Answer made =
        CallIn(module, "tovrin_module_StringToRegEx", {TestVariant::Text(expressions[index])});
    const auto expression = TestVariant::Object(21, made.Object());
    CallIn(module, "tovrin_module_Search", {expression, TestVariant::Text("a host7919 and abcx")});
    CallIn(module, "tovrin_module_FindAll", {expression, TestVariant::Text("host0 ax host0 by")});
    CallIn(module, "tovrin_module_ReplaceAllMatches",
           {expression, TestVariant::Text("host0 ax"), TestVariant::Text("$1")});
  }
  std::optional<std::runtime_error> kept;
  for (int index = 0; index < 50; ++index) {
    const Answer made = CallIn(module, "tovrin_module_StringToRegEx", {TestVariant::Text("x*")});
    try {
      CallIn(module, "tovrin_module_FindAll",
             {TestVariant::Object(21, made.Object()), TestVariant::Text("a")});
    } catch (const std::runtime_error& failure) {
      kept = failure;
    }
  }
  EXPECT_TRUE(kept);
}

// What the log tells of the two sides.
struct Account {
  int slabs = 0;                         // taken by the module
  int largeBlocks = 0;                   // taken by the module
  int hostBlocks = 0;                    // taken by anybody else
  int hostSlabs = 0;                     // of which as large as a slab
  std::vector<std::size_t> smallBlocks;  // sizes of what else the module took
  int foreignFrees = 0;                  // by the module of the host's, or the other way round
  int alive = 0;                         // of the module's, at the end
};

Account Settle(const std::vector<MallocLog::Event>& events, const Range& module) {
  Account account;
  std::map<const void*, bool> takenByModule;
  for (const auto& event : events) {
    const bool isModule = module.Holds(event.caller);
    if (event.freed) {
      // What is unknown was taken before the log began, when there was no module.
      const auto block = takenByModule.extract(event.freed);
      const bool wasModules = !block.empty() && block.mapped();
      account.foreignFrees += isModule != wasModules;
    }
    if (!event.taken) continue;
    takenByModule[event.taken] = isModule;
    if (!isModule) {
      ++account.hostBlocks;
      account.hostSlabs += event.size == kSlabBytes;
    } else if (event.size == kSlabBytes) {
      ++account.slabs;
    } else if (event.size >= kSmallestLargeBlock) {
      ++account.largeBlocks;
    } else {
      account.smallBlocks.push_back(event.size);
    }
  }
  for (const auto& [block, isModules] : takenByModule) account.alive += isModules;
  return account;
}

Account AccountOfOneLife() {
  Range range;
  MallocLog::Start();
  {
    const LoadedModule module;
    dl_iterate_phdr(TakeRangeOfModule, &range);
    UseTheModule(module);
  }
  const auto events = MallocLog::Stop();
  EXPECT_FALSE(LoadedModule::IsMapped());
  EXPECT_NE(range.begin, 0u);
  return Settle(events, range);
}

TEST(ModuleMemory, TakesSlabsAndLargeBlocksFromTheHostAndNoSmallOnes) {
  const Account account = AccountOfOneLife();
  EXPECT_GT(account.slabs, 5);
  EXPECT_GT(account.largeBlocks, 5);
  EXPECT_EQ(account.smallBlocks, std::vector<std::size_t>());
}

TEST(ModuleMemory, ServesNobodyElse) {
  const Account account = AccountOfOneLife();
  EXPECT_GT(account.hostBlocks, 5000) << "the host's own went elsewhere";
  EXPECT_EQ(account.hostSlabs, 0);
}

TEST(ModuleMemory, IsFreedByTheSideThatTookIt) {
  EXPECT_EQ(AccountOfOneLife().foreignFrees, 0);
}

TEST(ModuleMemory, GoesBackToTheHostWithTheLibrary) {
  for (int life = 0; life < 3; ++life) EXPECT_EQ(AccountOfOneLife().alive, 0);
}

// What the library has called around forks goes with it.
TEST(ModuleMemory, LetsTheHostForkWithTheLibraryAndAfterIt) {
  const auto forkAndCall = [](const LoadedModule* module) {
    const pid_t child = fork();
    if (child == 0) {
      if (module) UseTheModule(*module);
      _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status;
  };
  {
    const LoadedModule module;
    UseTheModule(module);
    EXPECT_EQ(forkAndCall(&module), 0);
  }
  ASSERT_FALSE(LoadedModule::IsMapped());
  EXPECT_EQ(forkAndCall(nullptr), 0);
}

// The host's limit leaves room for no second copy of a large text.
TEST(ModuleMemory, EndsTheProcessWithStatus42WhenItIsExhausted) {
  const ChildResult silent =
      RunChild({.command = {TESSARIN_EXHAUSTED_HOST}, .input = "", .folder = {}});
  EXPECT_EQ(silent.status, 42);
  EXPECT_EQ(silent.output, "");
  EXPECT_EQ(silent.errors.substr(0, 5), "new (");

  struct Row {
    const char* host;
    std::string output, errors;
  };
  const Row rows[] = {
      {"listening", "fatal: " + silent.errors, ""},
      {"throwing", "", silent.errors},
      {"throwing-later", "fatal: " + silent.errors, ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.host);
    const ChildResult told =
        RunChild({.command = {TESSARIN_EXHAUSTED_HOST, row.host}, .input = "", .folder = {}});
    EXPECT_EQ(told.status, 42);
    EXPECT_EQ(told.output, row.output);
    EXPECT_EQ(told.errors, row.errors);
  }
}

}  // namespace
