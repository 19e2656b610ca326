#include "base/Task.h"

#include "base/EndsTasks.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>
#include <thread>

namespace lumiwren {
namespace {

using namespace std::chrono_literals;
using testing::EndsTasks;
using testing::patience;

/// What a body tells the test.
class Event {
public:
  void happen() { promise_.set_value(); }
  bool wait() { return future_.wait_for(patience) == std::future_status::ready; }
  bool hasHappened() const { return future_.wait_for(0s) == std::future_status::ready; }

private:
  std::promise<void> promise_;
  std::future<void> future_ = promise_.get_future();
};

TEST(TaskTest, RunsOnAThreadOfItsOwn) {
  std::promise<std::thread::id> thread;
  const EndsTasks endsTasks;
  const auto task =
      Task::start([&](const std::stop_token &) { thread.set_value(std::this_thread::get_id()); });
  EXPECT_NE(thread.get_future().get(), std::this_thread::get_id());
}

TEST(TaskTest, DroppingCancelsAndNeverWaits) {
  Event begun;
  Event mayEnd;
  Event stopped;
  const EndsTasks endsTasks;
  {
    const auto task = Task::start([&](const std::stop_token &token) {
      const std::stop_callback onStop(token, [&] { stopped.happen(); });
      begun.happen();
      mayEnd.wait();  // as a body that is slow to notice
    });
    ASSERT_TRUE(begun.wait());
  }
  // Here the handle has gone while the body still waits for the test.
  EXPECT_TRUE(stopped.hasHappened());
  mayEnd.happen();
}

TEST(TaskTest, ReplacingCancelsTheOldTaskOnly) {
  Event oldStopped;
  const EndsTasks endsTasks;
  const auto waits = [](Event *stopped) {
    return [stopped](const std::stop_token &token) {
      try {
        sleepFor(token, 1h);
      } catch (const CancellationError &) {
        if (stopped != nullptr) {
          stopped->happen();
        }
        throw;
      }
    };
  };
  auto task = Task::start(waits(&oldStopped));
  task = Task::start(waits(nullptr));
  EXPECT_TRUE(oldStopped.wait());
  EXPECT_TRUE(task.isRunning());
}

TEST(TaskTest, AMovedHandleStandsForTheTask) {
  Event stopped;
  const EndsTasks endsTasks;
  std::optional<Task> kept;
  {
    auto task = Task::start([&](const std::stop_token &token) {
      const std::stop_callback onStop(token, [&] { stopped.happen(); });
      EXPECT_THROW(sleepFor(token, 1h), CancellationError);
    });
    kept.emplace(std::move(task));
    EXPECT_FALSE(task.isRunning());  // NOLINT(bugprone-use-after-move)
    task.cancel();
  }
  EXPECT_FALSE(stopped.hasHappened());
  EXPECT_TRUE(kept->isRunning());
  kept.reset();
  EXPECT_TRUE(stopped.wait());
}

TEST(TaskTest, CancellingEndsASleepAtOnce) {
  std::promise<bool> cancelled;
  const EndsTasks endsTasks;
  auto task = Task::start([&](const std::stop_token &token) {
    try {
      sleepFor(token, 24h);
      cancelled.set_value(false);
    } catch (const CancellationError &) {
      cancelled.set_value(true);
    }
  });
  task.cancel();
  task.cancel();
  auto future = cancelled.get_future();
  ASSERT_EQ(future.wait_for(patience), std::future_status::ready);
  EXPECT_TRUE(future.get());
}

TEST(TaskTest, ASleepThatIsNotStoppedLastsItsTime) {
  const auto begin = std::chrono::steady_clock::now();
  sleepFor(std::stop_token(), 20ms);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, 20ms);
}

TEST(TaskTest, AStoppedTokenThrows) {
  std::stop_source source;
  EXPECT_NO_THROW(throwIfStopped(source.get_token()));
  EXPECT_NO_THROW(throwIfStopped(std::stop_token()));
  source.request_stop();
  EXPECT_THROW(throwIfStopped(source.get_token()), CancellationError);
  EXPECT_THROW(sleepFor(source.get_token(), 24h), CancellationError);
}

TEST(TaskTest, CancellingOneTaskLeavesTheOthers) {
  const EndsTasks endsTasks;
  const auto body = [](const std::stop_token &token) { sleepFor(token, 1h); };
  auto first = Task::start(body);
  const auto second = Task::start(body);
  first.cancel();
  while (first.isRunning()) {
    std::this_thread::yield();
  }
  EXPECT_TRUE(second.isRunning());
}

TEST(TaskTest, AnEndedTaskIsNotRunningAndCanBeCancelled) {
  const EndsTasks endsTasks;
  auto task = Task::start([](const std::stop_token &) {});
  while (task.isRunning()) {
    std::this_thread::yield();
  }
  task.cancel();
  EXPECT_FALSE(task.isRunning());
  EXPECT_FALSE(Task().isRunning());
  Task().cancel();
}

TEST(TaskTest, ADetachedTaskRunsToItsEnd) {
  Event mayEnd;
  std::promise<bool> stopped;
  const EndsTasks endsTasks;
  {
    auto task = Task::start([&](const std::stop_token &token) {
      mayEnd.wait();
      stopped.set_value(token.stop_requested());
    });
    task.detach();
    EXPECT_FALSE(task.isRunning());
  }
  mayEnd.happen();
  EXPECT_FALSE(stopped.get_future().get());
}

TEST(TaskTest, WhatTheBodyHoldsHasEndedWhenTheTaskHas) {
  auto held = std::make_shared<int>(7);
  const EndsTasks endsTasks;
  const auto task = Task::start([held](const std::stop_token &) {});
  while (task.isRunning()) {
    std::this_thread::yield();
  }
  EXPECT_EQ(held.use_count(), 1);
}

TEST(TaskTest, ATaskMayStartAndDropOthers) {
  Event done;
  const EndsTasks endsTasks;
  const auto outer = Task::start([&](const std::stop_token &) {
    for (int count = 0; count < 20; ++count) {
      const auto inner = Task::start([](const std::stop_token &token) { sleepFor(token, 1h); });
    }
    done.happen();
  });
  EXPECT_TRUE(done.wait());
}

TEST(TaskTest, EndAllCancelsEveryTaskAndWaits) {
  std::atomic<int> ended = 0;
  const EndsTasks endsTasks;
  const auto body = [&](const std::stop_token &token) {
    try {
      sleepFor(token, 1h);
    } catch (const CancellationError &) {
      ++ended;
      throw;
    }
  };
  const auto held = Task::start(body);
  Task::start(body).detach();
  { const auto dropped = Task::start(body); }
  EXPECT_TRUE(Task::endAll(patience));
  EXPECT_EQ(ended, 3);
  EXPECT_FALSE(held.isRunning());
}

TEST(TaskTest, EndAllGivesUpAfterItsLimit) {
  Event mayEnd;
  Event begun;
  const EndsTasks endsTasks;
  Task::start([&](const std::stop_token &) {
    begun.happen();
    mayEnd.wait();
  }).detach();
  ASSERT_TRUE(begun.wait());
  EXPECT_FALSE(Task::endAll(1ms));
  mayEnd.happen();
  EXPECT_TRUE(Task::endAll(patience));
}

TEST(TaskTest, EndAllWithoutTasksReturnsAtOnce) {
  EXPECT_TRUE(Task::endAll(0ms));
}

}  // namespace
}  // namespace lumiwren
