#include "platform/http/NameLookup.h"

#include <dlfcn.h>
#include <netdb.h>

#include <condition_variable>
#include <mutex>
#include <string_view>

namespace {

std::mutex mutex;
std::condition_variable changed;
int hanging = 0;
bool isHanging = false;

}  // namespace

// The dynamic linker finds the program's own definition first, so libcurl's resolver thread ends up here.
extern "C" int getaddrinfo(const char *node, const char *service, const addrinfo *hints, addrinfo **result) {
  if (node != nullptr && std::string_view(node) == "hanging.test") {
    std::unique_lock lock(mutex);
    ++hanging;
    changed.notify_all();
    changed.wait(lock, [] { return !isHanging; });
    --hanging;
    changed.notify_all();
    return EAI_FAIL;
  }
  static const auto real = reinterpret_cast<decltype(&getaddrinfo)>(dlsym(RTLD_NEXT, "getaddrinfo"));
  return real(node, service, hints, result);
}

namespace lumiwren::testing {

HangingLookup::HangingLookup() {
  const std::lock_guard lock(mutex);
  isHanging = true;
}

HangingLookup::~HangingLookup() {
  std::unique_lock lock(mutex);
  isHanging = false;
  changed.notify_all();
  changed.wait(lock, [] { return hanging == 0; });
}

void HangingLookup::waitUntilCalled() {
  std::unique_lock lock(mutex);
  changed.wait(lock, [] { return hanging > 0; });
}

}  // namespace lumiwren::testing
