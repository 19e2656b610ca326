#include "settings/UpdateView.h"

#include "ui/Announcement.h"
#include "ui/Fonts.h"
#include "ui/Palette.h"
#include "ui/Spacing.h"

#include <QAccessible>
#include <QEvent>
#include <QLocale>
#include <QPainter>
#include <QVBoxLayout>

#include <algorithm>
#include <memory>

namespace lumiwren {
namespace {

constexpr int updateWidth = 420;
constexpr int notesHeight = 180;
constexpr int wheelSize = 20;
constexpr int barHeight = 6;
constexpr int barSteps = 1000;

QString sizeText(std::uint64_t bytes) {
  return QLocale().formattedDataSize(static_cast<qint64>(bytes), 1, QLocale::DataSizeSIFormat);
}

/// A bar of the program's colour, the same on every desktop.
class ThinProgressBar : public QProgressBar {
protected:
  void paintEvent(QPaintEvent * /*event*/) override {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const SemanticColors colors(palette());
    const qreal round = height() / 2.0;
    painter.setBrush(withOpacity(colors.primary, 0.15));
    painter.drawRoundedRect(QRectF(rect()), round, round);
    const qreal done = static_cast<qreal>(width()) * value() / maximum();
    painter.setBrush(colors.accent);
    painter.drawRoundedRect(QRectF(0, 0, std::max<qreal>(done, height()), height()), round, round);
  }
};

}  // namespace

UpdateView::UpdateView(QWidget *parent)
    : FormView(updateWidth, parent),
      heading_(new TextLabel({}, TextStyle::Headline)),
      message_(new TextLabel({}, TextStyle::Body, &SemanticColors::secondary)),
      notes_(new TextArea(QStringLiteral("Release Notes"))),
      wheel_(new ProgressIndicator(wheelSize)),
      bar_(new ThinProgressBar),
      buttonRow_(new QHBoxLayout) {
  heading_->setWordWrap(true);
  message_->setWordWrap(true);
  notes_->setReadOnly(true);
  bar_->setRange(0, barSteps);
  bar_->setTextVisible(false);
  bar_->setAccessibleName(QStringLiteral("Download Progress"));
  buttonRow_->setSpacing(spacing::small);
  auto *const layout = new QVBoxLayout(this);
  layout->setContentsMargins(spacing::section, spacing::section, spacing::section, spacing::section);
  layout->setSpacing(spacing::medium);
  layout->addWidget(heading_);
  layout->addWidget(message_);
  layout->addWidget(notes_);
  layout->addWidget(wheel_, 0, Qt::AlignLeft);
  layout->addWidget(bar_);
  layout->addLayout(buttonRow_);
  adaptHeights();
}

void UpdateView::setContent(const Content &content) {
  heading_->setText(content.heading);
  message_->setText(content.message);
  message_->setVisible(!content.message.isEmpty());
  notes_->setPlainText(content.notes.value_or(QString()));
  notes_->setVisible(content.notes.has_value());
  wheel_->setVisible(content.isBusy);
  bar_->hide();
  replaceButtons(content);
  if (isVisible() && QAccessible::isActive()) {
    announce(*this, content.heading + u'\n' + content.message);
  }
}

void UpdateView::setProgress(std::uint64_t received, std::uint64_t total) {
  message_->setText(total != 0 ? QStringLiteral("%1 of %2").arg(sizeText(received), sizeText(total))
                               : sizeText(received));
  message_->show();
  wheel_->setVisible(total == 0);
  bar_->setVisible(total != 0);
  if (total != 0) {
    bar_->setValue(static_cast<int>(static_cast<double>(received) / static_cast<double>(total) * barSteps));
  }
}

void UpdateView::changeEvent(QEvent *event) {
  if (event->type() == QEvent::FontChange) {
    adaptHeights();
  }
  FormView::changeEvent(event);
}

void UpdateView::adaptHeights() {
  notes_->setFixedHeight(scaledSize(notesHeight));
  bar_->setFixedHeight(scaledSize(barHeight));
}

void UpdateView::replaceButtons(const Content &content) {
  const auto &buttons = content.buttons;
  for (auto *const button : buttons_) {
    buttonRow_->removeWidget(button);
    button->hide();
    button->deleteLater();  // Its click may be what has brought the new content.
  }
  buttons_.clear();
  while (const std::unique_ptr<QLayoutItem> stretch{buttonRow_->takeAt(0)}) {
  }
  for (const auto &[label, clicked] : buttons) {
    const bool isLast = &clicked == &buttons.back().clicked;
    const bool isFarLeft = buttons.size() > 2 && buttons_.empty();
    auto *const button = new PushButton(
        isLast && !content.isBusy ? PushButton::Kind::Prominent : PushButton::Kind::Bordered, label);
    if (buttons_.empty() && !isFarLeft) {
      buttonRow_->addStretch();
    }
    buttonRow_->addWidget(button);
    if (isFarLeft) {
      buttonRow_->addStretch();
    }
    connect(button, &QPushButton::clicked, this, clicked);
    button->setDefault(isLast);
    button->show();
    buttons_.push_back(button);
  }
  if (!buttons_.empty()) {
    buttons_.back()->setFocus();
  }
}

}  // namespace lumiwren
