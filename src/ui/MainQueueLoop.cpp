#include "ui/MainQueueLoop.h"

#include <QCoreApplication>
#include <QEvent>

#include <algorithm>
#include <chrono>

namespace lumiwren {
namespace {

const QEvent::Type wakeEvent = static_cast<QEvent::Type>(QEvent::registerEventType());

}  // namespace

MainQueueLoop::MainQueueLoop(MainQueue &queue) : queue_(queue) {
  timer_.setSingleShot(true);
  timer_.setTimerType(Qt::PreciseTimer);
  connect(&timer_, &QTimer::timeout, this, &MainQueueLoop::runPending);
  queue_.setWaker([this] { QCoreApplication::postEvent(this, new QEvent(wakeEvent)); });
}

MainQueueLoop::~MainQueueLoop() {
  queue_.close();
}

bool MainQueueLoop::event(QEvent *event) {
  if (event->type() == wakeEvent) {
    runPending();
    return true;
  }
  return QObject::event(event);
}

void MainQueueLoop::runPending() {
  queue_.runPending();
  if (const auto deadline = queue_.nextDeadline()) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(*deadline - std::chrono::steady_clock::now());
    timer_.start(std::max(left, std::chrono::milliseconds(0)));
  } else {
    timer_.stop();
  }
}

}  // namespace lumiwren
