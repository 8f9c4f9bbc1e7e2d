// The simulator's system side: paths below its folder, the functions it
// offers by name, the input the plugins asked it to simulate, and situation
// files.
#ifndef TOKA_HOST_SYSTEM_H
#define TOKA_HOST_SYSTEM_H

#include <string>
#include <vector>

namespace toka_host {

void ResetSystem();
std::string PrefsFolder();  // root + "Output/preferences/", created on demand
std::string ResolveUnderRoot(const std::string& path);
void* FindHostSymbol(const std::string& name);
// Whether path is a folder, or a regular file (links followed).
bool IsFolder(const std::string& path);
bool IsFile(const std::string& path);
// The names in a folder, without "." and "..", sorted so that runs on
// different file systems see them in the same order; none when it cannot
// be read.
std::vector<std::string> ListFolder(const std::string& folder);

struct RecordedInput {
  int slot;
  std::vector<int> values;
  std::string text;
};
extern std::vector<RecordedInput> gRecordedInputs;  // keys, speech, buttons

// Situation files: 1 the whole world, 2 the user's aircraft only.
bool SaveSituation(int type, const std::string& path);
bool LoadSituation(int type, const std::string& path);

}  // namespace toka_host

#endif
