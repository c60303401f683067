#pragma once

#include <cstdint>

#include "host/IHost.h"
#include "host/InterfaceImpl.h"

// Takes everything and lets no debug log through; tests override what they need. On the heap, as
// every host object must be: the module drops its reference when it is torn down.
class NeutralHost : public Tovrin::InterfaceImpl<Tovrin::IHost> {
protected:
  void Interface_PrintError(const char*, const char*, const char*, const char*, const char*,
                            const char*, std::int32_t) override {}
  void Interface_PrintDebug(std::uint32_t, const char*, const char*, const char*, const char*,
                            std::uint32_t, const char*) override {}
  bool Interface_IsDebugActive() const override { return false; }
  bool Interface_IsFunctionLevelEnabled(std::uint32_t, const char*, const char*) const override {
    return false;
  }
  bool Interface_IsLevelEnabled(std::uint32_t, const char*) const override { return false; }
  void Interface_ApplyDebugConfiguration(const char*) override {}
};
