// Tests written against the earlier data helpers include this name; the
// helpers now all live in the shared harness.
#include "harness/harness.h"
