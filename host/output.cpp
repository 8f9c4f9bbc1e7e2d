// The host's output and the log that keeps it.
#include "host/output.h"

#include <cstdio>

namespace toka_host {

namespace {

std::string* gCapture = nullptr;
std::string gLog;

}  // namespace

void HostPrint(const std::string& text) {
  gLog += text;
  if (gCapture) {
    *gCapture += text;
    return;
  }
  std::fputs(text.c_str(), stdout);
  std::fflush(stdout);
}

void SetOutputCapture(std::string* capture) { gCapture = capture; }

const std::string& HostLog() { return gLog; }

void ClearHostLog() { gLog.clear(); }

}  // namespace toka_host
