/* Toka: basic types shared by every family of the plugin interface. */
#ifndef TOKA_DEFS_H
#define TOKA_DEFS_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#define TOKA_EXTERN_C extern "C"
#define TOKA_BEGIN_DECLS extern "C" {
#define TOKA_END_DECLS }
#else
#define TOKA_EXTERN_C
#define TOKA_BEGIN_DECLS
#define TOKA_END_DECLS
#endif

/* Marks a function of the exported interface. */
#define TOKA_API TOKA_EXTERN_C __attribute__((visibility("default")))

/* Plugins mark their five entry points with this. */
#define TOKA_PLUGIN_EXPORT TOKA_EXTERN_C __attribute__((visibility("default")))

/* A plugin ID is the index of the plugin's record: 0 is the simulator itself,
 * -1 is no plugin (and "every plugin" as a message target). */
typedef int TOKAPluginID;
#define TOKA_NO_PLUGIN_ID (-1)
#define TOKA_PLUGIN_ORVANE 0

/* Opaque handles. A handle stays valid until the call that destroys it, or
 * until the plugin that created it is unloaded (each family says which). */
typedef void* TOKADataRef;
typedef void* TOKAFlightLoopID;
typedef void* TOKAWindowID;
typedef void* TOKAHotKeyID;
typedef void* TOKAMenuID;
typedef void* TOKACommandRef;
typedef void* TOKAObjectRef;
typedef void* TOKAProbeRef;
typedef int TOKANavRef;

/* Completion routine of an asynchronous object load (scenery family). */
typedef void (*TOKAObjectLoaded_f)(TOKAObjectRef object, void* refcon);
/* Called once per object path found by an object lookup (scenery family). */
typedef void (*TOKAObjectLibraryEnumerator_f)(const char* filePath, void* refcon);

/* The five entry points of a ".orv" plugin. Only the start entry is required.
 *   int  OrvanePluginStart(char* outName, char* outSignature, char* outDescription);
 *        each buffer holds 256 bytes; return 0 to refuse to load.
 *   void OrvanePluginStop(void);
 *   int  OrvanePluginEnable(void);   return 0 to stay disabled.
 *   void OrvanePluginDisable(void);
 *   void OrvanePluginReceiveMessage(TOKAPluginID from, int message, void* param);
 */
typedef int (*TOKAPluginStart_f)(char* outName, char* outSignature, char* outDescription);
typedef void (*TOKAPluginStop_f)(void);
typedef int (*TOKAPluginEnable_f)(void);
typedef void (*TOKAPluginDisable_f)(void);
typedef void (*TOKAPluginReceiveMessage_f)(TOKAPluginID from, int message, void* param);

#endif
