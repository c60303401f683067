#pragma once

#include "host/ModuleFunction.h"

// The functions that the host itself gives to rules. They are module functions like any other: the
// same tables find them, and they answer with the same status words and exceptions.
namespace RefHost {

class CHost;

void AddHostFunctions(CHost& host);

// BOOLEAN QRX.InCustomerControlledPolicy (): whether the rules belong to a customer, which modules
// ask for. A host without it is one that cannot tell.
void AddPolicyFunction(CHost& host, bool isCustomers);

// VECTOR<STRING> lines (STRING): the lines of a file, "-" for standard input. A byte order mark in
// front and the carriage returns of line ends are dropped. A file that cannot be read is an
// exception.
Tovrin::FunctionStatus HostLines(std::uint32_t argumentCount, Tovrin::IVariant* const* arguments,
                                 Tovrin::IVariant* result, Tovrin::IModuleInfo* moduleInfo,
                                 Tovrin::IContext* context);

// The JSON type's functions, which modules call too: an empty object; the value that a text spells,
// where a text that is no JSON is a wrong argument; a value's compact text.
Tovrin::FunctionStatus HostCreateEmptyJson(std::uint32_t argumentCount,
                                           Tovrin::IVariant* const* arguments,
                                           Tovrin::IVariant* result,
                                           Tovrin::IModuleInfo* moduleInfo,
                                           Tovrin::IContext* context);
Tovrin::FunctionStatus HostJsonFromString(std::uint32_t argumentCount,
                                          Tovrin::IVariant* const* arguments,
                                          Tovrin::IVariant* result, Tovrin::IModuleInfo* moduleInfo,
                                          Tovrin::IContext* context);
Tovrin::FunctionStatus HostJsonToString(std::uint32_t argumentCount,
                                        Tovrin::IVariant* const* arguments,
                                        Tovrin::IVariant* result, Tovrin::IModuleInfo* moduleInfo,
                                        Tovrin::IContext* context);

}  // namespace RefHost
