#include "popup/ExplanationPopupController.h"

#include "ai/LumiwrenError.h"
#include "ai/OpenAIRequest.h"
#include "base/Task.h"
#include "platform/KeyCodes.h"
#include "popup/ExplanationPopupView.h"
#include "popup/KeyablePanel.h"

#include <QApplication>

#include <exception>
#include <stop_token>
#include <utility>
#include <vector>

namespace lumiwren {
namespace {

// The click or the hotkey that opened the panel must not close it at once.
constexpr std::chrono::milliseconds clickMonitorDelay{500};

std::string systemPrompt(const std::string &originalText) {
  return "You are a helpful assistant that explains text. The user originally asked about the following "
         "text:\n\n\"" +
         originalText + "\"\n\nContinue the conversation and answer any follow-up questions about this text.";
}

OpenAIRequest followUpRequest(const std::string &model, const std::string &originalText,
                              const std::vector<ConversationMessage> &history) {
  OpenAIRequest request{
      .model = model, .messages = {}, .maxTokens = OpenAIAPIService::maxTokens, .stream = true};
  request.messages.push_back({"system", systemPrompt(originalText)});
  for (const auto &message : history) {
    request.messages.push_back({message.role, message.content});
  }
  return request;
}

}  // namespace

ExplanationPopupController::ExplanationPopupController(EventMonitors &eventMonitors, Pasteboard &pasteboard,
                                                       Screens &screens, PanelWindows &panelWindows,
                                                       OpenAIAPIService &service, KeychainManager &keychain,
                                                       MainQueue &mainQueue)
    : eventMonitors_(eventMonitors),
      pasteboard_(pasteboard),
      screens_(screens),
      panelWindows_(panelWindows),
      service_(service),
      keychain_(keychain),
      mainQueue_(mainQueue) {}

ExplanationPopupController::~ExplanationPopupController() {
  tearDown();
}

void ExplanationPopupController::show(std::string originalText, std::optional<std::string> explanation,
                                      bool isLoading, std::optional<std::string> error,
                                      std::optional<Point> /*near*/) {
  mainQueue_.post([weak = weak_.weak(), content = Content{std::move(originalText), std::move(explanation),
                                                          isLoading, std::move(error)}]() mutable {
    if (auto *const self = weak.get()) {
      self->popupState_.removeAllMessages();
      self->createAndShowPanel(std::move(content));
    }
  });
}

void ExplanationPopupController::updateContent(std::string originalText,
                                               std::optional<std::string> explanation, bool isLoading,
                                               std::optional<std::string> error) {
  mainQueue_.post([weak = weak_.weak(), content = Content{std::move(originalText), std::move(explanation),
                                                          isLoading, std::move(error)}]() mutable {
    if (auto *const self = weak.get()) {
      self->applyUpdate(std::move(content));
    }
  });
}

void ExplanationPopupController::dismiss() {
  mainQueue_.post([weak = weak_.weak()] {
    if (auto *const self = weak.get()) {
      self->tearDown();
    }
  });
}

void ExplanationPopupController::createAndShowPanel(Content content) {
  if (panel_) {
    updateContent(std::move(content.originalText), std::move(content.explanation), content.isLoading,
                  std::move(content.error));
    return;
  }
  setContent(std::move(content));
  prepare();
  panel_ = madePanel_.get();
  hostingView_ = madeView_;
  panel_->setFrame({calculatePosition(KeyablePanel::defaultSize, screens_.mouseLocation(),
                                      screens_.mainScreenVisibleFrame()),
                    KeyablePanel::defaultSize});
  panel_->orderFrontRegardless();
  setupDismissalMonitoring();
}

void ExplanationPopupController::prepare() {
  if (madePanel_) {
    return;
  }
  const auto weak = weak_.weak();
  auto view = std::make_unique<ExplanationPopupView>(
      popupState_, pasteboard_, mainQueue_,
      ExplanationPopupView::Callbacks{.onDismiss =
                                          [weak] {
                                            if (auto *const self = weak.get()) {
                                              self->dismiss();
                                            }
                                          },
                                      .onCopy =
                                          [weak] {
                                            if (auto *const self = weak.get()) {
                                              self->onCopy();
                                            }
                                          },
                                      .onSendFollowUp =
                                          [weak](const std::string &question) {
                                            if (auto *const self = weak.get()) {
                                              self->sendFollowUp(question);
                                            }
                                          }});
  madeView_ = view.get();
  madePanel_ = std::make_unique<KeyablePanel>(panelWindows_, std::move(view));
}

void ExplanationPopupController::setContent(Content content) {
  popupState_.setOriginalText(std::move(content.originalText));
  popupState_.setExplanation(std::move(content.explanation));
  popupState_.setIsLoading(content.isLoading);
  popupState_.setError(std::move(content.error));
}

void ExplanationPopupController::applyUpdate(Content content) {
  setContent(std::move(content));
  const auto &explanation = popupState_.explanation();
  if (!explanation) {
    return;
  }
  const auto count = popupState_.conversationHistory().size();
  if (count == 0) {
    popupState_.addMessage("assistant", *explanation);
  } else if (count == 1) {
    // Once follow-ups have begun, the first answer is no longer this request's to write.
    popupState_.updateMessageContent(0, *explanation);
  }
}

Point ExplanationPopupController::calculatePosition(Size size, Point mouse,
                                                    const std::optional<Rect> &visibleFrame) {
  if (!visibleFrame) {
    return mouse;
  }
  double x = mouse.x + 10;
  if (x + size.width > visibleFrame->maxX()) {
    x = visibleFrame->maxX() - size.width - 10;
  }
  if (x < visibleFrame->minX()) {
    x = visibleFrame->minX() + 10;
  }
  double y = mouse.y - size.height - 10;
  if (y < visibleFrame->minY()) {
    y = mouse.y + 20;
  }
  if (y + size.height > visibleFrame->maxY()) {
    y = visibleFrame->maxY() - size.height - 10;
  }
  return {x, y};
}

void ExplanationPopupController::setupDismissalMonitoring() {
  mainQueue_.postAfter(clickMonitorDelay, [weak = weak_.weak(), showing = ++showing_] {
    // A panel that was shown again meanwhile has a delay of its own.
    if (auto *const self = weak.get(); self && self->panel_ && self->showing_ == showing) {
      self->installClickMonitor();
    }
  });
  globalKeyMonitor_ =
      eventMonitors_.addGlobalMonitor(eventMask::keyDown, [weak = weak_.weak()](const InputEvent &event) {
        auto *const self = weak.get();
        if (self && event.keyCode == keyCode::escape && !self->isForMenu(event)) {
          self->dismiss();
        }
      });
  localEventMonitor_ =
      eventMonitors_.addLocalMonitor(eventMask::keyDown, [weak = weak_.weak()](const InputEvent &event) {
        auto *const self = weak.get();
        if (self && event.keyCode == keyCode::escape && !self->isForMenu(event)) {
          self->dismiss();
          return LocalEventResult::Consume;
        }
        return LocalEventResult::Pass;
      });
}

bool ExplanationPopupController::isForMenu(const InputEvent &escape) {
  // A menu of a panel that does not have the keyboard gets its keys by a grab, while another application has
  // the focus: then both monitors may see the press, and by the second time the menu is closed.
  const bool isForMenu =
      QApplication::activePopupWidget() || (escape.time != 0 && escape.time == menuEscape_);
  menuEscape_ = isForMenu ? escape.time : 0;
  return isForMenu;
}

void ExplanationPopupController::installClickMonitor() {
  eventMonitor_ = eventMonitors_.addGlobalMonitor(
      eventMask::leftMouseDown | eventMask::rightMouseDown, [weak = weak_.weak()](const InputEvent &) {
        auto *const self = weak.get();
        if (self && self->panel_ && !self->panel_->frame().contains(self->screens_.mouseLocation())) {
          self->dismiss();
        }
      });
}

void ExplanationPopupController::tearDown() {
  eventMonitor_.reset();
  localEventMonitor_.reset();
  globalKeyMonitor_.reset();
  if (panel_) {
    panel_->orderOut();
    hostingView_->reset();
  }
  panel_ = nullptr;
  hostingView_ = nullptr;
}

void ExplanationPopupController::onCopy() {
  pasteboard_.setString(popupState_.explanation().value_or(""), PasteboardLifetime::Lasting);
}

void ExplanationPopupController::sendFollowUp(std::string question) {
  if (question.empty()) {
    return;
  }
  popupState_.addMessage("user", std::move(question));
  popupState_.setIsLoading(true);
  popupState_.setError(std::nullopt);
  auto request =
      followUpRequest(service_.model(), popupState_.originalText(), popupState_.conversationHistory());
  const std::size_t index = popupState_.conversationHistory().size();
  popupState_.addMessage("assistant", "");

  // Only the services are used off the main thread; they outlive every task.
  Task::start([weak = weak_.weak(), index, request = std::move(request), &service = service_,
               &keychain = keychain_, &mainQueue = mainQueue_](const std::stop_token &token) {
    const auto fail = [&](const std::exception &error) {
      mainQueue.post([weak, index, message = std::string(error.what())] {
        if (auto *const self = weak.get()) {
          self->failFollowUp(index, message);
        }
      });
    };
    try {
      const auto apiKey = keychain.getAPIKey();
      if (!apiKey) {
        throw LumiwrenError::noAPIKey();
      }
      auto answer = std::make_shared<std::string>();
      service.streamRequest(
          request, *apiKey,
          [&](const std::string &answerSoFar) {
            *answer = answerSoFar;
            if (auto *const self = weak.get()) {
              self->popupState_.updateMessageContent(index, answerSoFar);
            }
          },
          token);
      mainQueue.post([weak, index, answer] {
        if (auto *const self = weak.get()) {
          self->finishFollowUp(index, *answer);
        }
      });
    } catch (const CancellationError &) {
      throw;  // The program ends; nobody is there to be told.
    } catch (const std::exception &error) {
      fail(error);
    }
  }).detach();
}

void ExplanationPopupController::finishFollowUp(std::size_t index, const std::string &answer) {
  popupState_.updateMessageContent(index, answer);
  popupState_.setIsLoading(false);
}

void ExplanationPopupController::failFollowUp(std::size_t index, const std::string &message) {
  popupState_.removeMessage(index);
  popupState_.setError(message);
  popupState_.setIsLoading(false);
}

}  // namespace lumiwren
