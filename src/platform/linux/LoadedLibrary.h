#pragma once

#include <dlfcn.h>

#include <string>
#include <utility>

namespace lumiwren {

/// A shared library that is loaded when it is wanted, not linked. It stays in memory, because what it brings
/// along (OpenMP's runtime, TLS) cannot leave it again. `Error` is what is thrown, made from the texts for a
/// library that is not there and for one that lacks a function.
template <typename Error>
class LoadedLibrary {
public:
  LoadedLibrary(const std::string &name, const char *missing, std::string tooOld)
      : library_(dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE)), tooOld_(std::move(tooOld)) {
    if (library_ == nullptr) {
      throw Error(missing);
    }
  }

  template <typename Function>
  void find(Function &function, const char *symbol) const {
    function = reinterpret_cast<Function>(dlsym(library_, symbol));
    if (function == nullptr) {
      throw Error(tooOld_);
    }
  }

private:
  void *const library_;
  const std::string tooOld_;
};

}  // namespace lumiwren
