// The screen services plugins call: its size and the mouse, the graphics
// state and textures, text in the built-in fonts, dark boxes, and aircraft
// drawn for a plugin. Services 2 to 7, 10 to 13, 16 and 62.
//
// Screen coordinates are the simulator's: x to the right, y up, (0, 0) the
// bottom-left pixel.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "host/render/gl.h"
#include "host/render/render.h"
#include "host/config.h"
#include "host/services.h"

namespace toka_host {

int gMouseX = 0, gMouseY = 0;
int gGraphicsState[7];
long gGraphicsStateGLCalls = 0;

namespace {

// Textures the host has of its own, made with the context; without one
// (--render none) their numbers and those handed to plugins are counted
// from these.
constexpr int kFontTextureNumber = 1, kPanelTextureNumber = 2, kFirstGeneratedTexture = 100;
unsigned gFontTexture = 0, gPanelTexture = 0;
int gNextTexture = kFirstGeneratedTexture;
bool gGraphicsStateKnown = false;

int FontScale(int font) { return font == 1 ? 2 : 1; }

void Switch(GLenum capability, bool on) {
  on ? gGL.Enable(capability) : gGL.Disable(capability);
  ++gGraphicsStateGLCalls;
}

// Breaks text into lines: at newlines, and where a line would grow wider than
// wrapWidth pixels (0: never), at the last blank or else inside the word.
std::vector<std::string> BreakLines(const std::string& text, int wrapWidth, int font) {
  int cellWidth, cellHeight;
  FontCell(font, cellWidth, cellHeight);
  size_t perLine = wrapWidth > 0 ? std::max(1, wrapWidth / cellWidth) : std::string::npos;
  std::vector<std::string> lines(1);
  for (char c : text) {
    if (c == '\n') {
      lines.emplace_back();
      continue;
    }
    std::string& line = lines.back();
    if (line.size() < perLine) {
      line += c;
      continue;
    }
    if (c == ' ') {
      lines.emplace_back();
      continue;
    }
    size_t blank = line.rfind(' ');
    std::string carried = blank == std::string::npos ? "" : line.substr(blank + 1);
    if (blank != std::string::npos) line.erase(blank);
    lines.push_back(carried + c);
  }
  return lines;
}

// ---- services --------------------------------------------------------------

void GetScreenSize(int* outWidth, int* outHeight) {
  if (outWidth) *outWidth = gConfig.screenWidth;
  if (outHeight) *outHeight = gConfig.screenHeight;
}

void GetMouseLocation(int* outX, int* outY, int fromPlugin) {
  if (outX) *outX = gMouseX;
  if (outY) *outY = gMouseY;
}

void SetGraphicsStateService(int fog, int numberTexUnits, int lighting, int alphaTesting,
                             int alphaBlending, int depthTesting, int depthWriting) {
  const int state[7] = {fog, numberTexUnits, lighting, alphaTesting, alphaBlending, depthTesting,
                        depthWriting};
  SetGraphicsState(state, false);
}

void BindTexture2d(int textureNum, int textureUnit) {
  if (!Rendering() || textureUnit < 0 || textureUnit >= kTextureUnits) return;
  if (textureUnit) gGL.ActiveTexture(GL_TEXTURE0 + textureUnit);
  gGL.BindTexture(GL_TEXTURE_2D, (GLuint)textureNum);
  if (textureUnit) gGL.ActiveTexture(GL_TEXTURE0);
}

void GenerateTextureNumbers(int* outTextureIDs, int count) {
  if (!outTextureIDs || count <= 0) return;
  if (Rendering()) {
    gGL.GenTextures(count, reinterpret_cast<GLuint*>(outTextureIDs));
    return;
  }
  for (int i = 0; i < count; ++i) outTextureIDs[i] = gNextTexture++;
}

int GetTexture(int textureID) {
  switch (textureID) {
    case 0: return Rendering() ? (int)gFontTexture : kFontTextureNumber;
    case 1: return Rendering() ? (int)gPanelTexture : kPanelTextureNumber;
    default: return 0;
  }
}

void DrawTranslucentDarkBox(int left, int top, int right, int bottom) {
  DrawDarkBox(left, bottom, right, top);
}

void DrawString(float* rgb, int x, int y, const char* text, int* wordWrapWidth, int font) {
  if (text) DrawText(rgb, x, y, text, wordWrapWidth ? *wordWrapWidth : 0, font);
}

void DrawNumber(float* rgb, int x, int y, double value, int digits, int decimals, int showSign,
                int font) {
  digits = std::max(1, std::min(digits, 20));
  decimals = std::max(0, std::min(decimals, 10));
  char number[64];
  int width = digits + (decimals > 0 ? decimals + 1 : 0);
  std::snprintf(number, sizeof number, "%0*.*f", width, decimals, std::fabs(value));
  std::string text = number;
  if (value < 0 && std::strspn(number, "0.") != text.size()) text = "-" + text;
  else if (showSign) text = "+" + text;
  DrawText(rgb, x, y, text, 0, font);
}

void GetFontDimensions(int font, int* outCharWidth, int* outCharHeight, int* outDigitsOnly) {
  int width, height;
  FontCell(font, width, height);
  if (outCharWidth) *outCharWidth = width;
  if (outCharHeight) *outCharHeight = height;
  if (outDigitsOnly) *outDigitsOnly = 0;  // both fonts have every printable character
}

float MeasureString(int font, const char* text, int numChars) {
  if (!text || numChars <= 0) return 0;
  int width, height;
  FontCell(font, width, height);
  return (float)(strnlen(text, (size_t)numChars) * width);
}

void DrawAircraft(int index, float x, float y, float z, float pitch, float roll, float yaw,
                  int fullDraw, void* drawStateInfo) {
  DrawMarker('A', index, x, y, z);
}

}  // namespace

void SetGraphicsState(const int state[7], bool force) {
  if (!Rendering()) {
    std::memcpy(gGraphicsState, state, sizeof gGraphicsState);
    return;
  }
  bool known = gGraphicsStateKnown && !force;
  auto changed = [&](int item) { return !known || !gGraphicsState[item] != !state[item]; };
  if (changed(0)) Switch(GL_FOG, state[0]);
  bool unitChanged = false;
  for (int unit = 0; unit < kTextureUnits; ++unit) {
    bool on = unit < state[1], was = unit < gGraphicsState[1];
    if (known && on == was) continue;
    gGL.ActiveTexture(GL_TEXTURE0 + unit);
    Switch(GL_TEXTURE_2D, on);
    unitChanged = unit != 0;
  }
  if (unitChanged) gGL.ActiveTexture(GL_TEXTURE0);
  if (changed(2)) Switch(GL_LIGHTING, state[2]);
  if (changed(3)) Switch(GL_ALPHA_TEST, state[3]);
  if (changed(4)) Switch(GL_BLEND, state[4]);
  if (changed(5)) Switch(GL_DEPTH_TEST, state[5]);
  if (changed(6)) {
    gGL.DepthMask(state[6] ? GL_TRUE : GL_FALSE);
    ++gGraphicsStateGLCalls;
  }
  std::memcpy(gGraphicsState, state, sizeof gGraphicsState);
  gGraphicsStateKnown = true;
}

void DrawDarkBox(int left, int bottom, int right, int top) {
  if (!Rendering() || right <= left || top <= bottom) return;
  // Three quarters of the way to black: text on it stays readable whatever
  // lies behind.
  const int state[7] = {0, 0, 0, 0, 1, 0, 0};
  SetGraphicsState(state, false);
  gGL.BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  gGL.Color4f(0, 0, 0, 0.75f);
  BeginScreenCoordinates();
  DrawRectangle(left, bottom, right, top);
  EndScreenCoordinates();
}

void FontCell(int font, int& width, int& height) {
  width = 6 * FontScale(font);
  height = 10 * FontScale(font);
}

void DrawText(const float* rgb, int x, int y, const std::string& text, int wrapWidth, int font) {
  if (!Rendering()) return;
  int cellWidth, cellHeight, scale = FontScale(font);
  FontCell(font, cellWidth, cellHeight);
  // Texturing on one unit with the font bound, the dots cut out by the alpha
  // test: each glyph's pixels get exactly the colour asked for.
  const int state[7] = {0, 1, 0, 1, 0, 0, 0};
  SetGraphicsState(state, false);
  gGL.ActiveTexture(GL_TEXTURE0);
  gGL.BindTexture(GL_TEXTURE_2D, gFontTexture);
  gGL.TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
  gGL.AlphaFunc(GL_GREATER, 0.5f);
  gGL.Color4f(rgb ? std::min(1.0f, std::max(0.0f, rgb[0])) : 1,
              rgb ? std::min(1.0f, std::max(0.0f, rgb[1])) : 1,
              rgb ? std::min(1.0f, std::max(0.0f, rgb[2])) : 1, 1);
  BeginScreenCoordinates();
  gGL.Begin(GL_QUADS);
  int bottom = y;
  for (const std::string& line : BreakLines(text, wrapWidth, font)) {
    for (size_t i = 0; i < line.size(); ++i) {
      int cellLeft, cellBottom;
      FontTextureCell((unsigned char)line[i], cellLeft, cellBottom);
      float u0 = (float)cellLeft / kFontTextureWidth, u1 = (float)(cellLeft + 6) / kFontTextureWidth;
      float v0 = (float)cellBottom / kFontTextureHeight,
            v1 = (float)(cellBottom + 10) / kFontTextureHeight;
      int left = x + (int)i * cellWidth;
      gGL.TexCoord2f(u0, v0), gGL.Vertex2i(left, bottom);
      gGL.TexCoord2f(u1, v0), gGL.Vertex2i(left + 6 * scale, bottom);
      gGL.TexCoord2f(u1, v1), gGL.Vertex2i(left + 6 * scale, bottom + 10 * scale);
      gGL.TexCoord2f(u0, v1), gGL.Vertex2i(left, bottom + 10 * scale);
    }
    bottom -= cellHeight;
  }
  gGL.End();
  EndScreenCoordinates();
}

unsigned CreateTexture(int width, int height, const uint8_t* rgba) {
  GLuint texture = 0;
  gGL.GenTextures(1, &texture);
  gGL.BindTexture(GL_TEXTURE_2D, texture);
  gGL.PixelStorei(GL_UNPACK_ALIGNMENT, 1);
  gGL.TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, rgba);
  gGL.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  gGL.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
  gGL.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
  gGL.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
  gGL.BindTexture(GL_TEXTURE_2D, 0);
  return texture;
}

// The font first, then the panel (a plain grey board): in a new context they
// get the numbers 1 and 2, as without one.
void CreateHostTextures() {
  if (gFontTexture) return;
  gFontTexture = CreateFontTexture();
  std::vector<uint8_t> panel(64 * 64 * 4);
  for (size_t i = 0; i < panel.size(); i += 4) panel[i] = panel[i + 1] = panel[i + 2] = 0x40, panel[i + 3] = 255;
  gPanelTexture = CreateTexture(64, 64, panel.data());
}

void ResetScreen() {
  gMouseX = gConfig.screenWidth / 2;
  gMouseY = gConfig.screenHeight / 2;
  std::memset(gGraphicsState, 0, sizeof gGraphicsState);
  gGraphicsStateKnown = false;
  gNextTexture = kFirstGeneratedTexture;
  ClearScreen();
}

void AddScreenServices(TOKAHostServices& table) {
  table.GetScreenSize = GetScreenSize;
  table.GetMouseLocation = GetMouseLocation;
  table.SetGraphicsState = SetGraphicsStateService;
  table.BindTexture2d = BindTexture2d;
  table.GenerateTextureNumbers = GenerateTextureNumbers;
  table.GetTexture = GetTexture;
  table.DrawTranslucentDarkBox = DrawTranslucentDarkBox;
  table.DrawString = DrawString;
  table.DrawNumber = DrawNumber;
  table.GetFontDimensions = GetFontDimensions;
  table.DrawAircraft = DrawAircraft;
  table.MeasureString = MeasureString;
}

}  // namespace toka_host
