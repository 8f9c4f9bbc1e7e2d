// Dynamic loading and directory scanning on Linux.
#include "loader/platform.h"

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "toka/TOKAUtilities.h"

static void LogDlError() {
  TOKADebugString("dlerror:");
  if (const char* text = dlerror()) TOKADebugString(text);
  TOKADebugString("\n");
}

void* TOKALoadDLL(const char* path) {
  // A file that cannot even be read is reported by the caller as missing,
  // without a loader diagnostic. Asked without opening it: start-up does
  // this for every plugin, and the loader opens the file anyway.
  if (faccessat(AT_FDCWD, path, R_OK, AT_EACCESS) != 0) return nullptr;
  void* handle = dlopen(path, RTLD_NOW | RTLD_GLOBAL);
  if (!handle) LogDlError();
  return handle;
}

void* TOKAFindSymbol(void* handle, const char* name) {
  if (!handle) return nullptr;
  dlerror();
  void* symbol = dlsym(handle, name);
  // Plugin authors rely on this line to see which optional entry points
  // their plugin lacks.
  if (!symbol) LogDlError();
  return symbol;
}

void TOKAUnloadDLL(void* handle) {
  dlclose(handle);
}

bool suffix_matches(const char* name, const char* pattern) {
  if (std::strcmp(pattern, "*.*") == 0) return true;
  if (*pattern == '*') ++pattern;
  size_t nameLength = std::strlen(name);
  size_t suffixLength = std::strlen(pattern);
  if (nameLength < suffixLength) return false;
  const char* tail = name + nameLength - suffixLength;
  for (size_t i = 0; i < suffixLength; ++i)
    if (std::toupper((unsigned char)tail[i]) != std::toupper((unsigned char)pattern[i]))
      return false;
  return true;
}

void TOKAFetchDirectoryContents(const char* folder, const char* pattern,
                                std::vector<std::string>& names) {
  DIR* dir = opendir(folder);
  if (!dir) return;
  const bool wantFolders = std::strcmp(pattern, "DIR") == 0;
  // The entry's type, where the file system gives it, spares a stat per
  // file of a plugin folder. In a folder that cannot be searched every stat
  // fails and says so, and links and unknown types need one: those are
  // still looked up.
  const bool typesSuffice = wantFolders && faccessat(AT_FDCWD, folder, X_OK, AT_EACCESS) == 0;
  while (struct dirent* entry = readdir(dir)) {
    const char* name = entry->d_name;
    if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0) continue;
    // With "DIR" the suffix test runs too, so a folder whose name ends in
    // "dir" is listed twice; loaders of such folders have always seen that.
    if (suffix_matches(name, pattern)) names.push_back(name);
    if (typesSuffice && (entry->d_type == DT_DIR || entry->d_type == DT_REG)) {
      if (entry->d_type == DT_DIR) names.push_back(name);
    } else if (wantFolders) {
      std::string path = std::string(folder) + "/" + name;
      struct stat info;
      if (stat(path.c_str(), &info) != 0)
        std::printf("name %s, errno %d\n", name, errno);
      else if (S_ISDIR(info.st_mode))
        names.push_back(name);
    }
  }
  closedir(dir);
}
