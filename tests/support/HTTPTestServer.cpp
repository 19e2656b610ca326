#include "support/HTTPTestServer.h"

#include <openssl/err.h>
#include <openssl/ssl.h>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <stdexcept>

namespace lumiwren::testing {

namespace {

std::string lower(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return result;
}

std::string hexadecimal(std::size_t number) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%zx", number);
  return text.data();
}

}  // namespace

std::optional<std::string> HTTPTestServer::Request::header(std::string_view name) const {
  for (const auto &[candidate, value] : headers) {
    if (lower(candidate) == lower(name)) {
      return value;
    }
  }
  return std::nullopt;
}

HTTPTestServer::Connection::Connection(int socket, ssl_ctx_st *tls) : socket_(socket) {
  const int on = 1;
  setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  if (tls != nullptr) {
    tls_ = SSL_new(tls);
    SSL_set_fd(tls_, socket_);
    SSL_set_accept_state(tls_);
  }
}

HTTPTestServer::Connection::~Connection() {
  SSL_free(tls_);
  ::close(socket_);
}

bool HTTPTestServer::Connection::isResumed() const {
  return SSL_session_reused(tls_) == 1;
}

bool HTTPTestServer::Connection::write(std::string_view bytes) {
  while (!bytes.empty()) {
    std::size_t written = 0;
    if (tls_ != nullptr) {
      ERR_clear_error();
      if (SSL_write_ex(tls_, bytes.data(), bytes.size(), &written) != 1) {
        return false;
      }
    } else {
      const auto result = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (result <= 0) {
        return false;
      }
      written = static_cast<std::size_t>(result);
    }
    bytes.remove_prefix(written);
  }
  return true;
}

void HTTPTestServer::Connection::respond(int status, std::string_view body, std::string_view moreHeaders) {
  std::string answer = "HTTP/1.1 " + std::to_string(status) + " Status\r\n";
  answer.append("Content-Length: ").append(std::to_string(body.size())).append("\r\n");
  answer.append(moreHeaders).append("\r\n").append(body);
  write(answer);
}

void HTTPTestServer::Connection::beginChunked(int status) {
  write("HTTP/1.1 " + std::to_string(status) +
        " Status\r\nContent-Type: text/event-stream\r\nTransfer-Encoding: chunked\r\n\r\n");
}

bool HTTPTestServer::Connection::chunk(std::string_view bytes) {
  return write(chunkOf(bytes));
}

std::string HTTPTestServer::Connection::chunkOf(std::string_view bytes) {
  return hexadecimal(bytes.size()) + "\r\n" + std::string(bytes) + "\r\n";
}

void HTTPTestServer::Connection::endChunked() {
  write("0\r\n\r\n");
}

bool HTTPTestServer::Connection::waitForClose(std::chrono::milliseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  for (;;) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    pollfd waiting{socket_, POLLIN, 0};
    if (left.count() <= 0 || ::poll(&waiting, 1, static_cast<int>(left.count())) == 0) {
      return false;
    }
    std::array<char, 4096> buffer{};
    if (readSome(buffer.data(), buffer.size()) == 0) {
      isOpen_ = false;
      return true;
    }
  }
}

void HTTPTestServer::Connection::reset() {
  // Disconnecting sends RST; the descriptor itself stays ours until the destructor.
  const sockaddr nowhere{AF_UNSPEC, {}};
  ::connect(socket_, &nowhere, sizeof nowhere);
  isOpen_ = false;
}

std::size_t HTTPTestServer::Connection::readSome(char *buffer, std::size_t size) {
  if (tls_ != nullptr) {
    std::size_t count = 0;
    ERR_clear_error();
    return SSL_read_ex(tls_, buffer, size, &count) == 1 ? count : 0;
  }
  const auto count = ::recv(socket_, buffer, size, 0);
  return count > 0 ? static_cast<std::size_t>(count) : 0;
}

bool HTTPTestServer::Connection::readRequest() {
  const auto receive = [this] {
    std::array<char, 64 * 1024> buffer;
    const auto count = readSome(buffer.data(), buffer.size());
    received_.append(buffer.data(), count);
    return count > 0;
  };
  std::size_t headEnd = 0;
  while ((headEnd = received_.find("\r\n\r\n")) == std::string::npos) {
    if (!receive()) {
      return false;
    }
  }
  request_ = {};
  std::string_view head = std::string_view(received_).substr(0, headEnd);
  const auto nextLine = [&head] {
    const auto end = std::min(head.find("\r\n"), head.size());
    const auto line = head.substr(0, end);
    head.remove_prefix(std::min(end + 2, head.size()));
    return line;
  };
  const auto requestLine = nextLine();
  const auto methodEnd = requestLine.find(' ');
  const auto targetEnd = requestLine.rfind(' ');
  request_.method = requestLine.substr(0, methodEnd);
  request_.target = requestLine.substr(methodEnd + 1, targetEnd - methodEnd - 1);
  while (!head.empty()) {
    const auto line = nextLine();
    const auto colon = line.find(": ");
    request_.headers.emplace_back(line.substr(0, colon), line.substr(colon + 2));
  }
  const auto length = std::stoul(request_.header("Content-Length").value_or("0"));
  while (received_.size() < headEnd + 4 + length) {
    if (!receive()) {
      return false;
    }
  }
  request_.body = received_.substr(headEnd + 4, length);
  received_.erase(0, headEnd + 4 + length);
  return true;
}

void HTTPTestServer::Connection::shutDown() {
  ::shutdown(socket_, SHUT_RDWR);
}

HTTPTestServer::HTTPTestServer(Handler handler, ssl_ctx_st *tls) : handler_(std::move(handler)), tls_(tls) {
  std::signal(SIGPIPE, SIG_IGN);  // OpenSSL writes without MSG_NOSIGNAL.
  listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  if (::bind(listener_, reinterpret_cast<sockaddr *>(&address), size) != 0 || ::listen(listener_, 128) != 0 ||
      ::getsockname(listener_, reinterpret_cast<sockaddr *>(&address), &size) != 0) {
    throw std::runtime_error("the test server cannot listen");
  }
  port_ = ntohs(address.sin_port);
  acceptor_ = std::thread([this] { accept(); });
}

HTTPTestServer::~HTTPTestServer() {
  ::shutdown(listener_, SHUT_RDWR);
  acceptor_.join();
  ::close(listener_);
  {
    const std::lock_guard lock(mutex_);
    for (auto &client : clients_) {
      client.connection.shutDown();
    }
  }
  for (auto &client : clients_) {
    client.thread.join();
  }
}

std::string HTTPTestServer::url(std::string_view path) const {
  const std::string origin = tls_ == nullptr ? "http://127.0.0.1:" : "https://localhost:";
  return origin + std::to_string(port_) + std::string(path);
}

std::vector<HTTPTestServer::Request> HTTPTestServer::requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

void HTTPTestServer::waitForRequests(std::size_t count) {
  std::unique_lock lock(mutex_);
  received_.wait(lock, [&] { return requests_.size() >= count; });
}

std::size_t HTTPTestServer::connectionCount() const {
  const std::lock_guard lock(mutex_);
  return clients_.size();
}

void HTTPTestServer::accept() {
  for (;;) {
    const int socket = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (socket < 0) {
      return;
    }
    const std::lock_guard lock(mutex_);
    auto &client = clients_.emplace_back(socket, tls_);
    client.thread = std::thread([this, &connection = client.connection] { serve(connection); });
  }
}

void HTTPTestServer::serve(Connection &connection) {
  while (connection.isOpen_ && connection.readRequest()) {
    {
      const std::lock_guard lock(mutex_);
      requests_.push_back(connection.request());
    }
    received_.notify_all();
    handler_(connection);
  }
  connection.shutDown();
}

}  // namespace lumiwren::testing
