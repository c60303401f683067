#include "Common/CException.h"

#include <utility>

#include "Common/DebugLog.h"
#include "Common/ErrorCatalogue.h"
#include "Libs/Platform/ErrorTexts.h"

qxSource("Common\\CException");

namespace {

// Called in the base's initialiser, since its line has to stand in front of the base's own entry.
std::string RenderAndLog(const std::string& javaID, const std::string& reason) {
  const std::string text = Resolve(GetDefaultLanguage(), ErrorId::CorruptConfig.Id(),
                                   {{"javaID", javaID}, {"reason", reason}});
  qxDebugPrint(1, "CCorruptConfigException::CCorruptConfigException", text);
  return text;
}

}  // namespace

CException::CException(std::string reason, std::int64_t id) : fID(id), fReason(std::move(reason)) {}

void CException::GetReasonStr(std::string& reason) const {
  if (&reason != &fReason) reason = fReason;
}

void CException::Print(std::ostream& stream) const {
  std::string className;
  GetClassName(className);
  stream << className << "\nfID: " << std::to_string(fID) << "\nfReason: \"" << Reason() << "\"\n";
}

void CException::GetClassName(std::string& className) const {
  className = "CException";
}

std::string CException::Reason() const {
  std::string reason;
  GetReasonStr(reason);
  return reason;
}

std::ostream& operator<<(std::ostream& stream, const CException& exception) {
  exception.Print(stream);
  return stream;
}

ARunTimeError::ARunTimeError(const std::string& superType, const std::string& name,
                             const std::string& reason)
    : CException(reason), fExceptionSuperType(superType), fExceptionName(name) {
  MakeDebugLogEntry();
}

void ARunTimeError::MakeDebugLogEntry() const {
  try {
    qxDebugPrint(
        3, "ARunTimeError::MakeDebugLogEntry",
        fExceptionSuperType << " '" << fExceptionName << "' with reason: '" << Reason() << "'");
  } catch (...) {
    // An exception that throws out of its own constructor would be another one than was meant.
  }
}

CRunTimeError::CRunTimeError(const std::string& reason)
    : ARunTimeError("RunTimeError", "RunTimeError", reason) {}

void CRunTimeError::GetClassName(std::string& className) const {
  className = "CRunTimeError";
}

CCorruptConfigException::CCorruptConfigException(const std::string& javaID,
                                                 const std::string& reason)
    : ARunTimeError("CCorruptConfigException", "CCorruptConfigException",
                    RenderAndLog(javaID, reason)) {}

void CCorruptConfigException::GetClassName(std::string& className) const {
  className = "CCorruptConfigException";
}

CMessageException::CMessageException(std::string message, int socket)
    : fSocket(socket), fMessage(std::move(message)) {}

void CMessageException::GetReasonStr(std::string& reason) const {
  reason = fMessage + " on message socket " + std::to_string(fSocket);
}

COSErrException::COSErrException(std::int32_t error, int socket) : fError(error), fSocket(socket) {}

void COSErrException::GetReasonStr(std::string& reason) const {
  reason = OSErrorText(fError) + " on socketfd " + std::to_string(fSocket);
}
