#include "harness/host_program.h"

#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "harness/temp_tree.h"

namespace toka_test {

ProgramRun RunProgram(const std::string& binary, const std::string& arguments) {
  TempTree scratch;
  std::string out = scratch.root() + "out", err = scratch.root() + "err";
  std::string command = "'" + binary + "' " + arguments + " >'" + out + "' 2>'" + err + "'";
  int status = std::system(command.c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadFile(out), ReadFile(err)};
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

}  // namespace toka_test
