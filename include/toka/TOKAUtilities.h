/* Toka: files, paths, key names, versions and messages to the simulator.
 *
 * Paths: unless the calling plugin has turned on "TOKA_USE_NATIVE_PATHS",
 * paths passed in are taken in the simulator's legacy encoding and paths
 * handed back are given in it. */
#ifndef TOKA_UTILITIES_H
#define TOKA_UTILITIES_H

#include "TOKADefs.h"

TOKA_BEGIN_DECLS

/* Lists the entries of a folder (files and sub-folders, without "." and "..")
 * in the order the file system gives them, starting with entry firstReturn.
 * Each name is copied with its terminator into outFileNames, one after the
 * other, and when outIndices is not null a pointer to each copy goes into
 * the next entry of outIndices. Copying stops at the first name that no
 * longer fits into fileNameBufSize bytes or indexCount entries. When every
 * name was copied and there is still room, an extra terminator follows the
 * names and a null entry follows the pointers.
 * outTotalFiles (if not null) receives the number of entries in the folder,
 * outReturnedFiles (if not null) the number of names copied.
 * Returns 1 when every name from firstReturn on was copied with room for the
 * extra terminator and null entry to spare, else 0 (so a listing that fills
 * the buffer or the index array exactly returns 0). With a null buffer
 * nothing is copied: use that to learn the number of entries. A null
 * directoryPath lists as an unreadable folder: no entries. */
TOKA_API int TOKAGetDirectoryContents(const char* directoryPath, int firstReturn,
                                      char* outFileNames, int fileNameBufSize,
                                      char** outIndices, int indexCount,
                                      int* outTotalFiles, int* outReturnedFiles);

/* The directory separator of the paths this plugin receives: "/". The
 * string is static. */
TOKA_API const char* TOKAGetDirectorySeparator(void);

/* Splits a path in place. A trailing separator is removed first. The last
 * separator is then overwritten with a terminator, so that fullPath holds
 * the folder, and a pointer to the file name after it is returned. A path
 * without a separator is left whole and returned as the file name. A null
 * path returns null. */
TOKA_API char* TOKAExtractFileAndPath(char* fullPath);

/* Writes the simulator's root folder (ending in the separator) into
 * outSystemPath, which must hold 512 bytes (null: nothing is written). */
TOKA_API void TOKAGetSystemPath(char* outSystemPath);

/* Writes the path of the simulator's preferences file into outPrefsPath,
 * which must hold 512 bytes (null: nothing is written). */
TOKA_API void TOKAGetPrefsPath(char* outPrefsPath);

/* Saves or loads one of the simulator's data files; fileType is 1 or 2, what
 * each means is the simulator's. Returns the simulator's result, or 0 with
 * the report "Null file path passed to TOKASaveDataFile." (save only),
 * "Illegal file type passed to TOKASaveDataFile." or
 * "Illegal file type passed to TOKALoadDataFile.". */
TOKA_API int TOKASaveDataFile(int fileType, const char* filePath);
TOKA_API int TOKALoadDataFile(int fileType, const char* filePath);

/* The name of a virtual key code ("Page Up", "A", "Numpad-7", "F12", ...),
 * or "Unknown". The string is static. */
TOKA_API const char* TOKAGetVirtualKeyDescription(char virtualKey);

/* The simulator's version into outHostVersion, this library's version (210)
 * into outTokaVersion, and the simulator's second version number into
 * outHostSecond. Each pointer may be null. */
TOKA_API void TOKAGetVersions(int* outHostVersion, int* outTokaVersion, int* outHostSecond);

/* The simulator's language code. */
TOKA_API int TOKAGetLanguage(void);

/* Writes text to the simulator's log as it stands (add your own newline). */
TOKA_API void TOKADebugString(const char* text);

/* printf into the simulator's log; output beyond 8191 characters is cut.
 * Nothing is written before the simulator has started the library. Not
 * reentrant. Returns 0. */
TOKA_API int TOKA_dprintf(const char* format, ...) __attribute__((format(printf, 1, 2)));

/* Speaks the text, or shows it, as the simulator's settings say. */
TOKA_API void TOKASpeakString(const char* text);

/* Makes the simulator act as if a key had been pressed; the key type and
 * key codes are the simulator's. */
TOKA_API void TOKASimulateKeyPress(int keyType, int key);

/* Makes the simulator reload its scenery. */
TOKA_API void TOKAReloadScenery(void);

/* 1 once the simulator has started the library, else 0. */
TOKA_API int TOKAInitialized(void);

/* Looks up one of the simulator's own functions by name; null if the
 * simulator has no such function. */
TOKA_API void* TOKAFindSymbol(const char* symbolName);

TOKA_END_DECLS

#endif
