#pragma once

#include "base/MainQueue.h"

#include <QObject>
#include <QTimer>

namespace lumiwren {

/// Lets Qt's event loop run a MainQueue: each wake becomes one posted event, each deadline a timer. Lives on
/// the main thread, shorter than the queue.
class MainQueueLoop : public QObject {
  Q_OBJECT

public:
  explicit MainQueueLoop(MainQueue &queue);
  ~MainQueueLoop() override;

protected:
  bool event(QEvent *event) override;

private:
  void runPending();

  MainQueue &queue_;
  QTimer timer_;
};

}  // namespace lumiwren
