#pragma once

#include <filesystem>
#include <memory>

struct ssl_ctx_st;

namespace lumiwren::testing {

/// A certificate for "localhost" and 127.0.0.1, made for this object, and the authority that signed it.
class TestCertificate {
public:
  TestCertificate();
  TestCertificate(const TestCertificate &) = delete;
  TestCertificate &operator=(const TestCertificate &) = delete;
  ~TestCertificate();

  /// Holds the authority's certificate under OpenSSL's hashed name; who trusts the directory trusts us.
  const std::filesystem::path &authorityDirectory() const { return directory_; }
  /// What a server speaks TLS with. Lives as long as this object.
  ssl_ctx_st *serverContext() const { return context_.get(); }

private:
  struct FreeContext {
    void operator()(ssl_ctx_st *context) const;
  };

  std::filesystem::path directory_;
  std::unique_ptr<ssl_ctx_st, FreeContext> context_;
};

}  // namespace lumiwren::testing
