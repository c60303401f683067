#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// Every malloc, calloc, realloc and free of the process, by whichever library, between Start and
// Stop. Linked on its own, since it puts itself before the C library's.
//
// Any thread may allocate; one starts, stops and reads.
namespace MallocLog {

struct Event {
  const void* taken;   // null: nothing, this is a free
  const void* freed;   // null: nothing, this is a malloc
  std::size_t size;    // of what is taken
  const void* caller;  // where the call returns to
};

void Start();
// What has happened since Start. Throws std::length_error when that was more than it holds.
std::vector<Event> Stop();

}  // namespace MallocLog
