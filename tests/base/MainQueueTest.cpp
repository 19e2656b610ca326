#include "base/MainQueue.h"

#include "base/EndsTasks.h"
#include "base/Task.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>
#include <string>
#include <vector>

namespace lumiwren {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using testing::EndsTasks;
using testing::patience;

/// The test's thread is the queue's main thread; the test is its loop, and time is what the test says.
class MainQueueTest : public ::testing::Test {
protected:
  MainQueueTest() {
    queue_.setWaker([this] { wakes_.release(); });
    // The first wake is for what came before there was a waker.
    queue_.runPending();
    wakes_.take();
  }

  /// Whether the queue has asked to be run since the last time.
  bool wasWoken() { return wakes_.take() > 0; }
  /// Waits for a wake from another thread and answers it.
  void answerWake() {
    ASSERT_TRUE(wakes_.wait());
    queue_.runPending();
  }
  /// A block that notes that it has run.
  MainQueue::Block note(std::string name) {
    return [this, name = std::move(name)] { order_.push_back(name); };
  }

  class Wakes {
  public:
    void release() {
      const std::lock_guard lock(mutex_);
      ++count_;
      changed_.notify_all();
    }
    int take() {
      const std::lock_guard lock(mutex_);
      return std::exchange(count_, 0);
    }
    bool wait() {
      std::unique_lock lock(mutex_);
      return changed_.wait_for(lock, patience, [this] { return count_ > 0; }) && (count_ = 0, true);
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    int count_ = 0;
  };

  Wakes wakes_;
  MainQueue::TimePoint now_{1h};
  MainQueue queue_{[this] { return now_; }};
  std::vector<std::string> order_;
};

TEST_F(MainQueueTest, RunsBlocksInTheOrderOfTheirPosting) {
  queue_.post(note("a"));
  queue_.post(note("b"));
  EXPECT_THAT(order_, ElementsAre());
  queue_.runPending();
  EXPECT_THAT(order_, ElementsAre("a", "b"));
  queue_.runPending();
  EXPECT_THAT(order_, ElementsAre("a", "b"));
}

TEST_F(MainQueueTest, KeepsTheOrderOfEachThread) {
  constexpr int perThread = 500;
  std::array<int, 4> next{};
  const EndsTasks endsTasks;
  std::vector<Task> tasks;
  for (std::size_t index = 0; index < next.size(); ++index) {
    tasks.push_back(Task::start([&, index](const std::stop_token &) {
      for (int count = 0; count < perThread; ++count) {
        queue_.post([&next, index, count] {
          EXPECT_EQ(next.at(index), count);
          ++next.at(index);
        });
      }
    }));
  }
  while (next != std::array<int, 4>{perThread, perThread, perThread, perThread}) {
    answerWake();
  }
}

TEST_F(MainQueueTest, ABlockPostedByABlockRunsInTheNextRound) {
  queue_.post([this] {
    order_.emplace_back("a");
    queue_.post(note("b"));
  });
  queue_.runPending();
  EXPECT_THAT(order_, ElementsAre("a"));
  EXPECT_TRUE(wasWoken());
  queue_.runPending();
  EXPECT_THAT(order_, ElementsAre("a", "b"));
}

TEST_F(MainQueueTest, WakesOnceForManyBlocks) {
  for (int count = 0; count < 10; ++count) {
    queue_.post([] {});
  }
  EXPECT_EQ(wakes_.take(), 1);
  queue_.runPending();
  queue_.runPending();
  wasWoken();
  queue_.post([] {});
  EXPECT_EQ(wakes_.take(), 1);
}

TEST_F(MainQueueTest, WhatWasPostedBeforeThereWasAWakerIsNotForgotten) {
  MainQueue queue;
  bool ran = false;
  queue.post([&] { ran = true; });
  int wakes = 0;
  queue.setWaker([&] { ++wakes; });
  EXPECT_EQ(wakes, 1);
  queue.runPending();
  EXPECT_TRUE(ran);
}

TEST_F(MainQueueTest, RunsDelayedBlocksWhenTheyAreDue) {
  queue_.postAfter(100ms, note("later"));
  queue_.postAfter(50ms, note("sooner"));
  queue_.postAfter(50ms, note("sooner too"));
  EXPECT_EQ(queue_.nextDeadline(), now_ + 50ms);
  queue_.runPending();
  EXPECT_THAT(order_, ElementsAre());

  now_ += 49ms;
  queue_.runPending();
  EXPECT_THAT(order_, ElementsAre());
  now_ += 1ms;
  queue_.runPending();
  EXPECT_THAT(order_, ElementsAre("sooner", "sooner too"));
  EXPECT_EQ(queue_.nextDeadline(), now_ + 50ms);

  now_ += 1h;
  queue_.post(note("posted"));
  queue_.runPending();
  EXPECT_THAT(order_, ElementsAre("sooner", "sooner too", "posted", "later"));
  EXPECT_EQ(queue_.nextDeadline(), std::nullopt);
}

TEST_F(MainQueueTest, WakesForADeadlineEarlierThanAllBefore) {
  queue_.postAfter(100ms, [] {});
  EXPECT_TRUE(wasWoken());
  queue_.runPending();
  queue_.postAfter(200ms, [] {});
  EXPECT_FALSE(wasWoken());
  queue_.postAfter(50ms, [] {});
  EXPECT_TRUE(wasWoken());
}

TEST_F(MainQueueTest, ABlockMayRunTheLoopAndTheOthersAreReached) {
  queue_.post([this] {
    order_.emplace_back("alert opens");
    while (wasWoken()) {
      queue_.runPending();  // the loop of a modal alert
    }
    order_.emplace_back("alert closes");
  });
  queue_.post(note("b"));
  queue_.post(note("c"));
  queue_.runPending();
  EXPECT_THAT(order_, ElementsAre("alert opens", "b", "c", "alert closes"));
}

TEST_F(MainQueueTest, ABlockThatRunsTheLoopReachesLaterDeadlines) {
  queue_.postAfter(10ms, [this] {
    order_.emplace_back("alert opens");
    // A loop looks at the next deadline only after it has been woken, as after every run.
    ASSERT_TRUE(wasWoken());
    queue_.runPending();
    ASSERT_EQ(queue_.nextDeadline(), now_ + 10ms);
    now_ += 10ms;
    queue_.runPending();
    order_.emplace_back("alert closes");
  });
  queue_.postAfter(20ms, note("later"));
  queue_.runPending();
  wasWoken();
  now_ += 10ms;
  queue_.runPending();
  EXPECT_THAT(order_, ElementsAre("alert opens", "later", "alert closes"));
}

TEST_F(MainQueueTest, WaitingForADeadlineDoesNotKeepTheLoopBusy) {
  queue_.postAfter(1h, [] {});
  queue_.post([] {});
  int rounds = 0;
  while (wasWoken()) {
    queue_.runPending();
    ASSERT_LT(++rounds, 10);
  }
}

TEST_F(MainQueueTest, RunAndWaitReturnsAfterTheBlockHasRunOnTheMainThread) {
  std::promise<bool> sawIt;
  const EndsTasks endsTasks;
  const auto task = Task::start([&](const std::stop_token &token) {
    bool ran = false;
    std::thread::id thread;
    queue_.runAndWait(token, [&] {
      ran = true;
      thread = std::this_thread::get_id();
    });
    sawIt.set_value(ran && thread != std::this_thread::get_id());
  });
  answerWake();
  EXPECT_TRUE(sawIt.get_future().get());
}

TEST_F(MainQueueTest, RunAndWaitOnTheMainThreadRunsInPlace) {
  bool ran = false;
  queue_.runAndWait(std::stop_token(), [&] { ran = true; });
  EXPECT_TRUE(ran);
}

TEST_F(MainQueueTest, RunAndWaitWithAStoppedTokenThrowsAndRunsNothing) {
  std::stop_source source;
  source.request_stop();
  EXPECT_THROW(queue_.runAndWait(source.get_token(), note("never")), CancellationError);
  queue_.runPending();
  EXPECT_THAT(order_, ElementsAre());
}

TEST_F(MainQueueTest, RunAndWaitCancelledBeforeItsTurnThrowsAndItsBlockDoesNotRun) {
  std::promise<bool> cancelled;
  const EndsTasks endsTasks;
  auto task = Task::start([&](const std::stop_token &token) {
    // The block's captures have gone when it is reached.
    auto owned = std::make_unique<int>(0);
    try {
      queue_.runAndWait(token, [&owned] { ++*owned; });
      cancelled.set_value(false);
    } catch (const CancellationError &) {
      cancelled.set_value(true);
    }
  });
  ASSERT_TRUE(wakes_.wait());  // The block is posted.
  task.cancel();
  EXPECT_TRUE(cancelled.get_future().get());
  queue_.runPending();
}

TEST_F(MainQueueTest, RunAndWaitCancelledWhileItsBlockRunsLetsItFinish) {
  std::promise<int> result;
  const EndsTasks endsTasks;
  Task task;
  task = Task::start([&](const std::stop_token &token) {
    int steps = 0;  // used by the block until its end
    queue_.runAndWait(token, [&] {
      ++steps;
      task.cancel();
      ++steps;
    });
    result.set_value(steps);
  });
  answerWake();
  EXPECT_EQ(result.get_future().get(), 2);
}

TEST_F(MainQueueTest, ClosingEndsAWaitWithCancellation) {
  std::promise<bool> cancelled;
  const EndsTasks endsTasks;
  const auto task = Task::start([&](const std::stop_token &token) {
    try {
      queue_.runAndWait(token, note("never"));
      cancelled.set_value(false);
    } catch (const CancellationError &) {
      cancelled.set_value(true);
    }
  });
  ASSERT_TRUE(wakes_.wait());
  queue_.close();
  EXPECT_TRUE(cancelled.get_future().get());
  queue_.runPending();
  EXPECT_THAT(order_, ElementsAre());
}

TEST_F(MainQueueTest, AClosedQueueDropsEverything) {
  const auto held = std::make_shared<int>(0);
  queue_.post([this, held] { note("never")(); });
  queue_.postAfter(1ms, [this, held] { note("never")(); });
  queue_.close();
  EXPECT_EQ(held.use_count(), 1);
  queue_.post([this, held] { note("never")(); });
  queue_.postAfter(0ms, [this, held] { note("never")(); });
  EXPECT_EQ(held.use_count(), 1);
  now_ += 1h;
  queue_.runPending();
  EXPECT_THAT(order_, ElementsAre());
  EXPECT_EQ(queue_.nextDeadline(), std::nullopt);
  const EndsTasks endsTasks;
  const auto task = Task::start([this](const std::stop_token &token) {
    EXPECT_THROW(queue_.runAndWait(token, note("never")), CancellationError);
  });
}

TEST_F(MainQueueTest, ABlockMayCloseTheQueue) {
  queue_.post([this] { queue_.close(); });
  queue_.post(note("never"));
  queue_.runPending();
  EXPECT_THAT(order_, ElementsAre());
}

TEST_F(MainQueueTest, ADroppedBlockMayPost) {
  struct PostsAtItsEnd {
    MainQueue &queue;
    ~PostsAtItsEnd() {
      queue.post([] {});
    }
  };
  queue_.post([posts = std::make_shared<PostsAtItsEnd>(queue_)] {});
  queue_.close();
}

}  // namespace
}  // namespace lumiwren
