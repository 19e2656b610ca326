#pragma once

#include "support/HTTPTestServer.h"

#include <sys/types.h>

#include <functional>
#include <string>

namespace lumiwren::bench {

/// A test server in a process of its own, so that what it does is not measured as ours. Made before there are
/// threads; ends with this object.
class ServerProcess {
public:
  explicit ServerProcess(const testing::HTTPTestServer::Handler &handler, ssl_ctx_st *tls = nullptr);
  ServerProcess(const ServerProcess &) = delete;
  ServerProcess &operator=(const ServerProcess &) = delete;
  ~ServerProcess();

  std::string url(std::string_view path) const { return origin_ + std::string(path); }

private:
  pid_t process_;
  std::string origin_;
};

}  // namespace lumiwren::bench
