// The resource list: deferred deletion during walks, re-anchoring of the head,
// and parked records that outlive the walks standing on them.
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
  Names Walk(bool backwards = false) {
    Names names;
    for (Record* r = backwards ? BeginReverseIterate() : BeginIterate(); r;
         r = backwards ? r->get_prev() : r->get_next())
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
  EXPECT_EQ(1, list.iterating);
  EXPECT_EQ(list.c, list.a->get_next());  // mended for the outer walker
  list.EndIterate();
  list.EndIterate();  // more ends than begins: the count stays at zero
  EXPECT_EQ(0, list.iterating);
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

TEST_F(ResourceList, MoveToFrontIsImmediateEvenDuringAWalk) {
  list.MoveToFront(list.a);
  EXPECT_EQ((Names{"a", "b", "c"}), list.Walk());
  list.BeginIterate();
  list.MoveToFront(list.c);
  EXPECT_EQ((Names{"c", "a", "b"}), list.Walk());
  list.EndIterate();
  // A record brought to the front after its removal is alive again until the
  // walk ends; the removal still takes effect then, once, and the records
  // queued before it are not lost.
  list.BeginIterate();
  list.Remove(list.b);
  list.Remove(list.a);
  list.MoveToFront(list.a);
  EXPECT_FALSE(list.a->is_dead());
  list.Remove(list.a);
  list.MoveToFront(list.a);
  EXPECT_EQ((Names{"a", "c", "b(dead)"}), list.Walk());
  EXPECT_EQ(2, gDestroyed);
  list.EndIterate();
  EXPECT_EQ((Names{"c"}), list.Walk());
}

TEST_F(ResourceList, ReverseWalkLeavesTheHeadAtTheTailAndLostRecordsAreStillOwned) {
  EXPECT_EQ((Names{"c", "b", "a"}), list.Walk(true));
  EXPECT_EQ(list.c, list.head);
  EXPECT_EQ((Names{"a", "b", "c"}), list.Walk());
  EXPECT_EQ(list.a, list.head);

  // A record added while the head designates the tail is linked in front of
  // the tail: forward walks then start at it and reach only the tail.
  list.Walk(true);
  list.Add("d");
  EXPECT_EQ((Names{"d", "c"}), list.Walk());
  EXPECT_EQ((Names{"c", "d"}), list.Walk(true));

  // The records no walk reaches are freed on request; the reachable ones are
  // left alone, and nothing goes while a dispatcher holds the list.
  list.Walk();
  {
    TOKAResourceHold<Record> hold(list);
    list.FreeUnreachable([](Record*) { return true; });
    EXPECT_EQ(0, gDestroyed);
  }
  list.FreeUnreachable([](Record* r) { return r->name == "a"; });
  EXPECT_EQ(1, gDestroyed);
  list.FreeUnreachable([](Record*) { return true; });
  EXPECT_EQ(2, gDestroyed);
  EXPECT_EQ((Names{"d", "c"}), list.Walk());
}

TEST_F(ResourceList, RecordQueuedBeforeItWasLostKeepsItsNeighboursUntilCleaned) {
  list.BeginReverseIterate();  // head at c, a walk still open
  list.Remove(list.b);         // b is queued, then lost with a
  list.Add("d");
  list.FreeUnreachable([](Record*) { return true; });
  EXPECT_EQ(0, gDestroyed);  // b's queue entry still links to a
  list.EndIterate();         // b's unlink links a back in behind c
  EXPECT_EQ(1, gDestroyed);
  EXPECT_EQ((Names{"d", "c"}), list.Walk());
  EXPECT_EQ((Names{"c", "a"}), list.Walk(true));
  // From the tail the list re-anchors at a: now d is the one no walk reaches.
  list.FreeUnreachable([](Record*) { return true; });
  EXPECT_EQ(2, gDestroyed);
  EXPECT_EQ((Names{"a", "c"}), list.Walk());
}

}  // namespace
