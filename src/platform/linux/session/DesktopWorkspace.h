#pragma once

#include "platform/Workspace.h"

namespace lumiwren {

/// Opens addresses with the programs of whatever desktop this is.
class DesktopWorkspace : public Workspace {
public:
  bool openURL(const std::string &url) override;
};

}  // namespace lumiwren
