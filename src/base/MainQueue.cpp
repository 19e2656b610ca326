#include "base/MainQueue.h"

#include "base/Task.h"

#include <memory>
#include <utility>

namespace lumiwren {

MainQueue::MainQueue(Now now) : now_(std::move(now)) {}

MainQueue::~MainQueue() {
  close();
}

void MainQueue::setWaker(std::function<void()> waker) {
  {
    const std::lock_guard lock(mutex_);
    waker_ = std::move(waker);
  }
  wake();
}

void MainQueue::wake() {
  std::function<void()> waker;
  {
    const std::lock_guard lock(mutex_);
    if (wakeOutstanding_ || !waker_) {
      return;
    }
    wakeOutstanding_ = true;
    waker = waker_;
  }
  waker();
}

void MainQueue::post(Block block) {
  {
    const std::lock_guard lock(mutex_);
    if (closed_) {
      return;
    }
    ready_.push_back(std::move(block));
  }
  wake();
}

void MainQueue::postAfter(std::chrono::milliseconds delay, Block block) {
  {
    const std::lock_guard lock(mutex_);
    if (closed_) {
      return;
    }
    const auto position = delayed_.emplace(now_() + delay, std::move(block));
    if (position != delayed_.begin()) {
      return;
    }
  }
  wake();
}

void MainQueue::runAndWait(const std::stop_token &token, const Block &block) {
  throwIfStopped(token);
  if (std::this_thread::get_id() == mainThread_) {
    block();
    return;
  }
  enum class Stage { Waiting, Running, Finished, Abandoned };
  // Shared with the posted block, which may be reached after this call has given up.
  struct Ticket {
    Stage stage = Stage::Waiting;  // guarded by mutex_
  };
  auto ticket = std::make_shared<Ticket>();
  post([this, ticket, &block] {
    {
      const std::lock_guard lock(mutex_);
      if (ticket->stage == Stage::Abandoned) {
        return;
      }
      ticket->stage = Stage::Running;
    }
    block();
    const std::lock_guard lock(mutex_);
    ticket->stage = Stage::Finished;
    finished_.notify_all();
  });
  std::unique_lock lock(mutex_);
  finished_.wait(lock, token, [&] { return ticket->stage == Stage::Finished || closed_; });
  if (ticket->stage == Stage::Running) {
    // The block uses what the caller owns: it is let finish.
    finished_.wait(lock, [&] { return ticket->stage == Stage::Finished; });
  }
  if (ticket->stage != Stage::Finished) {
    ticket->stage = Stage::Abandoned;
    throw CancellationError();
  }
}

void MainQueue::runPending() {
  std::size_t count = 0;
  {
    const std::lock_guard lock(mutex_);
    wakeOutstanding_ = false;
    const auto due = delayed_.upper_bound(now_());
    for (auto position = delayed_.begin(); position != due; ++position) {
      ready_.push_back(std::move(position->second));
    }
    delayed_.erase(delayed_.begin(), due);
    count = ready_.size();
  }
  for (; count > 0; --count) {
    Block block;
    bool more = false;
    {
      const std::lock_guard lock(mutex_);
      if (ready_.empty()) {
        return;  // A block has closed the queue, or run the loop itself.
      }
      block = std::move(ready_.front());
      ready_.pop_front();
      more = !ready_.empty() || !delayed_.empty();
    }
    if (more) {
      wake();  // The block may show a modal alert, whose loop has to reach the others in their time.
    }
    block();
  }
}

std::optional<MainQueue::TimePoint> MainQueue::nextDeadline() const {
  const std::lock_guard lock(mutex_);
  return delayed_.empty() ? std::nullopt : std::optional(delayed_.begin()->first);
}

void MainQueue::close() {
  std::deque<Block> dropped;
  std::multimap<TimePoint, Block> droppedLater;
  {
    const std::lock_guard lock(mutex_);
    closed_ = true;
    waker_ = nullptr;
    dropped.swap(ready_);
    droppedLater.swap(delayed_);
  }
  finished_.notify_all();
}

}  // namespace lumiwren
