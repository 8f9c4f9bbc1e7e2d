// The intrusive list with deferred deletion that holds every registration a
// plugin can remove from inside a callback dispatched from the same list:
// windows, key sniffers, draw callbacks, hot keys and flight loops.
//
// A removal while an iteration is open only marks the record dead and queues
// it; it is unlinked at the next EndIterate of the list. Some read-only walks
// never call EndIterate, so such lists defer every later removal; plugins see
// that as a removal taking effect at the next registration or dispatch.
//
// Unlinking and freeing are kept apart. A dispatcher that calls into plugins
// while it walks a list holds the list (TOKAResourceHold); a record unlinked
// while the list is held is parked and freed when the last hold ends, so a
// walker standing on a record, or on one it links to, never reads freed
// memory, whatever the callback removed.
#ifndef TOKA_LOADER_RESOURCE_LIST_H
#define TOKA_LOADER_RESOURCE_LIST_H

template <class T>
struct TOKAResource_t {
  T* next = nullptr;
  bool dead = false;
  T* prev = nullptr;
  T* kill_next = nullptr;
  // Set while the record is on its list's kill queue. Kept apart from
  // `dead`, which a move to the front clears: a record brought back to the
  // front after its removal stays queued once, and the queue behind it is
  // not lost.
  bool queued = false;
  T* parked_next = nullptr;  // chain of unlinked records waiting for the holds to end
  // Every record the list owns, reachable or not (see FreeUnreachable).
  T* member_next = nullptr;
  T* member_prev = nullptr;
  bool member = false;
  bool marked = false;

  T* get_next() const { return next; }
  T* get_prev() const { return prev; }
  bool is_dead() const { return dead; }

  // Links r in front of the record head designates and makes it head.
  static void TOKAAddResource(T*& head, T* r) {
    r->next = head;
    if (head) head->prev = r;
    r->prev = nullptr;
    r->dead = false;
    if (!r->queued) r->kill_next = nullptr;
    head = r;
  }

  // Plain unlink (the boolean is not used).
  static void TOKARemoveResource(T*& head, T*& kill_list, T* r, bool) {
    if (head == r) head = r->next;
    if (r->prev) r->prev->next = r->next;
    if (r->next) r->next->prev = r->prev;
  }

  // Removes r: queued as dead when defer is set (once only), else unlinked
  // and handed to dispose, which frees it or parks it.
  template <class Dispose>
  static void TOKAKillResource(T*& head, T*& kill_list, T* r, bool defer, Dispose dispose) {
    if (defer) {
      if (r->dead) return;
      r->dead = true;
      if (r->queued) return;
      r->queued = true;
      r->kill_next = kill_list;
      kill_list = r;
      return;
    }
    TOKARemoveResource(head, kill_list, r, false);
    dispose(r);
  }

  template <class Dispose>
  static void TOKACleanResources(T*& head, T*& kill_list, Dispose dispose) {
    while (kill_list) {
      T* r = kill_list;
      kill_list = r->kill_next;
      r->queued = false;
      r->kill_next = nullptr;
      TOKAKillResource(head, kill_list, r, false, dispose);
    }
  }
};

template <class T>
class TOKAResourceList {
public:
  T* head = nullptr;
  T* kill_list = nullptr;
  int iterating = 0;
  bool needs_clean = false;
  // Counts every change to the links or to a record's death, so that a
  // dispatcher can keep what a walk would meet and know when it is stale.
  unsigned changes = 0;

  TOKAResourceList() = default;
  // The list owns its records, the unreachable ones included.
  ~TOKAResourceList() {
    while (members) {
      T* r = members;
      Leave(r);
      delete r;
    }
    holds = 0;
    Release();
  }
  TOKAResourceList(const TOKAResourceList&) = delete;
  TOKAResourceList& operator=(const TOKAResourceList&) = delete;

  void Add(T* r) {
    if (!r->member) Join(r);
    T::TOKAAddResource(head, r);
    ++changes;
  }

  void Remove(T* r) {
    if (iterating) needs_clean = true;
    T::TOKAKillResource(head, kill_list, r, iterating != 0, Disposer{this});
    ++changes;
  }

  void MoveToFront(T* r) {
    T::TOKARemoveResource(head, kill_list, r, false);
    Add(r);
  }

  T* BeginIterate() {
    ++iterating;
    if (head)
      while (head->prev) head = head->prev;
    return head;
  }

  // Leaves head at the tail: the next BeginIterate walks it back.
  T* BeginReverseIterate() {
    ++iterating;
    if (head)
      while (head->next) head = head->next;
    return head;
  }

  void EndIterate() {
    if (--iterating < 0) iterating = 0;
    if (needs_clean) Clean();
  }

  void Clean() {
    T::TOKACleanResources(head, kill_list, Disposer{this});
    needs_clean = false;
    ++changes;
  }

  // Number of dispatchers currently walking the list.
  int holds = 0;
  T* parked = nullptr;

  void Hold() { ++holds; }
  void Release() {
    if (--holds > 0) return;
    holds = 0;
    while (parked) {
      T* r = parked;
      parked = r->parked_next;
      delete r;
    }
  }

  // A record added while head designates a record that is not the first
  // (after a reverse walk) is linked in front of that record only, and the
  // records before it drop out of every later walk; plugins have always seen
  // such windows vanish. Nothing in the list can reach them again, but they
  // are still owned: this frees those for which owned(record) holds, once no
  // dispatcher is walking the list.
  template <class Owned>
  void FreeUnreachable(Owned owned) {
    if (holds > 0) return;
    Mark(head);
    for (T* r = kill_list; r; r = r->kill_next) Mark(r);
    for (T* r = members; r;) {
      T* following = r->member_next;
      if (!r->marked && owned(r)) {
        Leave(r);
        delete r;
      }
      r = following;
    }
    for (T* r = members; r; r = r->member_next) r->marked = false;
  }

private:
  T* members = nullptr;

  void Join(T* r) {
    r->member = true;
    r->member_prev = nullptr;
    r->member_next = members;
    if (members) members->member_prev = r;
    members = r;
  }

  void Leave(T* r) {
    if (r->member_prev) r->member_prev->member_next = r->member_next;
    else members = r->member_next;
    if (r->member_next) r->member_next->member_prev = r->member_prev;
    r->member = false;
    r->member_next = r->member_prev = nullptr;
  }

  // Marks every record reachable from start through next and prev links.
  static void Mark(T* start) {
    if (!start || start->marked) return;
    T* pending = nullptr;  // marked records whose links are still to follow
    start->marked = true;
    start->parked_next = pending;
    pending = start;
    while (pending) {
      T* r = pending;
      pending = r->parked_next;
      r->parked_next = nullptr;
      for (T* linked : {r->next, r->prev}) {
        if (!linked || linked->marked) continue;
        linked->marked = true;
        linked->parked_next = pending;
        pending = linked;
      }
    }
  }

  struct Disposer {
    TOKAResourceList* list;
    void operator()(T* r) const {
      list->Leave(r);
      if (list->holds > 0) {
        // A dispatcher may still stand on r or step through it.
        r->dead = true;
        r->parked_next = list->parked;
        list->parked = r;
      } else {
        delete r;
      }
    }
  };
};

// Holds a list for the duration of a dispatching walk.
template <class T>
class TOKAResourceHold {
public:
  explicit TOKAResourceHold(TOKAResourceList<T>& list) : mList(list) { mList.Hold(); }
  ~TOKAResourceHold() { mList.Release(); }
  TOKAResourceHold(const TOKAResourceHold&) = delete;
  TOKAResourceHold& operator=(const TOKAResourceHold&) = delete;

private:
  TOKAResourceList<T>& mList;
};

#endif
