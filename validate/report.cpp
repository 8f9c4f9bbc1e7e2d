// The report: one line per check, in text for people and in JSON for CI.
#include <nlohmann/json.hpp>

#include "validate/validate.h"

namespace toka_validate {

const char* StatusName(Status status) {
  switch (status) {
    case Status::Pass: return "PASS";
    case Status::Fail: return "FAIL";
    case Status::Skip: return "SKIP";
  }
  return "?";
}

namespace {

int Count(const std::vector<CheckResult>& results, Status status) {
  int count = 0;
  for (const CheckResult& result : results) count += result.status == status;
  return count;
}

}  // namespace

std::string ReportHeader(const Options& options) {
  return "toka-validate: seed " + std::to_string(options.seed) + ", level " +
         std::to_string(options.level) + ", " + std::to_string(options.frames) + " frames, " +
         std::to_string(options.repeat) + " cycles\n";
}

std::string ResultText(const CheckResult& result) {
  std::string text = std::string(StatusName(result.status)) + " " + result.check + " " +
                     result.plugin + ": " + result.reason + "\n";
  for (const std::string& detail : result.details) text += "    " + detail + "\n";
  return text;
}

std::string ReportSummary(const Options& options, const std::vector<CheckResult>& results) {
  return "toka-validate: " + std::to_string(Count(results, Status::Pass)) + " passed, " +
          std::to_string(Count(results, Status::Fail)) + " failed, " +
          std::to_string(Count(results, Status::Skip)) + " skipped (seed " +
          std::to_string(options.seed) + ")\n";
}

std::string ReportJson(const Options& options, const std::vector<CheckResult>& results) {
  nlohmann::ordered_json report;
  report["seed"] = options.seed;
  report["level"] = options.level;
  report["frames"] = options.frames;
  report["cycles"] = options.repeat;
  report["checks"] = nlohmann::ordered_json::array();
  for (const CheckResult& result : results) {
    nlohmann::ordered_json check;
    check["plugin"] = result.plugin;
    check["check"] = result.check;
    check["status"] = StatusName(result.status);
    check["reason"] = result.reason;
    check["details"] = result.details;
    if (!result.signature.empty()) check["signature"] = result.signature;
    report["checks"].push_back(check);
  }
  report["passed"] = Count(results, Status::Pass);
  report["failed"] = Count(results, Status::Fail);
  report["skipped"] = Count(results, Status::Skip);
  return report.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace toka_validate
