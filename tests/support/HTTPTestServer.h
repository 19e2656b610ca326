#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

struct ssl_st;
struct ssl_ctx_st;

namespace lumiwren::testing {

/// An HTTP/1.1 server on 127.0.0.1 that does with each request whatever the test wants, to the byte. Every
/// connection has a thread of its own, on which its handler runs and may block.
class HTTPTestServer {
public:
  struct Request {
    std::string method;
    std::string target;
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;

    /// The first value of the header, whatever the case of its name; empty when there is none.
    std::optional<std::string> header(std::string_view name) const;
  };

  /// One client's connection. A handler's own thread only.
  class Connection {
  public:
    Connection(int socket, ssl_ctx_st *tls);
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;
    ~Connection();

    /// The request that is being answered.
    const Request &request() const { return request_; }
    /// Whether TLS took up a session of an earlier connection.
    bool isResumed() const;

    /// Bytes as they are, in a packet of their own. False when the client is gone.
    bool write(std::string_view bytes);
    void respond(int status, std::string_view body, std::string_view moreHeaders = {});
    void beginChunked(int status = 200);
    bool chunk(std::string_view bytes);
    void endChunked();
    /// The bytes that chunk() writes.
    static std::string chunkOf(std::string_view bytes);
    /// Waits until the client closes the connection, `limit` at the most.
    bool waitForClose(std::chrono::milliseconds limit = std::chrono::minutes(2));
    /// Drops the connection without a farewell.
    void reset();
    /// Ends the connection after this request.
    void close() { isOpen_ = false; }

  private:
    friend class HTTPTestServer;
    bool readRequest();
    std::size_t readSome(char *buffer, std::size_t size);
    void shutDown();

    const int socket_;
    ssl_st *tls_ = nullptr;
    std::string received_;
    Request request_;
    bool isOpen_ = true;
  };

  using Handler = std::function<void(Connection &)>;

  /// With `tls`, which outlives the server, for https.
  explicit HTTPTestServer(Handler handler, ssl_ctx_st *tls = nullptr);
  HTTPTestServer(const HTTPTestServer &) = delete;
  HTTPTestServer &operator=(const HTTPTestServer &) = delete;
  /// Closes every connection and waits for the handlers.
  ~HTTPTestServer();

  std::uint16_t port() const { return port_; }
  /// "http://127.0.0.1:PORT" or "https://localhost:PORT", followed by `path`.
  std::string url(std::string_view path = "/v1/chat/completions") const;

  std::vector<Request> requests() const;
  void waitForRequests(std::size_t count);
  std::size_t connectionCount() const;

private:
  struct Client {
    explicit Client(int socket, ssl_ctx_st *tls) : connection(socket, tls) {}
    Connection connection;
    std::thread thread;
  };

  void accept();
  void serve(Connection &connection);

  const Handler handler_;
  ssl_ctx_st *const tls_;
  int listener_ = -1;
  std::uint16_t port_ = 0;
  mutable std::mutex mutex_;
  std::condition_variable received_;
  std::list<Client> clients_;
  std::vector<Request> requests_;
  std::thread acceptor_;
};

}  // namespace lumiwren::testing
