// The platform layer: dynamic loader and directory listing.
#ifndef TOKA_LOADER_PLATFORM_H
#define TOKA_LOADER_PLATFORM_H

#include <string>
#include <vector>

void* TOKALoadDLL(const char* path);
void* TOKAFindSymbol(void* handle, const char* name);
void TOKAUnloadDLL(void* handle);

bool suffix_matches(const char* name, const char* pattern);
// Appends the names of folder's entries that match pattern ("*.orv", "*.*");
// with the pattern "DIR", sub-folders are appended as well.
void TOKAFetchDirectoryContents(const char* folder, const char* pattern,
                                std::vector<std::string>& names);

#endif
