#include "app/TerminationSignals.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <csignal>
#include <initializer_list>

namespace lumiwren {

TerminationSignals::TerminationSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    sigaddset(&signals, signal);
  }
  descriptor_ = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
  if (descriptor_ >= 0) {
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  }
}

TerminationSignals::~TerminationSignals() {
  if (descriptor_ >= 0) {
    close(descriptor_);
  }
}

}  // namespace lumiwren
