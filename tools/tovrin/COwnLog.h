#pragma once

#include "tools/tovrin/CModuleLog.h"

namespace RefHost {

// Takes what the library says while it runs inside the program itself, and not in a module: without
// a host it would say all of it on standard error. As long as it lives, the lines that --log
// selects are printed and the others are not.
class COwnLog {
public:
  // Throws std::runtime_error when the log's file cannot be opened.
  explicit COwnLog(const LogSettings& settings);
  ~COwnLog();
  COwnLog(const COwnLog&) = delete;
  COwnLog& operator=(const COwnLog&) = delete;
};

}  // namespace RefHost
