#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "host/AutoRefPtr.h"
#include "host/IContext.h"
#include "host/IDataRef.h"
#include "host/IModuleInfo.h"
#include "host/IVariant.h"
#include "host/IVectorGeneric.h"
#include "host/ModuleFunction.h"
#include "module/types/Tessarin.h"
#include "module/types/TessarinList.h"

namespace Tovrin {

// A NUMBER as an integer: cut towards zero; what no signed 64-bit integer holds, and what is no
// number, gives the smallest one. Spelt out because a cast of such a value is undefined, and
// differs between what the compiler folds and what the processor does.
constexpr std::int64_t TruncateToInt64(double number) {
  constexpr double kLimit = 9223372036854775808.0;  // two to the 63
  if (number >= -kLimit && number < kLimit) return static_cast<std::int64_t>(number);
  return INT64_MIN;
}

// The same without a sign: what is negative wraps, and from two to the 63 on that is subtracted and
// added back as an integer. So 1e20, which nothing holds, gives 0, and what is no number two to
// the 63.
constexpr std::uint64_t TruncateToUInt64(double number) {
  constexpr double kLimit = 9223372036854775808.0;
  if (number >= kLimit) {
    return static_cast<std::uint64_t>(TruncateToInt64(number - kLimit)) + (std::uint64_t{1} << 63);
  }
  return static_cast<std::uint64_t>(TruncateToInt64(number));
}

// Reads the arguments of one call of a module function, from left to right, and keeps the first
// failure.
//
// Each reader takes the next argument. Once one has failed, the rest do nothing and answer empty
// values, so a function runs them all in the order of its definition and looks at Failed once; what
// the readers gave counts only if that is false. A failure is a status of position and code, never
// a message: the words are the host's.
//
// Lives on the stack of one call, used by one thread. Holds no reference; the smart pointers that
// the readers return each hold one of their own.
class ArgumentCursor {
public:
  ArgumentCursor(std::uint32_t argumentCount, IVariant* const* arguments, IModuleInfo* moduleInfo,
                 IContext* context)
      : fContext(context),
        fModuleInfo(moduleInfo),
        fArguments(arguments),
        fArgumentCount(argumentCount) {}

  bool ReadBoolean();
  std::int64_t ReadSigned();
  std::uint64_t ReadUnsigned();
  // All bytes of the text, zero bytes among them.
  std::string ReadText();
  // The text up to its first zero byte, as the variant holds it: good until the variant is asked or
  // changed again.
  const char* ReadZeroTerminatedText();
  // Contract: a DATAREF that holds nothing is accepted, and gives an empty reference.
  AutoRefPtr<IDataRef> ReadData();
  // Asks for no type: whatever answers GetVector is a vector.
  AutoRefPtr<const IVectorGeneric> ReadVector();
  AutoRefPtr<Tessarin> ReadTessarin() { return ReadObject<Tessarin>(); }
  AutoRefPtr<TessarinList> ReadTessarinList() { return ReadObject<TessarinList>(); }

  bool Failed() const { return fStatus != kSuccess; }
  FunctionStatus Status() const { return fStatus; }
  IContext* Context() const { return fContext; }
  IModuleInfo* ModuleInfo() const { return fModuleInfo; }

  // The end of a call with bad arguments: writes the neutral value of the function's kind of result
  // and gives the status. Vectors and objects have no neutral value and leave the result as it is.
  FunctionStatus Fail(IVariant* result, bool neutral) const;
  FunctionStatus Fail(IVariant* result, int neutral) const;
  FunctionStatus Fail(IVariant* result, std::nullptr_t noText) const;
  FunctionStatus Fail() const { return fStatus; }

private:
  // The next argument; null when an earlier reader failed or there is none here.
  const IVariant* Next();
  // The next argument if its type is this scalar one.
  const IVariant* NextOfType(TypeId type);
  // Fails at an argument that is there and not what the reader wants.
  void Refuse(const IVariant& argument);
  void FailHere(FunctionStatusCode code);

  // A user-defined value of exactly the class that the reader wants.
  template <class T>
  AutoRefPtr<T> ReadObject() {
    const IVariant* const argument = Next();
    if (!argument) return {};

    if (argument->GetType() >= kFirstUserType) {
      const auto object = argument->GetUserDefined();
      if (const auto wanted = dynamic_cast<T*>(object.get())) return Share(wanted);
    }
    Refuse(*argument);
    return {};
  }

  FunctionStatus fStatus = kSuccess;  // the first failure
  std::int64_t fIndex = -1;           // of the argument that was read last
  IContext* fContext;
  IModuleInfo* fModuleInfo;
  IVariant* const* fArguments;  // entries may be null
  std::uint32_t fArgumentCount;
};

}  // namespace Tovrin
