// Finding, loading, unloading and reloading plugins.
#ifndef TOKA_LOADER_LOADING_H
#define TOKA_LOADER_LOADING_H

#include <string>

void TOKAFindAndLoadPlugins(const char* rootFolder);
void TOKAFindAndLoadSceneryPlugins(const char* packageFolder);
void TOKAFindAndLoadAcfPlugins(const char* aircraftFolder);
int LoadOnePlugin(const std::string& path, bool verbose);
void UnloadOnePlugin(int id);
void TOKAUnloadPlugins();
void TOKAUnloadAcfPlugin();

// Set by TOKAReloadPlugins; the flight loop pass runs the reload at its end.
extern int gReloadScheduled;
void TOKAReloadPluginsInternal();

#endif
