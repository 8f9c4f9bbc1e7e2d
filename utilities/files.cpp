// Directory listings, path splitting, the host's folders and data files.
#include <cstring>
#include <string>
#include <vector>

#include "loader/enabling.h"
#include "loader/host_interface.h"
#include "loader/survey.h"
#include "loader/platform.h"
#include "loader/plugin_records.h"
#include "toka/TOKAUtilities.h"
#include "utilities/paths.h"

// The host's paths are copied back into plugin buffers of this size.

// The listing fills the caller's name buffer and index array in step; a
// listing that needs more than either holds stops at the first name that
// does not fit.
struct ListingCursor {
  char* cursor;
  int remaining;
  char** indices;
  int indexCount;
  int returned;
};

// Copies one name; false when it does not fit into the buffer or the array.
static bool AppendName(ListingCursor& out, const std::string& name) {
  int need = (int)name.size() + 1;
  if (need > out.remaining) return false;
  if (out.indices && out.returned >= out.indexCount) return false;
  if (out.indices) out.indices[out.returned] = out.cursor;
  ++out.returned;
  std::memcpy(out.cursor, name.c_str(), need);
  out.cursor += need;
  out.remaining -= need;
  return true;
}

// After a complete listing: plugins walk the names up to an empty one, or
// the pointers up to a null one, so both need a spare place. Without it the
// listing counts as incomplete even though every name was copied.
static int TerminateListing(ListingCursor& out, char* buffer) {
  if (out.remaining == 0) return 0;
  if (out.indices && out.returned == out.indexCount) return 0;
  if (buffer) *out.cursor = 0;
  if (out.indices) out.indices[out.returned] = nullptr;
  return 1;
}

TOKA_API int TOKAGetDirectoryContents(const char* directoryPath, int firstReturn,
                                      char* outFileNames, int fileNameBufSize,
                                      char** outIndices, int indexCount,
                                      int* outTotalFiles, int* outReturnedFiles) {
  TOKA_NOTE_CALL();
  const bool convert = TOKANeedPathConvert();
  // No path lists as a folder that cannot be read: nothing in it.
  std::string folder = directoryPath ? directoryPath : "";
  if (convert) TOKAOldToUTF8(folder);
  std::vector<std::string> names;
  TOKAFetchDirectoryContents(folder.c_str(), "*.*", names);
  if (convert)
    for (std::string& name : names) TOKAUTF8ToOld(name);

  ListingCursor out{outFileNames, outFileNames ? fileNameBufSize : 0, outIndices, indexCount, 0};
  if (outTotalFiles) *outTotalFiles = (int)names.size();

  // A negative first index lies before every name; it lists nothing, as an
  // index past the end does.
  bool complete = true;
  if (firstReturn >= 0) {
    for (size_t i = (size_t)firstReturn; i < names.size(); ++i) {
      if (!AppendName(out, names[i])) {
        complete = false;
        break;
      }
    }
  }
  int result = complete ? TerminateListing(out, outFileNames) : 0;
  if (outReturnedFiles) *outReturnedFiles = out.returned;
  return result;
}

TOKA_API const char* TOKAGetDirectorySeparator(void) {
  TOKA_NOTE_CALL();
  return TOKANeedPathConvert() ? gDirSeparator : "/";
}

TOKA_API char* TOKAExtractFileAndPath(char* fullPath) {
  TOKA_NOTE_CALL();
  if (!fullPath) return nullptr;
  const char separator = TOKAGetDirectorySeparator()[0];
  int i = (int)std::strlen(fullPath) - 1;
  if (i >= 0 && fullPath[i] == separator) fullPath[i--] = 0;
  // An empty path, or a lone separator now emptied, has nothing to split.
  if (i < 0) return fullPath;
  while (i > 0 && fullPath[i] != separator) --i;
  if (fullPath[i] != separator) return fullPath + i;
  fullPath[i] = 0;
  return fullPath + i + 1;
}

void TOKAConvertHostPath(char* path) {
  if (!TOKANeedPathConvert()) return;
  std::string converted = path;
  TOKAUTF8ToOld(converted);
  strcpytrunc(path, converted, kPathBufferSize);
}

TOKA_API void TOKAGetSystemPath(char* outSystemPath) {
  TOKA_NOTE_CALL();
  // Without a buffer the simulator still answers, into one of ours.
  char scratch[kPathBufferSize];
  outSystemPath = PathBufferOrScratch(outSystemPath, scratch);
  gHostServices->GetSystemPath(outSystemPath);
  TOKAConvertHostPath(outSystemPath);
}

TOKA_API void TOKAGetPrefsPath(char* outPrefsPath) {
  TOKA_NOTE_CALL();
  char scratch[kPathBufferSize];
  outPrefsPath = PathBufferOrScratch(outPrefsPath, scratch);
  gHostServices->GetPrefsPath(outPrefsPath);
  TOKAConvertHostPath(outPrefsPath);
}

static bool IsDataFileType(int fileType) {
  return fileType >= 1 && fileType < 3;
}

TOKA_API int TOKASaveDataFile(int fileType, const char* filePath) {
  TOKA_NOTE_CALL();
  if (!filePath) {
    TOKASendError("Null file path passed to TOKASaveDataFile.");
    return 0;
  }
  if (!IsDataFileType(fileType)) {
    TOKASendError("Illegal file type passed to TOKASaveDataFile.");
    return 0;
  }
  return gHostServices->SaveDataFile(fileType, filePath);
}

// Unlike saving, loading has never checked the path: a null path reaches the
// host as it stands, and what the host makes of it is the host's affair.
TOKA_API int TOKALoadDataFile(int fileType, const char* filePath) {
  TOKA_NOTE_CALL();
  if (!IsDataFileType(fileType)) {
    TOKASendError("Illegal file type passed to TOKALoadDataFile.");
    return 0;
  }
  return gHostServices->LoadDataFile(fileType, filePath);
}
