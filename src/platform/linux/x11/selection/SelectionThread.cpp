#include "platform/linux/x11/selection/SelectionThread.h"

#include "platform/linux/Answer.h"
#include "platform/linux/FileDescriptor.h"
#include "platform/linux/x11/selection/SelectionConnection.h"
#include "platform/linux/x11/selection/SelectionReader.h"

#include <xcb/xfixes.h>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace lumiwren {

using namespace std::chrono_literals;

namespace {

// How long callers wait for the X server itself, which answers within microseconds unless it hangs or
// another client has grabbed it.
constexpr auto serverLimit = 250ms;

}  // namespace

struct SelectionThread::State {
  State() : wakeUp(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!wakeUp) {
      throw std::system_error(errno, std::generic_category(), "eventfd");
    }
  }

  FileDescriptor wakeUp;
  std::mutex mutex;
  std::vector<Command> commands;  // guarded by the mutex
  bool stopping = false;          // likewise
  std::int64_t changeCount = 0;   // likewise
  Answer<bool> ended;
};

/// What the thread has of its own. Made on it, used on it.
class SelectionThread::Core {
public:
  explicit Core(State &state) : state_(state), reader_(connection_) {
    const auto *const xfixes = xcb_get_extension_data(connection_.get(), &xcb_xfixes_id);
    if (xfixes == nullptr || xfixes->present == 0) {
      throw std::runtime_error("the X server has no XFixes extension");
    }
    xfixesEvent_ = static_cast<std::uint8_t>(xfixes->first_event + XCB_XFIXES_SELECTION_NOTIFY);
    const auto version =
        xcb_xfixes_query_version(connection_.get(), XCB_XFIXES_MAJOR_VERSION, XCB_XFIXES_MINOR_VERSION);
    xcb_xfixes_select_selection_input(connection_.get(), connection_.createWindow(),
                                      connection_.atoms().clipboard,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    const XReply<xcb_xfixes_query_version_reply_t> reply(
        xcb_xfixes_query_version_reply(connection_.get(), version, nullptr));
    xcb_flush(connection_.get());
  }

  SelectionConnection &connection() { return connection_; }
  xcb_atom_t atom(Selection selection) const {
    return selection == Selection::Clipboard ? connection_.atoms().clipboard : xcb_atom_t{XCB_ATOM_PRIMARY};
  }

  void read(Selection selection, const std::vector<std::string> &targets, Clock::time_point deadline,
            std::shared_ptr<Answer<Reading>> answer) {
    const auto atoms = connection_.intern(targets);
    jobs_.push_back({selection, reader_.request(atom(selection), atoms), deadline, std::move(answer)});
  }

  /// Handles all that the server has sent, and ends the readings that are over.
  void handleEvents() {
    bool more = true;
    while (more) {
      while (const XReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) {
        if ((event->response_type & 0x7F) == xfixesEvent_) {
          ownerChanged(reinterpret_cast<const xcb_xfixes_selection_notify_event_t &>(*event),
                       event->full_sequence);
        } else {
          reader_.handle(*event);
        }
      }
      // Whatever waits for a reply may bring further events along, for which nothing would wake us.
      more = reader_.collect();
      more = finishJobs() || more;
    }
  }

  /// All readings end with what has come.
  void finishAll() {
    std::for_each(jobs_.begin(), jobs_.end(), [this](Job &job) { finish(job); });
    jobs_.clear();
  }

  /// For poll(): milliseconds to the next deadline, -1 for none.
  int timeout() const {
    if (jobs_.empty()) {
      return -1;
    }
    const auto next = std::min_element(jobs_.begin(), jobs_.end(), [](const Job &one, const Job &other) {
                        return one.deadline < other.deadline;
                      })->deadline;
    return static_cast<int>(
        std::max(std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now()), 0ms).count());
  }

private:
  struct Job {
    Selection selection;
    std::shared_ptr<SelectionBatch> batch;
    Clock::time_point deadline;
    std::shared_ptr<Answer<Reading>> answer;
    bool ownerChanged = false;
    bool ownerGone = false;
  };

  void ownerChanged(const xcb_xfixes_selection_notify_event_t &event, std::uint32_t sequence) {
    {
      const std::lock_guard lock(state_.mutex);
      ++state_.changeCount;
    }
    for (auto &job : jobs_) {
      // Sequence numbers wrap around.
      const bool older = static_cast<std::int32_t>(sequence - job.batch->firstRequest) < 0;
      if (job.selection == Selection::Clipboard && !older) {
        (event.subtype == XCB_XFIXES_SELECTION_EVENT_SET_SELECTION_OWNER ? job.ownerChanged : job.ownerGone) =
            true;
      }
    }
  }

  bool finishJobs() {
    const auto now = Clock::now();
    return std::erase_if(jobs_, [&](Job &job) {
             const bool over =
                 job.ownerGone || job.ownerChanged || job.batch->open == 0 || job.deadline <= now;
             if (over) {
               finish(job);
             }
             return over;
           }) > 0;
  }

  void finish(Job &job) {
    std::vector<xcb_atom_t> types;
    for (const auto &value : job.batch->values) {
      types.push_back(value ? value->type : xcb_atom_t{XCB_ATOM_NONE});
    }
    auto names = connection_.names(types);
    Reading reading{.ownerChanged = job.ownerChanged};
    for (std::size_t index = 0; index < types.size(); ++index) {
      auto &value = job.batch->values[index];
      auto &result = reading.values.emplace_back();
      if (value) {
        result = {std::move(names[index]), static_cast<std::uint8_t>(std::max(value->format / 8, 1)),
                  std::move(value->bytes)};
      }
    }
    job.answer->give(std::move(reading));
  }

  State &state_;
  SelectionConnection connection_;
  SelectionReader reader_;
  std::uint8_t xfixesEvent_ = 0;
  std::vector<Job> jobs_;
};

SelectionThread::SelectionThread()
    : state_(std::make_shared<State>()), thread_([state = state_] { run(state); }) {}

SelectionThread::~SelectionThread() {
  {
    const std::lock_guard lock(state_->mutex);
    state_->stopping = true;
  }
  eventfd_write(state_->wakeUp.get(), 1);
  if (state_->ended.wait({}, Clock::now() + 4 * serverLimit)) {
    thread_.join();
  } else {
    thread_.detach();
  }
}

void SelectionThread::run(const std::shared_ptr<State> &state) {
  {
    std::unique_ptr<Core> core;
    try {
      core = std::make_unique<Core>(*state);
    } catch (const std::runtime_error &) {
      // Readings are empty then; what else cannot work without an X server says so itself.
    }
    for (;;) {
      eventfd_t wakeUps = 0;
      eventfd_read(state->wakeUp.get(), &wakeUps);
      std::vector<Command> commands;
      {
        const std::lock_guard lock(state->mutex);
        if (state->stopping) {
          break;
        }
        commands.swap(state->commands);
      }
      for (const auto &command : commands) {
        command(core.get());
      }
      int timeout = -1;
      std::array<pollfd, 2> sources{{{state->wakeUp.get(), POLLIN, 0}, {-1, POLLIN, 0}}};
      if (core) {
        xcb_flush(core->connection().get());
        core->handleEvents();
        if (core->connection().broken()) {
          core->finishAll();
          core.reset();
        } else {
          timeout = core->timeout();
          sources[1].fd = xcb_get_file_descriptor(core->connection().get());
        }
      }
      poll(sources.data(), sources.size(), timeout);
    }
    if (core) {
      core->finishAll();
    }
  }
  state->ended.give(true);
}

void SelectionThread::post(Command command) {
  {
    const std::lock_guard lock(state_->mutex);
    state_->commands.push_back(std::move(command));
  }
  eventfd_write(state_->wakeUp.get(), 1);
}

template <typename T>
T SelectionThread::call(std::function<T(Core &)> question, T otherwise) {
  const auto answer = std::make_shared<Answer<T>>();
  post([question = std::move(question), answer, otherwise](Core *core) {
    answer->give(core != nullptr ? question(*core) : otherwise);
  });
  return answer->wait({}, Clock::now() + serverLimit).value_or(otherwise);
}

SelectionThread::Reading SelectionThread::read(Selection selection, std::vector<std::string> targets,
                                               Clock::time_point deadline, const std::stop_token &token) {
  throwIfStopped(token);
  Reading nothing{.values = std::vector<std::optional<Value>>(targets.size())};
  const auto answer = std::make_shared<Answer<Reading>>();
  post([=, targets = std::move(targets)](Core *core) {
    if (core != nullptr) {
      core->read(selection, targets, deadline, answer);
    } else {
      answer->give({.values = std::vector<std::optional<Value>>(targets.size())});
    }
  });
  return answer->wait(token, deadline + serverLimit).value_or(std::move(nothing));
}

std::vector<std::string> SelectionThread::atomNames(Bytes atoms) {
  std::vector<xcb_atom_t> numbers(atoms.size() / sizeof(xcb_atom_t));
  std::memcpy(numbers.data(), atoms.data(), numbers.size() * sizeof(xcb_atom_t));
  return call<std::vector<std::string>>(
      [numbers = std::move(numbers)](Core &core) { return core.connection().names(numbers); }, {});
}

std::int64_t SelectionThread::changeCount() {
  // The trip to the server brings the notifications that it has already sent.
  call<bool>(
      [](Core &core) {
        core.connection().owner(core.connection().atoms().clipboard);
        core.handleEvents();
        return true;
      },
      false);
  const std::lock_guard lock(state_->mutex);
  return state_->changeCount;
}

void SelectionThread::clearClipboard() {
  call<bool>(
      [](Core &core) {
        const auto clipboard = core.connection().atoms().clipboard;
        // Nobody will be asked since when the clipboard has had no owner, so the server may choose the time.
        xcb_set_selection_owner(core.connection().get(), XCB_WINDOW_NONE, clipboard, XCB_CURRENT_TIME);
        core.connection().owner(clipboard);
        return true;
      },
      false);
}

bool SelectionThread::hasOwner(Selection selection) {
  return call<bool>(
      [selection](Core &core) { return core.connection().owner(core.atom(selection)) != XCB_WINDOW_NONE; },
      false);
}

bool SelectionThread::isOwnedByClientOf(std::uint32_t window, Selection selection) {
  return call<bool>(
      [=](Core &core) {
        const auto owner = core.connection().owner(core.atom(selection));
        // The server gives each client a range of its own, of which this mask is the inner part.
        const auto inner = xcb_get_setup(core.connection().get())->resource_id_mask;
        return owner != XCB_WINDOW_NONE && (owner & ~inner) == (window & ~inner);
      },
      false);
}

}  // namespace lumiwren
