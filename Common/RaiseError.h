#pragma once

#include "Common/CException.h"
#include "Common/DebugLog.h"
#include "Common/ErrorCatalogue.h"

// For what cannot go on: reports an error of the row as qxReportError does, and throws the row's
// text as a CRunTimeError.
//
//   qxRaiseError(ErrorId::InternalError, "CDirectory::Copy", {{"msg", "Could not make dir: " +
//   to}});
#define qxRaiseError(row, functionName, ...)                                      \
  do {                                                                            \
    const ::CErrorParameters qxParameters __VA_ARGS__;                            \
    qxReportError(row, functionName, qxParameters);                               \
    throw ::CRunTimeError(Resolve(GetDefaultLanguage(), row.Id(), qxParameters)); \
  } while (false)
