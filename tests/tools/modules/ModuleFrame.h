#pragma once

#include <stdexcept>

#include "host/IModuleInfo.h"
#include "host/IUserDefinedType.h"
#include "host/IVariant.h"
#include "host/ModuleFunction.h"

// A whole module but for its functions. A module of the loader's tests includes this after naming
// its definition text, and the one thing that is wrong with it:
//
//   MODULE_DEFINITION     the definition text (needed)
//   MODULE_SDK_RANGE      what GetSDKDependency gives
//   MODULE_NO_GETTER      leaves GetState out
//   MODULE_STATE          what GetState evaluates
//   MODULE_REGISTER       what RegisterModule evaluates
//   MODULE_REGISTRATION   what RegistrationDoneWithReturn evaluates
//   MODULE_SHUTDOWN       what OnShutdown evaluates
#ifndef MODULE_SDK_RANGE
#define MODULE_SDK_RANGE "[1.18.0-]"
#endif
#ifndef MODULE_STATE
#define MODULE_STATE "stable"
#endif
#ifndef MODULE_REGISTER
#define MODULE_REGISTER 0
#endif
#ifndef MODULE_REGISTRATION
#define MODULE_REGISTRATION 0
#endif
#ifndef MODULE_SHUTDOWN
#define MODULE_SHUTDOWN 0
#endif

#define MODULE_EXPORT extern "C" __attribute__((visibility("default")))

// Opens a function of the definition text.
#define MODULE_FUNCTION(name)                                                                    \
  MODULE_EXPORT Tovrin::FunctionStatus name([[maybe_unused]] std::uint32_t argumentCount,        \
                                            [[maybe_unused]] Tovrin::IVariant* const* arguments, \
                                            [[maybe_unused]] Tovrin::IVariant* result,           \
                                            [[maybe_unused]] Tovrin::IModuleInfo* info,          \
                                            [[maybe_unused]] Tovrin::IContext* context)

template <class Answer>
Answer Throw(const char* words) {
  throw std::runtime_error(words);
}

MODULE_EXPORT const char* GetTovrinSDKVersion() {
  return "1.20.16.0";
}
MODULE_EXPORT const char* GetModuleTovrinVersion() {
  return "1.20.16.0-2";
}
MODULE_EXPORT const char* GetModuleVersion() {
  return "3.2.1";
}
MODULE_EXPORT const char* GetDownwardsCompatibility() {
  return "1.0.0.0";
}
MODULE_EXPORT const char* GetSDKDependency() {
  return MODULE_SDK_RANGE;
}
#ifndef MODULE_NO_GETTER
MODULE_EXPORT const char* GetState() {
  return MODULE_STATE;
}
#endif
MODULE_EXPORT const char* GetSupportedPlatforms() {
  return "linux";
}
MODULE_EXPORT const char* GetTovrinModuleName() {
  return "Sample";
}
MODULE_EXPORT const char* GetModuleDependencies() {
  return "";
}
MODULE_EXPORT const char* GetModuleDependenciesOptional() {
  return "";
}
MODULE_EXPORT const char* GetModuleDependenciesLoadBefore() {
  return "";
}
MODULE_EXPORT const char* GetOptionalFunctionDependencies() {
  return "";
}
MODULE_EXPORT const char* GetOptionalProcedureDependencies() {
  return "";
}
MODULE_EXPORT const char* GetAlternativeFunctionDependencies() {
  return "";
}
MODULE_EXPORT const char* GetAlternativeProcedureDependencies() {
  return "";
}
MODULE_EXPORT const char* GetModuleDefinition() {
  return MODULE_DEFINITION;
}
MODULE_EXPORT int RegisterModule() {
  return MODULE_REGISTER;
}
MODULE_EXPORT int RegistrationDoneWithReturn(Tovrin::IModuleInfo*) {
  return MODULE_REGISTRATION;
}
MODULE_EXPORT int OnShutdown() {
  return MODULE_SHUTDOWN;
}
MODULE_EXPORT void DeregisterModule() {}
