// Flight loops: a processing pass over loops none of which is due, per loop,
// against a bare walk of a list of the same length with the same test; and a
// pass in which every loop is due, per callback, against a direct call of
// the same callback. The loops run in phase 1 (event 10), which runs nothing
// but the loops.
#include <vector>

#include "bench_table.h"
#include "toka/TOKAProcessing.h"

using namespace toka_bench;

namespace {

float gElapsed = 0;

float NotDue(float, float, int, void*) { return 1e9f; }
float EveryCycle(float, float, int, void* refcon) {
  ++*static_cast<int*>(refcon);
  return -1;
}

std::vector<TOKAFlightLoopID> gLoops;

void MakeLoops(size_t count, TOKAFlightLoop_f callback, float interval, void* refcon) {
  for (TOKAFlightLoopID loop : gLoops) TOKADestroyFlightLoop(loop);
  gLoops.clear();
  TOKAEventHook(10, gElapsed, 0, 0);  // lets the removals take effect
  for (size_t i = 0; i < count; ++i) {
    TOKACreateFlightLoop_t params = {sizeof(TOKACreateFlightLoop_t), 1, callback, refcon};
    gLoops.push_back(TOKACreateFlightLoop(&params));
    TOKAScheduleFlightLoop(gLoops.back(), interval, 1);
  }
}

void PassNoneDue(benchmark::State& state) {
  MakeLoops((size_t)state.range(0), NotDue, 1e9f, nullptr);
  for (auto _ : state) TOKAEventHook(10, gElapsed += 0.016f, 0, 0);
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

// The same walk over a list of records allocated one by one, testing each
// as the pass does: alive, of the phase, due by time.
struct Node {
  Node* next;
  bool dead;
  int phase;
  float interval;
  float lastTime;
};

void BareWalk(benchmark::State& state) {
  Node* head = nullptr;
  for (long i = 0; i < state.range(0); ++i) head = new Node{head, false, 1, 1e9f, 0};
  for (auto _ : state) {
    float elapsed = gElapsed += 0.016f;
    int due = 0;
    for (Node* node = head; node; node = node->next) {
      if (node->dead || node->phase != 1) continue;
      due += node->interval > 0 && elapsed >= node->lastTime + node->interval;
    }
    benchmark::DoNotOptimize(due);
  }
  while (head) {
    Node* next = head->next;
    delete head;
    head = next;
  }
}

int gCalls = 0;
float (*volatile gCallback)(float, float, int, void*) = EveryCycle;

void PassAllDue(benchmark::State& state) {
  MakeLoops((size_t)state.range(0), EveryCycle, -1, &gCalls);
  for (auto _ : state) TOKAEventHook(10, gElapsed += 0.016f, 0, 0);
}

void RawCallback(benchmark::State& state) {
  int counter = 0;
  for (auto _ : state) benchmark::DoNotOptimize(gCallback(0.016f, gElapsed, ++counter, &gCalls));
}

}  // namespace

BENCHMARK(PassNoneDue)->Arg(32)->Arg(1000)->Arg(10000);
BENCHMARK(BareWalk)->Arg(32)->Arg(1000)->Arg(10000);
BENCHMARK(PassAllDue)->Arg(100);
BENCHMARK(RawCallback);

int main(int argc, char** argv) {
  TOKAInitializePlugins("/nonexistent/toka-bench/", NoopHost(), 0);
  std::vector<Row> rows;
  for (int size : {32, 1000, 10000}) {
    std::string n = std::to_string(size);
    rows.push_back({"flight-loop pass, none due, per loop, vs bare walk", n, "PassNoneDue/" + n,
                    "BareWalk/" + n, 3, (double)size, (double)size});
  }
  rows.push_back({"flight-loop pass, per due callback, vs raw call", "100", "PassAllDue/100",
                  "RawCallback", 2.5, 100, 1});
  int failing = RunAndPrintTable(argc, argv, rows);
  TOKAShutdownPlugins();
  return failing;
}
