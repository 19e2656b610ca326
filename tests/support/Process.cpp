#include "support/Process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <map>
#include <stdexcept>
#include <system_error>

namespace lumiwren::testing {
namespace {

using Clock = std::chrono::steady_clock;

std::array<int, 2> makePipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe2");
  }
  return ends;
}

bool waitReadable(int fd, Clock::time_point deadline) {
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    pollfd item{fd, POLLIN, 0};
    const int ready = poll(&item, 1, static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
    if (ready >= 0) {
      return ready > 0;
    }
    if (errno != EINTR) {
      throw std::system_error(errno, std::generic_category(), "poll");
    }
  }
}

std::vector<std::string> environmentWith(const std::vector<std::pair<std::string, std::string>> &additions) {
  std::map<std::string, std::string> variables;
  for (char **entry = environ; *entry != nullptr; ++entry) {
    const std::string_view text = *entry;
    const auto equals = text.find('=');
    if (equals != std::string_view::npos) {
      variables.emplace(text.substr(0, equals), text.substr(equals + 1));
    }
  }
  for (const auto &[name, value] : additions) {
    variables[name] = value;
  }
  std::vector<std::string> environment;
  for (const auto &[name, value] : variables) {
    environment.push_back(name + "=" + value);
  }
  return environment;
}

std::vector<char *> pointersTo(std::vector<std::string> &texts) {
  std::vector<char *> pointers;
  for (auto &text : texts) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

ProcessWatch::ProcessWatch(pid_t pid) : pidfd_(static_cast<int>(syscall(SYS_pidfd_open, pid, 0))) {
  if (pidfd_ < 0) {
    throw std::system_error(errno, std::generic_category(), "pidfd_open");
  }
}

ProcessWatch::~ProcessWatch() {
  close(pidfd_);
}

bool ProcessWatch::waitForEnd(std::chrono::milliseconds limit) const {
  return waitReadable(pidfd_, Clock::now() + limit);
}

Process::Process(std::vector<std::string> command) : Process(Options{.command = std::move(command)}) {}

Process::Process(Options options) {
  auto environment = environmentWith(options.environment);
  const auto arguments = pointersTo(options.command);
  const auto variables = pointersTo(environment);
  const auto input = makePipe();
  const auto output = makePipe();
  const auto failure = makePipe();
  const pid_t parent = getpid();

  pid_ = fork();
  if (pid_ == 0) {
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, options.deathSignal);
    if (getppid() != parent) {
      _exit(127);
    }
    dup2(input[0], STDIN_FILENO);
    dup2(output[1], STDOUT_FILENO);
    execvpe(arguments[0], arguments.data(), variables.data());
    const int error = errno;
    [[maybe_unused]] const auto written = ::write(failure[1], &error, sizeof error);
    _exit(127);
  }
  const int forkError = errno;
  close(input[0]);
  close(output[1]);
  close(failure[1]);
  input_ = input[1];
  output_ = output[0];
  int error = pid_ < 0 ? forkError : 0;
  // Also tells that the child has got as far as its own program, and so leads its group.
  if (pid_ > 0 && ::read(failure[0], &error, sizeof error) > 0) {
    waitpid(pid_, nullptr, 0);
  }
  close(failure[0]);
  if (error != 0) {
    close(input_);
    close(output_);
    throw std::runtime_error("cannot start " + options.command.at(0) + ": " + std::strerror(error));
  }
  watch_.emplace(pid_);
  // A child that does not read must not kill the test.
  std::signal(SIGPIPE, SIG_IGN);
}

Process::~Process() {
  closeInput();
  if (!status_) {
    kill(SIGTERM);
    if (!wait(std::chrono::seconds(5))) {
      kill(SIGKILL);
      wait(patience);
    }
  }
  kill(SIGKILL);  // What the child has left of its group.
  close(output_);
}

std::optional<std::string> Process::readLine(std::chrono::milliseconds limit) {
  const auto deadline = Clock::now() + limit;
  for (;;) {
    if (const auto end = buffer_.find('\n'); end != std::string::npos) {
      std::string line = buffer_.substr(0, end);
      buffer_.erase(0, end + 1);
      return line;
    }
    if (readMore(deadline) != More::Yes) {
      return std::nullopt;
    }
  }
}

std::optional<std::string> Process::readAll(std::chrono::milliseconds limit) {
  const auto deadline = Clock::now() + limit;
  for (;;) {
    switch (readMore(deadline)) {
      case More::Yes:
        break;
      case More::Ended:
        return std::exchange(buffer_, {});
      case More::Late:
        return std::nullopt;
    }
  }
}

Process::More Process::readMore(Clock::time_point deadline) {
  if (!waitReadable(output_, deadline)) {
    return More::Late;
  }
  std::array<char, 4096> chunk{};
  const auto count = ::read(output_, chunk.data(), chunk.size());
  if (count <= 0) {
    return More::Ended;
  }
  buffer_.append(chunk.data(), static_cast<std::size_t>(count));
  return More::Yes;
}

bool Process::waitForLine(std::string_view line, std::chrono::milliseconds limit) {
  const auto deadline = Clock::now() + limit;
  for (;;) {
    const auto next = readLine(std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()));
    if (!next || *next == line) {
      return next.has_value();
    }
  }
}

void Process::write(std::string_view text) const {
  while (!text.empty()) {
    const auto count = ::write(input_, text.data(), text.size());
    if (count < 0) {
      throw std::system_error(errno, std::generic_category(), "write to child");
    }
    text.remove_prefix(static_cast<std::size_t>(count));
  }
}

void Process::closeInput() {
  if (input_ >= 0) {
    close(std::exchange(input_, -1));
  }
}

void Process::kill(int signal) const {
  ::kill(-pid_, signal);
}

std::optional<int> Process::wait(std::chrono::milliseconds limit) {
  if (!status_ && watch_->waitForEnd(limit)) {
    int status = 0;
    if (waitpid(pid_, &status, 0) == pid_) {
      status_ = status;
    }
  }
  return status_;
}

}  // namespace lumiwren::testing
