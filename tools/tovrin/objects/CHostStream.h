#pragma once

#include <string>
#include <utility>

#include "host/IStream.h"
#include "host/InterfaceImpl.h"

namespace RefHost {

// A stream that is complete from the start: all its bytes are there, and no more will come.
// Not safe for concurrent use.
class CHostStream final : public Tovrin::InterfaceImpl<Tovrin::IStream> {
public:
  explicit CHostStream(std::string bytes) : fBytes(std::move(bytes)) {}

private:
  std::size_t Interface_GetCurrentSize() const override { return fDiscarded + fBytes.size(); }
  // Bytes are counted from the stream's beginning; those that were discarded read as none.
  std::size_t Interface_Read(void* buffer, std::size_t size, std::size_t offset) const override;
  void Interface_DiscardBefore(std::size_t offset) override;
  bool Interface_IsFinished() const override { return true; }
  bool Interface_NeedMoreData(Tovrin::IContext* /*context*/, std::size_t /*size*/) override {
    return false;
  }

  std::string fBytes;          // what was not discarded
  std::size_t fDiscarded = 0;  // bytes in front of them
};

}  // namespace RefHost
