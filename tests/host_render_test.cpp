// What the reference host draws through OpenGL: the panel fixture's window
// (tests/plugins/host_panel.cpp), pixel for pixel, in runs of toka-host; and
// a scripted plugin in this process using the graphics services and GL.
#include <GL/gl.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <set>

#include "harness/host_program.h"
#include "harness/picture.h"
#include "host/config.h"
#include "host/render/render.h"
#include "host/world/aircraft.h"
#include "host/world/world.h"

using namespace toka_host;
using namespace toka_test;

namespace {

uint32_t Darkened(uint32_t colour) {
  return (colour >> 16 & 0xFF) / 4 << 16 | (colour >> 8 & 0xFF) / 4 << 8 | (colour & 0xFF) / 4;
}

struct Rect {
  int left, top, right, bottom;
};

// Whether a glyph dot of text, in font 0 with its baseline's left end at
// (x0, y0), covers the pixel: each character's 5 x 7 dots sit at the left of
// its cell, one row below the cell's top.
bool TextAt(const std::string& text, int x0, int y0, int x, int y) {
  int cellWidth, cellHeight;
  FontCell(0, cellWidth, cellHeight);
  if (x < x0 || x >= x0 + cellWidth * (int)text.size()) return false;
  int index = (x - x0) / cellWidth, column = (x - x0) % cellWidth, row = y0 + cellHeight - 2 - y;
  if (row < 0 || row >= kGlyphRows || column >= 5) return false;
  return GlyphRows((unsigned char)text[index])[row] & (0x10 >> column);
}

// Inside the window every pixel is what lies behind it (the pixels just left
// and right of it on the same row, which it leaves alone) darkened, except
// the text's glyph dots, all in one colour; the rows just below and above
// are left alone.
void ExpectWindowDrawn(const Picture& picture, Rect window, const std::string& text, int x0, int y0) {
  int dotsExpected = 0, dotsFound = 0, wrong = 0;
  for (char c : text)
    for (int row = 0; row < kGlyphRows; ++row) dotsExpected += __builtin_popcount(GlyphRows((unsigned char)c)[row]);
  uint32_t colour = 0;
  std::string firstWrong;
  for (int y = window.bottom - 1; y <= window.top; ++y) {
    uint32_t behind = picture.At(window.left - 1, y);
    ASSERT_EQ(behind, picture.At(window.right, y)) << "row " << y;
    ASSERT_NE(Darkened(behind), behind) << "row " << y << " would not show a dark box";
    bool inside = y >= window.bottom && y < window.top;
    for (int x = window.left; x < window.right; ++x) {
      bool dot = inside && TextAt(text, x0, y0, x, y);
      uint32_t pixel = picture.At(x, y);
      if (dot && dotsFound++ == 0) colour = pixel;
      uint32_t expected = !inside ? behind : dot ? colour : Darkened(behind);
      // GL's blending rounds where a quarter of a channel is not whole.
      bool right = PixelMatches(pixel, expected, 1) && (!dot || !PixelMatches(pixel, Darkened(behind), 1));
      if (!right && !wrong++) firstWrong = std::to_string(x) + "," + std::to_string(y);
    }
  }
  EXPECT_EQ(0, wrong) << "first wrong pixel at " << firstWrong;
  EXPECT_EQ(dotsExpected, dotsFound);  // every dot lies inside the window
}

// Where a hidden window was, nothing is darkened and nothing is written.
void ExpectNothingDrawn(const Picture& picture, Rect window) {
  for (int y = window.bottom; y < window.top; ++y)
    for (int x = window.left; x < window.right; ++x)
      ASSERT_EQ(picture.At(window.left - 1, y), picture.At(x, y)) << x << "," << y;
}

// ---- a run of the program --------------------------------------------------

class HostScreenshot : public ::testing::Test {
protected:
  TempTree tree;
  ProgramRun Run(const std::string& scenario,
                 const std::string& more = " --screenshot last.png") {
    tree.AddPlugin("Resources/plugins/host_panel.orv", "host_panel");
    std::string file = tree.AddFile("shots.scenario", scenario);
    // In the tree, so that relative picture names land there.
    return RunProgram("/bin/sh", "-c \"cd '" + tree.root() + "' && exec '" + TOKA_HOST_BINARY +
                                     "' --root . --library '" + TOKA_LIBRARY_FILE +
                                     "' --traffic 0 --scenario shots.scenario" + more + "\"");
  }
};

// The frames of screenshot steps and the last frame are written; a frame
// compared with a picture of itself taken by another run matches, and with
// the panel hidden its 200 x 100 pixels differ, and the frame and the
// differences are written beside the picture.
TEST_F(HostScreenshot, FramesAreWrittenAndMatchPicturesOfEarlierRunsAndDifferencesArePointedOut) {
  ProgramRun run = Run("at 2\nscreenshot ref.png\n"
                       "screenshot \"" + tree.root() + "no/folder/x.png\"\nat 3\nkey F1\n");
  EXPECT_EQ(1, run.status);
  EXPECT_EQ("shots.scenario:3: frame 2: screenshot \"" + tree.root() + "no/folder/x.png\"\n"
            "  expected: a picture in " + tree.root() + "no/folder/x.png\n"
            "  found:    cannot write the file\n"
            "toka-host: 1 of 3 steps failed\n",
            run.err);
  Picture reference, last;
  ASSERT_TRUE(reference.Read(tree.root() + "ref.png"));
  ASSERT_TRUE(last.Read(tree.root() + "last.png"));
  Rect panel{100, 700, 300, 600};
  ExpectWindowDrawn(reference, panel, "Panel 42", panel.left + 5, panel.top - 15);
  // F1 hid the panel before the last frame was drawn.
  ExpectNothingDrawn(last, panel);

  run = Run("at 2\nexpect screenshot matches ref.png\n", "");
  EXPECT_EQ(0, run.status) << run.err;
  char colour[8];
  std::snprintf(colour, sizeof colour, "#%06X", reference.At(150, 650));
  run = Run(std::string("at 2\nkey F1\nexpect screenshot matches ref.png\n") +
                "expect screenshot matches ref.png within 2%\n"
                "expect screenshot matches ref.png within 1.9%\n"
                "expect pixel 150 650 " + colour + "\n",
            "");
  EXPECT_EQ(3, run.status);
  Picture actual, difference;
  ASSERT_TRUE(actual.Read(tree.root() + "ref.actual.png"));
  ASSERT_TRUE(difference.Read(tree.root() + "ref.diff.png"));
  char found[8];
  std::snprintf(found, sizeof found, "#%06X", actual.At(150, 650));
  const std::string paths = "; the frame is in ref.actual.png, the differences in ref.diff.png\n";
  EXPECT_EQ(std::string("shots.scenario:3: frame 2: expect screenshot matches ref.png\n") +
                "  expected: the frame as in ref.png\n"
                "  found:    20000 pixels (1.953%) differ by more than 2" + paths +
                "shots.scenario:5: frame 2: expect screenshot matches ref.png within 1.9%\n"
                "  expected: the frame as in ref.png but for 1.9% of its pixels\n"
                "  found:    20000 pixels (1.953%) differ by more than 2" + paths +
                "shots.scenario:6: frame 2: expect pixel 150 650 " + colour + "\n" +
                "  expected: " + colour + " within 2 at (150, 650)\n" +
                "  found:    " + found + "\n" + "toka-host: 3 of 5 steps failed\n",
            run.err);
  // Red where the panel was, nowhere else.
  for (int y = 0; y < difference.height; ++y)
    for (int x = 0; x < difference.width; ++x) {
      bool panel = x >= 100 && x < 300 && y >= 600 && y < 700;
      ASSERT_EQ(panel, difference.At(x, y) == 0xFF0000u) << x << "," << y;
    }
}

// With --render none the plugins run and draw as before, into nothing, and
// whatever needs a picture is refused before the run; without a driver or a
// display the host says what is missing instead of drawing.
TEST_F(HostScreenshot, RunsWithoutPicturesAndWithoutADriver) {
  ProgramRun run = Run("at 1\nexpect window at 150 650\n", " --render none --screenshot a.png");
  EXPECT_EQ(kCannotRunStatus, run.status);
  EXPECT_EQ("toka-host: --render none draws no pictures: --screenshot needs --render gl\n", run.err);
  run = Run("at 1\nexpect pixel 1 1 #000000\n", " --render none");
  EXPECT_EQ(kCannotRunStatus, run.status);
  EXPECT_EQ("toka-host: --render none draws no pictures: shots.scenario:2: expect pixel 1 1 "
            "#000000 needs --render gl\n",
            run.err);
  EXPECT_EQ("", run.out);  // no plugin was loaded

  setenv("__EGL_VENDOR_LIBRARY_FILENAMES", "/nonexistent.json", 1);
  run = Run("at 1\nexpect window at 150 650\n", "");
  EXPECT_EQ(kCannotRunStatus, run.status);
  const std::string start = "toka-host: cannot draw: EGL finds no OpenGL driver (";
  const std::string end = "); run with --render none to run without pictures\n";
  EXPECT_EQ(0u, run.err.find(start)) << run.err;
  EXPECT_EQ(run.err.size() - end.size(), run.err.find(end)) << run.err;
  EXPECT_EQ(1, std::count(run.err.begin(), run.err.end(), '\n')) << run.err;
  run = Run("at 1\nexpect host-call DrawTranslucentDarkBox count 1\nexpect window at 150 650\n",
            " --render none");
  EXPECT_EQ(0, run.status) << run.err;
  unsetenv("DISPLAY");
  unsetenv("WAYLAND_DISPLAY");
  run = Run("", " --window");
  EXPECT_EQ(kCannotRunStatus, run.status);
  EXPECT_EQ("toka-host: --window needs a display (X11: The DISPLAY environment variable is missing)\n",
            run.err);
}

// ---- plugins' own GL -------------------------------------------------------

int Sabotage(int, int, void*) {
  // Behind the graphics state's back, as careless plugins do.
  glEnable(GL_SCISSOR_TEST);
  glScissor(0, 0, 1, 1);
  glColorMask(GL_FALSE, GL_TRUE, GL_FALSE, GL_TRUE);
  glEnable(GL_BLEND);
  glBlendFunc(GL_ZERO, GL_ZERO);
  glEnable(GL_TEXTURE_2D);
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glScaled(0.1, 0.1, 0.1);
  glColor3ub(1, 2, 3);
  glPixelStorei(GL_PACK_ROW_LENGTH, 3);
  glPixelStorei(GL_PACK_SKIP_PIXELS, 5);
  return 1;
}

int PointAtTheUsersAircraft(int, int, void*) {
  double x, y, z;
  WorldToLocalPoint(gAircraft[0].latitude, gAircraft[0].longitude, gAircraft[0].elevation, x, y, z);
  glPointSize(9);
  glColor3ub(255, 0, 0);
  glBegin(GL_POINTS);
  glVertex3d(x, y, z);
  glEnd();
  glPointSize(1);
  return 1;
}

int SquareOnThePanel(int, int, void*) {
  glColor3ub(0, 0, 255);
  glRecti(10, 20, 20, 30);
  return 1;
}

using HostGraphics = HostTest;

// Plugins draw with the simulator's projections: the world in the camera's
// view (a point at the user's aircraft lands on its marker), the panel in
// screen coordinates; whatever state one leaves, the host's own drawing and
// its pictures of the frame are whole. The graphics services act on the
// context the plugins draw into; the state is remembered, so that asking
// again for what is set costs no GL call.
TEST_F(HostGraphics, PluginsDrawWithTheSimulatorsProjectionsAndServicesAndCannotSpoilTheHostsDrawing) {
  options.render = true;
  options.config.otherAircraft = 0;
  Start();
  AsTester([&] {
    TOKARegisterDrawCallback(Sabotage, 5, 1, nullptr);               // before the sky
    TOKARegisterDrawCallback(PointAtTheUsersAircraft, 20, 0, nullptr);  // after the aircraft
    TOKARegisterDrawCallback(SquareOnThePanel, 40, 0, nullptr);      // after the panel
  });
  Frames(1);
  const Marker* user = nullptr;
  for (const Marker& marker : gMarkers)
    if (marker.kind == 'A' && marker.index == 0) user = &marker;
  ASSERT_TRUE(user && user->onScreen);
  EXPECT_EQ(0xFF0000u, PixelAt(user->screenX, user->screenY));
  EXPECT_EQ(0x0000FFu, PixelAt(15, 25));
  EXPECT_EQ(0x0000FFu, PixelAt(10, 20));
  EXPECT_NE(0x0000FFu, PixelAt(20, 30));
  // The sky across the top row, and the status line's first dot ("f").
  std::vector<uint32_t> screen = ReadScreen();
  for (int x = 0; x < gConfig.screenWidth; ++x) ASSERT_EQ(0x5A7FB0u, screen[x]) << x;
  EXPECT_EQ(0xFFFFFFu, PixelAt(4, 9));

  AsTester([&] {
    TOKASetGraphicsState(1, 2, 1, 1, 1, 1, 0);
    for (GLenum on : {GL_FOG, GL_LIGHTING, GL_ALPHA_TEST, GL_BLEND, GL_DEPTH_TEST})
      EXPECT_TRUE(glIsEnabled(on)) << on;
    GLboolean depthWrites = GL_TRUE;
    glGetBooleanv(GL_DEPTH_WRITEMASK, &depthWrites);
    EXPECT_FALSE(depthWrites);
    for (int unit = 0; unit < kTextureUnits; ++unit) {
      glActiveTexture(GL_TEXTURE0 + unit);
      EXPECT_EQ(unit < 2, (bool)glIsEnabled(GL_TEXTURE_2D)) << unit;
    }
    glActiveTexture(GL_TEXTURE0);
    long calls = gGraphicsStateGLCalls;
    TOKASetGraphicsState(1, 2, 1, 1, 1, 1, 0);
    EXPECT_EQ(calls, gGraphicsStateGLCalls);
    TOKASetGraphicsState(1, 2, 1, 1, 0, 1, 0);
    EXPECT_EQ(calls + 1, gGraphicsStateGLCalls);
    EXPECT_FALSE(glIsEnabled(GL_BLEND));

    // Texture numbers are GL's: reserved, so that GL hands them out no more.
    int numbers[3];
    TOKAGenerateTextureNumbers(numbers, 3);
    GLuint next = 0;
    glGenTextures(1, &next);
    std::set<int> all = {numbers[0], numbers[1], numbers[2], (int)next, TOKAGetTexture(0),
                         TOKAGetTexture(1)};
    EXPECT_EQ(6u, all.size());
    EXPECT_EQ(0u, all.count(0));
    EXPECT_TRUE(glIsTexture(TOKAGetTexture(0)) && glIsTexture(TOKAGetTexture(1)));
    TOKABindTexture2d(numbers[1], 1);
    GLint active = 0, bound = 0;
    glGetIntegerv(GL_ACTIVE_TEXTURE, &active);
    EXPECT_EQ(GL_TEXTURE0, active);
    glActiveTexture(GL_TEXTURE1);
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
    glActiveTexture(GL_TEXTURE0);
    EXPECT_EQ(numbers[1], bound);
  });
}

}  // namespace
