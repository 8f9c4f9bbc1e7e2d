#include "harness/host_program.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cmath>
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

void ExpectInOrder(const std::string& text, const std::vector<std::string>& lines) {
  size_t at = 0;
  for (const std::string& line : lines) {
    size_t found = text.find(line, at);
    ASSERT_NE(std::string::npos, found) << line << " in\n" << text;
    at = found + line.size();
  }
}

int Count(const std::string& text, const std::string& part) {
  int n = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++n;
  return n;
}

double Haversine(double lat1, double lon1, double lat2, double lon2) {
  const double k = 3.14159265358979323846 / 180;
  double a = std::pow(std::sin((lat2 - lat1) * k / 2), 2) +
             std::cos(lat1 * k) * std::cos(lat2 * k) * std::pow(std::sin((lon2 - lon1) * k / 2), 2);
  return 2 * 6371008.8 * std::asin(std::sqrt(a));
}

}  // namespace toka_test
