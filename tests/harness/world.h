// Helpers for the scenery, object-load and camera tests: everything the
// library hands to plugin callbacks or to the simulator's object services is
// written into Events(), so a test can assert one sequence.
#ifndef TOKA_TEST_WORLD_H
#define TOKA_TEST_WORLD_H

#include <cstdint>
#include <string>

#include "harness/harness.h"

namespace toka_test {

// An object handle as the fake simulator hands it out.
inline TOKAObjectRef Object(uintptr_t value) { return reinterpret_cast<TOKAObjectRef>(value); }
// "0x..." for an object handle, "null" for none.
std::string ObjectName(TOKAObjectRef object);

// Installs an error callback in plugin `plugin` that records each report as
// "error(<text>)@<dispatched ID>".
void RecordErrorsOf(int plugin);

// Makes the simulator's unload-object service (slot 66) record
// "unload(<object>)".
void RecordUnloads(FakeHost& host);

// Completion routine for TOKALoadObjectAsync: records
// "loaded(<object>,<refcon as text>)@<dispatched ID>".
void RecordLoaded(TOKAObjectRef object, void* refcon);

// Asks for an asynchronous load of path as plugin `plugin`, with
// RecordLoaded and the tag as refcon (the tag must outlive the load).
void RequestLoad(int plugin, const char* path, const char* tag);

// The simulator finishes the load of its recorded slot-70 call.
void CompleteLoad(const HostCall& request, TOKAObjectRef object);

// Makes the simulator report its user's aircraft file at path (slot 18), as
// aircraft loading (event 3) asks for it.
void UserAircraftAt(FakeHost& host, const std::string& path);

}  // namespace toka_test

#endif
