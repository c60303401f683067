#pragma once

#include <cstdint>
#include <ostream>
#include <string>

// What the library throws when it cannot go on. A root of its own, no std::exception: who has to
// catch everything needs a clause for each.
//
// An ARunTimeError writes a line to the debug log when it is constructed, so that it is seen even
// if somebody swallows it. Copying logs nothing. Constructing one never fails for its logging.
//
// Printed, an exception is three lines:
//
//   CRunTimeError
//   fID: 0
//   fReason: "x"
//
// A concrete member needs no more than its names:
//
//   class CLockError : public ARunTimeError {
//   public:
//     explicit CLockError(const std::string& reason) : ARunTimeError("Lock", "Lock", reason) {}
//   };
class CException {
public:
  explicit CException(std::string reason = {}, std::int64_t id = 0);
  CException(const CException&) = default;
  CException& operator=(const CException&) = default;

  // In this order, as every binary that was built against them expects.
  virtual ~CException() = default;
  virtual void GetReasonStr(std::string& reason) const;
  virtual void Print(std::ostream& stream) const;
  // Contract: most members do not override this, and print as "CException" whatever they are.
  virtual void GetClassName(std::string& className) const;

  std::string Reason() const;  // what GetReasonStr fills

  std::int64_t fID;
  std::string fReason;
};

std::ostream& operator<<(std::ostream& stream, const CException& exception);

// Base of the members that log themselves; thrown as one of them.
class ARunTimeError : public CException {
public:
  std::string fExceptionSuperType;
  std::string fExceptionName;

protected:
  ARunTimeError(const std::string& superType, const std::string& name, const std::string& reason);

private:
  void MakeDebugLogEntry() const;
};

class CRunTimeError : public ARunTimeError {
public:
  explicit CRunTimeError(const std::string& reason);

  void GetClassName(std::string& className) const override;
};

// A stored configuration that cannot be used. Logs its text as an error, in front of its own entry.
class CCorruptConfigException : public ARunTimeError {
public:
  CCorruptConfigException(const std::string& javaID, const std::string& reason);

  void GetClassName(std::string& className) const override;
};

// A message that could not be carried over a socket.
class CMessageException : public CException {
public:
  CMessageException(std::string message, int socket);

  void GetReasonStr(std::string& reason) const override;

  int fSocket;
  std::string fMessage;
};

// A call to the operating system that failed on a socket.
class COSErrException : public CException {
public:
  COSErrException(std::int32_t error, int socket);

  void GetReasonStr(std::string& reason) const override;

  std::int32_t fError;  // the system's code
  int fSocket;          // its descriptor
};
