// Reading scenario files: one step per line, words separated by blanks,
// texts in double quotes, regular expressions between slashes. A line that
// does not parse stops everything with its file, line and column, so that a
// typing mistake never turns into a run that tests less than it says.
#include "host/scenario/scenario.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <regex>

#include "host/keys.h"
#include "host/scenario/words.h"
#include "host/services.h"
#include "host/world/aircraft.h"

namespace toka_host {

namespace {

// The words a step is made of: those of any line, and one of a few words, a
// keyword or a number in their place. Each reader returns false after
// setting the error and the column it is about.
class StepReader : public Words {
public:
  using Words::Words;

  // One of a few words.
  bool OneOf(std::string& word, const std::vector<std::string>& choices) {
    std::string what;
    for (size_t i = 0; i < choices.size(); ++i)
      what += (i == 0 ? "\"" : i + 1 == choices.size() ? " or \"" : ", \"") + choices[i] + "\"";
    if (!Word(word, what)) return false;
    for (const std::string& choice : choices)
      if (word == choice) return true;
    return FailAt(LastColumn(), "expected " + what + ", found \"" + word + "\"");
  }

  bool Keyword(const std::string& keyword) {
    std::string word;
    return OneOf(word, {keyword});
  }

  bool Number(double& value, const std::string& what, double minimum = -HUGE_VAL) {
    std::string word;
    if (!Word(word, what)) return false;
    char* end = nullptr;
    errno = 0;
    value = std::strtod(word.c_str(), &end);
    if (*end || errno || !std::isfinite(value) || value < minimum) return BadNumber(word);
    return true;
  }

  bool Int(int& value, const std::string& what, int minimum = -2147483647) {
    std::string word;
    if (!Word(word, what)) return false;
    char* end = nullptr;
    errno = 0;
    long parsed = std::strtol(word.c_str(), &end, 10);
    if (*end || errno || parsed < minimum || parsed > 2147483647L) return BadNumber(word);
    value = (int)parsed;
    return true;
  }

private:
  bool BadNumber(const std::string& word) {
    return FailAt(LastColumn(), "bad number \"" + word + "\"");
  }
};

// Messages the simulator broadcasts, by the event that makes the library
// send them.
int EventOfMessage(int message) {
  switch (message) {
    case 101: return 2;
    case 102: return 3;
    case 103: return 4;
    case 104: return 6;
    case 105: return 7;
    case 106: return 8;
    case 107: return 11;
    case 108: return 13;
    default: return -1;
  }
}

bool ParseKey(StepReader& in, ScenarioStep& step) {
  std::string name;
  if (!in.Name(name, "a key name")) return false;
  const VirtualKey* key = FindVirtualKey(name);
  if (!key) return in.FailAt(in.LastColumn(), "unknown key \"" + name + "\"");
  int flags = 0;
  while (!in.AtEnd()) {
    std::string flag;
    in.Word(flag, "");
    char* end = nullptr;
    long number = std::strtol(flag.c_str(), &end, 10);
    if (flag == "shift") flags |= kShiftFlag;
    else if (flag == "alt") flags |= kAltFlag;
    else if (flag == "control") flags |= kControlFlag;
    else if (!flag.empty() && !*end && number >= 0 && number <= 0x7FFFFFFF) flags |= (int)number;
    else return in.FailAt(in.LastColumn(), "unknown key flag \"" + flag + "\"");
  }
  char character = key->character;
  if ((flags & kShiftFlag) && character >= 'a' && character <= 'z') character -= 'a' - 'A';
  step.numbers = {key->code, character, flags};
  return true;
}

bool ParseDataRefValue(StepReader& in, ScenarioStep& step) {
  if (!in.AtEnd() && in.Peek()[0] == '"') {
    step.isText = true;
    return in.Text(step.textValue, "a value");
  }
  return in.Number(step.value, "a value");
}

bool ParsePngName(StepReader& in, ScenarioStep& step) {
  if (!in.Name(step.name, "a file name ending in .png")) return false;
  const std::string& file = step.name;
  if (file.size() < 5 || file.compare(file.size() - 4, 4, ".png") != 0)
    return in.FailAt(in.LastColumn(), "expected a file name ending in .png, found \"" + file + "\"");
  return true;
}

// #RRGGBB
bool ParseColour(StepReader& in, int& colour) {
  std::string word;
  if (!in.Word(word, "a colour #RRGGBB")) return false;
  char* end = nullptr;
  long value = word.size() == 7 && word[0] == '#' ? std::strtol(word.c_str() + 1, &end, 16) : -1;
  if (value < 0 || *end || word.find_first_of("+- ") != std::string::npos)
    return in.FailAt(in.LastColumn(), "expected a colour #RRGGBB, found \"" + word + "\"");
  colour = (int)value;
  return true;
}

// "within 10%": a share of the pixels, in percent.
bool ParsePercent(StepReader& in, double& percent) {
  std::string word;
  if (!in.Keyword("within") || !in.Word(word, "a share of the pixels such as 0.5%")) return false;
  char* end = nullptr;
  percent = word.size() > 1 && word.back() == '%' ? std::strtod(word.c_str(), &end) : -1;
  if (percent < 0 || percent > 100 || end != word.c_str() + word.size() - 1)
    return in.FailAt(in.LastColumn(), "expected a share of the pixels such as 0.5%, found \"" +
                                          word + "\"");
  return true;
}

// Pixels of the frame: one pixel's colour, or the whole frame against a
// picture.
bool ParsePixelExpectation(const std::string& what, StepReader& in, ScenarioStep& step) {
  if (what == "pixel") {
    step.kind = StepKind::ExpectPixel;
    step.numbers.resize(3);
    if (!in.Int(step.numbers[0], "X") || !in.Int(step.numbers[1], "Y") ||
        !ParseColour(in, step.numbers[2]))
      return false;
    if (in.AtEnd()) return true;
    return in.Keyword("within") && in.Number(step.tolerance, "a tolerance per channel", 0);
  }
  step.kind = StepKind::ExpectScreenshot;
  if (!in.Keyword("matches") || !ParsePngName(in, step)) return false;
  return in.AtEnd() || ParsePercent(in, step.tolerance);
}

bool ParseExpectation(StepReader& in, ScenarioStep& step) {
  std::string what;
  if (!in.OneOf(what, {"log", "dataref", "window", "no", "plugin", "menu", "host-call", "pixel",
                       "screenshot"}))
    return false;
  if (what == "pixel" || what == "screenshot") return ParsePixelExpectation(what, in, step);
  if (what == "log") {
    std::string how;
    if (!in.OneOf(how, {"contains", "matches"})) return false;
    if (how == "contains") {
      step.kind = StepKind::ExpectLogContains;
      return in.Text(step.name, "a text in double quotes");
    }
    step.kind = StepKind::ExpectLogMatches;
    int column = in.Column();
    if (!in.Regex(step.name)) return false;
    try {
      std::regex check(step.name);
    } catch (const std::regex_error& problem) {
      return in.FailAt(column, std::string("bad regular expression: ") + problem.what());
    }
    return true;
  }
  if (what == "dataref") {
    step.kind = StepKind::ExpectDataRef;
    if (!in.Name(step.name, "a dataref name") || !in.Keyword("==") ||
        !ParseDataRefValue(in, step))
      return false;
    if (in.AtEnd()) return true;
    return in.Keyword("within") && in.Number(step.tolerance, "a tolerance", 0);
  }
  if (what == "window" || what == "no") {
    step.kind = what == "window" ? StepKind::ExpectWindow : StepKind::ExpectNoWindow;
    if (what == "no" && !in.Keyword("window")) return false;
    step.numbers.resize(2);
    return in.Keyword("at") && in.Int(step.numbers[0], "X") && in.Int(step.numbers[1], "Y");
  }
  if (what == "plugin") {
    step.kind = StepKind::ExpectPlugin;
    return in.Name(step.name, "a plugin name") &&
           in.OneOf(step.word, {"enabled", "disabled", "loaded", "absent"});
  }
  if (what == "menu") {
    step.kind = StepKind::ExpectMenu;
    return in.Text(step.name, "a menu path in double quotes") &&
           in.OneOf(step.word, {"checked", "unchecked", "enabled", "disabled"});
  }
  step.kind = StepKind::ExpectHostCall;
  if (!in.Word(step.name, "a host service name")) return false;
  if (ServiceSlot(step.name) < 0)
    return in.FailAt(in.LastColumn(), "unknown host service \"" + step.name + "\"");
  if (in.AtEnd()) return true;
  int count;
  if (!in.Keyword("count") || !in.Int(count, "a count", 0)) return false;
  step.hasCount = true;
  step.value = count;
  return true;
}

bool ParseSimulatorStep(const std::string& first, StepReader& in, ScenarioStep& step) {
  if (first == "menu") {
    step.kind = StepKind::Menu;
    return in.Text(step.name, "a menu path in double quotes");
  }
  if (first == "command") {
    step.kind = StepKind::Command;
    return in.Name(step.name, "a command name") && in.OneOf(step.word, {"begin", "end", "once"});
  }
  if (first == "dataref") {
    step.kind = StepKind::SetDataRef;
    return in.Name(step.name, "a dataref name") && in.Keyword("=") && ParseDataRefValue(in, step);
  }
  if (first == "aircraft") {
    std::string what;
    if (!in.OneOf(what, {"load", "unload"})) return false;
    step.kind = what == "load" ? StepKind::AircraftLoad : StepKind::AircraftUnload;
    return what == "unload" || in.Name(step.name, "the path of an aircraft model");
  }
  if (first == "scenery") {
    step.kind = StepKind::SceneryLoad;
    return in.Keyword("load") && in.Name(step.name, "a scenery folder");
  }
  if (first == "message") {
    step.kind = StepKind::Message;
    int message, param = 0;
    if (!in.Int(message, "a message number")) return false;
    if (EventOfMessage(message) < 0)
      return in.FailAt(in.LastColumn(), "the simulator sends messages 101 to 108, not " +
                                            std::to_string(message));
    if (!in.AtEnd() && !in.Int(param, "a parameter")) return false;
    step.numbers = {message, EventOfMessage(message), param};
    return true;
  }
  if (first == "camera") {
    step.kind = StepKind::CameraRelease;
    return in.Keyword("release");
  }
  if (first == "airport") {
    step.kind = StepKind::Airport;
    if (!in.Word(step.name, "an airport code")) return false;
    return FindAirport(step.name) ||
           in.FailAt(in.LastColumn(), "unknown airport \"" + step.name + "\"");
  }
  step.kind = StepKind::Pause;
  return true;
}

bool ParseStep(StepReader& in, ScenarioStep& step) {
  std::string first;
  if (!in.Word(first, "a step")) return false;
  int firstColumn = in.LastColumn();
  if (first == "key") {
    step.kind = StepKind::Key;
    return ParseKey(in, step);
  }
  // The mouse steps: whole numbers, each with what the user should write.
  static const struct {
    const char* word;
    StepKind kind;
    std::vector<const char*> numbers;
  } kMouseSteps[] = {
      {"click", StepKind::Click, {"X", "Y"}},
      {"drag", StepKind::Drag, {"X", "Y", "the X to drag to", "the Y to drag to"}},
      {"scroll", StepKind::Scroll, {"X", "Y", "a number of clicks"}},
      {"move", StepKind::Move, {"X", "Y"}},
      {"press", StepKind::Press, {"X", "Y"}},
      {"release", StepKind::Release, {"X", "Y"}},
  };
  for (const auto& mouse : kMouseSteps) {
    if (first != mouse.word) continue;
    step.kind = mouse.kind;
    step.numbers.resize(mouse.numbers.size());
    for (size_t i = 0; i < mouse.numbers.size(); ++i)
      if (!in.Int(step.numbers[i], mouse.numbers[i])) return false;
    return true;
  }
  if (first == "menu" || first == "command" || first == "dataref" || first == "aircraft" ||
      first == "scenery" || first == "message" || first == "camera" || first == "pause" ||
      first == "airport")
    return ParseSimulatorStep(first, in, step);
  if (first == "enable" || first == "disable") {
    step.kind = first == "enable" ? StepKind::Enable : StepKind::Disable;
    return in.Name(step.name, "a plugin name");
  }
  if (first == "reload") {
    step.kind = StepKind::Reload;
    return true;
  }
  if (first == "expect") return ParseExpectation(in, step);
  if (first == "screenshot") {
    step.kind = StepKind::Screenshot;
    return ParsePngName(in, step);
  }
  return in.FailAt(firstColumn, "unknown step \"" + first + "\"");
}

std::string Trimmed(const std::string& line) {
  size_t start = line.find_first_not_of(" \t");
  if (start == std::string::npos) return "";
  return line.substr(start, line.find_last_not_of(" \t") + 1 - start);
}

// "at FRAME", "at SECONDS s" or "at SECONDSs".
bool ParseTime(Words& in, double step, int current, int& frame) {
  std::string word;
  if (!in.Word(word, "a frame number or a time in seconds")) return false;
  int column = in.LastColumn();
  bool seconds = word.size() > 1 && word.back() == 's';
  if (seconds) word.pop_back();
  else if (in.Peek() == "s") {
    std::string unit;
    seconds = in.Word(unit, "");
  }
  char* end = nullptr;
  errno = 0;
  if (seconds) {
    double value = std::strtod(word.c_str(), &end);
    if (word.empty() || *end || errno || !(value >= 0) || value > 1e7)
      return in.FailAt(column, "bad number \"" + word + "\"");
    frame = (int)std::ceil(value / step - 1e-9);
  } else {
    long value = std::strtol(word.c_str(), &end, 10);
    if (word.empty() || *end || errno || value < 0 || value > 100000000L)
      return in.FailAt(column, "bad number \"" + word + "\"");
    frame = (int)value;
  }
  if (frame < current)
    return in.FailAt(column, "time goes backwards: frame " + std::to_string(frame) +
                                 " is before frame " + std::to_string(current));
  return in.End();
}

}  // namespace

bool IsCheck(StepKind kind) { return kind >= StepKind::ExpectLogContains; }

bool NeedsPictures(StepKind kind) {
  return kind == StepKind::ExpectPixel || kind == StepKind::ExpectScreenshot ||
         kind == StepKind::Screenshot;
}

bool ParseScenarioStep(const std::string& line, int frame, const std::string& where,
                       ScenarioStep& step, std::string& error) {
  StepReader in(line);
  step = ScenarioStep();
  step.frame = frame;
  step.where = where;
  step.text = Trimmed(line);
  if (ParseStep(in, step) && in.End()) return true;
  error = std::to_string(in.errorColumn) + ": " + in.error;
  return false;
}

bool ParseScenario(const std::string& text, const std::string& file, double step,
                   std::vector<ScenarioStep>& steps, std::string& error) {
  std::vector<ScenarioStep> parsed;
  int frame = 0, number = 0;
  bool checking = false;  // an expectation of this frame came already
  for (size_t start = 0; start < text.size();) {
    size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    std::string line = text.substr(start, end - start);
    start = end + 1;
    ++number;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    std::string trimmed = Trimmed(line);
    if (trimmed.empty() || trimmed[0] == '#') continue;
    std::string where = file + ":" + std::to_string(number);
    Words in(line);
    std::string first;
    in.Word(first, "");
    if (first == "at") {
      int before = frame;
      if (ParseTime(in, step, before, frame)) {
        checking = checking && frame == before;
        continue;
      }
      error = where + ":" + std::to_string(in.errorColumn) + ": " + in.error;
      return false;
    }
    ScenarioStep parsedStep;
    std::string problem;
    if (!ParseScenarioStep(line, frame, where, parsedStep, problem)) {
      error = where + ":" + problem;
      return false;
    }
    // Expectations look at the frame once it is drawn, after all its
    // actions: an action written below one would seem to come later, and
    // does not.
    bool acts = !IsCheck(parsedStep.kind);
    if (acts && checking) {
      error = where + ":" + std::to_string(line.find(first) + 1) + ": \"" + first +
              "\" acts after an expectation of frame " + std::to_string(frame) +
              " (a frame's actions come before its expectations)";
      return false;
    }
    checking = checking || !acts;
    parsed.push_back(parsedStep);
  }
  steps.insert(steps.end(), parsed.begin(), parsed.end());
  return true;
}

}  // namespace toka_host
