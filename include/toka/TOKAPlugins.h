/* Toka: plugins, messages, features and errors.
 *
 * Every call is attributed to the calling plugin: the plugin whose code is
 * running (its entry point, or a callback the library made into it). */
#ifndef TOKA_PLUGINS_H
#define TOKA_PLUGINS_H

#include "TOKADefs.h"

TOKA_BEGIN_DECLS

/* The ID of the calling plugin; 0 while the simulator itself is calling. */
TOKA_API TOKAPluginID TOKAGetMyID(void);

/* The number of plugin records, the simulator's own (ID 0) included. */
TOKA_API int TOKACountPlugins(void);

/* The ID of the plugin at index: IDs are indices, so this returns index
 * unchanged and checks nothing. */
TOKA_API TOKAPluginID TOKAGetNthPlugin(int index);

/* The first plugin whose file path equals path byte for byte, or -1 (also
 * for a null path). The simulator's record answers to
 * "dravik.orvane.orvane". */
TOKA_API TOKAPluginID TOKAFindPluginByPath(const char* path);

/* The first plugin whose signature equals signature (case matters), or -1
 * (also for a null signature). */
TOKA_API TOKAPluginID TOKAFindPluginBySignature(const char* signature);

/* Copies the plugin's name, file path, signature and description into each
 * non-null buffer, truncated to 255 bytes and a terminator (buffers of 256).
 * For an ID that names no plugin it writes nothing, without an error. */
TOKA_API void TOKAGetPluginInfo(TOKAPluginID plugin, char* outName, char* outFilePath,
                                char* outSignature, char* outDescription);

/* 1 if the plugin is enabled, 0 if it is disabled or the ID is invalid. */
TOKA_API int TOKAIsPluginEnabled(TOKAPluginID plugin);

/* Enables a loaded plugin (calling its enable entry if it is disabled) and
 * hands it the deliveries held while it was disabled. Returns 1 if the plugin
 * is enabled afterwards. IDs of 0 or less, or past the last plugin, return 0. */
TOKA_API int TOKAEnablePlugin(TOKAPluginID plugin);

/* Disables an enabled plugin: its windows lose focus and drag, it loses the
 * camera and the other aircraft, then its disable entry runs. Its
 * registrations stay but receive nothing until it is enabled again. */
TOKA_API void TOKADisablePlugin(TOKAPluginID plugin);

/* Asks for every plugin to be unloaded and loaded again. The reload runs at
 * the end of the next flight loop pass, never inside the caller. */
TOKA_API void TOKAReloadPlugins(void);

/* Calls the message entry of plugin `to` (every plugin for -1, the caller
 * included, in ascending ID order) with the caller's ID, message and param.
 * Disabled plugins and the simulator (ID 0) are passed over; nothing is
 * queued for later. */
TOKA_API void TOKASendMessageToPlugin(TOKAPluginID to, int message, void* param);

/* Features: "TOKA_WANTS_REFLECTIONS" (draw callbacks also run in reflection
 * passes) and "TOKA_USE_NATIVE_PATHS" (paths are passed without conversion).
 * Names are compared exactly; a null name is an unknown one. */

/* 1 if the library knows the feature, else 0. */
TOKA_API int TOKAHasFeature(const char* feature);

/* The value the calling plugin stored for the feature (0 = off).
 * Reports "Illegal feature name passed to TOKAEnableFeature" for an unknown
 * name and returns 0. */
TOKA_API int TOKAIsFeatureEnabled(const char* feature);

/* Stores enable (unchanged) as the calling plugin's value for the feature.
 * Reports "Illegal feature name passed to TOKAEnableFeature" for an unknown
 * name. */
TOKA_API void TOKAEnableFeature(const char* feature, int enable);

/* Calls callback once per feature name, in a fixed order (a null callback:
 * nothing). */
typedef void (*TOKAFeatureEnumerator_f)(const char* feature, void* refcon);
TOKA_API void TOKAEnumerateFeatures(TOKAFeatureEnumerator_f callback, void* refcon);

/* Installs the calling plugin's error callback (null removes it). Mistakes
 * the plugin makes in later calls are reported to it as fixed English
 * sentences; a plugin without one gets no reports. */
typedef void (*TOKAError_f)(const char* message);
TOKA_API void TOKASetErrorCallback(TOKAError_f callback);

/* Writes "[plugin name]: text" and a newline to the simulator's log. */
TOKA_API void TOKALogPluginWarning(const char* text);

TOKA_END_DECLS

#endif
