// Helpers for the dataref and shared-data tests: a log of the calls the
// library makes into test callbacks, an error callback that records what it
// is told, and a user aircraft whose plugins can be loaded and unloaded.
#ifndef TOKA_TEST_DATA_HARNESS_H
#define TOKA_TEST_DATA_HARNESS_H

#include <string>
#include <vector>

#include "harness/harness.h"

namespace toka_test {

// Calls into test callbacks, each as text + "@" + the dispatched plugin.
std::vector<std::string>& Calls();
void LogCall(const std::string& text);

// Messages sent to RecordError, each as message + "@" + the dispatched plugin.
std::vector<std::string>& Errors();
void RecordError(const char* message);

// Makes the fake host report the user's aircraft at root + relativePath.
void UserAircraftAt(const TempTree& tree, const std::string& relativePath);

// Copies a scripted plugin to Aircraft/Test/plugins/<name>/lin.orv and names
// it; TOKAEventHook(3, ..., 0) loads it, TOKAEventHook(8, ..., 0) unloads it.
PluginScript& AddAircraftPlugin(TempTree& tree, const std::string& name);

}  // namespace toka_test

#endif
