#pragma once

#include "Common/CVariantTypeTable.h"
#include "Common/DebugLog.h"
#include "Common/ErrorCatalogue.h"
#include "Common/VariantType.h"

// The parameters of a variant's reports, one function a row of the catalogue. A site reads
//
//   qxReport(ErrorId::FormatError, "CVariant::GetLong",
//            WrongFormat(fType, "CVariant: GetLong", "Getting Long value", "of Type Long or Hex"));
//
// and behind a closed gate none of them is called.

inline CErrorParameters WrongFormat(VariantType type, const char* onPosition, const char* action,
                                    const char* formatType) {
  return {{"onPosition", onPosition},
          {"action", action},
          {"property", "Variant"},
          {"typeName", PrintedTypeName(type)},
          {"formatType", formatType}};
}

inline CErrorParameters NotInitialized(const char* onPosition, const char* objName) {
  return {{"onPosition", onPosition}, {"objName", objName}};
}

// "Type of this: ..., type of parameter: ..." behind the words of the complaint.
inline std::string TypesText(const char* complaint, VariantType self, VariantType other) {
  return std::string(complaint) + " Type of this: " + PrintedTypeName(self) +
         ", type of parameter: " + PrintedTypeName(other);
}

inline std::string UnsupportedTypes(VariantType self, VariantType other) {
  return TypesText("Error: unsupported element-types.", self, other);
}

inline CErrorParameters FailedOperation(const char* onPosition, const char* objName,
                                        const std::string& reason) {
  return {{"onPosition", onPosition},
          {"operation", "calling"},
          {"objName", objName},
          {"reason", reason}};
}

inline CErrorParameters UnknownElementType(const char* onPosition, VariantType self,
                                           VariantType other) {
  return {{"onPosition", onPosition},
          {"typeName", PrintedTypeName(other)},
          {"objName", "Variant"},
          {"reason", UnsupportedTypes(self, other)}};
}
