#include "ui/AccessibleRole.h"

#include <gtest/gtest.h>

namespace lumiwren {
namespace {

TEST(AccessibleRoleTest, IsThatOfTheWidgetAndOfNoOther) {
  QWidget list;
  QWidget other;
  setAccessibleRole(list, QAccessible::List);
  list.setAccessibleName(QStringLiteral("Actions"));
  auto *const seen = QAccessible::queryAccessibleInterface(&list);
  EXPECT_EQ(seen->role(), QAccessible::List);
  EXPECT_EQ(seen->text(QAccessible::Name), QStringLiteral("Actions"));
  EXPECT_EQ(QAccessible::queryAccessibleInterface(&other)->role(), QAccessible::Client);
}

}  // namespace
}  // namespace lumiwren
