// The least a library can cost a plugin: an exported function of a shared
// library, reached as plugins reach the library's (through the dynamic
// linker's table), that checks its handle and calls the accessor, with no
// dispatch context and nothing else. Its figure against a raw call is the
// floor under every ratio of a path through the library.
#include "floor.h"

extern "C" __attribute__((visibility("default"))) float TokaBenchFloorGet(FloorRecord* record) {
  if (!record || !record->read) return 0;
  return record->read(record->refcon);
}
