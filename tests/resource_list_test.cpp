// The resource list: deferred deletion during walks, re-anchoring of the head,
// and parked records that outlive the walks standing on them.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "loader/resource_list.h"

namespace {

int gDestroyed = 0;

// Like a hot key record, it owns a string: its destructor must run.
struct Record : TOKAResource_t<Record> {
  explicit Record(std::string n) : name(std::move(n)) {}
  ~Record() { ++gDestroyed; }
  std::string name;
};

struct List : TOKAResourceList<Record> {
  ~List() {
    iterating = 0;
    needs_clean = false;
    while (head) Remove(head);  // keeps the sanitizer build free of leaks
  }
  Record* Add(const std::string& name) {
    Record* r = new Record(name);
    TOKAResourceList<Record>::Add(r);
    return r;
  }
  std::vector<std::string> Forward() {
    std::vector<std::string> names;
    for (Record* r = BeginIterate(); r; r = r->get_next())
      names.push_back(r->name + (r->is_dead() ? "(dead)" : ""));
    EndIterate();
    return names;
  }
};

class ResourceList : public ::testing::Test {
protected:
  void SetUp() override { gDestroyed = 0; }
};

TEST_F(ResourceList, RemovalDuringAWalkIsDeferredToItsEnd) {
  List list;
  Record* c = list.Add("c");
  Record* b = list.Add("b");
  list.Add("a");
  ASSERT_EQ((std::vector<std::string>{"a", "b", "c"}), list.Forward());

  std::vector<std::string> visited;
  for (Record* r = list.BeginIterate(); r; r = r->get_next()) {
    visited.push_back(r->name);
    if (r->name == "a") {
      list.Remove(b);
      list.Remove(b);  // queued once only
      EXPECT_TRUE(b->is_dead());
    }
    if (r == b) list.Remove(c);
  }
  // The walker stepped over the dead record rather than losing its place.
  EXPECT_EQ((std::vector<std::string>{"a", "b", "c"}), visited);
  EXPECT_EQ(0, gDestroyed);
  EXPECT_TRUE(list.needs_clean);
  list.EndIterate();
  EXPECT_EQ(2, gDestroyed);
  EXPECT_FALSE(list.needs_clean);
  EXPECT_EQ((std::vector<std::string>{"a"}), list.Forward());
}

TEST_F(ResourceList, InnerWalkCleansWhileTheOuterOneIsOpen) {
  List list;
  list.Add("c");
  Record* b = list.Add("b");
  Record* a = list.Add("a");
  Record* outer = list.BeginIterate();
  ASSERT_EQ(a, outer);
  list.Remove(b);
  // A nested walk (a registration's own search) ends and cleans at once,
  // whatever the outer count.
  EXPECT_EQ((std::vector<std::string>{"a", "b(dead)", "c"}), list.Forward());
  EXPECT_EQ(1, gDestroyed);
  EXPECT_EQ(1, list.iterating);
  // The outer walker stands on a: its next link was mended by the unlink.
  EXPECT_EQ("c", outer->get_next()->name);
  list.EndIterate();
  list.EndIterate();  // more ends than begins: the count stays at zero
  EXPECT_EQ(0, list.iterating);
  list.Remove(a);  // no walk open: freed at once
  EXPECT_EQ(2, gDestroyed);
}

TEST_F(ResourceList, HeldListParksCleanedRecordsUntilTheLastHoldEnds) {
  List list;
  list.Add("c");
  Record* b = list.Add("b");
  list.Add("a");
  std::vector<std::string> visited;
  {
    TOKAResourceHold<Record> hold(list);
    for (Record* r = list.BeginIterate(); r; r = r->get_next()) {
      if (r->is_dead()) continue;
      visited.push_back(r->name);
      if (r == b) {
        // The callback removes its own record and then runs a walk that
        // cleans it: the record is unlinked but the walker still stands on it.
        list.Remove(b);
        list.Forward();
        EXPECT_EQ(0, gDestroyed);
      }
    }
    list.EndIterate();
    EXPECT_EQ((std::vector<std::string>{"a", "c"}), list.Forward());
    EXPECT_EQ(0, gDestroyed);
  }
  EXPECT_EQ(1, gDestroyed);
  EXPECT_EQ((std::vector<std::string>{"a", "b", "c"}), visited);
}

TEST_F(ResourceList, ReverseWalkLeavesTheHeadAtTheTail) {
  List list;
  list.Add("c");
  Record* b = list.Add("b");
  Record* a = list.Add("a");
  std::vector<std::string> backwards;
  for (Record* r = list.BeginReverseIterate(); r; r = r->get_prev()) backwards.push_back(r->name);
  list.EndIterate();
  EXPECT_EQ((std::vector<std::string>{"c", "b", "a"}), backwards);
  EXPECT_EQ("c", list.head->name);
  EXPECT_EQ((std::vector<std::string>{"a", "b", "c"}), list.Forward());
  EXPECT_EQ("a", list.head->name);

  // A record added while the head designates the tail is linked in front of
  // the tail: forward walks then start at it and reach only the tail.
  list.BeginReverseIterate();
  list.EndIterate();
  list.Add("d");
  EXPECT_EQ((std::vector<std::string>{"d", "c"}), list.Forward());
  std::vector<std::string> fromTail;
  for (Record* r = list.BeginReverseIterate(); r; r = r->get_prev()) fromTail.push_back(r->name);
  list.EndIterate();
  EXPECT_EQ((std::vector<std::string>{"c", "d"}), fromTail);
  // No walk reaches a and b any more, so the list cannot free them; a forward
  // walk puts the head back at d, from where the list frees d and c.
  delete a;
  delete b;
  EXPECT_EQ((std::vector<std::string>{"d", "c"}), list.Forward());
}

TEST_F(ResourceList, MoveToFrontIsImmediateEvenDuringAWalk) {
  List list;
  Record* c = list.Add("c");
  list.Add("b");
  Record* a = list.Add("a");
  list.MoveToFront(a);
  EXPECT_EQ((std::vector<std::string>{"a", "b", "c"}), list.Forward());
  list.BeginIterate();
  list.MoveToFront(c);
  EXPECT_EQ((std::vector<std::string>{"c", "a", "b"}), list.Forward());
  list.EndIterate();
  // A record brought to the front after its removal is alive again until the
  // walk ends; the removal still takes effect then, once, and the records
  // queued before it are not lost.
  Record* b = list.head->get_next()->get_next();
  ASSERT_EQ("b", b->name);
  list.BeginIterate();
  list.Remove(b);
  list.Remove(a);
  list.MoveToFront(a);
  EXPECT_FALSE(a->is_dead());
  list.Remove(a);
  list.MoveToFront(a);
  EXPECT_EQ((std::vector<std::string>{"a", "c", "b(dead)"}), list.Forward());
  EXPECT_EQ(2, gDestroyed);
  list.EndIterate();
  EXPECT_EQ((std::vector<std::string>{"c"}), list.Forward());
}

}  // namespace
