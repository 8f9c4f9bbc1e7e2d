// A record of the floor library (floor.cpp): an accessor and its refcon.
#ifndef TOKA_BENCH_FLOOR_H
#define TOKA_BENCH_FLOOR_H

struct FloorRecord {
  float (*read)(void*);
  void* refcon;
};

extern "C" float TokaBenchFloorGet(FloorRecord* record);

#endif
