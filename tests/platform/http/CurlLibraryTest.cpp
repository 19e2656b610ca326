#include "platform/linux/CurlLibrary.h"

#include "platform/http/HTTPClientTesting.h"

#include <gtest/gtest.h>

namespace lumiwren::testing {
namespace {

TEST(CurlLibrary, AMissingLibraryIsAnErrorThatNamesThePackage) {
  EXPECT_EQ(transportError([] { CurlLibrary("liblumiwren-none.so.1"); }),
            "Requests need the package libcurl4.");
}

TEST(CurlLibrary, ALibraryWithoutTheFunctionsIsAnErrorThatNamesThePackage) {
  EXPECT_EQ(transportError([] { CurlLibrary("libz.so.1"); }),
            "Requests need a newer version of the package libcurl4.");
}

}  // namespace
}  // namespace lumiwren::testing
