#include "Libs/Platform/StackTrace.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <unwind.h>

#include <cstdlib>

namespace {

struct Capture {
  std::span<std::uintptr_t> frames;
  std::size_t count = 0;
  bool ownFrameSkipped = false;
};

_Unwind_Reason_Code TakeFrame(_Unwind_Context* context, void* state) {
  auto& capture = *static_cast<Capture*>(state);
  if (!capture.ownFrameSkipped) {
    capture.ownFrameSkipped = true;
    return _URC_NO_REASON;
  }
  const auto address = static_cast<std::uintptr_t>(_Unwind_GetIP(context));
  if (address == 0 || capture.count == capture.frames.size()) return _URC_END_OF_STACK;

  capture.frames[capture.count++] = address;
  return _URC_NO_REASON;
}

std::string Demangle(const char* name) {
  int status = 0;
  char* text = abi::__cxa_demangle(name, nullptr, nullptr, &status);
  if (text == nullptr) return name;

  std::string demangled(text);
  ::free(text);  // the C library's memory, whatever operator delete is in this module
  return demangled;
}

}  // namespace

[[gnu::noinline]] std::size_t CaptureStack(std::span<std::uintptr_t> frames) {
  Capture capture{frames};
  _Unwind_Backtrace(&TakeFrame, &capture);
  return capture.count;
}

StackSymbol FindSymbol(std::uintptr_t address) {
  Dl_info info{};
  if (dladdr(reinterpret_cast<const void*>(address), &info) == 0 || info.dli_sname == nullptr) {
    return {};
  }
  return {Demangle(info.dli_sname), reinterpret_cast<std::uintptr_t>(info.dli_saddr)};
}
