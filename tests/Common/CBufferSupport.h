#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Common/CBuffer.h"
#include "Common/CUnicodeString.h"
#include "tests/Common/FileSupport.h"

// What the tests of buffers share.

inline constexpr std::uint64_t kNone = CBuffer::kNone;
inline constexpr std::size_t kAll = ~std::size_t{0};

inline std::string BytesOf(CBuffer& buffer) {
  std::string bytes(buffer.GetSize(), '\0');
  bytes.resize(buffer.ReadAt(0, bytes.data(), bytes.size()));
  return bytes;
}

inline bool Append(CBuffer& buffer, std::string_view text) {
  return buffer.Append(text.data(), text.size());
}

inline std::string NameOf(CBuffer& buffer) {
  const CUsePtr<Selvane::IUnicodeString> name(buffer.GetFileName());
  return std::string(name->GetBytes(), name->GetByteSize());
}

// Temporary files of a test lie in a folder of its own.
class CBufferTest : public testing::Test {
protected:
  CBufferTest() {
    if (const char* before = std::getenv("TMPDIR")) fBefore = before;
    setenv("TMPDIR", fFolder.Path().c_str(), 1);
    fDescriptors = OpenDescriptors();
  }
  ~CBufferTest() override {
    if (fBefore.empty())
      unsetenv("TMPDIR");
    else
      setenv("TMPDIR", fBefore.c_str(), 1);
    EXPECT_EQ(OpenDescriptors(), fDescriptors) << "a descriptor was left open";
  }

  std::string Path(const std::string& name) const { return (fFolder.Path() / name).string(); }
  std::set<std::string> Names() const { return NamesIn(fFolder.Path()); }

  const CTemporaryFolder fFolder;

private:
  std::string fBefore;
  std::size_t fDescriptors = 0;
};

inline const std::string kText = "0123456789";

// Both forms, and the file form with some bytes taken off its front.
inline std::vector<std::unique_ptr<CBuffer>> AllForms(const std::string& text = kText) {
  std::vector<std::unique_ptr<CBuffer>> forms;
  forms.push_back(std::make_unique<CBuffer>(text.data(), text.size()));
  forms.push_back(std::make_unique<CBuffer>(text.data(), text.size()));
  EXPECT_TRUE(forms.back()->SwapOut());
  const std::string more = "front" + text;
  forms.push_back(std::make_unique<CBuffer>(more.data(), more.size()));
  EXPECT_TRUE(forms.back()->SwapOut());
  forms.back()->RemoveFront(5);
  return forms;
}
