// support/reset.h: how a reset by a test's own server arrives.
#pragma once

namespace test {

// Wine shuts a socket down before it closes it, whatever its linger option says. Where the test's server runs
// under it too, the end may arrive before the reset.
#if defined(_WIN32)
constexpr bool kEndMayPrecedeReset = true;
#else
constexpr bool kEndMayPrecedeReset = false;
#endif

}  // namespace test
