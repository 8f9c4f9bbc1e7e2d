// Drawing and input: a whole frame of drawing codes 1 to 26 with 100 draw
// callbacks and 50 windows, and the key, mouse-down, mouse-up and cursor
// hooks with 50 windows and 20 key sniffers, each per plugin callback it
// makes, against a direct call of the same callback.
#include "bench_table.h"
#include "toka/TOKADisplay.h"

using namespace toka_bench;

namespace {

const int kDrawCallbacks = 100, kWindows = 50, kSniffers = 20;
// The phases of the drawing codes, each with before and after callbacks.
const int kPhases[] = {0, 5, 10, 15, 20, 25, 30, 35, 40, 45, 55, 50, 100, 101, 102};

long gCalls = 0;
int Draw(int, int, void*) {
  ++gCalls;
  return 1;
}
void DrawWindow(TOKAWindowID, void*) { ++gCalls; }
void Key(TOKAWindowID, char, int, char, void*, int) { ++gCalls; }
int Mouse(TOKAWindowID, int, int, int, void*) {
  ++gCalls;
  return 1;
}
int Cursor(TOKAWindowID, int, int, void*) {
  ++gCalls;
  return 1;
}
int Sniff(char, int, char, void*) {
  ++gCalls;
  return 1;
}

TOKAWindowID gFront = nullptr;

// Windows side by side, 20 pixels wide, the newest in front; the mouse and
// the cursor are over the front window, as they are over the window a user
// works in.
void Setup() {
  for (int i = 0; i < kDrawCallbacks; ++i) {
    int phase = kPhases[(i / 2) % (sizeof kPhases / sizeof kPhases[0])];
    TOKARegisterDrawCallback(Draw, phase, i % 2, (void*)(intptr_t)(i + 1));
  }
  for (int i = 0; i < kWindows; ++i) {
    TOKACreateWindow_t params = {sizeof(TOKACreateWindow_t), i * 20, 100, i * 20 + 20, 0, 1,
                                 DrawWindow, Mouse, Key, Cursor, nullptr, nullptr};
    gFront = TOKACreateWindowEx(&params);
  }
  TOKATakeKeyboardFocus(gFront);
  for (int i = 0; i < kSniffers; ++i)
    TOKARegisterKeySniffer(Sniff, i % 2, (void*)(intptr_t)(i + 1));
}

// Calls per iteration, counted once before the timing.
template <class F>
double CountCalls(F frame) {
  long before = gCalls;
  frame();
  return (double)(gCalls - before);
}

void DrawingFrame() {
  for (int code = 1; code <= 26; ++code) TOKADoDrawingHook(code, 0);
}
void KeyPress() { TOKAKeyPressHook('a', 0, 'A'); }
const int kFrontX = (kWindows - 1) * 20 + 5;
void MouseClick() {
  TOKAMouseClickHook(kFrontX, 50, 1);
  TOKAMouseClickHook(kFrontX, 50, 0);
}
void CursorQuery() { TOKACursorHook(kFrontX, 50); }

double gDrawCalls, gKeyCalls, gMouseCalls, gCursorCalls;

void Drawing(benchmark::State& state) {
  for (auto _ : state) DrawingFrame();
}
void Keys(benchmark::State& state) {
  for (auto _ : state) KeyPress();
}
void MouseClicks(benchmark::State& state) {
  for (auto _ : state) MouseClick();
}
void Cursors(benchmark::State& state) {
  for (auto _ : state) CursorQuery();
}

int (*volatile gDraw)(int, int, void*) = Draw;
void RawCall(benchmark::State& state) {
  int phase = 0;
  for (auto _ : state) benchmark::DoNotOptimize(gDraw(++phase, 1, nullptr));
}

}  // namespace

BENCHMARK(Drawing);
BENCHMARK(Keys);
BENCHMARK(MouseClicks);
BENCHMARK(Cursors);
BENCHMARK(RawCall);

int main(int argc, char** argv) {
  TOKAInitializePlugins("/nonexistent/toka-bench/", NoopHost(), 0);
  Setup();
  gDrawCalls = CountCalls(DrawingFrame);
  gKeyCalls = CountCalls(KeyPress);
  gMouseCalls = CountCalls(MouseClick);
  gCursorCalls = CountCalls(CursorQuery);
  std::string setting = "100 draw callbacks, 50 windows, 20 sniffers";
  int failing = RunAndPrintTable(argc, argv, {
      {"drawing hook, codes 1-26, per callback, vs raw call", setting, "Drawing", "RawCall", 2.5,
       gDrawCalls},
      {"key hook, per callback, vs raw call", setting, "Keys", "RawCall", 2.5, gKeyCalls},
      {"mouse down and up, per callback, vs raw call", setting, "MouseClicks", "RawCall", 2.5,
       gMouseCalls},
      {"cursor hook, per callback, vs raw call", setting, "Cursors", "RawCall", 2.5,
       gCursorCalls},
  });
  TOKAShutdownPlugins();
  return failing;
}
