#pragma once
// Runs a piece of the test in a forked child and hands back the text it
// returns: for faults a test must not inflict on itself, such as a file-size
// limit (RLIMIT_FSIZE stands in for a full disk) or a lock held by another
// process. The child shares nothing with the parent after the fork and ends
// with _exit, so no test framework teardown runs twice. Threads other than
// the caller's are not in the child: use it before starting any.

#include <functional>
#include <string>

namespace velarion::testing {

// The text `body` returned, or a line saying how the child ended abnormally.
std::string runInForkedChild(const std::function<std::string()>& body);

// Limits the files this process may write to `bytes` each; writing past it
// fails with EFBIG instead of raising SIGXFSZ. For a forked child only.
void limitFileSizeBytes(long bytes);

} // namespace velarion::testing
