// What the host draws, through OpenGL (render/gl.h): the frame's drawing
// codes with the projection and state the simulator sets for each, the
// host's own part of a phase, the screen services plugins call (graphics
// state, textures, text in the built-in fonts, dark boxes), the mouse,
// markers where aircraft and objects are, and pictures of the frame. With no
// context (--render none) nothing is drawn and the services only keep
// their bookkeeping.
#ifndef TOKA_HOST_RENDER_RENDER_H
#define TOKA_HOST_RENDER_RENDER_H

#include <cstdint>
#include <string>
#include <vector>

namespace toka_host {

// ---- the frame -------------------------------------------------------------

extern int gMouseX, gMouseY;
void ResetScreen();
// The start of a frame: black, depth cleared, no markers.
void ClearScreen();
// Before drawing code 1 to 26: the camera's 3-D view for the world's codes
// (1 to 12), screen coordinates ((0, 0) bottom-left) for the others, and the
// simulator's default state, whatever a plugin left behind.
void PrepareDrawingCode(int code);
void DrawHostPhase(int code);   // what the host draws itself when a phase is not skipped
// The end of a frame: everything drawn goes to the rasteriser, as a window's
// swap would send it.
void EndFrame();

struct Marker {
  char kind;  // 'A' aircraft, 'O' object instance
  int index;  // aircraft index, or object number
  float x, y, z;
  bool onScreen;
  int screenX, screenY;
};
extern std::vector<Marker> gMarkers;  // drawn this frame
void DrawMarker(char kind, int index, float x, float y, float z);
// Projects a local point through the camera; false when behind it. The same
// projection as GL's at the world's drawing codes.
bool ProjectToScreen(double x, double y, double z, double& screenX, double& screenY);

bool OnScreen(int x, int y);  // a pixel of the screen

// Host drawing in screen coordinates, whatever the matrices are: between
// Begin and End, DrawRectangle fills whole pixels, left and bottom edges
// inside, right and top outside.
void BeginScreenCoordinates();
void EndScreenCoordinates();
void DrawRectangle(int left, int bottom, int right, int top);
// Three quarters of the way to black, through the graphics state.
void DrawDarkBox(int left, int bottom, int right, int top);
// Text in a built-in font (0: 6 x 10 pixels, 1: 12 x 20), placed by its
// baseline's left end; broken at newlines and at wrapWidth pixels (0: never).
void DrawText(const float* rgb, int x, int y, const std::string& text, int wrapWidth, int font);

// ---- graphics state and textures -------------------------------------------

// The seven switches of the set-graphics-state service: fog, the number of
// texture units with texturing on, lighting, alpha test, blending, depth
// test, depth writes. The host remembers what it set and makes GL calls only
// for what changes; force makes them all (the state may have been changed
// behind its back).
constexpr int kTextureUnits = 4;
extern int gGraphicsState[7];
void SetGraphicsState(const int state[7], bool force);
// GL calls the graphics state has made since start: what a repeated call
// costs shows here.
extern long gGraphicsStateGLCalls;

// The host's own textures, made once per context: the font and the panel.
void CreateHostTextures();
unsigned CreateTexture(int width, int height, const uint8_t* rgba);

// ---- font ------------------------------------------------------------------

// The built-in bitmap font: cell size per font, glyph rows per character.
void FontCell(int font, int& width, int& height);
const uint8_t* GlyphRows(unsigned char c);  // 7 rows of 5 bits, bit 4 leftmost
constexpr int kGlyphRows = 7;
// The font texture and where a character's cell lies in it, in texels.
constexpr int kFontTextureWidth = 128, kFontTextureHeight = 64;
unsigned CreateFontTexture();
void FontTextureCell(unsigned char c, int& left, int& bottom);

// ---- pictures of the frame -------------------------------------------------

// Reads of the frame: its own framebuffer, tightly packed into memory.
void PrepareReadBack();
// The whole frame as GL has it: RGBA, rows from the bottom.
void ReadFrame(std::vector<uint8_t>& rgba);
// Pixels as 0xRRGGBB; all black without a context.
uint32_t PixelAt(int x, int y);  // screen coordinates, y up
std::vector<uint32_t> ReadScreen();  // row 0 at the top, as pictures have it
bool SaveScreen(const std::string& path);  // PNG; false without a context
// How far a channel may be off for pixels to count as the same.
constexpr int kPixelTolerance = 2;
bool PixelMatches(uint32_t actual, uint32_t expected, int tolerance);
// Compares the frame with a PNG: true when every pixel is within
// kPixelTolerance per channel, or at most percent of them (when percent >= 0)
// are not. Otherwise found says how many differ, and the frame and a picture
// of the differences are written beside the file (NAME.actual.png,
// NAME.diff.png), their paths in found.
bool CompareScreen(const std::string& file, double percent, std::string& found);

}  // namespace toka_host

#endif
