#pragma once

#include <gio/gio.h>

#include <chrono>
#include <memory>
#include <utility>

namespace lumiwren {

struct GObjectUnref {
  void operator()(gpointer object) const { g_object_unref(object); }
};
template <typename T>
using GObjectRef = std::unique_ptr<T, GObjectUnref>;

struct GMainContextUnref {
  void operator()(GMainContext *context) const { g_main_context_unref(context); }
};
using GMainContextRef = std::unique_ptr<GMainContext, GMainContextUnref>;

/// Straight-line use of GLib's asynchronous calls, on a thread without a loop of its own: while it lives, the
/// context is this thread's, and each call is waited for, all of them together no longer than the limit.
class GLibWait {
public:
  GLibWait(GMainContext *context, std::chrono::milliseconds limit);
  GLibWait(const GLibWait &) = delete;
  GLibWait &operator=(const GLibWait &) = delete;
  ~GLibWait();

  /// To be given to every call; cancelled when the limit is over.
  GCancellable *cancellable() const { return cancellable_.get(); }
  /// The limit from now on, for instance because a person is asked.
  void extend(std::chrono::milliseconds limit);
  bool isOver() const { return isOver_; }

  /// Where the result of a call goes. Shared with the call, which may end long after nobody waits for it any
  /// more.
  using Slot = std::shared_ptr<GObjectRef<GAsyncResult>>;

  /// Runs begin(callback, data), which starts one call, and returns where its result will be; null when the
  /// limit is over.
  template <typename Begin>
  Slot start(Begin begin) {
    if (isOver_) {
      return nullptr;
    }
    auto slot = std::make_shared<GObjectRef<GAsyncResult>>();
    begin(&GLibWait::take, new Slot(slot));
    return slot;
  }
  /// Waits for the result of a call that start() has begun; null when the limit is over.
  GObjectRef<GAsyncResult> finish(const Slot &slot) {
    if (!slot) {
      return nullptr;
    }
    wait(*slot);
    return std::move(*slot);
  }
  template <typename Begin>
  GObjectRef<GAsyncResult> result(Begin begin) {
    return finish(start(std::move(begin)));
  }

private:
  static void take(GObject *source, GAsyncResult *result, gpointer slot);
  void wait(const GObjectRef<GAsyncResult> &result);

  GMainContext *const context_;
  const GObjectRef<GCancellable> cancellable_;
  gint64 deadline_;  // microseconds of g_get_monotonic_time()
  bool isOver_ = false;
};

}  // namespace lumiwren
