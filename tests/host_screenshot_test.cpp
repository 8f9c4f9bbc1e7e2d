// Screenshots of the reference host: the PNG of a frame holds what the
// plugins drew, pixel for pixel, as worked out here from a window's rectangle
// and the font's metrics. The hello example runs in the host's frame loop in
// this process, where a scripted plugin asks the library where hello's
// window is and what the font measures; a fixture plugin's window
// (tests/plugins/host_panel.cpp: a dark box from (100, 600) to (300, 700)
// with "Panel 42" at (left + 5, top - 15)) is checked in a run of the
// toka-host program, with its --screenshot of the last frame.
#include <gtest/gtest.h>

#include "harness/harness.h"
#include "harness/picture.h"
#include "harness/host_program.h"
#include "host/host.h"

using namespace toka_host;
using namespace toka_test;

namespace {

uint32_t Darkened(uint32_t colour) {
  return (colour >> 16 & 0xFF) / 4 << 16 | (colour >> 8 & 0xFF) / 4 << 8 | (colour & 0xFF) / 4;
}

struct Rect {
  int left, top, right, bottom;
};

// A string in font 0 placed by its baseline's left end, in a cell of the
// font's size per character.
struct Text {
  std::string text;
  int x, y;
};

struct Font {
  int cellWidth, cellHeight;
};

// The text whose glyph dots cover the pixel, or -1: each character's 5 x 7
// dots sit at the left of its cell, one row below the cell's top.
int TextAt(const std::vector<Text>& texts, Font font, int x, int y) {
  for (size_t i = 0; i < texts.size(); ++i) {
    const Text& t = texts[i];
    if (x < t.x || x >= t.x + font.cellWidth * (int)t.text.size()) continue;
    int index = (x - t.x) / font.cellWidth, column = (x - t.x) % font.cellWidth;
    int row = t.y + font.cellHeight - 2 - y;
    if (row < 0 || row >= kGlyphRows || column >= 5) continue;
    if (GlyphRows((unsigned char)t.text[index])[row] & (0x10 >> column)) return (int)i;
  }
  return -1;
}

// Inside the window every pixel is what lies behind it (the pixels just left
// and right of it on the same row, which it leaves alone) darkened, except
// the texts' glyph dots, each text in one colour of its own; the rows just
// below and above are left alone.
void ExpectWindowDrawn(const Picture& picture, Rect window, const std::vector<Text>& texts,
                       Font font) {
  std::vector<int> dotsFound(texts.size()), dotsExpected(texts.size());
  std::vector<uint32_t> colours(texts.size());
  for (size_t i = 0; i < texts.size(); ++i)
    for (char c : texts[i].text)
      for (int row = 0; row < kGlyphRows; ++row)
        dotsExpected[i] += __builtin_popcount(GlyphRows((unsigned char)c)[row]);
  int wrong = 0;
  std::string firstWrong;
  for (int y = window.bottom - 1; y <= window.top; ++y) {
    uint32_t behind = picture.At(window.left - 1, y);
    ASSERT_EQ(behind, picture.At(window.right, y)) << "row " << y;
    ASSERT_NE(Darkened(behind), behind) << "row " << y << " would not show a dark box";
    bool inside = y >= window.bottom && y < window.top;
    for (int x = window.left; x < window.right; ++x) {
      int text = inside ? TextAt(texts, font, x, y) : -1;
      uint32_t pixel = picture.At(x, y);
      if (text >= 0 && dotsFound[text]++ == 0) colours[text] = pixel;
      uint32_t expected = !inside ? behind : text >= 0 ? colours[text] : Darkened(behind);
      bool right = pixel == expected && (text < 0 || pixel != Darkened(behind));
      if (!right && !wrong++) firstWrong = std::to_string(x) + "," + std::to_string(y);
    }
  }
  EXPECT_EQ(0, wrong) << "first wrong pixel at " << firstWrong;
  // Every dot of every text lies inside the window.
  EXPECT_EQ(dotsExpected, dotsFound);
}

// Where a hidden window was, nothing is darkened and nothing is written.
void ExpectNothingDrawn(const Picture& picture, Rect window) {
  for (int y = window.bottom; y < window.top; ++y)
    for (int x = window.left; x < window.right; ++x)
      ASSERT_EQ(picture.At(window.left - 1, y), picture.At(x, y)) << x << "," << y;
}

// ---- the hello example -----------------------------------------------------

class HelloScreenshot : public ::testing::Test {
protected:
  TempTree tree;
  std::string output;
  HostOptions options;
  bool running = false;

  void SetUp() override {
    SetOutputCapture(&output);
    std::string hello = ReadFile(std::string(TOKA_EXAMPLES_DIR) + "/hello.orv");
    ASSERT_FALSE(hello.empty()) << "the hello example was not built";
    tree.AddFile("Resources/plugins/hello.orv", hello);
    PluginScript& tester = Script(tree.AddPlugin("Resources/plugins/tester.orv", "scripted"));
    tester.name = "tester";
    tester.signature = "test.tester";
    options.config.root = tree.root();
    options.config.otherAircraft = 0;
    options.library = TOKA_LIBRARY_FILE;
  }
  void TearDown() override {
    if (running) StopHost();
    SetOutputCapture(nullptr);
  }
  void At(int frame, const std::string& text) {
    ScenarioStep step;
    std::string error;
    ASSERT_TRUE(ParseScenarioStep(text, frame, "--at", step, error)) << text << ": " << error;
    options.steps.push_back(step);
  }
};

TEST_F(HelloScreenshot, ItsDarkBoxCoversItsWindowAndItsTwoLinesSitInsideWhereTheFontPutsThem) {
  const std::string shown = tree.root() + "shown.png", hidden = tree.root() + "hidden.png";
  At(2, "screenshot \"" + shown + "\"");
  At(3, "key F6");
  At(3, "screenshot \"" + hidden + "\"");
  std::string error;
  ASSERT_TRUE(StartHost(options, error)) << error;
  running = true;

  // The library lists no windows; the host, which sees them created, tells
  // which one covers a point.
  SeenWindow seen{};
  for (int y = 0; y < gConfig.screenHeight && seen.plugin != "Hello"; y += 8)
    for (int x = 0; x < gConfig.screenWidth && seen.plugin != "Hello"; x += 8) WindowAt(x, y, seen);
  ASSERT_EQ("Hello", seen.plugin);

  // Hello's lines: a greeting, and two lines further down the key and the
  // menu item that toggle the window, 10 pixels in from its top-left corner.
  std::vector<Text> texts = {{"Hello, world!", 0, 0},
                             {"F6 or Plugins > Hello shows and hides me.", 0, 0}};
  Rect window{};
  Font font{};
  std::vector<float> widths;
  RunAs(TOKAFindPluginBySignature("test.tester"), [&] {
    TOKAGetWindowGeometry(seen.handle, &window.left, &window.top, &window.right, &window.bottom);
    TOKAGetFontDimensions(0, &font.cellWidth, &font.cellHeight, nullptr);
    for (const Text& t : texts) widths.push_back(TOKAMeasureString(0, t.text.c_str(), (int)t.text.size()));
  });
  ASSERT_EQ(texts.size(), widths.size()) << "the tester did not run";
  for (size_t i = 0; i < texts.size(); ++i) {
    texts[i].x = window.left + 10;
    texts[i].y = window.top - 10 - font.cellHeight - 2 * font.cellHeight * (int)i;
    // A fixed-width font: the string fills its cells, and they fit the window.
    EXPECT_EQ(font.cellWidth * (float)texts[i].text.size(), widths[i]);
    EXPECT_LE(texts[i].x + widths[i], window.right) << texts[i].text;
    EXPECT_GE(texts[i].y, window.bottom) << texts[i].text;
  }

  for (int frame = 0; frame < 3; ++frame) RunFrame();
  StopHost();
  running = false;
  Picture picture;
  ASSERT_TRUE(picture.Read(shown));
  ASSERT_EQ(gConfig.screenWidth, picture.width);
  ASSERT_EQ(gConfig.screenHeight, picture.height);
  ExpectWindowDrawn(picture, window, texts, font);
  ASSERT_TRUE(picture.Read(hidden));
  ExpectNothingDrawn(picture, window);
}

// ---- a run of the program --------------------------------------------------

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

TEST_F(Screenshot, TheProgramWritesTheFramesOfScreenshotStepsAndItsLastFrame) {
  ProgramRun run = Run("at 2\nscreenshot \"" + tree.root() + "shown.png\"\nat 3\nkey F1\n");
  ASSERT_EQ(0, run.status) << run.err;
  Picture shown, last;
  ASSERT_TRUE(shown.Read(tree.root() + "shown.png"));
  ASSERT_TRUE(last.Read(tree.root() + "last.png"));
  EXPECT_EQ(1280, shown.width);
  EXPECT_EQ(800, shown.height);
  Rect panel{100, 700, 300, 600};
  int cellWidth, cellHeight;
  FontCell(0, cellWidth, cellHeight);
  ExpectWindowDrawn(shown, panel, {{"Panel 42", panel.left + 5, panel.top - 15}},
                    {cellWidth, cellHeight});
  // F1 hid the panel before the last frame was drawn.
  ExpectNothingDrawn(last, panel);
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
