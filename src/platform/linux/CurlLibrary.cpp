#include "platform/linux/CurlLibrary.h"

#include "platform/HTTPClient.h"
#include "platform/linux/LoadedLibrary.h"

#include <malloc.h>

#include <cstdlib>
#include <cstring>
#include <new>

namespace lumiwren {

namespace {

// libcurl copies the key into its own request buffers; whatever it frees is wiped first.
void freeWiped(void *block) {
  if (block != nullptr) {
    explicit_bzero(block, malloc_usable_size(block));
    std::free(block);
  }
}

void *reallocWiped(void *block, std::size_t size) {
  const auto usable = block == nullptr ? 0 : malloc_usable_size(block);
  if (block != nullptr && size <= usable) {
    return block;
  }
  void *const grown = std::malloc(size);
  if (grown != nullptr && block != nullptr) {
    std::memcpy(grown, block, usable);
    freeWiped(block);
  }
  return grown;
}

}  // namespace

CurlLibrary::CurlLibrary(const std::string &name) {
  const LoadedLibrary<TransportError> library(name, "Requests need the package libcurl4.",
                                              "Requests need a newer version of the package libcurl4.");
  library.find(globalInitMem, "curl_global_init_mem");
  library.find(easyInit, "curl_easy_init");
  library.find(easySetopt, "curl_easy_setopt");
  library.find(easyGetinfo, "curl_easy_getinfo");
  library.find(easyPause, "curl_easy_pause");
  library.find(easyStrerror, "curl_easy_strerror");
  library.find(easyCleanup, "curl_easy_cleanup");
  library.find(multiInit, "curl_multi_init");
  library.find(multiAddHandle, "curl_multi_add_handle");
  library.find(multiRemoveHandle, "curl_multi_remove_handle");
  library.find(multiPerform, "curl_multi_perform");
  library.find(multiPoll, "curl_multi_poll");
  library.find(multiWakeup, "curl_multi_wakeup");
  library.find(multiInfoRead, "curl_multi_info_read");
  library.find(multiCleanup, "curl_multi_cleanup");
  library.find(shareInit, "curl_share_init");
  library.find(shareSetopt, "curl_share_setopt");
  library.find(shareCleanup, "curl_share_cleanup");
  library.find(slistAppend, "curl_slist_append");
  library.find(slistFreeAll, "curl_slist_free_all");
}

const CurlLibrary &CurlLibrary::shared() {
  static const CurlLibrary library = [] {
    CurlLibrary loaded("libcurl.so.4");
    if (loaded.globalInitMem(CURL_GLOBAL_DEFAULT, &std::malloc, &freeWiped, &reallocWiped, &strdup,
                             &std::calloc) != CURLE_OK) {
      throw std::bad_alloc();  // The only way in which it fails.
    }
    return loaded;
  }();
  return library;
}

}  // namespace lumiwren
