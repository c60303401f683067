#pragma once

#include <functional>

// Runs the work on a thread whose whole stack is 256 KiB (more under a sanitizer, whose frames are
// larger), and waits for it. What the work throws ends the process.
void OnASmallStack(const std::function<void()>& work);
