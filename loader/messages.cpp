// Messages between plugins, and the delivery queues.
#include <algorithm>
#include <cstdint>

#include "loader/deliveries.h"
#include "loader/enabling.h"
#include "loader/survey.h"
#include "loader/plugin_records.h"
#include "toka/TOKAPlugins.h"

TOKADeliveryHead orphaned;

static TOKADelivery* gLiveDeliveries = nullptr;

TOKADelivery::TOKADelivery() { Register(); }

// Copies carry the queue links as plain values, as queue heads always have.
TOKADelivery::TOKADelivery(const TOKADelivery& other)
    : plugin(other.plugin), next(other.next), previous(other.previous) {
  Register();
}

TOKADelivery& TOKADelivery::operator=(const TOKADelivery& other) {
  plugin = other.plugin;
  next = other.next;
  previous = other.previous;
  return *this;
}

// A queue head goes with its plugin record; a delivery left linked to it
// must not write into the record's memory later.
TOKADelivery::~TOKADelivery() {
  Unregister();
  for (TOKADelivery* other = gLiveDeliveries; other; other = other->mLiveNext) {
    if (other->next == this) other->next = nullptr;
    if (other->previous == this) other->previous = nullptr;
  }
}

void TOKADelivery::Register() {
  mLivePrev = nullptr;
  mLiveNext = gLiveDeliveries;
  if (gLiveDeliveries) gLiveDeliveries->mLivePrev = this;
  gLiveDeliveries = this;
}

void TOKADelivery::Unregister() {
  if (mLivePrev) mLivePrev->mLiveNext = mLiveNext;
  else if (gLiveDeliveries == this) gLiveDeliveries = mLiveNext;
  if (mLiveNext) mLiveNext->mLivePrev = mLivePrev;
  mLiveNext = mLivePrev = nullptr;
}

// Inserts after the head. The old first delivery keeps its link back to the
// head: a newer delivery is therefore cut out of the queue when an older one
// is dequeued, and plugins have always seen their completions that way.
void TOKAEnqueueDelivery(TOKADelivery* head, TOKADelivery* delivery) {
  delivery->next = head->next;
  delivery->previous = head;
  head->next = delivery;
}

void TOKADequeueDelivery(TOKADelivery* delivery) {
  TOKADelivery* next = delivery->next;
  TOKADelivery* previous = delivery->previous;
  if (previous) previous->next = next;
  if (next) next->previous = previous;
  // A delivery cut out of its queue by an earlier dequeue may still link to
  // this one. Once this one is handed over it may be freed, so those links
  // are moved past it: the cut stays, but no queue ever reaches a freed
  // delivery.
  for (TOKADelivery* other = gLiveDeliveries; other; other = other->mLiveNext) {
    if (other == delivery) continue;
    if (other->next == delivery) other->next = next != other ? next : nullptr;
    if (other->previous == delivery) other->previous = previous != other ? previous : nullptr;
  }
  delivery->next = nullptr;
  delivery->previous = nullptr;
}

TOKADelivery* TOKAPopDelivery(TOKADelivery* head) {
  TOKADelivery* first = head->next;
  if (first) TOKADequeueDelivery(first);
  return first;
}

void TOKAForgetCutDeliveries(int plugin) {
  // Queue heads never name a plugin, so only deliveries match. Their links
  // lead into the plugin's record, which may go, and they are in no queue
  // anyone walks: they are unlinked as well.
  for (TOKADelivery* other = gLiveDeliveries; other; other = other->mLiveNext) {
    if (other->plugin != plugin) continue;
    other->plugin = -1;
    other->next = nullptr;
    other->previous = nullptr;
  }
}

int TOKAQueueDelivery(TOKADelivery* delivery) {
  if (TOKAIsValidPluginID(delivery->plugin)) {
    TOKAEnqueueDelivery(&gAllPlugins[delivery->plugin].pending, delivery);
    return 1;
  }
  TOKASendError("Internal error: async queue pending but the plugin ID is invalid.");
  return 0;
}

void TOKASendDelivery(TOKADelivery* delivery) {
  TOKADequeueDelivery(delivery);
  if (delivery->plugin == -1) {
    delivery->DeliverToPlugin(true);
    return;
  }
  int plugin = delivery->plugin;
  if (!TOKAIsValidPluginID(plugin)) {
    // Unloading marks every delivery of the plugin; one that still names a
    // record that is gone has nobody to go to.
    delivery->DeliverToPlugin(true);
    return;
  }
  StDispatchCallback context(plugin);
  if (context())
    delivery->DeliverToPlugin(false);
  else
    TOKAEnqueueDelivery(&gAllPlugins[plugin].held, delivery);
}

TOKA_API void TOKASendMessageToPlugin(TOKAPluginID to, int message, void* param) {
  TOKA_NOTE_CALL();
  int sender = TOKAGetDispatchedPlugin();
  // A single target past the list reaches nobody; the broadcast goes to the
  // plugins there are when it starts.
  int first = to, last = std::min(to, (int)gAllPlugins.size() - 1);
  if (to == -1) {
    first = 0;
    last = (int)gAllPlugins.size() - 1;
  }
  for (int id = first; id <= last; ++id) {
    if (id == 0 || !TOKAIsValidPluginID(id)) continue;
    TOKAPluginReceiveMessage_f entry = gAllPlugins[id].message;
    if (!entry) continue;
    StDispatchCallback context(id);
    if (context()) entry(sender, message, param);
  }
}
