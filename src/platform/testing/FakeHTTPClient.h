#pragma once

#include "base/Task.h"
#include "platform/HTTPClient.h"

#include <cassert>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lumiwren::testing {

/// An HTTPClient whose answers a test writes, before the request or while it waits. Any thread.
class FakeHTTPClient : public HTTPClient {
public:
  /// One request's answer. What has not been given yet is waited for, as with a slow server.
  class Exchange {
  public:
    Exchange &respond(int status) {
      change([&] { status_ = status; });
      return *this;
    }
    /// Not empty: an empty piece would read as the end of the body.
    Exchange &push(std::string bytes) {
      assert(!bytes.empty());
      change([&] { pieces_.push_back(std::move(bytes)); });
      return *this;
    }
    Exchange &end() {
      change([&] { ended_ = true; });
      return *this;
    }
    /// The transfer breaks off, after the pieces given so far.
    Exchange &fail(std::string description) {
      change([&] { failure_ = std::move(description); });
      return *this;
    }

    /// Whether the request has been stopped, or its response dropped.
    bool isClosed() const {
      const std::lock_guard lock(mutex_);
      return closed_;
    }
    /// How many pieces wait to be read.
    std::size_t unread() const {
      const std::lock_guard lock(mutex_);
      return pieces_.size();
    }
    void waitUntilClosed() {
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [&] { return closed_; });
    }
    /// Waits until every piece so far has been read, and more is asked for.
    void waitUntilStarved() {
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [&] { return starved_; });
    }

  private:
    friend class FakeHTTPClient;

    template <typename Change>
    void change(Change apply) {
      {
        const std::lock_guard lock(mutex_);
        apply();
        starved_ = false;
      }
      changed_.notify_all();
    }

    void close() {
      {
        const std::lock_guard lock(mutex_);
        closed_ = true;
      }
      changed_.notify_all();
    }

    template <typename Ready>
    void wait(std::unique_lock<std::mutex> &lock, const std::stop_token &token, Ready ready) {
      if (!token.stop_requested() && !ready()) {
        starved_ = true;
        changed_.notify_all();
        changed_.wait(lock, token, ready);
      }
      if (token.stop_requested()) {
        closed_ = true;
        changed_.notify_all();
        throw CancellationError();
      }
    }

    int head(const std::stop_token &token) {
      std::unique_lock lock(mutex_);
      wait(lock, token, [&] { return status_ || failure_; });
      if (!status_) {
        closed_ = true;
        throw TransportError(*failure_);
      }
      return *status_;
    }

    std::string next(const std::stop_token &token) {
      std::unique_lock lock(mutex_);
      wait(lock, token, [&] { return !pieces_.empty() || ended_ || failure_; });
      if (!pieces_.empty()) {
        auto piece = std::move(pieces_.front());
        pieces_.pop_front();
        return piece;
      }
      if (failure_) {
        throw TransportError(*failure_);
      }
      return {};
    }

    mutable std::mutex mutex_;
    std::condition_variable_any changed_;
    std::optional<int> status_;
    std::deque<std::string> pieces_;
    std::optional<std::string> failure_;
    bool ended_ = false;
    bool closed_ = false;
    bool starved_ = false;
  };

  /// The answer to the next request that has none yet, in which everything is still open.
  std::shared_ptr<Exchange> expect() {
    auto exchange = std::make_shared<Exchange>();
    const std::lock_guard lock(mutex_);
    expected_.push_back(exchange);
    return exchange;
  }
  /// A whole answer to the next request.
  void expect(int status, const std::vector<std::string> &pieces = {}) {
    const auto exchange = expect();
    exchange->respond(status);
    for (const auto &piece : pieces) {
      exchange->push(piece);
    }
    exchange->end();
  }
  void expectFailure(const std::string &description) { expect()->fail(description); }

  /// What has been sent so far, oldest first.
  std::vector<HTTPRequest> requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
  }
  void waitForRequests(std::size_t count) {
    std::unique_lock lock(mutex_);
    sent_.wait(lock, [&] { return requests_.size() >= count; });
  }

  void prepare() override {
    const std::lock_guard lock(mutex_);
    isPrepared_ = true;
  }
  bool isPrepared() const {
    const std::lock_guard lock(mutex_);
    return isPrepared_;
  }

  std::unique_ptr<HTTPResponse> send(const HTTPRequest &request, const std::stop_token &token) override {
    throwIfStopped(token);
    std::shared_ptr<Exchange> exchange;
    {
      const std::lock_guard lock(mutex_);
      requests_.push_back(request);
      if (!expected_.empty()) {
        exchange = expected_.front();
        expected_.pop_front();
      }
    }
    sent_.notify_all();
    if (!exchange) {
      throw TransportError("No answer is expected for this request.");
    }
    const int status = exchange->head(token);
    return std::make_unique<Response>(std::move(exchange), status);
  }

private:
  class Response : public HTTPResponse {
  public:
    Response(std::shared_ptr<Exchange> exchange, int status)
        : exchange_(std::move(exchange)), status_(status) {}
    Response(const Response &) = delete;
    Response &operator=(const Response &) = delete;
    ~Response() override { exchange_->close(); }

    int status() const override { return status_; }
    std::string_view read(const std::stop_token &token) override {
      piece_ = exchange_->next(token);
      return piece_;
    }

  private:
    const std::shared_ptr<Exchange> exchange_;
    const int status_;
    std::string piece_;
  };

  mutable std::mutex mutex_;
  std::condition_variable sent_;
  std::deque<std::shared_ptr<Exchange>> expected_;
  std::vector<HTTPRequest> requests_;
  bool isPrepared_ = false;
};

}  // namespace lumiwren::testing
