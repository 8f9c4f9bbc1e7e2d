// The window of toka-host live (--window), through GLFW: every frame, drawn
// offscreen as in a headless run, is copied into it; the user's mouse and
// keys become the steps a scenario would write, at the frame they arrive in.
#include "host/live/window.h"

#define GLFW_INCLUDE_NONE  // GL's declarations come from render/gl.h
#include <GLFW/glfw3.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "host/config.h"
#include "host/keys.h"
#include "host/live/menu_bar.h"
#include "host/render/gl.h"
#include "host/render/render.h"
#include "host/scenario/scenario.h"

namespace toka_host {

namespace {

// What GLFW reports between two frames, in the order it happened.
struct RawInput {
  enum Kind { Press, Release, Scroll, Key } kind;
  int x, y;       // the pointer, in the simulator's coordinates
  int value;      // wheel clicks, or GLFW's key
  int modifiers;  // GLFW's
};

GLFWwindow* gWindow = nullptr;
std::string gGlfwError;
std::vector<RawInput> gInput;
int gPointerX = 0, gPointerY = 0;
int gSentX = 0, gSentY = 0;        // where the last step left the mouse
bool gPressTaken = false;          // the menu bar took the press: its release too
std::string gShotStem;             // screenshots of the Print key: STEM-frame-N.png
std::vector<uint8_t> gPixels;
unsigned gFrameTexture = 0;  // the window context's copy of the frame

void NoteGlfwError(int, const char* description) { gGlfwError = description ? description : ""; }

void NotePointer(GLFWwindow*, double x, double y) {
  // Window rows run down from the top; the simulator's y runs up.
  gPointerX = (int)std::floor(x);
  gPointerY = gConfig.screenHeight - 1 - (int)std::floor(y);
}

void NoteButton(GLFWwindow*, int button, int action, int mods) {
  if (button != GLFW_MOUSE_BUTTON_LEFT) return;
  gInput.push_back({action == GLFW_PRESS ? RawInput::Press : RawInput::Release, gPointerX, gPointerY,
                    0, mods});
}

void NoteScroll(GLFWwindow*, double, double y) {
  int clicks = (int)std::lround(y);
  if (clicks) gInput.push_back({RawInput::Scroll, gPointerX, gPointerY, clicks, 0});
}

void NoteKey(GLFWwindow*, int key, int, int action, int mods) {
  if (action != GLFW_RELEASE) gInput.push_back({RawInput::Key, gPointerX, gPointerY, key, mods});
}

// The simulator's name of a key, as scenario steps write it; "" for keys it
// does not have.
std::string KeyName(int key) {
  if (key >= GLFW_KEY_A && key <= GLFW_KEY_Z) return std::string(1, (char)('A' + key - GLFW_KEY_A));
  if (key >= GLFW_KEY_0 && key <= GLFW_KEY_9) return std::string(1, (char)('0' + key - GLFW_KEY_0));
  if (key >= GLFW_KEY_F1 && key <= GLFW_KEY_F24) return "F" + std::to_string(key - GLFW_KEY_F1 + 1);
  if (key >= GLFW_KEY_KP_0 && key <= GLFW_KEY_KP_9) return "Numpad-" + std::to_string(key - GLFW_KEY_KP_0);
  static const struct {
    int key;
    const char* name;
  } kNames[] = {
      {GLFW_KEY_SPACE, "Space"},         {GLFW_KEY_ENTER, "Return"},
      {GLFW_KEY_ESCAPE, "Escape"},       {GLFW_KEY_TAB, "Tab"},
      {GLFW_KEY_BACKSPACE, "Backspace"}, {GLFW_KEY_INSERT, "Insert"},
      {GLFW_KEY_DELETE, "Delete"},       {GLFW_KEY_RIGHT, "Right"},
      {GLFW_KEY_LEFT, "Left"},           {GLFW_KEY_DOWN, "Down"},
      {GLFW_KEY_UP, "Up"},               {GLFW_KEY_PAGE_UP, "Page Up"},
      {GLFW_KEY_PAGE_DOWN, "Page Down"}, {GLFW_KEY_HOME, "Home"},
      {GLFW_KEY_END, "End"},             {GLFW_KEY_KP_DECIMAL, "Numpad-."},
      {GLFW_KEY_KP_DIVIDE, "Numpad-/"},  {GLFW_KEY_KP_MULTIPLY, "Numpad-*"},
      {GLFW_KEY_KP_SUBTRACT, "Numpad--"}, {GLFW_KEY_KP_ADD, "Numpad-+"},
      {GLFW_KEY_KP_ENTER, "Numpad-Enter"}, {GLFW_KEY_KP_EQUAL, "Numpad-="},
      {GLFW_KEY_APOSTROPHE, "'"},        {GLFW_KEY_COMMA, ","},
      {GLFW_KEY_MINUS, "-"},             {GLFW_KEY_PERIOD, "."},
      {GLFW_KEY_SLASH, "/"},             {GLFW_KEY_SEMICOLON, ";"},
      {GLFW_KEY_EQUAL, "="},             {GLFW_KEY_LEFT_BRACKET, "["},
      {GLFW_KEY_BACKSLASH, "\\"},        {GLFW_KEY_RIGHT_BRACKET, "]"},
      {GLFW_KEY_GRAVE_ACCENT, "`"},
  };
  for (const auto& entry : kNames)
    if (entry.key == key) return entry.name;
  return "";
}

// A text in double quotes as steps write it.
std::string Quoted(const std::string& text) {
  std::string out = "\"";
  for (char c : text) out += c == '"' || c == '\\' ? std::string("\\") + c : std::string(1, c);
  return out + "\"";
}

std::string KeyStep(int key, int modifiers) {
  std::string step = "key " + Quoted(KeyName(key));
  if (modifiers & GLFW_MOD_SHIFT) step += " shift";
  if (modifiers & GLFW_MOD_ALT) step += " alt";
  if (modifiers & GLFW_MOD_CONTROL) step += " control";
  return step;
}

std::string Point(const char* step, int x, int y) {
  return std::string(step) + " " + std::to_string(x) + " " + std::to_string(y);
}

// The steps of one frame's input. A press and a release at one point with
// nothing between is a click.
std::vector<std::string> StepsOf(const std::vector<RawInput>& input, int frame) {
  std::vector<std::string> steps;
  for (const RawInput& event : input) {
    switch (event.kind) {
      case RawInput::Press: {
        std::string picked;
        if ((gPressTaken = MenuBarPress(event.x, event.y, picked))) {
          if (!picked.empty()) steps.push_back("menu " + Quoted(picked));
          break;
        }
        steps.push_back(Point("press", event.x, event.y));
        gSentX = event.x, gSentY = event.y;
        break;
      }
      case RawInput::Release:
        if (gPressTaken) {
          gPressTaken = false;
          break;
        }
        if (!steps.empty() && steps.back() == Point("press", event.x, event.y))
          steps.back() = Point("click", event.x, event.y);
        else
          steps.push_back(Point("release", event.x, event.y));
        gSentX = event.x, gSentY = event.y;
        break;
      case RawInput::Scroll:
        steps.push_back(Point("scroll", event.x, event.y) + " " + std::to_string(event.value));
        gSentX = event.x, gSentY = event.y;
        break;
      case RawInput::Key:
        // Print is the host's own: a picture of the frame, in the recording too.
        if (event.value == GLFW_KEY_PRINT_SCREEN)
          steps.push_back("screenshot " + Quoted(gShotStem + "-frame-" + std::to_string(frame) + ".png"));
        else if (!KeyName(event.value).empty())
          steps.push_back(KeyStep(event.value, event.modifiers));
        break;
    }
  }
  // Where the pointer is now: the cursor hook asks there, and a held
  // button's drag goes there.
  if (gPointerX != gSentX || gPointerY != gSentY) {
    steps.push_back(Point("move", gPointerX, gPointerY));
    gSentX = gPointerX, gSentY = gPointerY;
  }
  return steps;
}

// The name of the simulator folder, as the title shows it.
std::string RootName(const std::string& root) {
  char* full = realpath(root.c_str(), nullptr);
  std::string path = full ? full : root;
  std::free(full);
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  size_t slash = path.rfind('/');
  return slash == std::string::npos || path.size() == 1 ? path : path.substr(slash + 1);
}

// One texture the size of the frame in the window's context, filled anew
// each frame: the driver keeps its storage, where drawing the pixels
// directly would allocate a frame's worth every time. Made with the first
// frame, when the GL functions are known.
void SetUpFrameTexture(int width, int height) {
  gGL.GenTextures(1, &gFrameTexture);
  gGL.BindTexture(GL_TEXTURE_2D, gFrameTexture);
  gGL.TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
  gGL.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  gGL.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
  gGL.Enable(GL_TEXTURE_2D);
  gGL.Viewport(0, 0, width, height);
}

}  // namespace

bool OpenWindow(const HostOptions& options, std::string& error) {
  glfwSetErrorCallback(NoteGlfwError);
  if (!glfwInit()) {
    error = "--window needs a display (" + gGlfwError + ")";
    return false;
  }
  // An EGL context like the renderer's: the two take turns being current.
  glfwWindowHint(GLFW_CONTEXT_CREATION_API, GLFW_EGL_CONTEXT_API);
  glfwWindowHint(GLFW_RESIZABLE, GLFW_FALSE);
  std::string title = "toka-host " + RootName(options.config.root);
  gWindow = glfwCreateWindow(options.config.screenWidth, options.config.screenHeight,
                             title.c_str(), nullptr, nullptr);
  if (!gWindow) {
    error = "--window cannot open a window (" + gGlfwError + ")";
    glfwTerminate();
    return false;
  }
  glfwSetCursorPosCallback(gWindow, NotePointer);
  glfwSetMouseButtonCallback(gWindow, NoteButton);
  glfwSetScrollCallback(gWindow, NoteScroll);
  glfwSetKeyCallback(gWindow, NoteKey);
  glfwMakeContextCurrent(gWindow);
  glfwSwapInterval(0);  // the host paces the frames itself
  glfwMakeContextCurrent(nullptr);
  gFrameTexture = 0;
  ResetMenuBar();
  gInput.clear();
  gPressTaken = false;
  gPointerX = gSentX = options.config.screenWidth / 2;
  gPointerY = gSentY = options.config.screenHeight / 2;
  gShotStem = options.record.empty() ? "toka-host"
                                     : options.record.substr(0, options.record.rfind(".scenario"));
  if (!options.record.empty() && !StartRecording(options.record, error)) {
    CloseWindow();
    return false;
  }
  return true;
}

void TakeWindowInput() {
  if (!gWindow) return;
  glfwPollEvents();
  if (glfwWindowShouldClose(gWindow)) EndRun();
  std::vector<RawInput> input;
  input.swap(gInput);
  int frame = gFrame + 1;
  for (const std::string& text : StepsOf(input, frame)) {
    ScenarioStep step;
    std::string error;
    if (ParseScenarioStep(text, frame, kLiveStepWhere, step, error)) AddLiveStep(step);
  }
}

void ShowFrame() {
  if (!gWindow) return;
  int width = gConfig.screenWidth, height = gConfig.screenHeight;
  ReadFrame(gPixels);
  glfwMakeContextCurrent(gWindow);
  if (!gFrameTexture) SetUpFrameTexture(width, height);
  gGL.PixelStorei(GL_UNPACK_ALIGNMENT, 1);
  gGL.TexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, gPixels.data());
  gGL.Begin(GL_QUADS);
  gGL.TexCoord2f(0, 0), gGL.Vertex2i(-1, -1);
  gGL.TexCoord2f(1, 0), gGL.Vertex2i(1, -1);
  gGL.TexCoord2f(1, 1), gGL.Vertex2i(1, 1);
  gGL.TexCoord2f(0, 1), gGL.Vertex2i(-1, 1);
  gGL.End();
  glfwSwapBuffers(gWindow);
  glfwMakeContextCurrent(nullptr);
  MakeRendererCurrent();
}

void CloseWindow() {
  StopRecording();
  if (!gWindow) return;
  glfwDestroyWindow(gWindow);
  gWindow = nullptr;
  glfwTerminate();
}

}  // namespace toka_host
