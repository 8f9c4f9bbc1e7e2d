#include "harness/temp_tree.h"

#include <dirent.h>
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace toka_test {

namespace {

void MakeParents(const std::string& path) {
  for (size_t at = path.find('/', 1); at != std::string::npos; at = path.find('/', at + 1))
    mkdir(path.substr(0, at).c_str(), 0755);
}

int RemoveEntry(const char* path, const struct stat*, int, struct FTW*) {
  return remove(path);
}

}  // namespace

TempTree::TempTree() {
  char pattern[] = "/tmp/toka-test-XXXXXX";
  if (!mkdtemp(pattern)) throw std::runtime_error("mkdtemp failed");
  mRoot = std::string(pattern) + "/";
}

TempTree::~TempTree() {
  nftw(mRoot.c_str(), RemoveEntry, 16, FTW_DEPTH | FTW_PHYS);
}

std::string TempTree::AddPlugin(const std::string& relativePath, const std::string& fixture) {
  std::string source = std::string(TOKA_FIXTURE_DIR) + "/" + fixture + ".orv";
  std::string target = mRoot + relativePath;
  MakeParents(target);
  std::ifstream in(source, std::ios::binary);
  if (!in) throw std::runtime_error("missing fixture plugin " + source);
  std::ofstream out(target, std::ios::binary);
  out << in.rdbuf();
  return target;
}

std::string TempTree::AddFolder(const std::string& relativePath) {
  std::string target = mRoot + relativePath;
  MakeParents(target + "/");
  return target;
}

std::string TempTree::AddFile(const std::string& relativePath, const std::string& text) {
  std::string target = mRoot + relativePath;
  MakeParents(target);
  std::ofstream(target) << text;
  return target;
}

std::vector<std::string> TempTree::Listing(const std::string& folder) {
  std::vector<std::string> names;
  if (DIR* dir = opendir(folder.c_str())) {
    while (struct dirent* entry = readdir(dir))
      if (std::strcmp(entry->d_name, ".") && std::strcmp(entry->d_name, ".."))
        names.push_back(entry->d_name);
    closedir(dir);
  }
  return names;
}

}  // namespace toka_test
