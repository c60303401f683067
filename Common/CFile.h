#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include "Common/CFSPath.h"
#include "Common/CUnicodeString.h"

namespace Selvane {
class IBuffer;
}

// A file by its path: one stream with a place for reading and another for writing, and the
// operations on whole files that the library needs.
//
// Belongs to one thread at a time. Ordinary failures are a false or 0, and the reason goes to the
// log or to an out-parameter; Lock, Unlock and Rename throw a CRunTimeError.
//
// Bytes and slashes of a path are taken as they stand, except by WriteFile, which brings them to
// the platform's form.
class CFile {
public:
  // Contract: these values, whatever the standard library's own flags are here.
  enum Mode : std::uint32_t { In = 1, Out = 2, Ate = 4, App = 8, Trunc = 16, Binary = 32 };
  enum Origin : int { kFromStart = 0, kRelative = 1, kFromEnd = 2 };

  explicit CFile(const CFSPath& path = {});
  ~CFile();
  CFile(const CFile&) = delete;
  CFile& operator=(const CFile&) = delete;

  // ---- the stream

  // True as well, and nothing done, when the file is open already. The places start at 0, or at the
  // end for Ate and App. A failure is logged, and *error has its code.
  bool Open(std::uint32_t mode, int* error = nullptr);
  // Opens a file that was not there for reading and writing. No link is followed; nothing is
  // logged, since a name that is taken is no fault.
  bool Create(std::uint32_t permissions, int* error = nullptr);
  // Opens what Create made and Close closed; refuses a link that has taken its place.
  bool Reopen(int* error = nullptr);
  // From here on each write reaches the system at once, and fails at once.
  void StopBuffering();
  bool Close();  // false when bytes did not get out, closed all the same
  bool Flush();
  bool IsOpen() const { return fStream != nullptr; }
  std::FILE* Stream() const { return fStream; }
  void SetPath(const CFSPath& path);  // closes
  CFSPath GetPath() const { return CFSPath(fPath->Text().Bytes()); }

  std::size_t Read(void* buffer, std::size_t length);
  std::size_t Write(const void* buffer, std::size_t length);  // 0 unless open for writing
  // The new place; -1, and nothing moved, for one before the start.
  std::int64_t SeekRead(std::int64_t offset, int origin);
  std::int64_t SeekWrite(std::int64_t offset, int origin);
  std::int64_t GetReadPosition() const { return fReadPosition; }  // -1 before the first use
  std::int64_t GetWritePosition() const { return fWritePosition; }
  bool IsAtEnd() const;  // the last read met the end

  std::int64_t GetSize();  // 0 for a file that is not there
  bool SetSize(std::int64_t length);

  // Waits until this open file has the whole file alone. Other processes keep out as far as they
  // ask for the lock themselves; so do other open files of this process. Nothing on a closed file.
  void Lock();
  void Unlock();

  bool Delete();  // false while it is open

  // ---- whole files

  static void Rename(const CFSPath& from, const CFSPath& to, bool overwrite);
  // Contract: where a rename is impossible the file is copied, over what is there even without
  // overwrite.
  static bool Move(const CFSPath& from, const CFSPath& to, bool overwrite);
  static bool CopyFile(const CFSPath& from, const CFSPath& to, bool overwrite,
                       bool checkSame = true, std::string* error = nullptr);
  static bool Delete(const CFSPath& path);

  // Replaces a file's bytes in one step: whoever reads sees the old file or the new one, and so it
  // is after a crash at any moment. False leaves the old one; the failure is logged, and *error has
  // its code. The permissions stay.
  //
  // The bytes are collected in a sibling with the suffix ".write_temp".
  static bool WriteFile(const CFSPath& path, const void* bytes, std::size_t size,
                        int* error = nullptr);
  static bool WriteFile(const CFSPath& path, std::string_view text, int* error = nullptr);
  static bool WriteFile(const CFSPath& path, const CUnicodeString& text, int* error = nullptr);
  static bool WriteFile(const CFSPath& path, Selvane::IBuffer* buffer, int* error = nullptr);

  // Whether the path climbs: it has "../" or "..\\" in it.
  static bool IsRelativeUnsafe(const CFSPath& path);
  static bool AreSame(const CFSPath& first, const CFSPath& second);  // one file, by whatever names

private:
  enum class Direction { None, Reading, Writing };

  bool TakeStream(std::FILE* stream, std::uint32_t mode);
  bool Prepare(Direction direction, std::int64_t& position);
  void Advance(std::int64_t& position, std::size_t count);
  std::int64_t Seek(std::int64_t& position, std::int64_t offset, int origin);

  CUsePtr<CUnicodeString> fPath;  // never null
  std::FILE* fStream = nullptr;
  std::int64_t fPosition = -1;  // where the stream stands; -1 when that is not known
  std::int64_t fReadPosition = -1;
  std::int64_t fWritePosition = -1;
  std::int64_t fCachedSize = 0;
  std::uint32_t fMode = 0;  // In and Out of the open mode
  bool fSizeValid = false;
  bool fAppends = false;                  // each write goes to the end
  Direction fLastMove = Direction::None;  // the C library wants a seek between the two
};
