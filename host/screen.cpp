// The screen: a software framebuffer the size of the simulator's window, the
// mouse, the graphics state, text in the built-in font, and markers where a
// 3-D renderer would draw aircraft and objects. Services 2 to 7, 10 to 13,
// 16 and 62.
//
// Screen coordinates are the simulator's: x to the right, y up, (0, 0) the
// bottom-left pixel. The framebuffer stores rows from the top, as images do.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "host/host.h"

namespace toka_host {

int gMouseX = 0, gMouseY = 0;
std::vector<uint32_t> gFramebuffer;
std::vector<Marker> gMarkers;
int gGraphicsState[7];
int gBoundTextures[4];

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kFieldOfView = 60;  // degrees, across the screen at zoom 1
constexpr uint32_t kSky = 0x5A7FB0, kGround = 0x4F6B3A, kBlack = 0x000000;
constexpr uint32_t kAircraftMarker = 0xFFE040, kObjectMarker = 0xFF60FF;

// Textures the host has of its own; generated numbers start after them.
constexpr int kFontTexture = 1, kPanelTexture = 2, kFirstGeneratedTexture = 100;
int gNextTexture = kFirstGeneratedTexture;

bool OnScreen(int x, int y) {
  return x >= 0 && y >= 0 && x < gConfig.screenWidth && y < gConfig.screenHeight;
}

void PutPixel(int x, int y, uint32_t colour) {
  if (OnScreen(x, y)) gFramebuffer[(size_t)(gConfig.screenHeight - 1 - y) * gConfig.screenWidth + x] = colour;
}

uint32_t ColourOf(const float* rgb) {
  if (!rgb) return 0xFFFFFF;
  uint32_t colour = 0;
  for (int i = 0; i < 3; ++i) {
    float channel = std::min(1.0f, std::max(0.0f, rgb[i]));
    colour = colour << 8 | (uint32_t)std::lround(channel * 255);
  }
  return colour;
}

int FontScale(int font) { return font == 1 ? 2 : 1; }

void DrawGlyph(unsigned char c, int left, int bottom, int font, uint32_t colour) {
  int width, height, scale = FontScale(font);
  FontCell(font, width, height);
  const uint8_t* rows = GlyphRows(c);
  int top = bottom + height - 1;
  for (int row = 0; row < kGlyphRows; ++row)
    for (int column = 0; column < 5; ++column) {
      if (!(rows[row] & (0x10 >> column))) continue;
      for (int dy = 0; dy < scale; ++dy)
        for (int dx = 0; dx < scale; ++dx)
          PutPixel(left + column * scale + dx, top - (1 + row) * scale - dy, colour);
    }
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

void DrawText(const float* rgb, int x, int y, const std::string& text, int wrapWidth, int font) {
  int cellWidth, cellHeight;
  FontCell(font, cellWidth, cellHeight);
  uint32_t colour = ColourOf(rgb);
  int bottom = y;
  for (const std::string& line : BreakLines(text, wrapWidth, font)) {
    for (size_t i = 0; i < line.size(); ++i)
      DrawGlyph((unsigned char)line[i], x + (int)i * cellWidth, bottom, font, colour);
    bottom -= cellHeight;
  }
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

void SetGraphicsState(int fog, int numberTexUnits, int lighting, int alphaTesting,
                      int alphaBlending, int depthTesting, int depthWriting) {
  int state[7] = {fog, numberTexUnits, lighting, alphaTesting, alphaBlending, depthTesting,
                  depthWriting};
  std::memcpy(gGraphicsState, state, sizeof state);
}

void BindTexture2d(int textureNum, int textureUnit) {
  if (textureUnit >= 0 && textureUnit < 4) gBoundTextures[textureUnit] = textureNum;
}

void GenerateTextureNumbers(int* outTextureIDs, int count) {
  for (int i = 0; outTextureIDs && i < count; ++i) outTextureIDs[i] = gNextTexture++;
}

int GetTexture(int textureID) {
  switch (textureID) {
    case 0: return kFontTexture;
    case 1: return kPanelTexture;
    default: return 0;
  }
}

void DrawTranslucentDarkBox(int left, int top, int right, int bottom) {
  // Three quarters of the way to black: text on it stays readable whatever
  // lies behind.
  for (int y = std::max(0, bottom); y < std::min(top, gConfig.screenHeight); ++y)
    for (int x = std::max(0, left); x < std::min(right, gConfig.screenWidth); ++x) {
      uint32_t& pixel = gFramebuffer[(size_t)(gConfig.screenHeight - 1 - y) * gConfig.screenWidth + x];
      uint32_t r = (pixel >> 16 & 0xFF) / 4, g = (pixel >> 8 & 0xFF) / 4, b = (pixel & 0xFF) / 4;
      pixel = r << 16 | g << 8 | b;
    }
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

void FontCell(int font, int& width, int& height) {
  width = 6 * FontScale(font);
  height = 10 * FontScale(font);
}

uint32_t PixelAt(int x, int y) {
  return OnScreen(x, y) ? gFramebuffer[(size_t)(gConfig.screenHeight - 1 - y) * gConfig.screenWidth + x] : 0;
}

void ResetScreen() {
  gFramebuffer.assign((size_t)gConfig.screenWidth * gConfig.screenHeight, kBlack);
  gMarkers.clear();
  gMouseX = gConfig.screenWidth / 2;
  gMouseY = gConfig.screenHeight / 2;
  std::memset(gGraphicsState, 0, sizeof gGraphicsState);
  std::memset(gBoundTextures, 0, sizeof gBoundTextures);
  gNextTexture = kFirstGeneratedTexture;
}

void ClearScreen() {
  std::fill(gFramebuffer.begin(), gFramebuffer.end(), kBlack);
  gMarkers.clear();
}

bool ProjectToScreen(double x, double y, double z, double& screenX, double& screenY) {
  double pitch = gCamera[3] * kPi / 180, heading = gCamera[4] * kPi / 180;
  double forward[3] = {std::sin(heading) * std::cos(pitch), std::sin(pitch),
                       -std::cos(heading) * std::cos(pitch)};
  double right[3] = {std::cos(heading), 0, std::sin(heading)};
  double up[3] = {right[1] * forward[2] - right[2] * forward[1],
                  right[2] * forward[0] - right[0] * forward[2],
                  right[0] * forward[1] - right[1] * forward[0]};
  double d[3] = {x - gCamera[0], y - gCamera[1], z - gCamera[2]};
  double depth = d[0] * forward[0] + d[1] * forward[1] + d[2] * forward[2];
  if (depth < 0.1) return false;
  double zoom = gCamera[6] > 0 ? gCamera[6] : 1;
  double focal = gConfig.screenWidth / 2.0 / std::tan(kFieldOfView / 2 * kPi / 180) * zoom;
  screenX = gConfig.screenWidth / 2.0 + (d[0] * right[0] + d[1] * right[1] + d[2] * right[2]) / depth * focal;
  screenY = gConfig.screenHeight / 2.0 + (d[0] * up[0] + d[1] * up[1] + d[2] * up[2]) / depth * focal;
  return true;
}

void DrawMarker(char kind, int index, float x, float y, float z) {
  Marker marker{kind, index, x, y, z, false, 0, 0};
  double sx, sy;
  if (ProjectToScreen(x, y, z, sx, sy) && std::fabs(sx) < 1e6 && std::fabs(sy) < 1e6) {
    marker.screenX = (int)std::lround(sx);
    marker.screenY = (int)std::lround(sy);
    marker.onScreen = OnScreen(marker.screenX, marker.screenY);
  }
  gMarkers.push_back(marker);
  if (!marker.onScreen) return;
  int cx = marker.screenX, cy = marker.screenY;
  if (kind == 'A') {
    for (int i = -3; i <= 3; ++i) PutPixel(cx + i, cy, kAircraftMarker), PutPixel(cx, cy + i, kAircraftMarker);
  } else {
    for (int i = -2; i <= 2; ++i) {
      PutPixel(cx + i, cy - 2, kObjectMarker), PutPixel(cx + i, cy + 2, kObjectMarker);
      PutPixel(cx - 2, cy + i, kObjectMarker), PutPixel(cx + 2, cy + i, kObjectMarker);
    }
  }
}

void DrawHostPhase(int code) {
  switch (code) {
    case 2: {  // sky and ground, split at the horizon the camera sees
      double pitch = gCamera[3] * kPi / 180;
      double focal = gConfig.screenWidth / 2.0 / std::tan(kFieldOfView / 2 * kPi / 180) *
                     (gCamera[6] > 0 ? gCamera[6] : 1);
      double horizon = gConfig.screenHeight / 2.0 - std::tan(pitch) * focal;
      for (int y = 0; y < gConfig.screenHeight; ++y) {
        uint32_t colour = y >= horizon ? kSky : kGround;
        std::fill_n(&gFramebuffer[(size_t)(gConfig.screenHeight - 1 - y) * gConfig.screenWidth],
                    gConfig.screenWidth, colour);
      }
      break;
    }
    case 8:  // the aircraft the host flies
      for (size_t i = 0; i < gAircraft.size(); ++i) {
        if (!gAircraft[i].active) continue;
        double x, y, z;
        WorldToLocalPoint(gAircraft[i].latitude, gAircraft[i].longitude, gAircraft[i].elevation,
                          x, y, z);
        DrawMarker('A', (int)i, (float)x, (float)y, (float)z);
      }
      break;
    case 19: {  // the status line
      char status[128];
      std::snprintf(status, sizeof status, "frame %d  %.1f s%s", gFrame, gRunningTime,
                    gPaused ? "  paused" : "");
      float white[3] = {1, 1, 1};
      DrawText(white, 4, 4, status, 0, 0);
      break;
    }
    default:
      break;
  }
}

void AddScreenServices(TOKAHostServices& table) {
  table.GetScreenSize = GetScreenSize;
  table.GetMouseLocation = GetMouseLocation;
  table.SetGraphicsState = SetGraphicsState;
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
