#pragma once

// How many blocks the calling thread has taken from operator new so far.
//
// Linked on its own (tessarin::allocation_count), since it replaces the operators of the whole
// program.
long AllocationCount();
// The bytes of those that it has not given back.
long AllocatedBytes();

// While it stands, one request of the thread that made it fails: the first, the second and so on.
class AllocationFault {
public:
  // The request ends with what this throws; otherwise with a std::bad_alloc.
  using Throw = void (*)();

  explicit AllocationFault(long which, Throw instead = nullptr);
  ~AllocationFault();
  AllocationFault(const AllocationFault&) = delete;
  AllocationFault& operator=(const AllocationFault&) = delete;

  bool HasFailed() const;
};
