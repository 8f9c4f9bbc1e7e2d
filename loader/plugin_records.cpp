// Plugin records, plugin IDs and the dispatch context.
#include "loader/plugin_records.h"

#include <cstring>

#include "loader/enabling.h"
#include "loader/survey.h"
#include "loader/platform.h"
#include "toka/TOKAPlugins.h"

PluginList gAllPlugins;
std::vector<int> gCurrentAircraftPluginIDS;

__thread int gDispatchedPlugin = 0;

PluginRecord::PluginRecord(const PluginRecord& other)
    : module(other.module),
      name(other.name),
      path(other.path),
      signature(other.signature),
      description(other.description),
      stop(other.stop),
      enable(other.enable),
      disable(other.disable),
      message(other.message),
      errorCallback(other.errorCallback),
      enabled(other.enabled),
      pending(other.pending),
      held(other.held) {
  features[0] = other.features[0];
  features[1] = other.features[1];
}

PluginRecord& PluginRecord::operator=(const PluginRecord& other) {
  if (this == &other) return *this;
  module = other.module;
  name = other.name;
  path = other.path;
  signature = other.signature;
  description = other.description;
  stop = other.stop;
  enable = other.enable;
  disable = other.disable;
  message = other.message;
  errorCallback = other.errorCallback;
  enabled = other.enabled;
  features[0] = other.features[0];
  features[1] = other.features[1];
  pending = other.pending;
  held = other.held;
  return *this;
}


TOKA_API TOKAPluginID TOKAGetMyID(void) {
  TOKA_NOTE_CALL();
  return TOKAGetDispatchedPlugin();
}

TOKA_API int TOKACountPlugins(void) {
  TOKA_NOTE_CALL();
  return (int)gAllPlugins.size();
}

TOKA_API TOKAPluginID TOKAGetNthPlugin(int index) {
  TOKA_NOTE_CALL();
  return index;
}

TOKA_API int TOKAIsPluginEnabled(TOKAPluginID plugin) {
  TOKA_NOTE_CALL();
  return TOKAIsValidPluginID(plugin) && gAllPlugins[plugin].enabled ? 1 : 0;
}

TOKA_API void TOKAGetPluginInfo(TOKAPluginID plugin, char* outName, char* outFilePath,
                                char* outSignature, char* outDescription) {
  TOKA_NOTE_CALL();
  // A bad ID gets no error, as it never has, but nothing is read for it
  // either: the buffers are left as they are.
  if (plugin < 0 || (size_t)plugin >= gAllPlugins.size()) return;
  const PluginRecord& record = gAllPlugins[plugin];
  if (outName) strcpytrunc(outName, record.name, 256);
  if (outFilePath) {
    std::string path = record.path;
    if (TOKANeedPathConvert()) TOKAUTF8ToOld(path);
    strcpytrunc(outFilePath, path, 256);
  }
  if (outSignature) strcpytrunc(outSignature, record.signature, 256);
  if (outDescription) strcpytrunc(outDescription, record.description, 256);
}

TOKA_API TOKAPluginID TOKAFindPluginByPath(const char* path) {
  TOKA_NOTE_CALL();
  if (!path) return -1;
  std::string wanted(path);
  if (TOKANeedPathConvert()) TOKAOldToUTF8(wanted);
  for (size_t id = 0; id < gAllPlugins.size(); ++id)
    if (gAllPlugins[id].path == wanted) return (int)id;
  return -1;
}

TOKA_API TOKAPluginID TOKAFindPluginBySignature(const char* signature) {
  TOKA_NOTE_CALL();
  if (!signature) return -1;
  for (size_t id = 0; id < gAllPlugins.size(); ++id)
    if (gAllPlugins[id].signature == signature) return (int)id;
  return -1;
}

const char* DebugCurrentPluginName() {
  int id = TOKAGetDispatchedPlugin();
  if (id == -1) return "[NO_PLUGIN_ID]";
  if (id == 0) return "[TOKA_PLUGIN_ORVANE]";
  if (id < 0) return "[Bad plugin ID low]";
  if (id >= (int)gAllPlugins.size()) return "[Bad plugin ID high]";
  return gAllPlugins[id].name.c_str();
}

void strcpytrunc(char* dst, const std::string& src, int size) {
  if ((int)src.size() > size - 1) {
    std::memcpy(dst, src.data(), size - 1);
    dst[size - 1] = 0;
  } else {
    std::memcpy(dst, src.c_str(), src.size() + 1);
  }
}

const char* StripPath(const char* path) {
  const char* name = path;
  for (const char* p = path; *p; ++p)
    if (*p == '\\' || *p == ':' || *p == '/') name = p + 1;
  return name;
}

// Paths are UTF-8 on this platform, so there is nothing to convert.
void TOKAOldToUTF8(std::string&) {}
void TOKAUTF8ToOld(std::string&) {}
