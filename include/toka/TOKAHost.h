/* Toka: the simulator's side of the library.
 *
 * The simulator (the host) loads libtoka.so, hands it a host services table
 * with TOKAInitializePlugins, drives it through the hook functions below from
 * its main thread and stops it with TOKAShutdownPlugins. Plugins never call
 * these. */
#ifndef TOKA_HOST_H
#define TOKA_HOST_H

#include "TOKADefs.h"

TOKA_BEGIN_DECLS

/* The host services table: 71 words that the host owns and keeps alive for
 * the life of the process: two 32-bit numbers, then 69 function pointers
 * (32-bit words in the 32-bit library, 64-bit in the 64-bit one). The library
 * reads a slot each time it needs it and checks none for null: a host must
 * fill every slot. Each slot takes the C types written here on both
 * architectures. */
typedef struct TOKAHostServices {
  int32_t revision;   /* 0: table revision; > 3 enables loading progress texts, > 2 the reload notice */
  uint32_t version;   /* 1: host version; > 283 enables menu destruction and plane re-initialisation */
  void (*GetScreenSize)(int* outWidth, int* outHeight);                               /* 2 */
  void (*GetMouseLocation)(int* outX, int* outY, int fromPlugin);                     /* 3 */
  void (*SetGraphicsState)(int fog, int numberTexUnits, int lighting, int alphaTesting,
                           int alphaBlending, int depthTesting, int depthWriting);    /* 4 */
  void (*BindTexture2d)(int textureNum, int textureUnit);                             /* 5 */
  void (*GenerateTextureNumbers)(int* outTextureIDs, int count);                      /* 6 */
  int (*GetTexture)(int textureID);                                                   /* 7 */
  void (*WorldToLocal)(double latitude, double longitude, double altitude,
                       double* outX, double* outY, double* outZ);                     /* 8 */
  void (*LocalToWorld)(double x, double y, double z,
                       double* outLatitude, double* outLongitude, double* outAltitude); /* 9 */
  void (*DrawTranslucentDarkBox)(int left, int top, int right, int bottom);          /* 10 */
  void (*DrawString)(float* rgb, int x, int y, const char* text, int* wordWrapWidth,
                     int font);                                                       /* 11 */
  void (*DrawNumber)(float* rgb, int x, int y, double value, int digits, int decimals,
                     int showSign, int font);                                         /* 12 */
  void (*GetFontDimensions)(int font, int* outCharWidth, int* outCharHeight,
                            int* outDigitsOnly);                                      /* 13 */
  double (*GetElapsedTime)(void);                                                     /* 14 */
  void (*ReadCameraPosition)(float* x, float* y, float* z, float* pitch, float* heading,
                             float* roll, float* zoom);                               /* 15 */
  void (*DrawAircraft)(int index, float x, float y, float z, float pitch, float roll,
                       float yaw, int fullDraw, void* drawStateInfo);                 /* 16 */
  void (*SetAircraftModel)(int index, const char* path, const char* name);            /* 17 */
  void (*GetNthAircraftModel)(int index, char* outPath, char* outFileName);           /* 18: 256-byte buffers */
  int (*CountAircraft)(void);                                                         /* 19 */
  void (*PlaceUserAtAirport)(const char* airportCode);                                /* 20 */
  void (*SimulateKeyPress)(int keyType, int key);                                     /* 21 */
  void (*SpeakString)(const char* text);                                              /* 22 */
  void (*CommandKeyStroke)(int keyCommand);                                           /* 23 */
  void (*CommandButton)(int* buttons, int up, int stage);                             /* 24: 0-terminated codes */
  void (*GetSystemPath)(char* outPath);                                               /* 25 */
  void (*GetPrefsPath)(char* outPath);                                                /* 26 */
  void (*GetVersions)(int* outFirst, int* outSecond);                                 /* 27 */
  int (*GetLanguage)(void);                                                           /* 28 */
  void (*DebugString)(const char* text);                                              /* 29 */
  int (*CreateMenu)(int parentMenu, int parentItem, const char* name);                /* 30 */
  int (*AppendMenuItem)(int menu, int index, const char* name, int forceEnglish);     /* 31 */
  void (*SetMenuItemName)(int menu, int index, const char* name, int forceEnglish);   /* 32 */
  void (*DestroyMenu)(int menu);                                                      /* 33 */
  void (*ReinitUsersPlane)(int first, int second);                                    /* 34 */
  void (*ReloadScenery)(void);                                                        /* 35 */
  TOKANavRef (*GetFirstNavAid)(void);                                                 /* 36 */
  TOKANavRef (*GetNextNavAid)(TOKANavRef navAid);                                     /* 37 */
  TOKANavRef (*FindFirstNavAidOfType)(int type);                                      /* 38 */
  TOKANavRef (*FindLastNavAidOfType)(int type);                                       /* 39 */
  TOKANavRef (*FindNavAid)(const char* nameFragment, const char* idFragment, float* latitude,
                           float* longitude, int* frequency, int type);               /* 40 */
  int (*GetNavAidInfo)(TOKANavRef navAid, int* outType, float* outLatitude,
                       float* outLongitude, float* outHeight, int* outFrequency,
                       float* outHeading, char* outID, char* outName, char* outReg);  /* 41 */
  int (*CountFMSEntries)(void);                                                       /* 42 */
  int (*GetDisplayedFMSEntry)(void);                                                  /* 43 */
  int (*GetDestinationFMSEntry)(void);                                                /* 44 */
  int (*SetDisplayedFMSEntry)(int index);                                             /* 45 */
  int (*SetDestinationFMSEntry)(int index);                                           /* 46 */
  int (*GetFMSEntryInfo)(int index, int* outType, char* outID, TOKANavRef* outRef,
                         int* outAltitude, float* outLatitude, float* outLongitude);  /* 47 */
  int (*SetFMSEntryInfo)(int index, TOKANavRef navAid, int altitude);                 /* 48 */
  int (*SetFMSEntryLatLon)(int index, float latitude, float longitude, int altitude); /* 49 */
  int (*ClearFMSEntry)(int index);                                                    /* 50 */
  int (*GetGPSDestinationType)(void);                                                 /* 51 */
  int (*GetGPSDestination)(void);                                                     /* 52 */
  void (*ShowUserMessage)(const char* line1, const char* line2, const char* a,
                          const char* b);                                             /* 53 */
  void (*ShowLoadingProgress)(const char* text);                                      /* 54 */
  TOKACommandRef (*CreateCommand)(const char* name, const char* description, int create); /* 55 */
  void (*CommandBegin)(TOKACommandRef command);                                       /* 56 */
  void (*CommandContinue)(TOKACommandRef command);                                    /* 57 */
  void (*CommandEnd)(TOKACommandRef command);                                         /* 58 */
  int (*CreateProbe)(void);                                                           /* 59 */
  int (*ProbeTerrain)(int probe, float* queryXYZ, float* outLocation, float* outNormal,
                      float* outVelocity, int* outIsWet);                             /* 60 */
  void* (*FindSymbol)(const char* name);                                              /* 61 */
  float (*MeasureString)(int font, const char* text, int numChars);                   /* 62 */
  void (*RemoveMenuItem)(int menu, int index);                                        /* 63 */
  TOKAObjectRef (*LoadObject)(const char* path);                                      /* 64 */
  void (*DrawObjectInstance)(TOKAObjectRef object, float x, float y, float z, float heading,
                             float pitch, float roll, int lighting, int earthRelative); /* 65 */
  void (*UnloadObject)(TOKAObjectRef object);                                         /* 66 */
  int (*LookupObjects)(const char* path, float latitude, float longitude,
                       TOKAObjectLibraryEnumerator_f enumerator, void* refcon);       /* 67 */
  int (*LoadDataFile)(int fileType, const char* path);                                /* 68 */
  int (*SaveDataFile)(int fileType, const char* path);                                /* 69 */
  void (*LoadObjectAsync)(const char* path, TOKAObjectLoaded_f completion, void* record); /* 70 */
} TOKAHostServices;

/* Starts the library: stores the table, creates the "Plugins" menu, writes the
 * library's build stamp into "sim/version/toka_build_string" if the host has
 * registered that dataref, loads every plugin below rootFolder (which ends in
 * "/") and enables them. self is the host's own value, kept and never read;
 * it is pointer-sized (intptr_t is int in the 32-bit library). Returns 17,
 * whatever the outcome of loading. */
TOKA_API int TOKAInitializePlugins(const char* rootFolder, TOKAHostServices* services,
                                   intptr_t self);

/* Disables every plugin in ascending ID order, then unloads them all. */
TOKA_API void TOKAShutdownPlugins(void);

/* Simulator events. 0 runs repeating buttons and the phase-0 flight loops,
 * 10 the phase-1 flight loops (both return the processing result); 1 releases
 * a camera taken until the next release; 9 repeats held commands; 3 and 8 with
 * param 0 load and unload the user's aircraft plugins; 12 loads the scenery
 * plugins of the package folder passed in param; 2, 3, 4, 6, 7, 8, 11 and 13
 * reach every enabled plugin as messages 101 to 108 from plugin 0, with param
 * as the message's parameter. Other codes do nothing. Returns 1 unless
 * stated. param carries a pointer for event 12, so it is pointer-sized
 * (intptr_t is int in the 32-bit library). */
TOKA_API int TOKAEventHook(int event, float elapsed, int unused, intptr_t param);

/* Drawing: host phase code 1..26 and the reflection flag. Returns 0 when a
 * plugin asks the host to skip its own drawing of the phase, else 1. */
TOKA_API int TOKADoDrawingHook(int phaseCode, int reflection);

/* Input. Each returns 1 when no plugin consumed the event (the host handles
 * it) and 0 when a plugin did; the cursor hook returns a cursor status. */
TOKA_API int TOKAKeyPressHook(char key, int flags, char virtualKey);
TOKA_API int TOKAMouseClickHook(int x, int y, int pressed);  /* pressed: 1 down, 0 up */
TOKA_API int TOKACursorHook(int x, int y);
TOKA_API int TOKAScrollWheelHook(int x, int y, int wheel, int clicks);

/* Menus: a pick of a host item ID (0 when a plugin handled it), the check
 * state of an item (writes -1, 0 or 1 and returns 0, or returns 1) and
 * whether an item is enabled. */
TOKA_API int TOKAMenuHook(int hostItemID);
TOKA_API int TOKACheckMenuHook(int hostMenuID, int index, int* outChecked);
TOKA_API int TOKAMenuItemEnabled(int hostMenuID, int index);

/* Camera update: lets the controlling plugin move the camera. Returns 0 when
 * a plugin wrote the seven values, else 1. */
TOKA_API int TOKACameraHook(float* x, float* y, float* z, float* pitch, float* heading,
                            float* roll, float* zoom);

/* Command phases, run before and after the host's own handling. Returns 0
 * when a handler consumed the command. */
TOKA_API int TOKACommandHook(TOKACommandRef command, int isBegin, int isEnd, int isBefore);

/* Other aircraft: how many the host should handle, and the model path a
 * plugin asked for aircraft index (written into outPath). */
TOKA_API int TOKAGetNumberPlanesToHandle(int count, int flag);
TOKA_API int TOKAUpdatePlaneNameAndPath(int index, char* outName, char* outPath);

TOKA_END_DECLS

#endif
