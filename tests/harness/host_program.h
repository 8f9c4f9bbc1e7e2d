// Running the built toka-host as a plugin author's CI job does, and reading
// what it wrote.
#ifndef TOKA_TEST_HOST_PROGRAM_H
#define TOKA_TEST_HOST_PROGRAM_H

#include <string>

namespace toka_test {

struct ProgramRun {
  int status;  // the exit status, or -1 when the program did not exit
  std::string out, err;
};

// Runs binary with arguments (already quoted for the shell), capturing its
// standard output and error.
ProgramRun RunProgram(const std::string& binary, const std::string& arguments);

std::string ReadFile(const std::string& path);

}  // namespace toka_test

#endif
