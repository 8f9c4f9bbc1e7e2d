// Scenarios: steps of input, simulator events and expectations, read from a
// file or the command line and run frame by frame in the frame loop.
#ifndef TOKA_HOST_SCENARIO_SCENARIO_H
#define TOKA_HOST_SCENARIO_SCENARIO_H

#include <string>
#include <vector>

namespace toka_host {

// Expectations and output come last: IsCheck tells them by their place.
enum class StepKind {
  // input
  Key, Click, Drag, Scroll, Move, Press, Release,
  // the simulator
  Menu, Command, SetDataRef, AircraftLoad, AircraftUnload, SceneryLoad, Message, CameraRelease,
  Pause, Airport,
  // the plugins
  Enable, Disable, Reload,
  // expectations
  ExpectLogContains, ExpectLogMatches, ExpectDataRef, ExpectWindow, ExpectNoWindow,
  ExpectPlugin, ExpectMenu, ExpectHostCall, ExpectPixel, ExpectScreenshot,
  // output
  Screenshot,
};

// Expectations and screenshots look at a frame once it is drawn; the other
// steps act at the point of the frame where the user's input arrives.
bool IsCheck(StepKind kind);
// Steps that look at pixels: a run that draws nothing cannot have them.
bool NeedsPictures(StepKind kind);

struct ScenarioStep {
  StepKind kind;
  int frame = 0;      // 0: right after start-up, before the first frame
  std::string where;  // "FILE:LINE", or "--at" for a step given on the command line
  std::string text;   // the step as written
  std::vector<int> numbers;  // coordinates, clicks, key code, character and flags, message, colour
  std::string name;  // dataref, command, plugin, menu path, file, text, regex, service, airport
  std::string word;  // begin|end|once, a plugin or menu state
  bool isText = false;      // a dataref value in double quotes...
  std::string textValue;    // ...is this text
  double value = 0;         // a dataref value, or the count of a host call
  double tolerance = -1;    // "within" (a pixel's per channel, a picture's in percent): -1 when not given
  bool hasCount = false;
};

// Parses a whole scenario file's text. Frames of "at SECONDS s" are counted
// with the time step. False with "FILE:LINE:COLUMN: message" on the first
// malformed line.
bool ParseScenario(const std::string& text, const std::string& file, double step,
                   std::vector<ScenarioStep>& steps, std::string& error);
// Parses one step (not "at") for a frame. False with "COLUMN: message".
bool ParseScenarioStep(const std::string& line, int frame, const std::string& where,
                       ScenarioStep& step, std::string& error);

// Running a scenario's steps in the frame loop.
void SetScenario(const std::vector<ScenarioStep>& steps);
void RunScenarioActions(int frame);   // and ends a drag of the previous frame
void RunScenarioChecks(int frame);
void NoteFrameStart();                // host calls are counted per frame
void FinishScenario(int lastFrame);   // steps the run never reached fail
int ScenarioFailures();
int ScenarioStepCount();

// What the user does in the window (--window) arrives as steps of the frame
// about to run, written as a scenario would write them, and runs exactly as
// theirs would; their failures are shown but not counted. With a recording
// open each is written to it, under the "at" of its frame, as it is added.
constexpr const char* kLiveStepWhere = "window";
void AddLiveStep(const ScenarioStep& step);
bool StartRecording(const std::string& file, std::string& error);
void StopRecording();

}  // namespace toka_host

#endif
