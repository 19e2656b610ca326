#include "platform/linux/GLibWait.h"

#include <utility>

namespace lumiwren {

namespace {

gint64 fromNow(std::chrono::milliseconds limit) {
  return g_get_monotonic_time() + std::chrono::microseconds(limit).count();
}

}  // namespace

GLibWait::GLibWait(GMainContext *context, std::chrono::milliseconds limit)
    : context_(context), cancellable_(g_cancellable_new()), deadline_(fromNow(limit)) {
  g_main_context_push_thread_default(context_);
  // What has come in since the last use, such as the news that a service has left the bus.
  while (g_main_context_iteration(context_, FALSE) != FALSE) {
  }
}

GLibWait::~GLibWait() {
  g_main_context_pop_thread_default(context_);
}

void GLibWait::extend(std::chrono::milliseconds limit) {
  deadline_ = fromNow(limit);
}

void GLibWait::take(GObject * /*source*/, GAsyncResult *result, gpointer slot) {
  const std::unique_ptr<Slot> owned(static_cast<Slot *>(slot));
  (*owned)->reset(static_cast<GAsyncResult *>(g_object_ref(result)));
}

void GLibWait::wait(const GObjectRef<GAsyncResult> &result) {
  // For a cancelled call to end by itself; it is left behind if even that waits for an answer.
  constexpr std::chrono::milliseconds grace{500};
  struct Destroy {
    void operator()(GSource *source) const {
      g_source_destroy(source);
      g_source_unref(source);
    }
  };
  const std::unique_ptr<GSource, Destroy> timer(g_timeout_source_new(0));
  g_source_set_callback(
      timer.get(), [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr, nullptr);
  g_source_attach(timer.get(), context_);
  while (result == nullptr) {
    if (g_get_monotonic_time() >= deadline_) {
      if (std::exchange(isOver_, true)) {
        return;
      }
      g_cancellable_cancel(cancellable_.get());
      extend(grace);
    }
    g_source_set_ready_time(timer.get(), deadline_);
    g_main_context_iteration(context_, TRUE);
  }
}

}  // namespace lumiwren
