// The resource list: deferred deletion during walks, and parked records that
// outlive the walks standing on them.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "loader/resource_list.h"

namespace {

using Names = std::vector<std::string>;
int gDestroyed = 0;

// Like a hot key record, it owns a string: its destructor must run.
struct Record : TOKAResource_t<Record> {
  explicit Record(std::string n) : name(std::move(n)) {}
  ~Record() { ++gDestroyed; }
  std::string name;
};

// Starts as a, b, c (added c first).
struct List : TOKAResourceList<Record> {
  Record *c = Add("c"), *b = Add("b"), *a = Add("a");
  Record* Add(const std::string& name) {
    Record* r = new Record(name);
    TOKAResourceList<Record>::Add(r);
    return r;
  }
  Names Walk() {
    Names names;
    for (Record* r = BeginIterate(); r; r = r->get_next())
      names.push_back(r->name + (r->is_dead() ? "(dead)" : ""));
    EndIterate();
    return names;
  }
};

class ResourceList : public ::testing::Test {
protected:
  void SetUp() override { gDestroyed = 0; }
  List list;
};

TEST_F(ResourceList, RemovalsDuringAWalkWaitForTheNextEndOfAnyWalk) {
  Names visited;
  for (Record* r = list.BeginIterate(); r; r = r->get_next()) {
    visited.push_back(r->name);
    if (r == list.a) {
      list.Remove(list.b);
      list.Remove(list.b);  // queued once only
    }
  }
  // The walker stepped over the dead record rather than losing its place.
  EXPECT_EQ((Names{"a", "b", "c"}), visited);
  EXPECT_EQ(0, gDestroyed);
  // A nested walk (a registration's own search) ends and cleans at once,
  // whatever the outer count.
  EXPECT_EQ((Names{"a", "b(dead)", "c"}), list.Walk());
  EXPECT_EQ(1, gDestroyed);
  EXPECT_EQ(list.c, list.a->get_next());  // mended for the outer walker
  list.EndIterate();
  list.Remove(list.c);  // no walk open: freed at once
  EXPECT_EQ(2, gDestroyed);
  EXPECT_EQ((Names{"a"}), list.Walk());
}

TEST_F(ResourceList, HeldListParksCleanedRecordsUntilTheLastHoldEnds) {
  Names visited;
  {
    TOKAResourceHold<Record> hold(list);
    for (Record* r = list.BeginIterate(); r; r = r->get_next()) {
      if (r->is_dead()) continue;
      visited.push_back(r->name);
      if (r != list.b) continue;
      // The callback removes its own record and then runs a walk that
      // cleans it: the record is unlinked but the walker still stands on it.
      list.Remove(list.b);
      list.Walk();
    }
    list.EndIterate();
    EXPECT_EQ((Names{"a", "c"}), list.Walk());
    EXPECT_EQ(0, gDestroyed);
  }
  EXPECT_EQ(1, gDestroyed);
  EXPECT_EQ((Names{"a", "b", "c"}), visited);
}

}  // namespace
