// The dataref registry's records, shared by the registry and shared data.
#ifndef TOKA_DATA_DATAREFS_H
#define TOKA_DATA_DATAREFS_H

#include <string>
#include <string_view>
#include <unordered_map>

#include "toka/TOKAData.h"

// One record per distinct name, never moved: its address is the handle
// plugins hold, so it must stay put for the life of the process. Its name is
// set once, at creation, and never changes.
struct TOKAData_t {
  std::string name;
  int types;
  int writable;
  int owner;  // -1 while nobody serves the dataref
  TOKAGetDatai_f readInt;
  TOKASetDatai_f writeInt;
  TOKAGetDataf_f readFloat;
  TOKASetDataf_f writeFloat;
  TOKAGetDatad_f readDouble;
  TOKASetDatad_f writeDouble;
  TOKAGetDatavi_f readIntArray;
  TOKASetDatavi_f writeIntArray;
  TOKAGetDatavf_f readFloatArray;
  TOKASetDatavf_f writeFloatArray;
  TOKAGetDatab_f readData;
  TOKASetDatab_f writeData;
  void* readRefcon;
  void* writeRefcon;
};

// Every name ever registered, to its record; entries are never erased. The
// keys are the records' own names, so a lookup builds no string.
typedef std::unordered_map<std::string_view, TOKAData_t*> TOKADataRefMap;
extern TOKADataRefMap gDataRefs;

// The record behind handle, or null if the library never gave it out.
TOKAData_t* DataIsValid(void* handle);

// The dataref's name for diagnostics, or "(null dataref)"/"(invalid dataref)".
const char* DebugDataRefName(void* handle);

// Ends the unloaded plugin's shared-data subscriptions (data/shared_data.cpp).
void TOKASharedDataCleanupHook(int plugin);

#endif
