#pragma once

#include <curl/curl.h>

#include <string>

namespace lumiwren {

/// The functions of libcurl that are used here, with their own types, from the library in memory. It is
/// loaded when it is wanted, not linked: with what it brings along (TLS twice, Kerberos, LDAP) it takes 5 MB
/// and a quarter of the time of a start, and most of the time nobody asks anything.
struct CurlLibrary {
  /// Loads the library, which stays in memory. Throws TransportError.
  explicit CurlLibrary(const std::string &name);

  /// The library of this process, loaded and initialised by the first call. Any thread. Throws
  /// TransportError.
  static const CurlLibrary &shared();

  decltype(&curl_global_init_mem) globalInitMem;

  decltype(&curl_easy_init) easyInit;
  decltype(&curl_easy_setopt) easySetopt;
  decltype(&curl_easy_getinfo) easyGetinfo;
  decltype(&curl_easy_pause) easyPause;
  decltype(&curl_easy_strerror) easyStrerror;
  decltype(&curl_easy_cleanup) easyCleanup;

  decltype(&curl_multi_init) multiInit;
  decltype(&curl_multi_add_handle) multiAddHandle;
  decltype(&curl_multi_remove_handle) multiRemoveHandle;
  decltype(&curl_multi_perform) multiPerform;
  decltype(&curl_multi_poll) multiPoll;
  decltype(&curl_multi_wakeup) multiWakeup;
  decltype(&curl_multi_info_read) multiInfoRead;
  decltype(&curl_multi_cleanup) multiCleanup;

  decltype(&curl_share_init) shareInit;
  decltype(&curl_share_setopt) shareSetopt;
  decltype(&curl_share_cleanup) shareCleanup;

  decltype(&curl_slist_append) slistAppend;
  decltype(&curl_slist_free_all) slistFreeAll;
};

}  // namespace lumiwren
