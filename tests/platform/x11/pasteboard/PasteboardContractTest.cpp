#include "platform/x11/pasteboard/PasteboardContract.h"

#include "platform/testing/FakePasteboard.h"
#include "platform/x11/pasteboard/PasteboardWorld.h"

namespace lumiwren::testing {
namespace {

class FakeWorld {
public:
  FakePasteboard &pasteboard() { return pasteboard_; }
  void otherPuts(const PasteboardContents &contents) { pasteboard_.otherPuts(contents); }

private:
  FakePasteboard pasteboard_;
};

/// The same with a program whose holder cannot be started.
class FallbackWorld : public PasteboardWorld {
public:
  FallbackWorld() { setHolder("/nonexistent/lumiwren-pasteboard"); }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, PasteboardContract, FakeWorld);
INSTANTIATE_TYPED_TEST_SUITE_P(X11, PasteboardContract, PasteboardWorld);
INSTANTIATE_TYPED_TEST_SUITE_P(X11WithoutHolder, PasteboardContract, FallbackWorld);

}  // namespace
}  // namespace lumiwren::testing
