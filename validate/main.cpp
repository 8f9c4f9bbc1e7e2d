// toka-validate: tells plugin authors whether their plugin survives being
// disabled, enabled and reloaded, what it leaves behind and what it costs,
// outside the simulator. The library's code is linked into the program, with
// the survey that libtoka.so leaves out; plugins bind to this copy.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fstream>

#include "host/system.h"
#include "validate/validate.h"

namespace toka_validate {

namespace {

using toka_host::IsFile;
using toka_host::IsFolder;


bool EndsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

std::vector<std::string> FolderEntries(const std::string& folder) {
  std::vector<std::string> names;
  if (DIR* dir = opendir(folder.c_str())) {
    while (dirent* entry = readdir(dir))
      if (entry->d_name[0] != '.') names.push_back(entry->d_name);
    closedir(dir);
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace

bool ExpandTargets(const std::vector<std::string>& targets, std::vector<std::string>& plugins,
                   std::string& error) {
  for (const std::string& target : targets) {
    if (!IsFolder(target)) {
      if (!IsFile(target)) {
        error = "no such plugin or folder: " + target;
        return false;
      }
      plugins.push_back(target);
      continue;
    }
    std::string folder = EndsWith(target, "/") ? target : target + "/";
    size_t before = plugins.size();
    for (const std::string& name : FolderEntries(folder)) {
      if (EndsWith(name, ".orv") && IsFile(folder + name)) plugins.push_back(folder + name);
      else if (IsFile(folder + name + "/lin.orv")) plugins.push_back(folder + name + "/lin.orv");
    }
    if (plugins.size() == before) {
      error = "no plugins in " + target;
      return false;
    }
  }
  return true;
}

int Run(const Options& given) {
  Options options = Resolved(given);
  std::vector<std::string> plugins;
  std::string error;
  if (!ExpandTargets(options.targets, plugins, error)) {
    std::fprintf(stderr, "toka-validate: %s\n", error.c_str());
    return kBadOptionsStatus;
  }
  std::fputs(ReportHeader(options).c_str(), stdout);
  std::vector<CheckResult> results;
  std::vector<std::string> signatures;
  for (const std::string& plugin : plugins) {
    std::string signature, lifecycleFault;
    for (const Check& check : AllChecks()) {
      if (!options.only.empty() && options.only != check.name) continue;
      CheckInput input{options, plugin, MixSeed(options.seed, plugin + "\n" + check.name),
                       signatures};
      CheckResult result = RunInChild(check, input);
      // A crash or an exception in the plugin's frames is the lifecycle
      // check's finding; the later checks that run the frames only meet it
      // again.
      if (std::string(check.name) == "lifecycle") {
        lifecycleFault = result.fault;
      } else if (result.status == Status::Fail && !result.fault.empty() &&
                 result.fault == lifecycleFault) {
        result.status = Status::Skip;
        result.reason += " (see lifecycle)";
      }
      if (!result.signature.empty()) signature = result.signature;
      std::fputs(ResultText(result).c_str(), stdout);
      std::fflush(stdout);
      results.push_back(result);
    }
    if (!signature.empty()) signatures.push_back(signature);
  }
  std::fputs(ReportSummary(options, results).c_str(), stdout);
  if (!options.json.empty()) {
    std::ofstream json(options.json);
    json << ReportJson(options, results);
    if (!json) std::fprintf(stderr, "toka-validate: cannot write %s\n", options.json.c_str());
  }
  int failed = 0;
  for (const CheckResult& result : results) failed += result.status == Status::Fail;
  return std::min(failed, kMaxFailureStatus);
}

}  // namespace toka_validate

int main(int argc, char** argv) {
  using namespace toka_validate;
  for (int i = 1; i < argc; ++i)
    if (!std::strcmp(argv[i], "--help") || !std::strcmp(argv[i], "-h")) {
      std::fputs(Usage().c_str(), stdout);
      return 0;
    }
  Options options;
  std::string error;
  if (!ParseOptions(argc, argv, options, error)) {
    std::fprintf(stderr, "toka-validate: %s\n", error.c_str());
    return kBadOptionsStatus;
  }
  if (options.listChecks) {
    for (const Check& check : AllChecks()) std::printf("%-13s %s\n", check.name, check.summary);
    return 0;
  }
  return Run(options);
}
