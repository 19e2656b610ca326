#pragma once

#include "platform/LoginItem.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace lumiwren::testing {

/// A registry that a test can break.
class FakeLoginItem : public LoginItem {
public:
  Status status() override { return current; }
  void registerItem() override { attempt("register", Status::Enabled); }
  void unregisterItem() override { attempt("unregister", Status::NotRegistered); }

  Status current = Status::NotRegistered;
  bool isBroken = false;
  std::vector<std::string> attempts;

private:
  void attempt(const char *what, Status then) {
    attempts.emplace_back(what);
    if (isBroken) {
      throw std::runtime_error("the registry is broken");
    }
    current = then;
  }
};

}  // namespace lumiwren::testing
