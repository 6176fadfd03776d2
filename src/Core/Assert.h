// Assertions that stay active in every build.
//
// A failed invariant is a programming error, not a user-level failure: it prints the
// condition's own text, the source path (relative to src/) and line, and ends the process.
// User-level failures go to Communicate::LogInfo instead.
#pragma once

namespace vel {

[[noreturn]] void AssertFailed(const char* condition, const char* file, int line, const char* message);

} // namespace vel

// VEL_ASSERT(cond): the condition's text is the message.
#define VEL_ASSERT(condition) \
    ((condition) ? (void)0 : ::vel::AssertFailed(#condition, __FILE__, __LINE__, nullptr))

// VEL_ASSERT_MSG(cond, "reason"): for conditions whose text alone does not tell the caller's mistake.
#define VEL_ASSERT_MSG(condition, message) \
    ((condition) ? (void)0 : ::vel::AssertFailed(#condition, __FILE__, __LINE__, message))
