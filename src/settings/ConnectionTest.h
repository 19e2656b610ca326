#pragma once

#include "ai/KeychainQueue.h"
#include "ai/OpenAIAPIService.h"
#include "base/MainQueue.h"
#include "base/Secret.h"
#include "settings/TestResult.h"

#include <functional>

namespace lumiwren {

/// What the forms for the API key work with. Outlives every form and every task.
struct KeyFormServices {
  KeychainQueue &keychain;
  OpenAIAPIService &service;
  MainQueue &mainQueue;
};

/// What becomes of the tested key when the test ends with an error: it stays stored, or the key that was
/// stored before is put back. A key that the server refuses stays stored in any case.
enum class AfterError { KeepTestedKey, RestorePreviousKey };

/// Stores the key, as the service tests the one that is stored, and tests it, on a thread of its own. `then`
/// is called on the main thread. The test goes on whatever happens to the caller.
void testConnection(const KeyFormServices &services, const Secret &key, AfterError afterError,
                    std::function<void(const TestResult &)> then);

}  // namespace lumiwren
