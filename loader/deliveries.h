// Deliveries: results owed to a plugin (a completed asynchronous load, for
// example) that wait in a per-plugin queue until they can be handed over.
#ifndef TOKA_LOADER_DELIVERIES_H
#define TOKA_LOADER_DELIVERIES_H

class TOKADelivery {
public:
  int plugin = -1;                    // the plugin the delivery is for, -1 once it is gone
  TOKADelivery* next = nullptr;
  TOKADelivery* previous = nullptr;

  TOKADelivery();
  TOKADelivery(const TOKADelivery& other);
  TOKADelivery& operator=(const TOKADelivery& other);
  // Not virtual: whoever owns a delivery frees it as its concrete type.
  ~TOKADelivery();

  // Hands the result over (cancelled = false) or undoes it because the
  // plugin is gone (cancelled = true). The subclass frees itself if it wants.
  virtual void DeliverToPlugin(bool cancelled) = 0;

private:
  friend void TOKADequeueDelivery(TOKADelivery* delivery);
  friend void TOKAForgetCutDeliveries(int plugin);
  // Every live delivery is on this chain, so that dequeuing one can clear the
  // links other deliveries still hold to it (see TOKADequeueDelivery).
  TOKADelivery* mLiveNext = nullptr;
  TOKADelivery* mLivePrev = nullptr;
  void Register();
  void Unregister();
};

class TOKADeliveryHead : public TOKADelivery {
public:
  void DeliverToPlugin(bool) override {}
};

// Queue primitives. Queues are last in, first out.
void TOKAEnqueueDelivery(TOKADelivery* head, TOKADelivery* delivery);
void TOKADequeueDelivery(TOKADelivery* delivery);
TOKADelivery* TOKAPopDelivery(TOKADelivery* head);

// Queues a delivery as pending for its plugin. Reports an internal error to
// the calling plugin when the delivery's plugin ID is invalid.
int TOKAQueueDelivery(TOKADelivery* delivery);

// The result a delivery stands for is ready: hand it over now, hold it until
// the plugin is enabled again, or cancel it if the plugin is gone.
void TOKASendDelivery(TOKADelivery* delivery);

// For a plugin being unloaded, after its queues have been emptied: marks as
// gone the deliveries still owed to it that an earlier dequeue cut out of its
// pending queue, so they are cancelled when they complete.
void TOKAForgetCutDeliveries(int plugin);

// Pending deliveries of unloaded plugins, cancelled as they complete.
extern TOKADeliveryHead orphaned;

#endif
