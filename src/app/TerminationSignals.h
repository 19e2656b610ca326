#pragma once

namespace lumiwren {

/// Turns SIGTERM, SIGINT and SIGHUP into something that an event loop can wait for. Made before any other
/// thread, so that all threads leave these signals to it.
class TerminationSignals {
public:
  TerminationSignals();
  TerminationSignals(const TerminationSignals &) = delete;
  TerminationSignals &operator=(const TerminationSignals &) = delete;
  ~TerminationSignals();

  /// Readable once one of the signals has come; -1 when the system refused.
  int fileDescriptor() const { return descriptor_; }

private:
  int descriptor_;
};

}  // namespace lumiwren
