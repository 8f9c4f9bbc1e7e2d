// The host services table handed to the library: what the host tells the
// library about itself, the groups of services that fill the table, and the
// count and trace of every call a plugin makes the library pass on.
#ifndef TOKA_HOST_SERVICES_H
#define TOKA_HOST_SERVICES_H

#include <cstdio>
#include <string>

#include "toka/TOKAHost.h"

namespace toka_host {

// What the host tells the library about itself.
constexpr int kTableRevision = 4;    // > 3: the library shows which plugin it loads
constexpr int kHostVersion = 1100;   // also the first number of GetVersions
constexpr int kHostID = 1;           // the second number of GetVersions: the reference host
constexpr int kLanguageEnglish = 0;

// The table handed to the library; the same object for the life of the process.
TOKAHostServices* HostServices();

// Each group fills its slots of the table.
void AddScreenServices(TOKAHostServices& table);
void AddWorldServices(TOKAHostServices& table);
void AddAircraftServices(TOKAHostServices& table);
void AddSystemServices(TOKAHostServices& table);
void AddMenuServices(TOKAHostServices& table);
void AddNavigationServices(TOKAHostServices& table);
void AddFmsServices(TOKAHostServices& table);
void AddCommandServices(TOKAHostServices& table);
void AddObjectServices(TOKAHostServices& table);

// Trace of every service call, one line each, to file (null stops tracing).
void TraceServicesTo(FILE* file);
// Every service call is counted by slot, traced or not.
int ServiceSlot(const std::string& name);  // the slot of a service named as in the trace, or -1
const char* ServiceName(int slot);
long ServiceCallCount(int slot);  // calls since the last reset
void ResetServiceCallCounts();

}  // namespace toka_host

#endif
