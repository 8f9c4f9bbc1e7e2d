// The frame as the simulator draws it: before each drawing code the
// projection and state it would set (the camera's 3-D view for the world's
// codes, screen coordinates for the cockpit, windows and maps), then the
// host's own part of a phase: sky and ground, markers where a 3-D renderer
// would draw aircraft and objects, the status line.
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "host/render/gl.h"
#include "host/render/render.h"
#include "host/config.h"
#include "host/world/aircraft.h"
#include "host/world/world.h"

namespace toka_host {

std::vector<Marker> gMarkers;

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kFieldOfView = 60;  // degrees, across the screen at zoom 1
constexpr double kNear = 1, kFar = 400000;  // metres: the terrain and well beyond
constexpr uint32_t kSky = 0x5A7FB0, kGround = 0x4F6B3A;
constexpr uint32_t kAircraftMarker = 0xFFE040, kObjectMarker = 0xFF60FF;

// Pixels per unit of the camera's view plane at distance 1.
double FocalLength() {
  double zoom = gCamera[6] > 0 ? gCamera[6] : 1;
  return gConfig.screenWidth / 2.0 / std::tan(kFieldOfView / 2 * kPi / 180) * zoom;
}

// Drawing codes 1 to 12 serve the phases of the world outside (0 to 30);
// the others draw on the screen.
bool IsWorldCode(int code) { return code >= 1 && code <= 12; }

void SetColour(uint32_t rgb) {
  gGL.Color4f((rgb >> 16 & 0xFF) / 255.0f, (rgb >> 8 & 0xFF) / 255.0f, (rgb & 0xFF) / 255.0f, 1);
}

// The state every drawing code starts from, whatever the last plugin left:
// no program, the window's own frame, every colour written, fixed-function
// defaults, and the graphics state set through the cache (forced, since GL
// calls of plugins may have changed it behind the cache's back).
void ResetState(const int state[7]) {
  gGL.Viewport(0, 0, gConfig.screenWidth, gConfig.screenHeight);
  gGL.UseProgram(0);
  gGL.BindFramebuffer(GL_FRAMEBUFFER, 0);
  gGL.Disable(GL_SCISSOR_TEST);
  gGL.Disable(GL_CULL_FACE);
  gGL.ColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
  gGL.ActiveTexture(GL_TEXTURE0);
  gGL.BindTexture(GL_TEXTURE_2D, 0);
  gGL.TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
  gGL.BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  gGL.AlphaFunc(GL_GREATER, 0);
  gGL.DepthFunc(GL_LEQUAL);
  gGL.Color4f(1, 1, 1, 1);
  SetGraphicsState(state, true);
}

void SetScreenMatrices() {
  gGL.MatrixMode(GL_PROJECTION);
  gGL.LoadIdentity();
  gGL.Ortho(0, gConfig.screenWidth, 0, gConfig.screenHeight, -1, 1);
  gGL.MatrixMode(GL_MODELVIEW);
  gGL.LoadIdentity();
}

// The camera's view, the same that ProjectToScreen computes: heading turns
// to the right from north (-z), pitch up.
void SetCameraMatrices() {
  double focal = FocalLength();
  double right = kNear * gConfig.screenWidth / 2 / focal, top = kNear * gConfig.screenHeight / 2 / focal;
  gGL.MatrixMode(GL_PROJECTION);
  gGL.LoadIdentity();
  gGL.Frustum(-right, right, -top, top, kNear, kFar);
  gGL.MatrixMode(GL_MODELVIEW);
  gGL.LoadIdentity();
  gGL.Rotated(-gCamera[3], 1, 0, 0);
  gGL.Rotated(gCamera[4], 0, 1, 0);
  gGL.Translated(-gCamera[0], -gCamera[1], -gCamera[2]);
}

// The host's own drawing: flat, in screen coordinates, over whatever the
// depth buffer holds.
void BeginHostDrawing() {
  static const int kFlat[7] = {0, 0, 0, 0, 0, 0, 0};
  SetGraphicsState(kFlat, false);
}

// Fills a rectangle of the screen with a colour, as the rasteriser clears
// (far cheaper than shading a quad of the same size).
void Fill(int left, int bottom, int right, int top, uint32_t rgb) {
  if (right <= left || top <= bottom) return;
  gGL.Enable(GL_SCISSOR_TEST);
  gGL.Scissor(left, bottom, right - left, top - bottom);
  gGL.ClearColor((rgb >> 16 & 0xFF) / 255.0f, (rgb >> 8 & 0xFF) / 255.0f, (rgb & 0xFF) / 255.0f, 1);
  gGL.Clear(GL_COLOR_BUFFER_BIT);
  gGL.Disable(GL_SCISSOR_TEST);
}

void DrawSkyAndGround() {
  // Split at the horizon the camera sees.
  double horizon = gConfig.screenHeight / 2.0 - std::tan(gCamera[3] * kPi / 180) * FocalLength();
  int split = (int)std::ceil(std::max(0.0, std::min((double)gConfig.screenHeight, horizon)));
  Fill(0, 0, gConfig.screenWidth, split, kGround);
  Fill(0, split, gConfig.screenWidth, gConfig.screenHeight, kSky);
}

void DrawTrafficMarkers() {
  for (size_t i = 0; i < gAircraft.size(); ++i) {
    if (!gAircraft[i].active) continue;
    double x, y, z;
    WorldToLocalPoint(gAircraft[i].latitude, gAircraft[i].longitude, gAircraft[i].elevation, x, y, z);
    DrawMarker('A', (int)i, (float)x, (float)y, (float)z);
  }
}

void DrawStatusLine() {
  char status[128], behind[48] = "";
  if (gSecondsBehind > 0) std::snprintf(behind, sizeof behind, "  %.1f s behind real time", gSecondsBehind);
  std::snprintf(status, sizeof status, "frame %d  %.1f s%s%s", gFrame, gRunningTime,
                gPaused ? "  paused" : "", behind);
  float white[3] = {1, 1, 1};
  DrawText(white, 4, 4, status, 0, 0);
}

}  // namespace

bool OnScreen(int x, int y) {
  return x >= 0 && y >= 0 && x < gConfig.screenWidth && y < gConfig.screenHeight;
}

void BeginScreenCoordinates() {
  gGL.MatrixMode(GL_PROJECTION);
  gGL.PushMatrix();
  gGL.LoadIdentity();
  gGL.Ortho(0, gConfig.screenWidth, 0, gConfig.screenHeight, -1, 1);
  gGL.MatrixMode(GL_MODELVIEW);
  gGL.PushMatrix();
  gGL.LoadIdentity();
}

void EndScreenCoordinates() {
  gGL.MatrixMode(GL_PROJECTION);
  gGL.PopMatrix();
  gGL.MatrixMode(GL_MODELVIEW);
  gGL.PopMatrix();
}

void DrawRectangle(int left, int bottom, int right, int top) {
  gGL.Begin(GL_QUADS);
  gGL.Vertex2i(left, bottom);
  gGL.Vertex2i(right, bottom);
  gGL.Vertex2i(right, top);
  gGL.Vertex2i(left, top);
  gGL.End();
}

void ClearScreen() {
  gMarkers.clear();
  if (!Rendering()) return;
  static const int kClearing[7] = {0, 0, 0, 0, 0, 0, 1};  // depth writes on: glClear obeys them
  ResetState(kClearing);
  gGL.ClearColor(0, 0, 0, 1);
  gGL.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

void EndFrame() {
  if (Rendering()) gGL.Flush();
}

void PrepareDrawingCode(int code) {
  if (!Rendering()) return;
  bool world = IsWorldCode(code);
  // The world's codes test and write depth, as the simulator's 3-D phases do.
  const int state[7] = {0, 0, 0, 0, 0, world, world};
  ResetState(state);
  world ? SetCameraMatrices() : SetScreenMatrices();
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
  double focal = FocalLength();
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
  if (!marker.onScreen || !Rendering()) return;
  int cx = marker.screenX, cy = marker.screenY;
  BeginHostDrawing();
  BeginScreenCoordinates();
  if (kind == 'A') {  // a cross, 7 pixels each way
    SetColour(kAircraftMarker);
    DrawRectangle(cx - 3, cy, cx + 4, cy + 1);
    DrawRectangle(cx, cy - 3, cx + 1, cy + 4);
  } else {  // the outline of a square of 5 pixels
    SetColour(kObjectMarker);
    DrawRectangle(cx - 2, cy - 2, cx + 3, cy - 1);
    DrawRectangle(cx - 2, cy + 2, cx + 3, cy + 3);
    DrawRectangle(cx - 2, cy - 1, cx - 1, cy + 2);
    DrawRectangle(cx + 2, cy - 1, cx + 3, cy + 2);
  }
  EndScreenCoordinates();
}

void DrawHostPhase(int code) {
  if (!Rendering()) {
    if (code == 8) DrawTrafficMarkers();
    return;
  }
  void (*draw)() = code == 2    ? DrawSkyAndGround
                    : code == 8  ? DrawTrafficMarkers  // the aircraft the host flies
                    : code == 19 ? DrawStatusLine
                                 : nullptr;
  if (!draw) return;
  // What a plugin's before-callback left must not spoil the host's drawing.
  PrepareDrawingCode(code);
  draw();
}

}  // namespace toka_host
