#include "harness/world.h"

#include <cstdio>
#include <cstring>

namespace toka_test {

std::string ObjectName(TOKAObjectRef object) {
  if (!object) return "null";
  char text[32];
  std::snprintf(text, sizeof text, "%#lx", (unsigned long)(uintptr_t)object);
  return text;
}

static void RecordError(const char* message) {
  Events().push_back("error(" + std::string(message) + ")@" + std::to_string(TOKAGetMyID()));
}

void RecordErrorsOf(int plugin) {
  RunAs(plugin, [] { TOKASetErrorCallback(RecordError); });
}

void RecordUnloads(FakeHost& host) {
  host.onCall[66] = [](const HostCall& call) -> intptr_t {
    Events().push_back("unload(" + ObjectName(call.arg<TOKAObjectRef>(0)) + ")");
    return 0;
  };
}

void RecordLoaded(TOKAObjectRef object, void* refcon) {
  Events().push_back("loaded(" + ObjectName(object) + "," + static_cast<const char*>(refcon) +
                     ")@" + std::to_string(TOKAGetMyID()));
}

void RequestLoad(int plugin, const char* path, const char* tag) {
  RunAs(plugin, [=] { TOKALoadObjectAsync(path, RecordLoaded, const_cast<char*>(tag)); });
}

void CompleteLoad(const HostCall& request, TOKAObjectRef object) {
  request.arg<TOKAObjectLoaded_f>(1)(object, request.arg<void*>(2));
}

void UserAircraftAt(FakeHost& host, const std::string& path) {
  host.onCall[18] = [path](const HostCall& call) -> intptr_t {
    std::strcpy(call.arg<char*>(1), path.c_str());
    std::strcpy(call.arg<char*>(2), path.substr(path.rfind('/') + 1).c_str());
    return 0;
  };
}

}  // namespace toka_test
