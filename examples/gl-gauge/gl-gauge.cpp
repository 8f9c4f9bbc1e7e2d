// GL gauge: a round gauge in a window, drawn with OpenGL, whose needle
// follows a dataref the plugin publishes, and a lamp beside the window that
// lights green once the needle passes 90 degrees.
//
// What it shows a plugin author:
//   - drawing with OpenGL inside a window's draw callback and a draw
//     callback, where the simulator has set up screen coordinates;
//   - the simulator's graphics state (TOKASetGraphicsState) rather than
//     glEnable/glDisable, so that the simulator knows what is switched on;
//   - a texture of its own under a number from TOKAGenerateTextureNumbers,
//     bound with TOKABindTexture2d;
//   - a writable dataref (TOKARegisterDataAccessor) that other plugins, and
//     scenarios, can move the needle with.
#include <GL/gl.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "toka/TOKA.h"

namespace {

const char kNeedleName[] = "example/gl_gauge/needle_deg";

// The window: 200 x 200 pixels; the dial fills it but for a margin.
const int kLeft = 600, kTop = 500, kRight = 800, kBottom = 300;
const int kMargin = 10;
const int kNeedleLength = 80, kNeedleHalfWidth = 2;

// The lamp, drawn after the simulator's panel, outside any window.
const int kLampLeft = 20, kLampBottom = 100, kLampSize = 20;

// The dial's face and the needle, in bytes so that they reach the screen
// exactly.
const unsigned char kFace[3] = {0x20, 0x30, 0x60};
const unsigned char kRing[3] = {0xFF, 0xFF, 0xFF};
const unsigned char kNeedle[3] = {0xFF, 0x80, 0x00};
const unsigned char kLampOff[3] = {0xC0, 0x20, 0x20};
const unsigned char kLampOn[3] = {0x20, 0xC0, 0x20};

const int kDialSize = 64;  // texels

TOKAWindowID gWindow = nullptr;
TOKADataRef gNeedleRef = nullptr;
int gDialTexture = 0;
float gNeedle = 0;  // degrees clockwise from straight up

float ReadNeedle(void* refcon) { return gNeedle; }
void WriteNeedle(void* refcon, float value) { gNeedle = value; }

// The dial: a face with a white ring, transparent outside the circle.
void UploadDial() {
  std::vector<unsigned char> texels(kDialSize * kDialSize * 4, 0);
  for (int y = 0; y < kDialSize; ++y)
    for (int x = 0; x < kDialSize; ++x) {
      double dx = x + 0.5 - kDialSize / 2.0, dy = y + 0.5 - kDialSize / 2.0;
      double r = std::sqrt(dx * dx + dy * dy) / (kDialSize / 2.0);
      if (r > 1) continue;
      unsigned char* texel = &texels[(y * kDialSize + x) * 4];
      const unsigned char* colour = r > 0.9 ? kRing : kFace;
      std::memcpy(texel, colour, 3);
      texel[3] = 255;
    }
  TOKAGenerateTextureNumbers(&gDialTexture, 1);
  TOKABindTexture2d(gDialTexture, 0);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
  glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, kDialSize, kDialSize, 0, GL_RGBA, GL_UNSIGNED_BYTE,
               texels.data());
}

void DrawDial(int left, int top, int right, int bottom) {
  // One texture unit, blending for the transparent corners.
  TOKASetGraphicsState(0, 1, 0, 0, 1, 0, 0);
  TOKABindTexture2d(gDialTexture, 0);
  glColor3ub(255, 255, 255);
  glBegin(GL_QUADS);
  glTexCoord2f(0, 0), glVertex2i(left + kMargin, bottom + kMargin);
  glTexCoord2f(1, 0), glVertex2i(right - kMargin, bottom + kMargin);
  glTexCoord2f(1, 1), glVertex2i(right - kMargin, top - kMargin);
  glTexCoord2f(0, 1), glVertex2i(left + kMargin, top - kMargin);
  glEnd();
}

void DrawNeedle(int centreX, int centreY) {
  TOKASetGraphicsState(0, 0, 0, 0, 0, 0, 0);
  double angle = gNeedle * 3.14159265358979 / 180;
  double ux = std::sin(angle), uy = std::cos(angle);  // along the needle
  double nx = uy * kNeedleHalfWidth, ny = -ux * kNeedleHalfWidth;  // across it
  glColor3ubv(kNeedle);
  glBegin(GL_QUADS);
  glVertex2d(centreX - nx, centreY - ny);
  glVertex2d(centreX + nx, centreY + ny);
  glVertex2d(centreX + nx + ux * kNeedleLength, centreY + ny + uy * kNeedleLength);
  glVertex2d(centreX - nx + ux * kNeedleLength, centreY - ny + uy * kNeedleLength);
  glEnd();
}

void DrawWindow(TOKAWindowID window, void* refcon) {
  int left = 0, top = 0, right = 0, bottom = 0;
  TOKAGetWindowGeometry(window, &left, &top, &right, &bottom);
  DrawDial(left, top, right, bottom);
  DrawNeedle((left + right) / 2, (top + bottom) / 2);
}

int DrawLamp(int phase, int before, void* refcon) {
  TOKASetGraphicsState(0, 0, 0, 0, 0, 0, 0);
  glColor3ubv(gNeedle >= 90 ? kLampOn : kLampOff);
  glRecti(kLampLeft, kLampBottom, kLampLeft + kLampSize, kLampBottom + kLampSize);
  return 1;
}

int TakeClick(TOKAWindowID window, int x, int y, int mouseStatus, void* refcon) { return 1; }
void IgnoreKey(TOKAWindowID window, char key, int flags, char virtualKey, void* refcon,
               int losingFocus) {}

}  // namespace

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* outName, char* outSignature, char* outDescription) {
  std::strcpy(outName, "GL Gauge");
  std::strcpy(outSignature, "toka.examples.gl_gauge");
  std::strcpy(outDescription, "A gauge drawn with OpenGL whose needle follows a dataref.");
  // The simulator's OpenGL context is current while plugins start: textures
  // can be made here and live as long as the plugin.
  UploadDial();
  gNeedleRef = TOKARegisterDataAccessor(kNeedleName, DataTypeFloat, 1, nullptr, nullptr,
                                        ReadNeedle, WriteNeedle, nullptr, nullptr, nullptr,
                                        nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                        nullptr);
  gWindow = TOKACreateWindow(kLeft, kTop, kRight, kBottom, 1, DrawWindow, IgnoreKey, TakeClick,
                             nullptr);
  // Phase 40 is the simulator's panel; after it, the lamp sits on top.
  TOKARegisterDrawCallback(DrawLamp, 40, 0, nullptr);
  return 1;
}

TOKA_PLUGIN_EXPORT void OrvanePluginStop(void) {
  TOKAUnregisterDrawCallback(DrawLamp, 40, 0, nullptr);
  TOKADestroyWindow(gWindow);
  TOKAUnregisterDataAccessor(gNeedleRef);
  GLuint texture = (GLuint)gDialTexture;
  glDeleteTextures(1, &texture);
}

// The window shows while the plugin is enabled.
TOKA_PLUGIN_EXPORT int OrvanePluginEnable(void) {
  TOKASetWindowIsVisible(gWindow, 1);
  return 1;
}
TOKA_PLUGIN_EXPORT void OrvanePluginDisable(void) { TOKASetWindowIsVisible(gWindow, 0); }
TOKA_PLUGIN_EXPORT void OrvanePluginReceiveMessage(TOKAPluginID from, int message, void* param) {}
