// The functions of the rule language that take or give a list.
//
// No list object exists, so each reads its arguments and ends as a call without an answer: the
// first argument that is not what it should be gives the status, and the result is the neutral
// value.

#include "module/Exports.h"
#include "module/types/ArgumentCursor.h"

using namespace Tovrin;

qxTypeFactory(tovrin_module_CreateTessarinList) {
  static_cast<void>(typeId);
  return nullptr;
}

// Tessarin.List ToTessarinList (VECTOR<STRING>)
qxModuleFunction(tovrin_module_StringListToRegExList) {
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  cursor.ReadVector();
  return cursor.Fail();
}

qxModuleFunction(tovrin_module_MatchesInList) {  // BOOLEAN Tessarin.Matches (Tessarin.List,STRING)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  cursor.ReadTessarinList();
  cursor.ReadText();
  return cursor.Fail(result, false);
}

qxModuleFunction(tovrin_module_Size) {  // NUMBER Size (Tessarin.List)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  cursor.ReadTessarinList();
  return cursor.Fail(result, 0);
}

qxModuleFunction(tovrin_module_Get) {  // Tessarin Get (Tessarin.List,NUMBER)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  cursor.ReadTessarinList();
  cursor.ReadUnsigned();
  return cursor.Fail();
}

qxModuleFunction(tovrin_module_GetElems) {  // Tessarin.List GetRange (Tessarin.List,NUMBER,NUMBER)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  cursor.ReadTessarinList();
  cursor.ReadSigned();
  cursor.ReadSigned();
  return cursor.Fail();
}

qxModuleFunction(tovrin_module_Find) {  // NUMBER Find (Tessarin.List,Tessarin)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  cursor.ReadTessarinList();
  cursor.ReadTessarin();
  return cursor.Fail(result, 0);
}

qxModuleFunction(tovrin_module_Contains) {  // BOOLEAN Contains (Tessarin.List,Tessarin)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  cursor.ReadTessarinList();
  cursor.ReadTessarin();
  return cursor.Fail(result, false);
}

qxModuleFunction(tovrin_module_AddToRegExList) {  // PROCEDURE Tessarin.Add (Tessarin.List,STRING)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  cursor.ReadTessarinList();
  cursor.ReadZeroTerminatedText();
  return cursor.Fail();
}

// PROCEDURE Tessarin.Add (Tessarin.List,Tessarin)
qxModuleFunction(tovrin_module_AddToRegExListRE) {
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  cursor.ReadTessarinList();
  cursor.ReadTessarin();
  return cursor.Fail();
}

qxModuleFunction(tovrin_module_Remove) {  // Tessarin.List Remove (Tessarin.List,NUMBER)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  cursor.ReadTessarinList();
  cursor.ReadUnsigned();
  return cursor.Fail();
}

qxModuleFunction(tovrin_module_RemoveElems) {  // Tessarin.List Remove (Tessarin.List,NUMBER,NUMBER)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  cursor.ReadTessarinList();
  cursor.ReadSigned();
  cursor.ReadSigned();
  return cursor.Fail();
}

qxModuleFunction(tovrin_module_Reverse) {  // Tessarin.List Reverse (Tessarin.List)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  cursor.ReadTessarinList();
  return cursor.Fail();
}

// Tessarin.List Tessarin.Append (Tessarin.List,STRING)
qxModuleFunction(tovrin_module_AppendToRegExList) {
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  cursor.ReadTessarinList();
  cursor.ReadText();
  return cursor.Fail();
}

// Tessarin.List Tessarin.Append (Tessarin.List,Tessarin)
qxModuleFunction(tovrin_module_AppendRegExToRegExList) {
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  cursor.ReadTessarinList();
  cursor.ReadTessarin();
  return cursor.Fail();
}

qxModuleFunction(tovrin_module_Join) {  // Tessarin.List Join (Tessarin.List,Tessarin.List)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  cursor.ReadTessarinList();
  cursor.ReadTessarinList();
  return cursor.Fail();
}

// Tessarin.List Remove (Tessarin.List,Tessarin.List)
qxModuleFunction(tovrin_module_RemoveListFromList) {
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  cursor.ReadTessarinList();
  cursor.ReadTessarinList();
  return cursor.Fail();
}

qxModuleFunction(tovrin_module_Insert) {  // Tessarin.List Insert (Tessarin.List,Tessarin,NUMBER)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  cursor.ReadTessarinList();
  cursor.ReadTessarin();
  cursor.ReadSigned();
  return cursor.Fail();
}

qxModuleFunction(tovrin_module_Set) {  // Tessarin.List Set (Tessarin.List,NUMBER,Tessarin)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  cursor.ReadTessarinList();
  cursor.ReadSigned();
  cursor.ReadTessarin();
  return cursor.Fail();
}

qxModuleFunction(tovrin_module_SetSorted) {  // Tessarin.List SetSorted (Tessarin.List,BOOLEAN)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  cursor.ReadTessarinList();
  cursor.ReadBoolean();
  return cursor.Fail();
}

// STRING TessarinList.ToString (Tessarin.List,STRING)
qxModuleFunction(tovrin_module_RegExListToString) {
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  cursor.ReadTessarinList();
  cursor.ReadText();
  return cursor.Fail(result, nullptr);
}

// STRING TessarinListPtr.ToString (Tessarin.List,STRING)
qxModuleFunction(tovrin_module_RegExListToString_Deprecated) {
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  cursor.ReadTessarinList();
  cursor.ReadText();
  return cursor.Fail(result, nullptr);
}
