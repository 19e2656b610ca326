#pragma once

#include "ai/KeychainManager.h"
#include "ai/OpenAIAPIService.h"
#include "base/Handle.h"
#include "base/MainQueue.h"
#include "base/Weak.h"
#include "platform/EventMonitors.h"
#include "platform/Geometry.h"
#include "platform/PanelWindows.h"
#include "platform/Pasteboard.h"
#include "platform/Screens.h"
#include "popup/PopupState.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace lumiwren {

class ExplanationPopupView;
class KeyablePanel;

/// Owns the floating panel in which answers appear, and runs the conversation in it. Main thread, but for
/// what says otherwise. Everything that it leaves behind (posted steps, monitors, a running follow-up) does
/// nothing once the controller is gone.
class ExplanationPopupController {
public:
  ExplanationPopupController(EventMonitors &eventMonitors, Pasteboard &pasteboard, Screens &screens,
                             PanelWindows &panelWindows, OpenAIAPIService &service, KeychainManager &keychain,
                             MainQueue &mainQueue);
  ExplanationPopupController(const ExplanationPopupController &) = delete;
  ExplanationPopupController &operator=(const ExplanationPopupController &) = delete;
  ~ExplanationPopupController();

  /// Starts a new conversation in the panel that is open, or in a new one at the pointer; the point is not
  /// looked at. Any thread, while the controller lives; takes effect on the main queue.
  void show(std::string originalText, std::optional<std::string> explanation, bool isLoading,
            std::optional<std::string> error, std::optional<Point> near = std::nullopt);
  /// Shows the first answer as far as it has come, or its failure. Any thread, as show().
  void updateContent(std::string originalText, std::optional<std::string> explanation, bool isLoading,
                     std::optional<std::string> error);
  /// Asks a follow-up question about the same text; the empty question is none. The request cannot be
  /// stopped and writes into the conversation even when the panel is gone.
  void sendFollowUp(std::string question);
  /// Takes the panel away. Any thread, as show().
  void dismiss();
  /// Makes the next panel ahead of its use, so that show() has only to map it.
  void prepare();

  PopupState &popupState() { return popupState_; }
  /// The panel while it is open, else null.
  KeyablePanel *panel() const { return panel_; }
  /// The panel's content while it is open, else null.
  ExplanationPopupView *hostingView() const { return hostingView_; }

  /// Where a panel goes: below and to the right of the pointer, inside the visible frame. The margins are
  /// deliberately unequal: 10 points beside and below the pointer, 20 where the panel flips above it.
  static Point calculatePosition(Size size, Point mouse, const std::optional<Rect> &visibleFrame);

private:
  struct Content {
    std::string originalText;
    std::optional<std::string> explanation;
    bool isLoading = false;
    std::optional<std::string> error;
  };

  void createAndShowPanel(Content content);
  void setContent(Content content);
  void applyUpdate(Content content);
  void setupDismissalMonitoring();
  void installClickMonitor();
  /// Whether this press of Escape closes, or has just closed, a menu rather than the panel.
  bool isForMenu(const InputEvent &escape);
  void tearDown();
  void onCopy();
  void finishFollowUp(std::size_t index, const std::string &answer);
  void failFollowUp(std::size_t index, const std::string &message);

  EventMonitors &eventMonitors_;
  Pasteboard &pasteboard_;
  Screens &screens_;
  PanelWindows &panelWindows_;
  OpenAIAPIService &service_;
  KeychainManager &keychain_;
  MainQueue &mainQueue_;

  PopupState popupState_;
  /// A panel is made once and kept hidden between uses, because a fresh window takes three times as long to
  /// appear. `panel_` and `hostingView_` point into it while it is open.
  std::unique_ptr<KeyablePanel> madePanel_;
  ExplanationPopupView *madeView_ = nullptr;  // inside it
  KeyablePanel *panel_ = nullptr;
  ExplanationPopupView *hostingView_ = nullptr;
  unsigned showing_ = 0;          // which of all showings this is
  Handle eventMonitor_;           // clicks elsewhere
  Handle localEventMonitor_;      // Escape in this program
  Handle globalKeyMonitor_;       // Escape in other programs
  std::uint32_t menuEscape_ = 0;  // when Escape was last pressed for a menu
  WeakAnchor<ExplanationPopupController> weak_{this};
};

}  // namespace lumiwren
