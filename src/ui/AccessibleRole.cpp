#include "ui/AccessibleRole.h"

#include <QAccessibleWidget>
#include <QVariant>

namespace lumiwren {
namespace {

constexpr char roleProperty[] = "lumiwrenAccessibleRole";

QAccessibleInterface *makeInterface(const QString & /*className*/, QObject *object) {
  const QVariant role = object && object->isWidgetType() ? object->property(roleProperty) : QVariant();
  return role.isValid() ? new QAccessibleWidget(static_cast<QWidget *>(object),
                                                static_cast<QAccessible::Role>(role.toInt()))
                        : nullptr;
}

}  // namespace

void setAccessibleRole(QWidget &widget, QAccessible::Role role) {
  QAccessible::installFactory(&makeInterface);  // A factory that is there is not installed again.
  widget.setProperty(roleProperty, static_cast<int>(role));
}

}  // namespace lumiwren
