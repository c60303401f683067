#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

// Files as the system sees them: what the standard library cannot say about opening, places beyond
// 4 GiB, identity, and making things durable. Paths are bytes. Nothing here blocks except on the
// disk, on a lock, or on opening a pipe.
//
// What can fail answers the system's error code, and 0 for success.
//
// A path with a NUL byte in it leads nowhere, like the empty one: what the system would make of it
// is the name of another file.

// The path for a call of the system.
const char* SystemPath(const std::string& path);

// Which file a name leads to: two names with one identity are one file.
struct FileIdentity {
  std::uint64_t device = 0;
  std::uint64_t number = 0;
  bool operator==(const FileIdentity&) const = default;
};

struct FileStatus {
  std::uint64_t size = 0;
  std::uint32_t permissions = 0;  // the nine bits for owner, group and others
  bool isDirectory = false;
  FileIdentity identity;
};

// Of what the name leads to, links followed; of an open stream, without what it still buffers.
int StatusOf(const std::string& path, FileStatus& status);
int StatusOf(std::FILE* stream, FileStatus& status);

// ---- streams. None is inherited by a program that this process starts. Null and the code on
// failure.

// Opens in a mode of fopen. A folder is refused in every mode.
std::FILE* OpenStream(const std::string& path, const char* mode, int& error);
// Creates a file that was not there, for reading and writing; no link is followed.
std::FILE* CreateStream(const std::string& path, std::uint32_t permissions, int& error);
// Opens a file that CreateStream made before; refuses a link that took its place.
std::FILE* ReopenStream(const std::string& path, int& error);

// Creates a file that belongs to this stream until it closes, in the place of one that a writer
// left behind when it died, or of a link. EBUSY while another stream that came from here is open,
// in whatever process; of two that come at once, at most one gets the place.
std::FILE* ClaimStream(const std::string& path, std::uint32_t permissions, int& error);

bool SeekStream(std::FILE* stream, std::int64_t offset, int whence);  // whence as for fseek
std::int64_t TellStream(std::FILE* stream);                           // -1 on failure
// The stream's buffer is flushed by the caller.
int ResizeStream(std::FILE* stream, std::uint64_t size);
int SetPermissions(std::FILE* stream, std::uint32_t permissions);
// Flushes, and returns once the bytes are on the disk.
int SyncStream(std::FILE* stream);

// Waits for the only lock on the whole file, and gives it back. It belongs to the open stream, so
// two streams of one process exclude each other; it is advisory, and goes when the stream closes.
int LockStream(std::FILE* stream);
int UnlockStream(std::FILE* stream);

// ---- by name

int ResizeFile(const std::string& path, std::uint64_t size);
int RemoveFile(const std::string& path);
// Gives a file or folder another name, in one step. A file takes the place of another only with
// overwrite; a folder never takes a place. Two names of one file end as the one that was asked for.
int RenameFile(const std::string& from, const std::string& to, bool overwrite);
// Returns once the entries of the folder that holds the path are on the disk.
int SyncFolderOf(const std::string& path);

// ---- whole copies

// A descriptor that closes itself.
class CFileDescriptor {
public:
  CFileDescriptor() = default;
  ~CFileDescriptor();
  CFileDescriptor(const CFileDescriptor&) = delete;
  CFileDescriptor& operator=(const CFileDescriptor&) = delete;

  int OpenForReading(const std::string& path);  // a folder is refused
  // Opens for writing, and creates where nothing is; fails on what is there without overwrite. What
  // is there keeps its bytes until Truncate.
  int OpenForWriting(const std::string& path, std::uint32_t permissions, bool overwrite);
  // A second descriptor of an open stream; a lock lasts until both are closed.
  int OpenSame(std::FILE* stream);
  int Status(FileStatus& status) const;
  int Truncate();
  // Up to that many bytes; 0 at the end.
  int Read(void* buffer, std::size_t size, std::size_t& taken) const;
  // All the bytes, however many steps that takes.
  int Write(const void* data, std::size_t size) const;
  // Lets the system move all bytes from here on without showing them, as far as it can: whatever it
  // did not move is still to be read. Only a full disk and the like are failures.
  int SendTo(const CFileDescriptor& target, std::uint64_t& moved) const;
  int Close();

private:
  int fDescriptor = -1;
};
