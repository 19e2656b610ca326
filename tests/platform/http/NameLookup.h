#pragma once

namespace lumiwren::testing {

/// While one exists, looking up "hanging.test" does not come back; other names are looked up as ever.
class HangingLookup {
public:
  HangingLookup();
  HangingLookup(const HangingLookup &) = delete;
  HangingLookup &operator=(const HangingLookup &) = delete;
  /// Lets the look-ups fail, and waits until they have.
  ~HangingLookup();

  void waitUntilCalled();
};

}  // namespace lumiwren::testing
