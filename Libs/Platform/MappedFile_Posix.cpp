#include <sys/mman.h>

#include "Libs/Platform/Files.h"
#include "Libs/Platform/MappedFile.h"

bool CMappedFile::Map(std::FILE* stream) {
  Unmap();
  FileStatus status;
  if (StatusOf(stream, status) != 0 || status.size == 0) return false;
  void* view = mmap(nullptr, status.size, PROT_READ, MAP_SHARED, fileno(stream), 0);
  if (view == MAP_FAILED) return false;
  fData = static_cast<const char*>(view);
  fSize = status.size;
  return true;
}

void CMappedFile::Unmap() {
  if (fData) munmap(const_cast<char*>(fData), fSize);
  fData = nullptr;
  fSize = 0;
}
