// A temporary simulator folder tree with fixture plugins copied into it.
#ifndef TOKA_TEST_TEMP_TREE_H
#define TOKA_TEST_TEMP_TREE_H

#include <string>
#include <vector>

namespace toka_test {

class TempTree {
public:
  TempTree();
  ~TempTree();
  TempTree(const TempTree&) = delete;
  TempTree& operator=(const TempTree&) = delete;

  // The root folder, ending in "/".
  const std::string& root() const { return mRoot; }
  // root + "Resources/plugins", without a trailing "/", as the loader forms it.
  std::string plugins() const { return mRoot + "Resources/plugins"; }

  // Copies fixture plugin `fixture` (the name of a tests/plugins source,
  // without extension) to root + relativePath, creating folders. Returns the
  // full path.
  std::string AddPlugin(const std::string& relativePath, const std::string& fixture);
  // Creates root + relativePath as a folder (and its parents).
  std::string AddFolder(const std::string& relativePath);
  // Creates an ordinary file with some text in it.
  std::string AddFile(const std::string& relativePath, const std::string& text = "not a plugin");

  // The entries of a folder in the order the file system lists them.
  static std::vector<std::string> Listing(const std::string& folder);

private:
  std::string mRoot;
};

}  // namespace toka_test

#endif
