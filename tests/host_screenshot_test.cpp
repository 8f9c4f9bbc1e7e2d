// Screenshots of the reference host: the PNG of a frame holds what the
// plugins drew, pixel for pixel, as worked out here from the window's
// rectangle and the font's cells (tests/plugins/host_panel.cpp draws a dark
// box over its window and "Panel 42" at (left + 5, top - 15) in white).
#include <gtest/gtest.h>
#include <png.h>

#include "harness/host_program.h"
#include "harness/temp_tree.h"
#include "host/host.h"

using namespace toka_host;
using namespace toka_test;

namespace {

struct Picture {
  int width = 0, height = 0;
  std::string rgb;

  bool Read(const std::string& path) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&image, path.c_str())) return false;
    image.format = PNG_FORMAT_RGB;
    rgb.assign(PNG_IMAGE_SIZE(image), '\0');
    if (!png_image_finish_read(&image, nullptr, &rgb[0], 0, nullptr)) return false;
    width = (int)image.width;
    height = (int)image.height;
    return true;
  }
  // Screen coordinates: y up from the bottom row.
  uint32_t At(int x, int y) const {
    size_t at = ((size_t)(height - 1 - y) * width + x) * 3;
    return (uint32_t)(unsigned char)rgb[at] << 16 | (uint32_t)(unsigned char)rgb[at + 1] << 8 |
           (unsigned char)rgb[at + 2];
  }
};

uint32_t Darkened(uint32_t colour) {
  return (colour >> 16 & 0xFF) / 4 << 16 | (colour >> 8 & 0xFF) / 4 << 8 | (colour & 0xFF) / 4;
}

const int kLeft = 100, kBottom = 600, kRight = 300, kTop = 700;
const std::string kText = "Panel 42";

// Whether the string's glyphs cover the pixel: each character is a cell of
// the font, its 5 x 7 dots one row below the cell's top.
bool IsTextPixel(int x, int y) {
  int cellWidth, cellHeight;
  FontCell(0, cellWidth, cellHeight);
  int textLeft = kLeft + 5, textBottom = kTop - 15;
  if (x < textLeft || x >= textLeft + cellWidth * (int)kText.size()) return false;
  int index = (x - textLeft) / cellWidth, column = (x - textLeft) % cellWidth;
  int row = textBottom + cellHeight - 2 - y;
  if (row < 0 || row >= kGlyphRows || column >= 5) return false;
  return GlyphRows((unsigned char)kText[index])[row] & (0x10 >> column);
}

class Screenshot : public ::testing::Test {
protected:
  TempTree tree;
  ProgramRun Run(const std::string& scenario) {
    tree.AddPlugin("Resources/plugins/host_panel.orv", "host_panel");
    std::string file = tree.AddFile("shots.scenario", scenario);
    return RunProgram(TOKA_HOST_BINARY, "--root '" + tree.root() + "' --library '" +
                                            TOKA_LIBRARY_FILE + "' --traffic 0 --scenario '" +
                                            file + "' --screenshot '" + tree.root() + "last.png'");
  }
};

TEST_F(Screenshot, TheWindowsDarkBoxAndTextAreWhereTheGeometryAndFontPutThem) {
  ProgramRun run = Run("at 2\nscreenshot \"" + tree.root() + "shown.png\"\nat 3\nkey F1\n");
  ASSERT_EQ(0, run.status) << run.err;

  Picture shown, last;
  ASSERT_TRUE(shown.Read(tree.root() + "shown.png"));
  ASSERT_TRUE(last.Read(tree.root() + "last.png"));
  EXPECT_EQ(1280, shown.width);
  EXPECT_EQ(800, shown.height);
  int text = 0, wrong = 0;
  std::string firstWrong;
  for (int y = kBottom - 1; y <= kTop; ++y) {
    // What lies behind the window on this row: the pixels just left and
    // right of it, which the window leaves alone (its right edge is outside).
    uint32_t behind = shown.At(kLeft - 1, y);
    ASSERT_EQ(behind, shown.At(kRight, y)) << "row " << y;
    for (int x = kLeft; x < kRight; ++x) {
      bool inside = y >= kBottom && y < kTop;
      bool isText = inside && IsTextPixel(x, y);
      text += isText;
      uint32_t expected = !inside ? behind : isText ? 0xFFFFFF : Darkened(behind);
      if (shown.At(x, y) == expected) continue;
      if (!wrong++) firstWrong = std::to_string(x) + "," + std::to_string(y);
    }
    // Once hidden (the last frame), the window is not drawn at all.
    for (int x = kLeft; x < kRight; ++x) ASSERT_EQ(last.At(kLeft - 1, y), last.At(x, y));
  }
  EXPECT_EQ(0, wrong) << "first wrong pixel at " << firstWrong;
  // Every dot of the string lies inside the window.
  int dots = 0;
  for (char c : kText)
    for (int row = 0; row < kGlyphRows; ++row)
      dots += __builtin_popcount(GlyphRows((unsigned char)c)[row]);
  EXPECT_EQ(dots, text);
  EXPECT_NE(Darkened(shown.At(kLeft - 1, kBottom)), shown.At(kLeft - 1, kBottom));
}

TEST_F(Screenshot, AFileThatCannotBeWrittenFailsTheStep) {
  ProgramRun run = Run("at 1\nscreenshot \"" + tree.root() + "no/folder/x.png\"\n");
  EXPECT_EQ(1, run.status);
  EXPECT_EQ(tree.root() + "shots.scenario:2: frame 1: screenshot \"" + tree.root() +
                "no/folder/x.png\"\n"
                "  expected: a picture in " + tree.root() + "no/folder/x.png\n"
                "  found:    cannot write the file\n"
                "toka-host: 1 of 1 steps failed\n",
            run.err);
}

}  // namespace
